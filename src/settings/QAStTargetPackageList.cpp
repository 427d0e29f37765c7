#include "QAStTargetPackageList.h"

#include "QAHost.h"
#include "QAILogMonitor.h"
#include "QALogging.h"
#include "QARes.h"
#include "QAStProjectPref.h"
#include "QAStTargetPackage.h"
#include "QATr.h"
#include "StudioInterface.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <memory>

namespace {


// Shows the faults of one scan to the user and counts them.
class ScanReporter {
public:
    explicit ScanReporter(QAILogMonitor* monitor) : m_monitor(monitor) {}

    void report(const QString& text)
    {
        ++m_faults;
        QAHost::displayMessage(QAHost::MessageConsole, text);
        if (m_monitor)
            m_monitor->log(text);
    }

    int faults() const { return m_faults; }

private:
    QAILogMonitor* m_monitor;
    int m_faults = 0;
};

// Installed for the length of a scan: the faults of the ini files, those
// of the reader and those of the packages alike, reach the user naming
// file and line.
class ScanErrorHandler : public QAResErrorHandler {
public:
    explicit ScanErrorHandler(ScanReporter& reporter)
        : m_reporter(reporter), m_previous(QARes::setErrorHandler(this))
    {
    }
    ~ScanErrorHandler() override { QARes::setErrorHandler(m_previous); }

    void error(const QString& file, int line, const QString& message) override
    {
        m_reporter.report(line > 0 ? QStringLiteral("%1:%2: %3").arg(file).arg(line).arg(message)
                                   : QStringLiteral("%1: %2").arg(file, message));
    }

private:
    ScanReporter& m_reporter;
    QAResErrorHandler* m_previous;
};

// One package for every ini file of a package directory.
void readPackages(const QFileInfo& packageDir, QList<QAStTargetPackage*>& packages)
{
    const QFileInfoList inis = QDir(packageDir.filePath())
                                   .entryInfoList({QStringLiteral("*.ini")}, QDir::Files, QDir::Name);
    for (const QFileInfo& ini : inis) {
        const std::unique_ptr<QARes> res(QARes::read(ini.filePath()));
        if (!res)
            continue;  // the handler has told why
        auto* package = new QAStTargetPackage;
        package->read(res.get(), packageDir.absoluteFilePath(), ini.fileName());
        packages.append(package);
    }
}

void scanDirectory(const QString& directory, ScanReporter& reporter,
                   QList<QAStTargetPackage*>& packages)
{
    const QFileInfo info(directory);
    if (!info.isDir() || !info.isReadable()) {
        reporter.report(
            QATr::settings("The Target Package %1 directory doesn't exist or it is not readable").arg(directory));
        qCDebug(lcTargetPackage, "%s directory doesn't exists", qUtf8Printable(directory));
        return;
    }
    const QFileInfoList entries =
        QDir(directory).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name);
    if (entries.isEmpty()) {
        reporter.report(QATr::settings("The Target Package %1 directory is empty").arg(directory));
        return;
    }
    for (const QFileInfo& entry : entries) {
        qCDebug(lcTargetPackage, "scan %s", qUtf8Printable(entry.filePath()));
        if (entry.isDir())
            readPackages(entry, packages);
    }
}

QString absoluteCleanPath(const QString& path)
{
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

QString directoryName(const QAStTargetPackage* package)
{
    return QFileInfo(package->directory()).fileName();
}

std::unique_ptr<QAStTargetPackageList>& installed()
{
    static std::unique_ptr<QAStTargetPackageList> list;
    return list;
}

void reportInitializationError(QAILogMonitor* monitor)
{
    const QString text = QATr::settings("Error when initializing Target Package List, see the reason above");
    QAHost::displayMessage(QAHost::MessageConsole, text);
    if (monitor)
        monitor->log(text);
}

void warnNoPackage()
{
    const QString text = QATr::settings("Unable to find any Target Deployment port for your\nKorvil installation.\n"
                            "Please check your Project's Preferences > TDP Directories");
    if (StudioInterface* host = QAHost::studioInterface())
        host->warning(QAHost::boxParent(), QATr::settings("Target Deployment Package"), text);
    else
        qCWarning(lcTargetPackage, "%s", qUtf8Printable(text));
}

}

QAStTargetPackageList::QAStTargetPackageList() = default;

