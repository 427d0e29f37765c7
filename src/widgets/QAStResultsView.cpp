#include "QAStResultsView.h"

#include "QAStResultFollower.h"

#include <QTreeWidget>

QAStResultsView::QAStResultsView(QWidget* parent)
    : QAStResultFileView(&m_results, {tr("Test / check"), tr("Result"), tr("Place"), tr("Message")}, parent),
      m_endFollower(new QAStResultFollower(this))
{
    setObjectName(QStringLiteral("resultsView"));
    table()->setRootIsDecorated(true);
    table()->setSortingEnabled(false);
    connect(m_endFollower, &QAStResultFollower::changed, this, &QAStResultsView::redraw);
    redraw();
}

void QAStResultsView::follow(const QString& rioFile, const QString& endFile)
{
    m_endFollower->follow(endFile, &m_end);
    QAStResultFileView::follow(rioFile);
}

void QAStResultsView::poll()
{
    m_endFollower->poll();
    QAStResultFileView::poll();
}

void QAStResultsView::refresh()
{
    table()->clear();
    QList<QTreeWidgetItem*> rows;
    for (const QAStTestResults::Test& test : m_results.tests()) {
        const QString outcome = !test.ended       ? tr("running")
                                : test.passed()   ? tr("passed")
                                : test.status != 0 ? tr("failed (status %1)").arg(test.status)
                                                  : tr("failed");
        QTreeWidgetItem* testRow = row({test.name, outcome, test.program, QString()});
        if (!test.passed() && test.ended)
            testRow->setForeground(1, QColor(Qt::red));
        for (const QAStTestResults::Check& check : test.checks) {
            const QString place = check.file.isEmpty() ? QString() : QStringLiteral("%1:%2").arg(check.file).arg(check.line);
            QTreeWidgetItem* checkRow =
                row({check.name, check.passed ? tr("passed") : tr("failed"), place, check.message});
            if (!check.passed)
                checkRow->setForeground(1, QColor(Qt::red));
            testRow->addChild(checkRow);
        }
        rows.append(testRow);
    }
    table()->addTopLevelItems(rows);
    table()->expandAll();

    QString text;
    if (fileName().isEmpty()) {
        text = tr("No test run selected.");
    } else if (m_results.tests().isEmpty()) {
        text = tr("No test results yet.");
    } else {
        const int checks = m_results.checkCount();
        text = tr("%1 test(s): %2 passed, %3 failed")
                   .arg(m_results.tests().size())
                   .arg(m_results.tests().size() - m_results.failedTests())
                   .arg(m_results.failedTests());
        if (checks > 0)
            text += tr("; %1 check(s): %2 passed, %3 failed")
                        .arg(checks)
                        .arg(checks - m_results.failedChecks())
                        .arg(m_results.failedChecks());
        text += m_end.run().ended ? tr("; the run ended with status %1").arg(m_end.run().status)
                                  : tr("; the run goes on");
    }
    if (!skippedNote().isEmpty())
        text += u'\n' + skippedNote();
    setSummary(text);
}
