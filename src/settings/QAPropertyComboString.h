#pragma once

#include "QAPropertyBinding.h"
#include "QAPropertyComboItems.h"

// A text setting chosen among labelled values in a combo box.
class SDK110_EXPORT QAPropertyComboString : public QAProperty {
public:
    explicit QAPropertyComboString(const QString& name = QString());
    ~QAPropertyComboString() override;

    // The label of the current value; the value itself when no item has it.
    QString displayValue() const override;
    QMetaType::Type type() const override;
    QWidget* createEditor(QWidget* parent) override;

    virtual void insertItem(const QString& text, const QString& value);
    // The labels and values of the items, in insertion order.
    virtual QStringList itemTexts() const;
    virtual QStringList itemValues() const;

private:
    QAPropertyComboItems<QString> m_items;
};

class SDK110_EXPORT QAPropertyAttrComboString : public QAPropertyAttrBinding<QAPropertyComboString, QString> {
public:
    using QAPropertyAttrBinding::QAPropertyAttrBinding;
    ~QAPropertyAttrComboString() override;
};

class SDK110_EXPORT QAPropertyMapComboString : public QAPropertyMapBinding<QAPropertyComboString> {
public:
    using QAPropertyMapBinding::QAPropertyMapBinding;
    ~QAPropertyMapComboString() override;
};
