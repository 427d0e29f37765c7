// The build, execution and clean walk of a node.
#include "QALogging.h"
#include "QAStNode.h"
#include "QAStNode_p.h"

#include "QAFileUtil.h"
#include "QAHost.h"
#include "QAStConfiguration.h"
#include "QAStNodeFileRef.h"
#include "QAStNodeKinds.h"
#include "QAStNodeSource.h"
#include "QAStNodeUser.h"
#include "QAStPerlGen.h"
#include "QAStProject.h"
#include "StudioInterface.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QTextStream>

#include <utility>

namespace {

const QString executionFlagKey = QStringLiteral("executionFlag");
constexpr int executeStages = 0x10 | 0x20;
constexpr int debugBit = 0x100;

const char* driverOf(int command)
{
    static const char* const drivers[] = {"Build.pl", "Execute.pl", "Clean.pl"};
    return drivers[command];
}

} // namespace

// --- commands

void QAStNode::build()
{
    buildProcess(false);
}

void QAStNode::rebuild()
{
    rebuildProcess(false);
}

void QAStNode::execute()
{
    executeOrDebug(false);
}

void QAStNode::debug()
{
    executeOrDebug(true);
}

void QAStNode::clean()
{
    cleanProcess(false);
}

QString QAStNode::driverKind() const
{
    const QAStNodeKind* kind = QAStNodeKind::of(metaObject());
    return kind && kind->driver ? QString::fromLatin1(kind->driver) : QString();
}

QStringList QAStNode::driverArguments() const
{
    return QStringList();
}

bool QAStNode::executesDriver() const
{
    return false;
}

QStringList QAStNode::builtObjects() const
{
    QStringList objects;
    if (linksObjects()) {
        for (const QAStNodeSource* source : QAStNodeSource::compiledBy(this))
            objects << source->objectFile();
    }
    return objects;
}

bool QAStNode::hasSomethingToExecute() const
{
    if (!isSelected())
        return false;
    if (executesDriver() || !perlScriptAfterChild().trimmed().isEmpty())
        return true;
    for (const QAStData* c = child(); c; c = c->next()) {
        const auto* node = qobject_cast<const QAStNode*>(c);
        if (node && node->hasSomethingToExecute())
            return true;
    }
    return false;
}

bool QAStNode::isBuildingOrCleaning() const
{
    return d->m_walking && (d->m_command == Command::Build || d->m_command == Command::Clean);
}

// --- starting a walk

void QAStNode::buildProcess(bool fromParent)
{
    startWalk(Command::Build, fromParent);
}

// A rebuild cleans the node and everything below it, then builds it: one
// walk as its watchers see it, ending once.
void QAStNode::rebuildProcess(bool fromParent)
{
    if (d->m_walking || isRunning())
        return;
    d->m_then = Then::Build;
    cleanProcess(fromParent);
}

void QAStNode::cleanProcess(bool fromParent)
{
    startWalk(Command::Clean, fromParent);
}

void QAStNode::executeProcess(bool fromParent)
{
    startWalk(Command::Execute, fromParent);
}

void QAStNode::startWalk(Command command, bool fromParent)
{
    if (d->m_walking || isRunning())
        return;
    d->m_command = command;
    d->m_walking = true;
    d->m_walkSucceeded = false;
    emit buildExecuteInvoked();
    if (!fromParent)
        clearMessage(OutputConsole);
    if (command == Command::Clean)
        displayMessage(OutputConsole, tr("%1: Cleaning...\n").arg(name()));
    if (command == Command::Execute && !fromParent && !hasSomethingToExecute()) {
        displayMessage(OutputConsole, tr("%1: nothing to execute\n").arg(name()));
        endWalk(true);
        return;
    }
    if (isUnSelected()) {
        if (command == Command::Build)
            displayMessage(OutputConsole, tr("%1: is up-to-date\n").arg(name()));
        endWalk(true);
        return;
    }
    switch (command) {
    case Command::Build:
        buildStartEvent();
        buildNode();
        break;
    case Command::Execute:
        executeStartEvent();
        executeNode();
        break;
    case Command::Clean:
        cleanStartEvent();
        d->m_savedDirectory = QDir::currentPath();
        if (!directory().isEmpty())
            QDir::setCurrent(directory());
        buildFirstChild();
        break;
    }
}

