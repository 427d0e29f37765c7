#pragma once

#include "QAStProfileReport.h"
#include "QAStResultFileView.h"

// The performance profile of a test run (its .tqf file): a row per
// function with its calls, total and own time, share of the own time and
// longest call, the most own time first; followed while the test runs.
class SDK110WIDGETS_EXPORT QAStProfileView : public QAStResultFileView {
    Q_OBJECT
public:
    explicit QAStProfileView(QWidget* parent = nullptr);
    const QAStProfileReport& profile() const { return m_profile; }

protected:
    void refresh() override;

private:
    QAStProfileReport m_profile;
};
