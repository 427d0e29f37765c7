#include "StudioInterface.h"

namespace {

// Console that receives the boxes of a host without windows.
constexpr int boxConsole = 1;

QString boxText(const QString& caption, const QString& text)
{
    return caption.isEmpty() ? text : caption + QLatin1String(": ") + text;
}

}

StudioInterface::~StudioInterface() = default;

QString StudioInterface::buttonName(StandardButton button)
{
    static const struct {
        StandardButton button;
        const char* name;
    } names[] = {{Ok, "Ok"},         {Save, "Save"},     {Yes, "Yes"},       {No, "No"},
                 {Abort, "Abort"},   {Retry, "Retry"},   {Ignore, "Ignore"}, {Cancel, "Cancel"},
                 {Discard, "Discard"}};
    for (const auto& entry : names) {
        if (entry.button == button)
            return QLatin1String(entry.name);
    }
    return QString();
}

QWidget* StudioInterface::boxParent() const
{
    return nullptr;
}

void StudioInterface::statusMessage(const QString&) {}

QString StudioInterface::configurationManagementTool() const
{
    return QString();
}

int StudioInterface::studioPort() const
{
    return 0;
}

void StudioInterface::editFile(const QString&, int) {}

int StudioInterface::getViewerIdByName(const QString&) const
{
    return -1;
}

QString StudioInterface::getViewerNameById(int) const
{
    return QString();
}

void StudioInterface::warning(QWidget*, const QString& caption, const QString& text)
{
    displayMessage(boxConsole, boxText(caption, text));
}

void StudioInterface::information(QWidget*, const QString& caption, const QString& text)
{
    displayMessage(boxConsole, boxText(caption, text));
}

void StudioInterface::critical(QWidget*, const QString& caption, const QString& text)
{
    displayMessage(boxConsole, boxText(caption, text));
}

StudioInterface::StandardButton StudioInterface::question(QWidget*, const QString&, const QString&,
                                                          StandardButtons, StandardButton defaultButton,
                                                          Icon)
{
    return defaultButton;
}

QString StudioInterface::getText(QWidget*, const QString&, const QString&, const QString& text,
                                 bool* ok)
{
    if (ok)
        *ok = true;
    return text;
}

QString StudioInterface::getOpenFileName(QWidget*, const QString&, const QString&, const QString&)
{
    return QString();
}

QStringList StudioInterface::getOpenFileNames(QWidget*, const QString&, const QString&,
                                              const QString&)
{
    return QStringList();
}

QString StudioInterface::getSaveFileName(QWidget*, const QString&, const QString&, const QString&)
{
    return QString();
}

QString StudioInterface::getExistingDirectory(QWidget*, const QString&, const QString&)
{
    return QString();
}

void StudioInterface::startProgress(const QString&, const QString&, int) {}

void StudioInterface::setProgressValue(int) {}

void StudioInterface::setProgressLabel(const QString&) {}

bool StudioInterface::progressWasCanceled() const
{
    return false;
}

void StudioInterface::finishProgress() {}
