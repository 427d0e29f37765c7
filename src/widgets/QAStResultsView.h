#pragma once

#include "QAStResultFileView.h"
#include "QAStTestResults.h"

class QAStResultFollower;

// The results of a test run (its .rio file and its end-of-test line): a
// row per test with its outcome, its checks below it (failed ones with
// their place and message), over the totals; followed while the test
// runs.
class SDK110WIDGETS_EXPORT QAStResultsView : public QAStResultFileView {
    Q_OBJECT
public:
    explicit QAStResultsView(QWidget* parent = nullptr);

    // Follows the test results file and the end-of-test file.
    void follow(const QString& rioFile, const QString& endFile);
    void follow(const QString& rioFile) override { follow(rioFile, QString()); }
    void poll() override;
    const QAStTestResults& results() const { return m_results; }
    // The end of the run, from the end-of-test file.
    const QAStTestResults::Run& run() const { return m_end.run(); }

protected:
    void refresh() override;

private:
    QAStTestResults m_results;
    QAStTestResults m_end;
    QAStResultFollower* m_endFollower;
};
