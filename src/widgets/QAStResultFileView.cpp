#include "QAStResultFileView.h"

#include "QAStRecordReader.h"
#include "QAStResultFollower.h"

#include <QHeaderView>
#include <QLabel>
#include <QTreeWidget>
#include <QVBoxLayout>

QAStResultFileView::QAStResultFileView(QAStRecordReader* reader, const QStringList& columns, QWidget* parent)
    : QWidget(parent), m_reader(reader), m_follower(new QAStResultFollower(this)), m_table(new QTreeWidget),
      m_summary(new QLabel)
{
    m_summary->setWordWrap(true);
    m_summary->setObjectName(QStringLiteral("summary"));
    m_table->setHeaderLabels(columns);
    m_table->setRootIsDecorated(false);
    m_table->setUniformRowHeights(true);
    m_table->setSortingEnabled(true);
    m_table->header()->setSectionResizeMode(QHeaderView::Interactive);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(2);
    layout->addWidget(m_summary);
    layout->addWidget(m_table, 1);
    connect(m_follower, &QAStResultFollower::changed, this, &QAStResultFileView::redraw);
}

QAStResultFileView::~QAStResultFileView()
{
    m_follower->stop();
}

void QAStResultFileView::follow(const QString& file)
{
    m_follower->follow(file, m_reader);
}

void QAStResultFileView::stop()
{
    m_follower->stop();
}

void QAStResultFileView::poll()
{
    m_follower->poll();
}

QString QAStResultFileView::fileName() const
{
    return m_follower->fileName();
}

QString QAStResultFileView::summaryText() const
{
    return m_summary->text();
}

void QAStResultFileView::setSummary(const QString& text)
{
    m_summary->setText(text);
}

void QAStResultFileView::redraw()
{
    const bool sorted = m_table->isSortingEnabled();
    m_table->setSortingEnabled(false);
    m_table->setUpdatesEnabled(false);
    refresh();
    m_table->setUpdatesEnabled(true);
    m_table->setSortingEnabled(sorted);
    emit refreshed();
}

QTreeWidgetItem* QAStResultFileView::row(const QVariantList& values)
{
    auto* item = new QTreeWidgetItem;
    for (int column = 0; column < values.size(); ++column) {
        item->setData(column, Qt::DisplayRole, values.at(column));
        if (values.at(column).typeId() != QMetaType::QString)
            item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    }
    return item;
}

QString QAStResultFileView::skippedNote() const
{
    return m_reader->skippedText();
}