void QAStNode::executeOrDebug(bool debug)
{
    if (d->m_walking || isRunning())
        return;
    d->m_debugRun = debug;
    if (!QAStProject::modeBatch() && hasSomethingToExecute() && changedSinceBuild()) {
        const StudioInterface::StandardButton answer = [this] {
            StudioInterface* host = studioIFace();
            const QString title = tr("%1 execution").arg(name());
            const QString text = tr("You have changed settings, compilation flags or source file "
                                    "content.\nDo you want to rebuild the node?");
            if (!host)
                return StudioInterface::Yes;
            return host->question(QAHost::boxParent(), title, text,
                                  StudioInterface::Yes | StudioInterface::Cancel, StudioInterface::Yes,
                                  StudioInterface::Warning);
        }();
        if (answer == StudioInterface::Yes) {
            // Build, then execute when the build went well.
            d->m_then = Then::Execute;
            buildProcess(false);
            return;
        }
        if (answer != StudioInterface::No) {
            // Canceled: the command ends at once, and says so.
            d->m_walkSucceeded = false;
            emit buildExecuteInvoked();
            emit buildExecuteFinished();
            return;
        }
    }
    executeProcess(false);
}

// --- the build walk

void QAStNode::buildNode()
{
    d->m_savedDirectory = QDir::currentPath();
    if (!directory().isEmpty())
        QDir::setCurrent(directory());
    buildFirstChild();
}

void QAStNode::buildFirstChild()
{
    d->m_walkChildren.clear();
    for (QAStData* child = this->child(); child; child = child->next()) {
        if (auto* node = qobject_cast<QAStNode*>(child))
            d->m_walkChildren.append(node);
    }
    d->m_walkIndex = -1;
    d->m_walkChild = nextChildToBuild();
    emit buildExecuteStarted();
    if (d->m_walkChild)
        d->m_command == Command::Execute ? executeCurrentChild() : buildCurrentChild();
    else if (d->m_command == Command::Execute)
        executeAfterChildren(d->m_debugRun);
    else
        buildAfterChildren();
}

QAStNode* QAStNode::nextChildToBuild()
{
    while (++d->m_walkIndex < d->m_walkChildren.size()) {
        QAStNode* child = d->m_walkChildren.at(d->m_walkIndex);
        if (!child)
            continue;
        if (child->isSelected())
            return child;
        if (qobject_cast<QAStNodeUser*>(child) && d->m_command == Command::Build)
            displayMessage(OutputConsole, tr("%1: is up-to-date\n").arg(child->name()));
    }
    return nullptr;
}

void QAStNode::buildCurrentChild()
{
    walkCurrentChild();
}

// The child's end is taken in a queued slot, so that a long row of
// children that end at once does not deepen the stack.
void QAStNode::walkCurrentChild()
{
    QAStNode* child = d->m_walkChild;
    // The walk goes through this node's own children only.
    if (!SDK110_CHECK(child && child->parent() == this)) {
        abortBuildExecute();
        return;
    }
    connect(child, &QAStNode::buildExecuteFinished, this,
            d->m_command == Command::Execute ? &QAStNode::executeNextChild : &QAStNode::buildNextChild,
            Qt::QueuedConnection);
    switch (d->m_command) {
    case Command::Build:
        buildChildStartEvent(child);
        child->buildProcess(true);
        break;
    case Command::Execute:
        executeChildStartEvent(child);
        child->d->m_debugRun = d->m_debugRun;
        child->executeProcess(true);
        break;
    case Command::Clean:
        child->cleanProcess(true);
        break;
    }
}

void QAStNode::buildNextChild()
{
    childWalkEnded();
}

void QAStNode::executeNextChild()
{
    childWalkEnded();
}

void QAStNode::childWalkEnded()
{
    QAStNode* child = d->m_walkChild;
    // Only the child being walked reports its end here.
    if (!SDK110_CHECK(!qobject_cast<QAStNode*>(sender()) || sender() == child))
        return;
    if (child) {
        disconnect(child, &QAStNode::buildExecuteFinished, this, nullptr);
        if (d->m_command == Command::Execute)
            executeChildFinishEvent(child);
        else if (d->m_command == Command::Build)
            buildChildFinishEvent(child);
    }
    if (!d->m_walking)
        return;
    if (!child || !child->walkSucceeded()) {
        abortBuildExecute();
        return;
    }
    d->m_walkChild = d->m_command == Command::Execute ? nextChildToExecute() : nextChildToBuild();
    if (d->m_walkChild) {
        walkCurrentChild();
        return;
    }
    if (d->m_command == Command::Execute)
        executeAfterChildren(d->m_debugRun);
    else
        buildAfterChildren();
}

void QAStNode::buildAfterChildren()
{
    runOwnStep(false);
}

