#include "QAStProfileView.h"

#include <QTreeWidget>

QAStProfileView::QAStProfileView(QWidget* parent)
    : QAStResultFileView(&m_profile,
                         {tr("Function"), tr("Calls"), tr("Total (us)"), tr("Own (us)"), tr("Own %"),
                          tr("Longest (us)")},
                         parent)
{
    setObjectName(QStringLiteral("profileView"));
    redraw();
}

void QAStProfileView::refresh()
{
    table()->clear();
    const qint64 all = std::max<qint64>(1, m_profile.totalSelf());
    QList<QTreeWidgetItem*> rows;
    for (const QAStProfileReport::Function& f : m_profile.functions()) {
        rows.append(row({f.name, f.calls, f.total, f.self,
                         QString::number(100.0 * double(f.self) / double(all), 'f', 1), f.longest}));
        rows.last()->setTextAlignment(4, Qt::AlignRight | Qt::AlignVCenter);
    }
    table()->addTopLevelItems(rows);
    table()->sortByColumn(3, Qt::DescendingOrder);
    QString text = fileName().isEmpty() ? tr("No test run selected.")
                   : m_profile.functions().isEmpty()
                       ? tr("No performance profile yet.")
                       : tr("%n function(s)", nullptr, int(m_profile.functions().size())) +
                             (m_profile.runTime() >= 0 ? tr(", run of %1 us").arg(m_profile.runTime())
                                                       : tr(", the run goes on"));
    if (!skippedNote().isEmpty())
        text += u'\n' + skippedNote();
    setSummary(text);
}
