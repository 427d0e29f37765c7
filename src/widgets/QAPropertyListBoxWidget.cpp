#include "QAPropertyListBoxWidget.h"

#include "QAPropertyListBox.h"

#include <QBoxLayout>
#include <QLineEdit>
#include <QPushButton>

QAPropertyListBoxWidget::QAPropertyListBoxWidget(QAPropertyListBox* property, QWidget* parent)
    : QAPropertyStringListWidget(property, parent)
    , m_entry(new QLineEdit(this))
{
    m_entry->setValidator(property->validator());
    headerLayout()->addWidget(m_entry);
    connect(m_entry, &QLineEdit::returnPressed, this, &QAPropertyListBoxWidget::addEntry);
    connect(addButton(QStringLiteral("add"), tr("Add")), &QPushButton::clicked, this,
            &QAPropertyListBoxWidget::addEntry);
    addRemoveButton();
    addMoveButtons();
    refresh();
}

QAPropertyListBoxWidget::~QAPropertyListBoxWidget() = default;

void QAPropertyListBoxWidget::addEntry()
{
    const QString text = m_entry->text();
    if (text.isEmpty())
        return;
    appendItems(QStringList(text));
    m_entry->clear();
}
