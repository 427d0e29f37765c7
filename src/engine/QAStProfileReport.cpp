#include "QAStProfileReport.h"

#include <algorithm>

namespace {

constexpr int QU = QAStRecordFields::codeOf('Q', 'U');
constexpr int QD = QAStRecordFields::codeOf('Q', 'D');
constexpr int QF = QAStRecordFields::codeOf('Q', 'F');
constexpr int QT = QAStRecordFields::codeOf('Q', 'T');
constexpr int QS = QAStRecordFields::codeOf('Q', 'S');

}

void QAStProfileReport::clear()
{
    QAStRecordReader::clear();
    m_program.clear();
    m_pid = 0;
    m_date.clear();
    m_runTime = -1;
    m_functions.clear();
    m_names.clear();
    m_sorted = true;
}

const QList<QAStProfileReport::Function>& QAStProfileReport::functions() const
{
    if (!m_sorted) {
        std::sort(m_functions.begin(), m_functions.end(), [](const Function& a, const Function& b) {
            return a.self != b.self ? a.self > b.self : a.name < b.name;
        });
        m_sorted = true;
    }
    return m_functions;
}

qint64 QAStProfileReport::totalSelf() const
{
    qint64 total = 0;
    for (const Function& f : m_functions)
        total += f.self;
    return total;
}

void QAStProfileReport::readRecord(const QAStRecordFields& r)
{
    switch (r.code()) {
    case QU:
        m_program = QString::fromUtf8(r.text(0));
        if (!r.number(1, &m_pid))
            m_pid = 0;
        return;
    case QD:
        m_date = QString::fromUtf8(r.text(0));
        return;
    case QT:
        if (!r.number(0, &m_runTime)) {
            m_runTime = -1;
            skip("a run length that is no number");
        }
        return;
    case QS:
        return; // a stamp of another profiler: nothing to sum
    case QF: {
        Function f;
        if (r.count() < 5 || !r.isQuoted(0) || !r.number(1, &f.calls) || !r.number(2, &f.total) ||
            !r.number(3, &f.self) || !r.number(4, &f.longest)) {
            skip("a function's profile with fields missing");
            return;
        }
        f.name = QString::fromUtf8(r.text(0));
        if (m_names.contains(f.name)) {
            for (Function& same : m_functions) {
                if (same.name == f.name) {
                    same.calls += f.calls;
                    same.total += f.total;
                    same.self += f.self;
                    same.longest = std::max(same.longest, f.longest);
                    break;
                }
            }
            m_sorted = false;
            return;
        }
        m_names.insert(f.name);
        m_functions.append(f);
        m_sorted = false;
        return;
    }
    default:
        skip("not a performance-profile record");
    }
}
