#pragma once

#include "QAPropertyBinding.h"
#include "QAPropertyFileChooser.h"

// A list of paths, edited in a list whose buttons pick files and
// directories.
class SDK110_EXPORT QAPropertyPathBox : public QAProperty {
public:
    // The editing buttons beside the list:
    // NoButton           none (items are still editable in place);
    // Single             "Add..." (picks by mode()), "Remove", "Up", "Down";
    // SingleWithoutMoves "Add...", "Remove";
    // Multi              "Add file...", "Add directory...", "Remove";
    // MultiWithMoves     as Multi, plus "Up" and "Down".
    enum Buttons { NoButton, Single, SingleWithoutMoves, Multi, MultiWithMoves };

    explicit QAPropertyPathBox(const QString& name = QString());
    ~QAPropertyPathBox() override;

    // The paths joined by ", ".
    QString displayValue() const override;
    QMetaType::Type type() const override;
    QWidget* createEditor(QWidget* parent) override;

    // The file-name filters in the form a file dialog takes.
    virtual QString filter() const;

    const QStringList& filters() const { return m_filters; }
    void setFilters(const QStringList& filters) { m_filters = filters; }
    // What the single "Add..." button lets the user pick.
    QAPropertyFileChooser::Mode mode() const { return m_mode; }
    void setMode(QAPropertyFileChooser::Mode mode) { m_mode = mode; }
    Buttons buttons() const { return m_buttons; }
    void setButtons(Buttons buttons) { m_buttons = buttons; }

    // Reads a button layout name ("NoButton", "Single", ...). False for any
    // other text.
    static bool buttonsFromString(const QString& text, Buttons* buttons);

private:
    QStringList m_filters;
    QAPropertyFileChooser::Mode m_mode = QAPropertyFileChooser::ExistingFiles;
    Buttons m_buttons = Multi;
};

class SDK110_EXPORT QAPropertyAttrPathBox : public QAPropertyAttrBinding<QAPropertyPathBox, QStringList> {
public:
    using QAPropertyAttrBinding::QAPropertyAttrBinding;
    ~QAPropertyAttrPathBox() override;
};

class SDK110_EXPORT QAPropertyMapPathBox : public QAPropertyMapBinding<QAPropertyPathBox> {
public:
    using QAPropertyMapBinding::QAPropertyMapBinding;
    ~QAPropertyMapPathBox() override;
};