void QAStNode::runOwnStep(bool endWithoutStep)
{
    const QString text = d->m_command == Command::Clean ? QString() : perlScriptAfterChild();
    if (!text.trimmed().isEmpty()) {
        // The text is a Perl script of its own, written beside the
        // environment script.
        const QString path = afterChildrenScriptPath();
        QFile script(path);
        QDir().mkpath(QFileInfo(path).absolutePath());
        if (!script.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            displayMessage(OutputConsole, tr("%1: cannot write %2: %3\n")
                                              .arg(name(), path, script.errorString()));
            abortBuildExecute();
            return;
        }
        script.write(text.toUtf8());
        script.close();
        if (!runWalkScript(path, QStringList()))
            abortBuildExecute();
        return;
    }
    const bool hasDriver = !driverKind().isEmpty() &&
                           (d->m_command != Command::Execute || executesDriver());
    if (hasDriver) {
        QStringList arguments{driverKind()};
        arguments << driverArguments();
        if (!runWalkScript(QString::fromLatin1(driverOf(int(d->m_command))), arguments))
            abortBuildExecute();
        return;
    }
    if (d->m_command == Command::Clean)
        removeRunFiles();
    if (endWithoutStep || d->m_command == Command::Clean)
        finishWalk();
    else
        abortBuildExecute();
}

QString QAStNode::afterChildrenScriptPath() const
{
    QString path = environmentFileName();
    return path.replace(path.size() - 3, 3, QStringLiteral("-after.pl"));
}

bool QAStNode::runWalkScript(const QString& script, const QStringList& arguments)
{
    // The sources the build compiles, each with the environment of its own
    // configuration.
    if (d->m_command == Command::Build && linksObjects() && !QAStNodeSource::writeSourceEnvironments(this))
        return false;
    const QString path = environmentFileName();
    QDir().mkpath(QFileInfo(path).absolutePath());
    d->m_environmentFile = std::make_unique<QFile>(path);
    // A fresh file rather than the former one cut short: a file system
    // such as ext4 writes a truncated file out at its close, which cost
    // each driver run more than writing the script.
    QFile::remove(path);
    if (!d->m_environmentFile->open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        displayMessage(OutputConsole, tr("%1: cannot write the environment file %2: %3\n")
                                          .arg(name(), path, d->m_environmentFile->errorString()));
        return false;
    }
    QAStConfiguration* c = currentConfiguration();
    const bool holdsFlag = c && c->hasProperty(executionFlagKey);
    const QVariant kept = holdsFlag ? c->localProperty(executionFlagKey) : QVariant();
    const bool changeFlag =
        c && (d->m_command == Command::Build || (d->m_command == Command::Execute && d->m_debugRun));
    if (changeFlag) {
        int flag = QAStPerlGen::settingValue(c, executionFlagKey).toInt();
        flag = d->m_command == Command::Build ? flag & ~executeStages : flag | debugBit;
        c->setProperty(executionFlagKey, flag);
    }
    d->m_environmentStream = std::make_unique<QTextStream>(d->m_environmentFile.get());
    createEnvironmentFile(*d->m_environmentStream);
    connect(this, &QAStData::perlScriptTerminated, this, &QAStNode::buildScriptTerminated,
            Qt::UniqueConnection);
    executePerlScript(script, directory(), d->m_environmentStream.get(), true, OutputConsole, nullptr,
                      arguments);
    // The flag as it was: the node's own value back, or inherited again.
    if (changeFlag) {
        c->unsetProperty(executionFlagKey);
        if (holdsFlag)
            c->setProperty(executionFlagKey, kept);
    }
    return true;
}

void QAStNode::buildScriptTerminated()
{
    qCWarning(lcProject, "QAStNode::buildScriptTerminated [%s]", qUtf8Printable(name()));
    disconnect(this, &QAStData::perlScriptTerminated, this, &QAStNode::buildScriptTerminated);
    d->m_environmentStream.reset();
    d->m_environmentFile.reset();
    if (!d->m_walking)
        return;
    if (perlScriptSucceeded()) {
        if (d->m_command == Command::Clean)
            removeRunFiles();
        finishWalk();
    } else {
        displayMessage(OutputConsole, tr("%1: failed\n").arg(name()));
        abortBuildExecute();
    }
}

// A clean leaves none of the files of the node's runs: its environment
// scripts (its sources' too, for a node that links) go, and their
// directory with them once nothing else is in it.
void QAStNode::removeRunFiles()
{
    const QString own = environmentFileName();
    QStringList files{own, afterChildrenScriptPath()};
    if (linksObjects()) {
        for (const QAStNodeSource* source : QAStNodeSource::compiledBy(this))
            files << source->environmentFileName();
    }
    for (const QString& file : files)
        QFile::remove(file);
    QDir().rmdir(QFileInfo(own).absolutePath());
    forgetBuild();
}

