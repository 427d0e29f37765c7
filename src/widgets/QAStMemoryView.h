#pragma once

#include "QAStMemoryReport.h"
#include "QAStResultFileView.h"

// The memory profile of a test run (its .tpf file): the counts and the
// peak over a row per function that left blocks not freed, with its
// blocks below it; followed while the test runs.
class SDK110WIDGETS_EXPORT QAStMemoryView : public QAStResultFileView {
    Q_OBJECT
public:
    explicit QAStMemoryView(QWidget* parent = nullptr);
    const QAStMemoryReport& memory() const { return m_memory; }

protected:
    void refresh() override;

private:
    QAStMemoryReport m_memory;
};
