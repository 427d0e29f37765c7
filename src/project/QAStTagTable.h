#pragma once

#include "QAStData.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <cstdlib>
#include <cstring>

class QAStATag;

// A growable array of trivially copyable items in one block of memory. A
// large block asks the system for huge pages where it has them, so that
// filling it with a million rows takes a few page faults, not tens of
// thousands.
template <typename T>
class QAStPodBuffer {
public:
    QAStPodBuffer() = default;
    QAStPodBuffer(const QAStPodBuffer&) = delete;
    QAStPodBuffer& operator=(const QAStPodBuffer&) = delete;
    ~QAStPodBuffer() { std::free(m_data); }

    qsizetype size() const { return m_size; }
    const T* data() const { return m_data; }
    const T& at(qsizetype i) const { return m_data[i]; }
    void append(const T* items, qsizetype count)
    {
        if (count <= 0)
            return;
        if (m_size + count > m_capacity)
            grow(m_size + count);
        std::memcpy(m_data + m_size, items, size_t(count) * sizeof(T));
        m_size += count;
    }
    void append(const T& item) { append(&item, 1); }
    // Makes room for capacity items: a fresh block, advised before the
    // items are copied in, so that every page of it is filled alike.
    void reserve(qsizetype capacity);

private:
    void grow(qsizetype needed)
    {
        reserve(std::max<qsizetype>({needed, m_capacity * 2, 256}));
    }

    T* m_data = nullptr;
    qsizetype m_size = 0;
    qsizetype m_capacity = 0;
};

// Asks for huge pages over the 2 MiB pages inside a block, where the
// system has them; nothing elsewhere.
void qastAdviseHugePages(void* block, size_t bytes);

template <typename T>
void QAStPodBuffer<T>::reserve(qsizetype capacity)
{
    if (capacity <= m_capacity)
        return;
    auto* block = static_cast<T*>(std::malloc(size_t(capacity) * sizeof(T)));
    if (!block)
        qBadAlloc();
    qastAdviseHugePages(block, size_t(capacity) * sizeof(T));
    if (m_size > 0)
        std::memcpy(block, m_data, size_t(m_size) * sizeof(T));
    std::free(m_data);
    m_data = block;
    m_capacity = capacity;
}

// The tags read from a tag file, kept below their file as compact rows
// until the file's children are first walked; then make() turns them into
// tag items, in file order, and the rows go. A row holds the tag's class,
// line, qualifier, the index of its enclosing row, its name and signature
// as bytes (escapes undone, decoded only when made), and indices into the
// table's shared complete names and base lists. The file's path and scope
// separator are those at reading time, as the tags would have kept them.
class QAStTagTable : public QAStData::DeferredChildren {
public:
    // The item class a kind word makes (docs/formats/tags.md).
    enum Class : quint8 { NoClass, Package, ClassTag, Struct, Function, Method };

    // The class of a kind word; a function whose parent field is a class or
    // an interface is a method. NoClass for a word of no class.
    static Class classify(QByteArrayView kind, bool parentIsClass);
    static Class classify(const QString& kind, const QString& parentKind);

    // Makes one tag item of a class below under, as its last child.
    // completeName serves packages and methods, inherits classes.
    static QAStATag* makeTag(Class kind, const QString& name, const QString& path, int line,
                             int qualifier, const QString& signature,
                             const QString& completeName, const QStringList& inherits,
                             QAStData* under);

    QAStTagTable(const QString& path, const QString& separator);

    // Adds a row; name and signature are the field bytes, escapes undone,
    // decoded as UTF-8 when utf8 is set, else as ISO-8859-1. The row's
    // index.
    inline int append(Class kind, QByteArrayView name, QByteArrayView signature, bool utf8,
                      int line, int qualifier, int parent, const QString& scope,
                      const QStringList& inherits);
    int size() const { return int(m_rows.size()); }
    // Makes room for rows holding textBytes of names and signatures.
    void reserve(qsizetype rows, qsizetype textBytes)
    {
        m_rows.reserve(rows);
        m_text.reserve(textBytes);
    }
    // The decoded name of a row.
    QString name(int row) const;

    void make(QAStData* owner) override;
    bool mayHold(const char* className) const override;

private:
    struct Row {
        // The name's bytes in m_text, the signature's right behind them.
        qsizetype text;
        int nameSize;
        int signatureSize;
        int line;
        int qualifier;
        // The enclosing row; -1 below the file.
        int parent;
        // Index in m_scopes (packages and methods with a scope) and in
        // m_inherits (classes with bases); -1 when none.
        int scope;
        int inherits;
        Class kind;
        bool utf8;
    };

    QString decoded(qsizetype at, int size, bool utf8) const;
    int scopeIndex(const QString& scope);

    QString m_path;
    QString m_separator;
    QAStPodBuffer<Row> m_rows;
    QAStPodBuffer<char> m_text;
    QStringList m_scopes;
    QHash<QString, int> m_scopeIndex;
    QList<QStringList> m_inherits;
};

inline int QAStTagTable::append(Class kind, QByteArrayView name, QByteArrayView signature,
                                bool utf8, int line, int qualifier, int parent,
                                const QString& scope, const QStringList& inherits)
{
    Row row;
    row.text = m_text.size();
    row.nameSize = int(name.size());
    row.signatureSize = int(signature.size());
    row.line = line;
    row.qualifier = qualifier;
    row.parent = parent;
    row.scope = scope.isEmpty() || (kind != Package && kind != Method) ? -1 : scopeIndex(scope);
    row.inherits = -1;
    if (kind == ClassTag && !inherits.isEmpty()) {
        row.inherits = int(m_inherits.size());
        m_inherits.append(inherits);
    }
    row.kind = kind;
    row.utf8 = utf8;
    m_text.append(name.data(), name.size());
    m_text.append(signature.data(), signature.size());
    m_rows.append(row);
    return int(m_rows.size()) - 1;
}
