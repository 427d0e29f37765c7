#pragma once

#include "sdk110_export.h"

#include <QByteArray>
#include <QFile>
#include <QString>

// The bytes of a whole file, for a reader that parses them in place: a
// file of mapFrom bytes or more is mapped (no copy), a smaller one, or one
// that cannot be mapped, is read. The bytes live as long as the object.
class SDK110_EXPORT QAFileBytes {
public:
    explicit QAFileBytes(const QString& path, qint64 mapFrom = 4 * 1024 * 1024);
    QAFileBytes(const QAFileBytes&) = delete;
    QAFileBytes& operator=(const QAFileBytes&) = delete;

    // False when the file could not be opened or read; errorString()
    // then says "<path>: cannot read: <why>".
    bool isValid() const { return m_error.isEmpty(); }
    QString errorString() const { return m_error; }

    const char* data() const { return m_data; }
    qsizetype size() const { return m_size; }

private:
    QFile m_file;
    QByteArray m_read;
    const char* m_data = nullptr;
    qsizetype m_size = 0;
    QString m_error;
};
