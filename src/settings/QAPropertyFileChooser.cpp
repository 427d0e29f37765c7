#include "QAPropertyFileChooser.h"

namespace {

QAPropertyFileChooser::Chooser& defaultChooser()
{
    static QAPropertyFileChooser::Chooser chooser;
    return chooser;
}

QAPropertyFileChooser::Chooser& installedChooser()
{
    static QAPropertyFileChooser::Chooser chooser;
    return chooser;
}

} // namespace

QAPropertyFileChooser::Chooser QAPropertyFileChooser::setChooser(Chooser chooser)
{
    Chooser previous = installedChooser();
    installedChooser() = std::move(chooser);
    return previous;
}

void QAPropertyFileChooser::setDefaultChooser(Chooser chooser)
{
    defaultChooser() = std::move(chooser);
}

QStringList QAPropertyFileChooser::choose(QWidget* parent, const Request& request)
{
    const Chooser& chooser = installedChooser() ? installedChooser() : defaultChooser();
    return chooser ? chooser(parent, request) : QStringList();
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
