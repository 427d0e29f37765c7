#include "QAStMemoryView.h"

#include <QHash>
#include <QTreeWidget>

QAStMemoryView::QAStMemoryView(QWidget* parent)
    : QAStResultFileView(&m_memory, {tr("Not freed, allocated by"), tr("Blocks"), tr("Bytes")}, parent)
{
    setObjectName(QStringLiteral("memoryView"));
    table()->setRootIsDecorated(true);
    redraw();
}

void QAStMemoryView::refresh()
{
    table()->clear();
    QHash<QString, QTreeWidgetItem*> siteRows;
    QList<QTreeWidgetItem*> rows;
    for (const QAStMemoryReport::Site& site : m_memory.sites()) {
        rows.append(row({site.function, site.blocks, site.bytes}));
        siteRows.insert(site.function, rows.last());
    }
    for (const QAStMemoryReport::Block& block : m_memory.blocksLeft()) {
        if (QTreeWidgetItem* site = siteRows.value(block.function))
            site->addChild(row({QStringLiteral("0x%1").arg(block.address, 0, 16), 1, block.size}));
    }
    table()->addTopLevelItems(rows);
    table()->sortByColumn(2, Qt::DescendingOrder);
    QString text;
    if (fileName().isEmpty()) {
        text = tr("No test run selected.");
    } else {
        text = tr("%1 allocation(s), %2 free(s), %3 byte(s) allocated, peak %4 byte(s); %5 block(s) not freed, "
                  "%6 byte(s)%7")
                   .arg(m_memory.allocations())
                   .arg(m_memory.frees())
                   .arg(m_memory.bytesAllocated())
                   .arg(m_memory.peakBytes())
                   .arg(m_memory.blocksLeft().size())
                   .arg(m_memory.bytesLeft())
                   .arg(m_memory.ended() ? QString() : tr(" so far"));
    }
    if (!skippedNote().isEmpty())
        text += u'\n' + skippedNote();
    setSummary(text);
}