QAStTargetPackageList::QAStTargetPackageList(const QStringList& directories, QAILogMonitor* monitor)
{
    scan(directories, monitor);
}

QAStTargetPackageList::~QAStTargetPackageList()
{
    clear();
}

bool QAStTargetPackageList::scan(const QStringList& directories, QAILogMonitor* monitor)
{
    ScanReporter reporter(monitor);
    ScanErrorHandler handler(reporter);
    for (const QString& directory : directories)
        scanDirectory(directory, reporter, m_packages);
    return reporter.faults() == 0;
}

void QAStTargetPackageList::clear()
{
    qDeleteAll(m_packages);
    m_packages.clear();
    qDeleteAll(m_outside);
    m_outside.clear();
}

QAStTargetPackage* QAStTargetPackageList::packageAt(const QString& path)
{
    if (QAStTargetPackage* listed = targetPackage(path))
        return listed;
    const QString wanted = absoluteCleanPath(path);
    for (QAStTargetPackage* package : m_outside) {
        if (absoluteCleanPath(package->directory()) == wanted)
            return package;
    }
    const QFileInfo info(wanted);
    if (!info.isDir())
        return nullptr;
    ScanReporter reporter(nullptr);
    ScanErrorHandler handler(reporter);
    QList<QAStTargetPackage*> read;
    readPackages(info, read);
    if (read.isEmpty())
        return nullptr;
    m_outside.append(read.takeFirst());
    qDeleteAll(read);
    return m_outside.last();
}

QAStTargetPackage* QAStTargetPackageList::targetPackage(const QString& path) const
{
    if (path.isEmpty())
        return nullptr;
    const QString wanted = absoluteCleanPath(path);
    for (QAStTargetPackage* package : m_packages) {
        if (absoluteCleanPath(package->directory()) == wanted)
            return package;
    }
    return nullptr;
}

QAStTargetPackage* QAStTargetPackageList::find(const QString& name) const
{
    if (name.isEmpty())
        return nullptr;
    for (QAStTargetPackage* package : m_packages) {
        if (package->name() == name)
            return package;
    }
    for (QAStTargetPackage* package : m_packages) {
        if (directoryName(package) == name)
            return package;
    }
    return nullptr;
}

QAStTargetPackage* QAStTargetPackageList::findAssociated(const QString& name,
                                                         const QString& language) const
{
    QAStTargetPackage* reference = find(name);
    if (!reference)
        return nullptr;
    const int wanted = QAStTargetPackage::languageTypeOf(language);
    if (reference->languageType() == wanted)
        return reference;
    const QString family = familyOf(directoryName(reference));
    for (QAStTargetPackage* package : m_packages) {
        if (package != reference && package->languageType() == wanted
            && familyOf(directoryName(package)) == family)
            return package;
    }
    return nullptr;
}

QString QAStTargetPackageList::familyOf(const QString& directoryName)
{
    const qsizetype end = std::max(directoryName.lastIndexOf(QLatin1Char('-')),
                                   directoryName.lastIndexOf(QLatin1Char('_')));
    return end > 0 ? directoryName.left(end) : directoryName;
}

QAStTargetPackageList* QAStTargetPackageList::installTargetPackages()
{
    if (!installed())
        QAStTargetPackage::initialize();
    return installed().get();
}

QAStTargetPackage* QAStTargetPackageList::search(const QString& name)
{
    return installTargetPackages()->find(name);
}

QAStTargetPackage* QAStTargetPackageList::searchAssociated(const QString& name,
                                                           const QString& language)
{
    return installTargetPackages()->findAssociated(name, language);
}

// The scan's faults come first, then the summary that points at them; a
// list without any package is worth a box of its own.
bool QAStTargetPackageList::buildInstalled(QAILogMonitor* monitor)
{
    std::unique_ptr<QAStTargetPackageList>& list = installed();
    if (list)
        return true;
    list = std::make_unique<QAStTargetPackageList>();
    const bool scanned = list->scan(QAStProjectPref::instance()->tdpDirectories(), monitor);
    if (!scanned)
        reportInitializationError(monitor);
    if (list->isEmpty())
        warnNoPackage();
    return scanned && !list->isEmpty();
}

void QAStTargetPackageList::releaseInstalled()
{
    installed().reset();
}
