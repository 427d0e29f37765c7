#include "QAPropertyStringListWidget.h"

#include "QAProperty.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

QAPropertyStringListWidget::QAPropertyStringListWidget(QAProperty* property, QWidget* parent)
    : QAPropertyEditor(property, parent)
    , m_header(new QVBoxLayout)
    , m_list(new QListWidget(this))
    , m_buttons(new QVBoxLayout)
{
    auto* body = new QHBoxLayout;
    body->addWidget(m_list);
    body->addLayout(m_buttons);
    m_buttons->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(m_header);
    layout->addLayout(body);
    setFocusProxy(m_list);
    connect(m_list, &QListWidget::itemChanged, this,
            [this] { commitItems(items(), m_list->currentRow()); }, Qt::QueuedConnection);
}

QAPropertyStringListWidget::~QAPropertyStringListWidget() = default;

QStringList QAPropertyStringListWidget::items() const
{
    QStringList texts;
    for (int row = 0; row < m_list->count(); ++row)
        texts << m_list->item(row)->text();
    return texts;
}

void QAPropertyStringListWidget::refresh()
{
    const QStringList texts = property()->value().toStringList();
    if (texts == items())
        return;
    const QSignalBlocker blocker(m_list);
    const int current = m_list->currentRow();
    m_list->clear();
    for (const QString& text : texts) {
        auto* item = new QListWidgetItem(text, m_list);
        item->setFlags(item->flags() | Qt::ItemIsEditable);
    }
    if (current >= 0 && current < m_list->count())
        m_list->setCurrentRow(current);
}

void QAPropertyStringListWidget::appendItems(const QStringList& texts)
{
    if (texts.isEmpty())
        return;
    commitItems(items() + texts, m_list->count() + int(texts.size()) - 1);
}

void QAPropertyStringListWidget::removeSelected()
{
    const int row = m_list->currentRow();
    if (row < 0)
        return;
    QStringList texts = items();
    texts.removeAt(row);
    commitItems(texts, qMin(row, int(texts.size()) - 1));
}

void QAPropertyStringListWidget::moveSelectedUp()
{
    moveSelected(-1);
}

void QAPropertyStringListWidget::moveSelectedDown()
{
    moveSelected(1);
}

void QAPropertyStringListWidget::moveSelected(int offset)
{
    const int row = m_list->currentRow();
    const int target = row + offset;
    if (row < 0 || target < 0 || target >= m_list->count())
        return;
    QStringList texts = items();
    texts.move(row, target);
    commitItems(texts, target);
}

void QAPropertyStringListWidget::commitItems(const QStringList& texts, int currentRow)
{
    if (commit(texts) && currentRow >= 0 && currentRow < m_list->count())
        m_list->setCurrentRow(currentRow);
}

QPushButton* QAPropertyStringListWidget::addButton(const QString& objectName, const QString& text)
{
    auto* button = new QPushButton(text, this);
    button->setObjectName(objectName);
    m_buttons->insertWidget(m_buttons->count() - 1, button);
    return button;
}

void QAPropertyStringListWidget::addRemoveButton()
{
    connect(addButton(QStringLiteral("remove"), tr("Remove")), &QPushButton::clicked, this,
            &QAPropertyStringListWidget::removeSelected);
}

void QAPropertyStringListWidget::addMoveButtons()
{
    connect(addButton(QStringLiteral("up"), tr("Up")), &QPushButton::clicked, this,
            &QAPropertyStringListWidget::moveSelectedUp);
    connect(addButton(QStringLiteral("down"), tr("Down")), &QPushButton::clicked, this,
            &QAPropertyStringListWidget::moveSelectedDown);
}
