#pragma once

#include "QAPropertyBinding.h"
#include "QAPropertyComboItems.h"

// An integer setting chosen among labelled values in a combo box.
class SDK110_EXPORT QAPropertyComboInt : public QAProperty {
public:
    explicit QAPropertyComboInt(const QString& name = QString());
    ~QAPropertyComboInt() override;

    // The label of the current value; the number itself when no item has
    // it; empty without a value.
    QString displayValue() const override;
    QMetaType::Type type() const override;
    QWidget* createEditor(QWidget* parent) override;

    // The labels and values of the items, in insertion order.
    virtual QStringList itemTexts() const;
    virtual QList<int> itemValues() const;

    void insertItem(const QString& text, int value);

private:
    QAPropertyComboItems<int> m_items;
};

class SDK110_EXPORT QAPropertyAttrComboInt : public QAPropertyAttrBinding<QAPropertyComboInt, int> {
public:
    using QAPropertyAttrBinding::QAPropertyAttrBinding;
    ~QAPropertyAttrComboInt() override;
};

class SDK110_EXPORT QAPropertyMapComboInt : public QAPropertyMapBinding<QAPropertyComboInt> {
public:
    using QAPropertyMapBinding::QAPropertyMapBinding;
    ~QAPropertyMapComboInt() override;
};
