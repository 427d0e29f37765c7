#include "QAStCoverageView.h"

#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QPlainTextEdit>
#include <QTextBlock>

namespace {

QString cellText(qint64 hit, qint64 total)
{
    if (total <= 0)
        return QStringLiteral("-");
    return QStringLiteral("%1/%2  %3 %").arg(hit).arg(total).arg(QAStCoverageReport::percent(hit, total));
}

} // namespace

QAStCoverageView::QAStCoverageView(QWidget* parent) : QTreeWidget(parent)
{
    setObjectName(QStringLiteral("coverageView"));
    setColumnCount(4);
    setHeaderLabels({tr("File / function"), tr("Lines"), tr("Branches"), tr("Functions")});
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(NameColumn, QHeaderView::Stretch);
    for (int column : {LinesColumn, BranchesColumn, FunctionsColumn})
        header()->setSectionResizeMode(column, QHeaderView::ResizeToContents);
    setRootIsDecorated(true);
    setUniformRowHeights(true);
    connect(this, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* row) {
        const QString path = row->data(NameColumn, PathRole).toString();
        if (!path.isEmpty())
            emit sourceRequested(path, row->data(NameColumn, LineRole).toInt());
    });
}

void QAStCoverageView::setFile(const QString& path)
{
    m_file = path;
    reload();
}

void QAStCoverageView::setBaseDirectory(const QString& directory)
{
    m_base = directory;
    fill();
}

void QAStCoverageView::reload()
{
    m_report = QAStCoverageReport();
    if (!m_file.isEmpty() && QFileInfo::exists(m_file))
        m_report.read(m_file);
    fill();
}

QColor QAStCoverageView::colourOf(qint64 hit, qint64 total)
{
    if (total <= 0)
        return QColor();
    const double share = double(hit) / double(total);
    if (share < 0.5)
        return QColor(0xf4, 0xb6, 0xb0); // red
    if (share < 0.8)
        return QColor(0xf8, 0xd8, 0x8c); // amber
    return QColor(0xb8, 0xe6, 0xb0);     // green
}

void QAStCoverageView::setCounts(QTreeWidgetItem* row, const QAStCoverageReport::Counts& c)
{
    const std::pair<qint64, qint64> cells[] = {
        {c.linesHit, c.lines}, {c.branchesHit, c.branches}, {c.functionsHit, c.functions}};
    for (int i = 0; i < 3; ++i) {
        const int column = LinesColumn + i;
        row->setText(column, cellText(cells[i].first, cells[i].second));
        row->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
        const QColor colour = colourOf(cells[i].first, cells[i].second);
        if (colour.isValid()) {
            row->setBackground(column, colour);
            row->setForeground(column, QColor(Qt::black));
        }
    }
}

void QAStCoverageView::fill()
{
    clear();
    const QDir base(m_base);
    for (const QAStCoverageReport::File& file : m_report.files()) {
        const QString relative = base.relativeFilePath(file.path);
        const bool below = !m_base.isEmpty() && !relative.startsWith(QLatin1String(".."));
        auto* row = new QTreeWidgetItem(this, {below ? relative : file.path});
        row->setData(NameColumn, PathRole, file.path);
        row->setToolTip(NameColumn, file.path);
        setCounts(row, file.counts);
        for (const QAStCoverageReport::Function& f : file.functions) {
            auto* child = new QTreeWidgetItem(row, {QString::fromUtf8(f.name)});
            child->setData(NameColumn, PathRole, file.path);
            child->setData(NameColumn, LineRole, f.startLine);
            setCounts(child, f.counts);
        }
    }
    if (m_report.files().empty() && !m_report.runtimeFunctions().empty()) {
        auto* row = new QTreeWidgetItem(this, {tr("Functions reached")});
        for (const QAStCoverageReport::RuntimeFunction& f : m_report.runtimeFunctions())
            new QTreeWidgetItem(row, {QString::fromUtf8(f.name), QString(), QString(),
                                      tr("%1 call(s)").arg(f.calls)});
        row->setExpanded(true);
    }
    if (m_report.hasLineCoverage() || !m_report.runtimeFunctions().empty()) {
        auto* total = new QTreeWidgetItem(this, {m_report.isComplete() ? tr("Total") : tr("Total (incomplete)")});
        QFont bold = total->font(NameColumn);
        bold.setBold(true);
        total->setFont(NameColumn, bold);
        setCounts(total, m_report.totals());
    }
}

bool QAStCoverageView::markLines(QPlainTextEdit* editor, const QString& file) const
{
    const QAStCoverageReport::File* coverage = m_report.file(QFileInfo(file).absoluteFilePath());
    if (!editor || !coverage)
        return false;
    QList<QTextEdit::ExtraSelection> marks;
    QTextDocument* document = editor->document();
    for (const QAStCoverageReport::Line& line : coverage->lines) {
        const QTextBlock block = document->findBlockByNumber(line.number - 1);
        if (!block.isValid())
            continue;
        QTextEdit::ExtraSelection mark;
        mark.cursor = QTextCursor(block);
        mark.format.setBackground(line.count > 0 ? QColor(0xdc, 0xf5, 0xd8) : QColor(0xf9, 0xd0, 0xcc));
        mark.format.setProperty(QTextFormat::FullWidthSelection, true);
        mark.format.setToolTip(line.count > 0 ? tr("run %1 time(s)").arg(line.count) : tr("never run"));
        marks.append(mark);
    }
    editor->setExtraSelections(marks);
    return true;
}
