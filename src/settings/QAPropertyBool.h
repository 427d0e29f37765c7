#pragma once

#include "QAPropertyBinding.h"

// A Boolean setting shown as "True" or "False".
class SDK110_EXPORT QAPropertyBool : public QAProperty {
public:
    explicit QAPropertyBool(const QString& name = QString());
    ~QAPropertyBool() override;

    // The text of the current value.
    QString displayValue() const override;
    QMetaType::Type type() const override;
    QWidget* createEditor(QWidget* parent) override;

    // "True" or "False", translated in the context "Properties".
    virtual QString text(bool b) const;
};

class SDK110_EXPORT QAPropertyAttrBool : public QAPropertyAttrBinding<QAPropertyBool, bool> {
public:
    using QAPropertyAttrBinding::QAPropertyAttrBinding;
    ~QAPropertyAttrBool() override;
};

class SDK110_EXPORT QAPropertyMapBool : public QAPropertyMapBinding<QAPropertyBool> {
public:
    using QAPropertyMapBinding::QAPropertyMapBinding;
    ~QAPropertyMapBool() override;
};