// --- the execution walk

void QAStNode::executeNode()
{
    d->m_savedDirectory = QDir::currentPath();
    if (!directory().isEmpty())
        QDir::setCurrent(directory());
    const int flag = QAStPerlGen::settingValue(currentConfiguration(), executionFlagKey).toInt();
    qCWarning(lcProject, "QAStNode::executeNode executionFlag %x", flag);
    if (!(flag & executeStages)) {
        displayMessage(OutputConsole, tr("%1: no execution step is selected\n").arg(name()));
        abortBuildExecute();
        return;
    }
    executeFirstChild();
}

void QAStNode::executeFirstChild()
{
    buildFirstChild();
}

void QAStNode::executeCurrentChild()
{
    walkCurrentChild();
}

QAStNode* QAStNode::nextChildToExecute()
{
    return nextChildToBuild();
}

void QAStNode::executeAfterChildren(bool debug)
{
    Q_UNUSED(debug);
    qCWarning(lcProject, "QAStNode::executeAfterChildren()");
    abortBuildExecute();
}

// --- the end of a walk

void QAStNode::finishWalk()
{
    endWalk(true);
}

void QAStNode::abortBuildExecute()
{
    if (d->m_walking)
        displayMessage(OutputConsole, tr("%1: stopped\n").arg(name()));
    endWalk(false);
}

void QAStNode::endWalk(bool succeeded)
{
    if (!d->m_walking)
        return;
    d->m_walking = false;
    d->m_walkSucceeded = succeeded;
    d->m_walkChild = nullptr;
    d->m_walkChildren.clear();
    // Whether its own step ran a driver or only its children's did.
    if (succeeded && d->m_command == Command::Build)
        recordBuild();
    if (!d->m_savedDirectory.isEmpty()) {
        QDir::setCurrent(d->m_savedDirectory);
        d->m_savedDirectory.clear();
    }
    switch (d->m_command) {
    case Command::Build:
        buildFinishEvent();
        break;
    case Command::Execute:
        executeFinishEvent();
        break;
    case Command::Clean:
        cleanFinishEvent();
        break;
    }
    // The second half of a rebuild, or of an execution that asked for a
    // build first.
    const Then then = std::exchange(d->m_then, Then::Nothing);
    if (succeeded && then == Then::Build) {
        startWalk(Command::Build, true);
        return;
    }
    if (succeeded && then == Then::Execute) {
        startWalk(Command::Execute, true);
        return;
    }
    emit buildExecuteFinished();
}

// --- changed since the last build

// What the node's settings come from: each configuration of its chain and
// the own configuration of every node below it (whose chains pass through
// this node's), each value but executionFlag, which the walk itself
// changes for the length of a run's start. One digest, stable from one
// run of the program to the next.
QString QAStNode::settingsDigest() const
{
    QCryptographicHash digest(QCryptographicHash::Sha1);
    const auto addStore = [&digest](const QAPropertyStore* store) {
        QStringList entries;
        const QHash<QString, QVariant>& own = store->localProperties();
        for (auto it = own.cbegin(); it != own.cend(); ++it) {
            if (it.key() != executionFlagKey)
                entries << it.key() + u'=' + it.value().toStringList().join(u'\n') + u'\x1e' +
                               it.value().toString();
        }
        entries.sort();
        digest.addData(entries.join(u'\x1f').toUtf8());
        digest.addData("\x1d");
    };
    QSet<const QAPropertyStore*> seen;
    for (const QAPropertyStore* store = currentConfiguration(); store && !seen.contains(store);
         store = store->inheritOf()) {
        seen.insert(store);
        addStore(store);
    }
    for (const QAStData* item : childrenOfClass("QAStNode", true)) {
        const auto* node = static_cast<const QAStNode*>(item);
        digest.addData(QByteArray::number(node->quid()));
        if (const QAPropertyStore* own = node->currentConfiguration())
            addStore(own);
    }
    return QString::fromLatin1(digest.result().toHex());
}

QString QAStNode::buildRecordFile() const
{
    if (!currentConfiguration())
        return QString();
    QString safeName = name();
    for (QChar& c : safeName) {
        if (c == u'/' || c == u'\\' || c == u':' || c.unicode() < 0x20)
            c = u'_';
    }
    QString intdir = QAStPerlGen::settingPath(currentConfiguration(), QStringLiteral("intdir"));
    if (intdir.isEmpty())
        intdir = QStringLiteral(".");
    return QAFileUtil::cleanDirPath(determineAbsolutePathFile(
        directory(), QAStPerlGen::joinPath(intdir, safeName + QStringLiteral(".built"))));
}

