#pragma once

#include "QAPropertyStringListWidget.h"

#include "QAPropertyFileChooser.h"

class QAPropertyPathBox;

// Editor of a list of paths. The buttons follow the property's layout
// (QAPropertyPathBox::Buttons); adding asks QAPropertyFileChooser with the
// property's filters. Button object names: "add", "addFile",
// "addDirectory", "remove", "up", "down".
class SDK110WIDGETS_EXPORT QAPropertyPathBoxWidget : public QAPropertyStringListWidget {
    Q_OBJECT
public:
    QAPropertyPathBoxWidget(QAPropertyPathBox* property, QWidget* parent = nullptr);
    ~QAPropertyPathBoxWidget() override;

public slots:
    // Asks for paths in the property's own mode and appends them.
    void addPaths();
    // Asks for existing files and appends them.
    void addFiles();
    // Asks for a directory and appends it.
    void addDirectory();

private:
    void createButtons();
    void choosePaths(QAPropertyFileChooser::Mode mode);

    QAPropertyPathBox* m_pathBox;
};
