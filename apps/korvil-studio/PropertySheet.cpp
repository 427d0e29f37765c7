#include "PropertySheet.h"

#include "QAStNode.h"

#include "QAProperty.h"
#include "QAPropertyEditor.h"
#include "QAPropertyGroup.h"
#include "QAPropertyMapGroup.h"
#include "QAStConfiguration.h"
#include "QAStNode.h"

#include <QCoreApplication>
#include <QEvent>
#include <QHeaderView>
#include <QLabel>
#include <QStyle>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {
const char* context = "PropertySheet";
}

PropertySheet::PropertySheet(QWidget* parent)
    : QWidget(parent)
    , m_title(new QLabel(this))
    , m_tree(new QTreeWidget(this))
{
    setObjectName(QStringLiteral("propertySheet"));
    m_title->setObjectName(QStringLiteral("propertyTitle"));
    m_title->setWordWrap(true);
    m_title->setContentsMargins(4, 2, 4, 2);
    m_tree->setColumnCount(3);
    m_tree->setHeaderLabels({QCoreApplication::translate(context, "Setting"),
                             QCoreApplication::translate(context, "Value"), QString()});
    m_tree->header()->setStretchLastSection(false);
    m_tree->header()->setSectionResizeMode(NameColumn, QHeaderView::Interactive);
    m_tree->header()->setSectionResizeMode(ValueColumn, QHeaderView::Stretch);
    m_tree->header()->setSectionResizeMode(ResetColumn, QHeaderView::Fixed);
    m_tree->header()->resizeSection(NameColumn, 220);
    m_tree->header()->resizeSection(ResetColumn, 28);
    m_tree->setSelectionMode(QAbstractItemView::NoSelection);
    m_tree->setUniformRowHeights(false);
    m_tree->viewport()->installEventFilter(this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(m_title);
    layout->addWidget(m_tree);
    rebuild();
}

PropertySheet::~PropertySheet() = default;

QString PropertySheet::overriddenMarker()
{
    return QStringLiteral("\u25cf ");
}

void PropertySheet::setNode(QAStNode* node)
{
    if (m_node)
        disconnect(m_node, nullptr, this, nullptr);
    m_node = node;
    if (node)
        connect(node, &QObject::destroyed, this, [this] { rebuild(); });
    rebuild();
}

QAStConfiguration* PropertySheet::configuration() const
{
    return m_node ? m_node->currentConfiguration() : nullptr;
}

void PropertySheet::bind() const
{
    if (QAPropertyMapGroup* descriptor = QAStConfiguration::propertyDescriptor())
        descriptor->setPropertyStore(configuration());
}

void PropertySheet::rebuild()
{
    m_rows.clear();
    m_tree->clear();
    if (!m_node) {
        m_title->setText(QCoreApplication::translate(context, "No node selected"));
        return;
    }
    QAStConfiguration* config = configuration();
    const QString configName = m_node->currentConfigurationName();
    if (!config) {
        m_title->setText(QCoreApplication::translate(context, "%1 has no configuration \"%2\"")
                             .arg(m_node->name(), configName));
        return;
    }
    if (!QAStConfiguration::propertyDescriptor()) {
        m_title->setText(QCoreApplication::translate(context, "The settings descriptor %1 is not loaded")
                             .arg(QAStConfiguration::propertyDescriptorFile()));
        return;
    }
    m_title->setText(QCoreApplication::translate(context, "<b>%1</b> \u2014 configuration %2")
                         .arg(m_node->name().toHtmlEscaped(), configName.toHtmlEscaped()));
    bind();
    m_tree->setUpdatesEnabled(false);
    addSettings(nullptr, QAStConfiguration::propertyDescriptor());
    m_tree->setUpdatesEnabled(true);
}

void PropertySheet::addSettings(QTreeWidgetItem* parentRow, const QAPropertyGroup* group)
{
    for (QAProperty* property : m_node->visibleSettings(group)) {
        if (property->isGroup()) {
            auto* row = parentRow ? new QTreeWidgetItem(parentRow) : new QTreeWidgetItem(m_tree);
            row->setText(NameColumn, property->name());
            row->setFirstColumnSpanned(true);
            QFont font = row->font(NameColumn);
            font.setItalic(true);
            row->setFont(NameColumn, font);
            row->setIcon(NameColumn, style()->standardIcon(QStyle::SP_DirIcon));
            addSettings(row, static_cast<const QAPropertyGroup*>(property));
            // The top groups open, the deeper ones stay closed.
            row->setExpanded(!parentRow);
        } else {
            addSetting(parentRow, property);
        }
    }
}

void PropertySheet::addSetting(QTreeWidgetItem* parentRow, QAProperty* property)
{
    Row row;
    row.property = property;
    row.item = parentRow ? new QTreeWidgetItem(parentRow) : new QTreeWidgetItem(m_tree);
    row.item->setToolTip(NameColumn, property->whatThis());
    row.editor = property->createEditor(m_tree);
    if (row.editor) {
        m_tree->setItemWidget(row.item, ValueColumn, row.editor);
        watchEditor(row.editor);
    } else {
        row.item->setText(ValueColumn, property->displayValue());
    }
    row.reset = new QToolButton(m_tree);
    row.reset->setAutoRaise(true);
    row.reset->setToolTip(QCoreApplication::translate(context, "Use the inherited value"));
    m_tree->setItemWidget(row.item, ResetColumn, row.reset);
    const QString key = property->tag();
    connect(row.reset, &QToolButton::clicked, this, [this, key] { resetValue(key); });
    if (auto* editor = qobject_cast<QAPropertyEditor*>(row.editor)) {
        connect(editor, &QAPropertyEditor::valueCommitted, this, [this, key] {
            if (const Row* edited = rowByKey(key))
                showState(*edited);
            emit edited();
        });
    }
    m_rows.append(row);
    showState(row);
}

// Every widget of an editor, as the user reaches it, brings the descriptor
// back to the configuration shown.
void PropertySheet::watchEditor(QWidget* editor)
{
    editor->installEventFilter(this);
    for (QWidget* part : editor->findChildren<QWidget*>())
        part->installEventFilter(this);
}

bool PropertySheet::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::FocusIn:
    case QEvent::MouseButtonPress:
    case QEvent::KeyPress:
    case QEvent::Wheel:
        bind();
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

void PropertySheet::showState(const Row& row)
{
    bind();
    const bool overridden = row.property->isOverriden();
    row.item->setText(NameColumn, (overridden ? overriddenMarker() : QString()) + row.property->name());
    QFont font = row.item->font(NameColumn);
    font.setBold(overridden);
    row.item->setFont(NameColumn, font);
    row.item->setData(NameColumn, Qt::UserRole, overridden);
    row.item->setToolTip(ValueColumn, overridden
                                          ? QCoreApplication::translate(context, "Set on this configuration")
                                          : QCoreApplication::translate(context, "Inherited"));
    const bool resetable = overridden && row.property->isResetable() && !row.property->readOnly();
    // The view decides whether a row widget is visible: a button with
    // nothing to reset shows no icon instead.
    row.reset->setEnabled(resetable);
    row.reset->setIcon(resetable ? style()->standardIcon(QStyle::SP_LineEditClearButton) : QIcon());
}

void PropertySheet::refresh()
{
    if (!m_node || !configuration()) {
        rebuild();
        return;
    }
    bind();
    for (const Row& row : std::as_const(m_rows)) {
        if (auto* editor = qobject_cast<QAPropertyEditor*>(row.editor))
            editor->refresh();
        else if (!row.editor)
            row.item->setText(ValueColumn, row.property->displayValue());
        showState(row);
    }
}

PropertySheet::Row* PropertySheet::rowByKey(const QString& key)
{
    for (Row& row : m_rows) {
        if (row.property->tag() == key)
            return &row;
    }
    return nullptr;
}

const PropertySheet::Row* PropertySheet::rowByKey(const QString& key) const
{
    return const_cast<PropertySheet*>(this)->rowByKey(key);
}

QTreeWidgetItem* PropertySheet::rowOf(const QString& key) const
{
    const Row* row = rowByKey(key);
    return row ? row->item : nullptr;
}

QWidget* PropertySheet::editorOf(const QString& key) const
{
    const Row* row = rowByKey(key);
    return row ? row->editor : nullptr;
}

QToolButton* PropertySheet::resetButtonOf(const QString& key) const
{
    const Row* row = rowByKey(key);
    return row ? row->reset : nullptr;
}

bool PropertySheet::isMarkedOverridden(const QString& key) const
{
    const Row* row = rowByKey(key);
    return row && row->item->data(NameColumn, Qt::UserRole).toBool() &&
           row->item->font(NameColumn).bold();
}

void PropertySheet::resetValue(const QString& key)
{
    Row* row = rowByKey(key);
    if (!row || !row->property->isResetable() || row->property->readOnly())
        return;
    bind();
    row->property->reset();
    if (auto* editor = qobject_cast<QAPropertyEditor*>(row->editor))
        editor->refresh();
    else if (!row->editor)
        row->item->setText(ValueColumn, row->property->displayValue());
    showState(*row);
    emit edited();
}
