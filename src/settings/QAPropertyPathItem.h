#pragma once

#include "QAPropertyBinding.h"
#include "QAPropertyFileChooser.h"

// One path, typed or picked with a browse button.
class SDK110_EXPORT QAPropertyPathItem : public QAProperty {
public:
    explicit QAPropertyPathItem(const QString& name = QString());
    ~QAPropertyPathItem() override;

    QString displayValue() const override;
    QMetaType::Type type() const override;
    QWidget* createEditor(QWidget* parent) override;

    // The file-name filters in the form a file dialog takes.
    virtual QString filter() const;

    const QStringList& filters() const { return m_filters; }
    void setFilters(const QStringList& filters) { m_filters = filters; }
    // What the browse button lets the user pick.
    QAPropertyFileChooser::Mode mode() const { return m_mode; }
    void setMode(QAPropertyFileChooser::Mode mode) { m_mode = mode; }

private:
    QStringList m_filters;
    QAPropertyFileChooser::Mode m_mode = QAPropertyFileChooser::ExistingFile;
};

class SDK110_EXPORT QAPropertyAttrPathItem : public QAPropertyAttrBinding<QAPropertyPathItem, QString> {
public:
    using QAPropertyAttrBinding::QAPropertyAttrBinding;
    ~QAPropertyAttrPathItem() override;
};

class SDK110_EXPORT QAPropertyMapPathItem : public QAPropertyMapBinding<QAPropertyPathItem> {
public:
    using QAPropertyMapBinding::QAPropertyMapBinding;
    ~QAPropertyMapPathItem() override;
};
