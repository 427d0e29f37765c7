#include "QAHost.h"

#include "QALogging.h"

#include <QtDebug>

namespace {

struct Host {
    StudioInterface* studio = nullptr;
    bool batch = false;
};

Host& host()
{
    static Host h;
    return h;
}

} // namespace

void QAHost::setInterface(StudioInterface* studio)
{
    host().studio = studio;
}

StudioInterface* QAHost::studioInterface()
{
    return host().studio;
}

QMainWindow* QAHost::mainWindow()
{
    StudioInterface* studio = studioInterface();
    return studio ? studio->mainWindow() : nullptr;
}

QWidget* QAHost::boxParent()
{
    StudioInterface* studio = studioInterface();
    return studio ? studio->boxParent() : nullptr;
}

bool QAHost::batchMode()
{
    return host().batch;
}

void QAHost::setBatchMode(bool batch)
{
    host().batch = batch;
}

void QAHost::displayMessage(int console, const QString& text)
{
    if (StudioInterface* studio = studioInterface())
        studio->displayMessage(console == OutputConsole ? OutputConsole : MessageConsole, text);
    else
        qCWarning(lcSupport, "%s", qPrintable(text));
}

void QAHost::clearMessage(int console)
{
    if (StudioInterface* studio = studioInterface())
        studio->clearMessage(console == OutputConsole ? OutputConsole : MessageConsole);
}

void QAHost::editFile(const QString& file, int line)
{
    if (StudioInterface* studio = studioInterface())
        studio->editFile(file, line);
}

void QAHost::warning(const QString& caption, const QString& text)
{
    StudioInterface* studio = studioInterface();
    if (batchMode() || !studio)
        displayMessage(MessageConsole, text);
    else
        studio->warning(boxParent(), caption, text);
}

StudioInterface::StandardButton QAHost::question(const QString& caption, const QString& text,
                                                 StudioInterface::StandardButtons buttons,
                                                 StudioInterface::StandardButton defaultButton,
                                                 StudioInterface::Icon icon)
{
    StudioInterface* studio = studioInterface();
    if (batchMode() || !studio) {
        displayMessage(MessageConsole, text);
        return defaultButton;
    }
    return studio->question(boxParent(), caption, text, buttons, defaultButton, icon);
}
