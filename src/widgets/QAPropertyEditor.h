#pragma once

#include "sdk110widgets_export.h"

#include <QVariant>
#include <QWidget>

class QAProperty;

// Base of the property editors: a widget showing one property's effective
// value and writing edits through QAProperty::setValue, so into the bound
// store or attribute. The property is not owned and must outlive the
// editor. A read-only property gives a disabled editor that refuses edits.
class SDK110WIDGETS_EXPORT QAPropertyEditor : public QWidget {
    Q_OBJECT
public:
    explicit QAPropertyEditor(QAProperty* property, QWidget* parent = nullptr);
    ~QAPropertyEditor() override;

    QAProperty* property() const { return m_property; }

public slots:
    // Shows the property's effective value.
    virtual void refresh() = 0;
    // Removes the local value so that the inherited one shows again.
    void reset();

signals:
    // An edit was written into the property.
    void valueCommitted();

protected:
    // Writes an edited value through the property, then shows what was
    // stored. Refused (false) for a read-only property.
    bool commit(const QVariant& v);

private:
    QAProperty* m_property;
};