void QAStNode::recordBuild()
{
    // Only a node that executes something is ever asked about.
    if (!hasSomethingToExecute())
        return;
    d->m_lastBuild = QDateTime::currentDateTimeUtc();
    d->m_lastBuildDigest = settingsDigest();
    const QString file = buildRecordFile();
    if (file.isEmpty())
        return;
    const QJsonObject record{{QStringLiteral("built"), d->m_lastBuild.toString(Qt::ISODateWithMs)},
                             {QStringLiteral("settings"), d->m_lastBuildDigest}};
    QDir().mkpath(QFileInfo(file).absolutePath());
    d->m_buildRecorded = QAFileUtil::replaceFile(file, QJsonDocument(record).toJson());
}

void QAStNode::forgetBuild()
{
    d->m_lastBuild = QDateTime();
    d->m_lastBuildDigest.clear();
    d->m_buildRecorded = false;
    const QString file = buildRecordFile();
    if (file.isEmpty() || !QFile::remove(file))
        return;
    // The directories it leaves empty, up to the node's own.
    const QString top = QDir::cleanPath(QDir(directory()).absolutePath());
    for (QString dir = QFileInfo(file).absolutePath(); dir.startsWith(top + u'/');
         dir = QFileInfo(dir).absolutePath()) {
        if (!QDir().rmdir(dir))
            break;
    }
}

// The node's last good build as its record beside its products tells it;
// as this run of the program knows it when the record could not be
// written. A record written and gone since (a clean) tells of no build.
bool QAStNode::readBuildRecord(QDateTime& built, QString& digest) const
{
    QFile file(buildRecordFile());
    if (!file.fileName().isEmpty() && file.open(QIODevice::ReadOnly)) {
        const QJsonObject record = QJsonDocument::fromJson(file.readAll()).object();
        built = QDateTime::fromString(record.value(QStringLiteral("built")).toString(), Qt::ISODateWithMs);
        digest = record.value(QStringLiteral("settings")).toString();
        return built.isValid();
    }
    if (d->m_buildRecorded)
        return false;
    built = d->m_lastBuild;
    digest = d->m_lastBuildDigest;
    return built.isValid();
}

namespace {

// The files a make-style dependency file names; none when it cannot be
// read.
QStringList dependencies(const QString& depfile)
{
    QFile file(depfile);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QString text = QString::fromLocal8Bit(file.readAll());
    text.replace(QLatin1String("\\\r\n"), QLatin1String(" ")).replace(QLatin1String("\\\n"), QLatin1String(" "));
    QStringList files;
    for (const QString& line : text.split(u'\n')) {
        const qsizetype colon = line.indexOf(QLatin1String(": "));
        if (colon < 0 && !line.endsWith(u':'))
            continue;
        QString word;
        const QString rest = colon < 0 ? QString() : line.mid(colon + 2);
        for (qsizetype i = 0; i <= rest.size(); ++i) {
            const QChar c = i < rest.size() ? rest.at(i) : QChar(u' ');
            if (c == u'\\' && i + 1 < rest.size()) {
                word += rest.at(++i);
            } else if (c.isSpace()) {
                if (!word.isEmpty())
                    files << std::exchange(word, QString());
            } else {
                word += c;
            }
        }
    }
    return files;
}

} // namespace

// Never built well, a setting changed since, or a file the build used is
// newer than it: a file node below, or a header one of its objects
// included (the dependency files the drivers keep), as the drivers
// themselves decide what to remake.
bool QAStNode::changedSinceBuild() const
{
    QDateTime built;
    QString digest;
    if (!readBuildRecord(built, digest) || digest != settingsDigest())
        return true;
    QStringList files;
    QList<QAStData*> refs = childrenOfClass("QAStNodeFileRef", true);
    if (qobject_cast<const QAStNodeFileRef*>(this))
        refs.prepend(const_cast<QAStNode*>(this));
    for (const QAStData* item : refs)
        files << static_cast<const QAStNodeFileRef*>(item)->absoluteFilePath();
    QList<QAStData*> nodes = childrenOfClass("QAStNode", true);
    nodes.prepend(const_cast<QAStNode*>(this));
    for (const QAStData* item : nodes) {
        const auto* node = static_cast<const QAStNode*>(item);
        for (const QString& object : node->builtObjects())
            files << dependencies(determineAbsolutePathFile(node->directory(), object + QStringLiteral(".d")));
    }
    for (const QString& path : files) {
        const QFileInfo info(determineAbsolutePathFile(directory(), path));
        if (info.exists() && info.lastModified().toUTC() > built)
            return true;
    }
    return false;
}
