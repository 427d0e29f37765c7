#pragma once

#include "QAPropertyBinding.h"

// A list of texts, edited in a list with add and remove buttons.
class SDK110_EXPORT QAPropertyListBox : public QAProperty {
public:
    explicit QAPropertyListBox(const QString& name = QString());
    ~QAPropertyListBox() override;

    // The items joined by ", ".
    QString displayValue() const override;
    QMetaType::Type type() const override;
    QWidget* createEditor(QWidget* parent) override;
};

class SDK110_EXPORT QAPropertyAttrListBox : public QAPropertyAttrBinding<QAPropertyListBox, QStringList> {
public:
    using QAPropertyAttrBinding::QAPropertyAttrBinding;
    ~QAPropertyAttrListBox() override;
};

class SDK110_EXPORT QAPropertyMapListBox : public QAPropertyMapBinding<QAPropertyListBox> {
public:
    using QAPropertyMapBinding::QAPropertyMapBinding;
    ~QAPropertyMapListBox() override;
};
