#include "QAFileBytes.h"

QAFileBytes::QAFileBytes(const QString& path, qint64 mapFrom) : m_file(path)
{
    if (!m_file.open(QIODevice::ReadOnly)) {
        m_error = QStringLiteral("%1: cannot read: %2").arg(path, m_file.errorString());
        return;
    }
    const qint64 size = m_file.size();
    if (size > 0 && size >= mapFrom) {
        if (const uchar* mapped = m_file.map(0, size)) {
            m_data = reinterpret_cast<const char*>(mapped);
            m_size = qsizetype(size);
            return;
        }
    }
    m_read = m_file.readAll();
    if (m_file.error() != QFileDevice::NoError) {
        m_error = QStringLiteral("%1: cannot read: %2").arg(path, m_file.errorString());
        m_read.clear();
        return;
    }
    m_data = m_read.constData();
    m_size = m_read.size();
}
