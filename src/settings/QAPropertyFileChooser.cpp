#include "QAPropertyFileChooser.h"

#include <QFileDialog>

namespace {

QStringList chooseWithFileDialog(QWidget* parent, const QAPropertyFileChooser::Request& request)
{
    QFileDialog dialog(parent, request.caption, request.startPath,
                       QAPropertyFileChooser::filterString(request.filters));
    switch (request.mode) {
    case QAPropertyFileChooser::ExistingFile:
        dialog.setFileMode(QFileDialog::ExistingFile);
        break;
    case QAPropertyFileChooser::AnyFile:
        dialog.setFileMode(QFileDialog::AnyFile);
        break;
    case QAPropertyFileChooser::Directory:
        dialog.setFileMode(QFileDialog::Directory);
        break;
    case QAPropertyFileChooser::DirectoryOnly:
        dialog.setFileMode(QFileDialog::Directory);
        dialog.setOption(QFileDialog::ShowDirsOnly);
        break;
    case QAPropertyFileChooser::ExistingFiles:
        dialog.setFileMode(QFileDialog::ExistingFiles);
        break;
    }
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles() : QStringList();
}

QAPropertyFileChooser::Chooser& installedChooser()
{
    static QAPropertyFileChooser::Chooser chooser = &chooseWithFileDialog;
    return chooser;
}

}

QAPropertyFileChooser::Chooser QAPropertyFileChooser::setChooser(Chooser chooser)
{
    Chooser previous = installedChooser();
    installedChooser() = chooser ? std::move(chooser) : Chooser(&chooseWithFileDialog);
    return previous;
}

QStringList QAPropertyFileChooser::choose(QWidget* parent, const Request& request)
{
    return installedChooser()(parent, request);
}

bool QAPropertyFileChooser::modeFromString(const QString& text, Mode* mode)
{
    static const struct {
        const char* name;
        Mode mode;
    } names[] = {
        {"ExistingFile", ExistingFile},
        {"AnyFile", AnyFile},
        {"Directory", Directory},
        {"DirectoryOnly", DirectoryOnly},
        {"ExistingFiles", ExistingFiles},
    };
    for (const auto& entry : names) {
        if (text == QLatin1String(entry.name)) {
            if (mode)
                *mode = entry.mode;
            return true;
        }
    }
    return false;
}

QString QAPropertyFileChooser::filterString(const QStringList& filters)
{
    return filters.join(QLatin1String(";;"));
}
