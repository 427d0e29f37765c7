#include "QAPropertyComboWidget.h"

#include "QAProperty.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QSignalBlocker>

QAPropertyComboWidget::QAPropertyComboWidget(QAProperty* property, QWidget* parent)
    : QAPropertyEditor(property, parent)
    , m_comboBox(new QComboBox(this))
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_comboBox);
    setFocusProxy(m_comboBox);
    connect(m_comboBox, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (index >= 0)
            commit(m_comboBox->itemData(index));
    });
}

QAPropertyComboWidget::~QAPropertyComboWidget() = default;

void QAPropertyComboWidget::addEntry(const QString& text, const QVariant& value)
{
    const QSignalBlocker blocker(m_comboBox);
    m_comboBox->addItem(text, value);
}

void QAPropertyComboWidget::refresh()
{
    const QSignalBlocker blocker(m_comboBox);
    m_comboBox->setCurrentIndex(m_comboBox->findData(property()->value()));
}
