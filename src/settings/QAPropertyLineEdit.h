#pragma once

#include "QAPropertyBinding.h"

// A one-line text setting, edited in a line edit whose "..." button opens
// a larger editor.
class SDK110_EXPORT QAPropertyLineEdit : public QAProperty {
public:
    explicit QAPropertyLineEdit(const QString& name = QString());
    ~QAPropertyLineEdit() override;

    QString displayValue() const override;
    QMetaType::Type type() const override;
    QWidget* createEditor(QWidget* parent) override;

    // A stored text is one line: every new line becomes a blank, then runs
    // of white space shrink to one blank and the ends are trimmed.
    static QVariant convertedValue(QMetaType::Type type, const QVariant& v);
};

// Keeps the text as given, as project items hold it.
class SDK110_EXPORT QAPropertyAttrLineEdit : public QAPropertyAttrBinding<QAPropertyLineEdit, QString> {
public:
    using QAPropertyAttrBinding::QAPropertyAttrBinding;
    ~QAPropertyAttrLineEdit() override;
};

// Stores the text flattened to one line.
class SDK110_EXPORT QAPropertyMapLineEdit : public QAPropertyMapBinding<QAPropertyLineEdit> {
public:
    using QAPropertyMapBinding::QAPropertyMapBinding;
    ~QAPropertyMapLineEdit() override;
};
