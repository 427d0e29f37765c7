#include "QAPropertyEditor.h"

#include "QAProperty.h"

QAPropertyEditor::QAPropertyEditor(QAProperty* property, QWidget* parent)
    : QWidget(parent)
    , m_property(property)
{
    setEnabled(!property->readOnly());
    setWhatsThis(property->whatThis());
}

QAPropertyEditor::~QAPropertyEditor() = default;

void QAPropertyEditor::reset()
{
    if (m_property->readOnly())
        return;
    m_property->reset();
    refresh();
}

bool QAPropertyEditor::commit(const QVariant& v)
{
    if (m_property->readOnly())
        return false;
    m_property->setValue(v);
    refresh();
    emit valueCommitted();
    return true;
}
