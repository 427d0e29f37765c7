#include "QAPropertyTextWidget.h"

#include "QAProperty.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QToolButton>

QAPropertyTextWidget::QAPropertyTextWidget(QAProperty* property, QWidget* parent)
    : QAPropertyEditor(property, parent)
    , m_lineEdit(new QLineEdit(this))
    , m_button(new QToolButton(this))
{
    m_lineEdit->setValidator(property->validator());
    m_button->setObjectName(QStringLiteral("button"));
    m_button->setText(QStringLiteral("..."));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_lineEdit);
    layout->addWidget(m_button);
    setFocusProxy(m_lineEdit);
    connect(m_lineEdit, &QLineEdit::editingFinished, this, &QAPropertyTextWidget::commitTypedText);
    connect(m_button, &QToolButton::clicked, this, &QAPropertyTextWidget::buttonClicked);
}

// The line edit loses its focus while QWidget's destructor runs, when this
// editor is no longer one: its editingFinished must not reach us then.
QAPropertyTextWidget::~QAPropertyTextWidget()
{
    m_lineEdit->disconnect(this);
}

void QAPropertyTextWidget::refresh()
{
    m_lineEdit->setText(property()->value().toString());
    m_lineEdit->setModified(false);
}

void QAPropertyTextWidget::commitTypedText()
{
    if (m_lineEdit->isModified())
        commit(m_lineEdit->text());
}
