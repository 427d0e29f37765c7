#include "QAPropertyIntWidget.h"

#include "QAPropertyInt.h"

#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QSpinBox>

QAPropertyIntWidget::QAPropertyIntWidget(QAPropertyInt* property, QWidget* parent)
    : QAPropertyEditor(property, parent)
    , m_spinBox(new QSpinBox(this))
{
    m_spinBox->setRange(property->minimum(), property->maximum());
    m_spinBox->setSingleStep(property->step());
    m_spinBox->setSuffix(property->suffix());
    m_spinBox->setKeyboardTracking(false);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_spinBox);
    setFocusProxy(m_spinBox);
    connect(m_spinBox, &QSpinBox::valueChanged, this, [this](int v) { commit(v); });
    refresh();
}

QAPropertyIntWidget::~QAPropertyIntWidget() = default;

void QAPropertyIntWidget::refresh()
{
    const QSignalBlocker blocker(m_spinBox);
    m_spinBox->setValue(property()->value().toInt());
}
