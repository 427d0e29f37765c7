#include "QAPropertyBoolWidget.h"

#include "QAPropertyBool.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QSignalBlocker>

QAPropertyBoolWidget::QAPropertyBoolWidget(QAPropertyBool* property, QWidget* parent, Style style)
    : QAPropertyEditor(property, parent)
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    if (style == CheckBox)
        createCheckBox(*property);
    else
        createComboBox(*property);
    layout->addWidget(focusProxy());
    refresh();
}

QAPropertyBoolWidget::~QAPropertyBoolWidget() = default;

void QAPropertyBoolWidget::createComboBox(const QAPropertyBool& property)
{
    m_comboBox = new QComboBox(this);
    m_comboBox->addItem(property.text(true), true);
    m_comboBox->addItem(property.text(false), false);
    setFocusProxy(m_comboBox);
    connect(m_comboBox, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (index >= 0)
            commit(m_comboBox->itemData(index));
    });
}

void QAPropertyBoolWidget::createCheckBox(const QAPropertyBool& property)
{
    m_checkBox = new QCheckBox(property.name(), this);
    setFocusProxy(m_checkBox);
    connect(m_checkBox, &QCheckBox::toggled, this, [this](bool on) { commit(on); });
}

void QAPropertyBoolWidget::refresh()
{
    const QVariant v = property()->value();
    if (m_checkBox) {
        const QSignalBlocker blocker(m_checkBox);
        m_checkBox->setChecked(v.toBool());
    } else {
        const QSignalBlocker blocker(m_comboBox);
        m_comboBox->setCurrentIndex(m_comboBox->findData(v));
    }
}
