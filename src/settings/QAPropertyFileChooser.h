#pragma once

#include "sdk110_export.h"

#include <QString>
#include <QStringList>

#include <functional>

class QWidget;

// How the path editors ask the user for files and directories. The library
// never opens a chooser on its own: the path widgets call choose() only on
// the user's click, and a host replaces the chooser (a batch host with one
// that answers without asking, a test with one that returns fixed paths).
// The default chooser is the widgets library's QFileDialog, which it
// installs when it is loaded (setDefaultChooser); without it nothing is
// chosen.
class SDK110_EXPORT QAPropertyFileChooser {
public:
    // What the dialog lets the user pick.
    enum Mode { ExistingFile, AnyFile, Directory, DirectoryOnly, ExistingFiles };

    struct Request {
        QString caption;
        QString startPath;
        QStringList filters;  // file-name filters, e.g. "Sources (*.c *.cpp)"
        Mode mode = ExistingFile;
    };

    // Returns the chosen paths; empty when the user cancelled.
    using Chooser = std::function<QStringList(QWidget* parent, const Request& request)>;

    // Installs a chooser and returns the one it replaces; an empty function
    // restores the default one.
    static Chooser setChooser(Chooser chooser);
    // The chooser an empty setChooser restores.
    static void setDefaultChooser(Chooser chooser);
    static QStringList choose(QWidget* parent, const Request& request);

    // Reads a mode name: "ExistingFile", "AnyFile", "Directory",
    // "DirectoryOnly" or "ExistingFiles". False for any other text.
    static bool modeFromString(const QString& text, Mode* mode);
    // The filters in the form a QFileDialog takes (joined by ";;").
    static QString filterString(const QStringList& filters);
};
