#include "QAStData.h"

#include "QAHost.h"
#include "QAInstall.h"
#include "QALogging.h"
#include "QAProcess.h"
#include "QAPropertyStore.h"
#include "QARes.h"
#include "QAStDataFactory.h"
#include "QAStDataUndoAction.h"
#include "QAStDataUndoActionManager.h"
#include "QAStNode.h"
#include "QAStPerlGen.h"
#include "QAStProjectPref.h"
#include "QATr.h"
#include "StudioInterface.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QDir>
#include <QDomDocument>
#include <QDomElement>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QTextStream>
#include <QtDebug>

#include <algorithm>
#include <memory>

namespace {

// The state behind the static services.
struct Services {
    QARes* preferenceResources = nullptr;
    QString loadReport;
    quint32 nextQuid = 1;
    // Quids taken for deferred children, handed out while they are made.
    quint32 reservedNext = 0;
    quint32 reservedEnd = 0;
    // Live QAStData::KeepGivenPlace guards.
    int keepGivenPlace = 0;
};

Services& services()
{
    static Services s;
    return s;
}

// Pixmaps need a QGuiApplication; a command-line host has none.
bool hasGui()
{
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
}

// Children sort by name, case-insensitive, ties case-sensitive.
bool nameLess(const QAStData* a, const QAStData* b)
{
    const QString na = a->name();
    const QString nb = b->name();
    const int folded = na.compare(nb, Qt::CaseInsensitive);
    return folded != 0 ? folded < 0 : na < nb;
}

bool inheritsAny(const QObject* object, const QStringList& classNames)
{
    return std::any_of(classNames.cbegin(), classNames.cend(), [object](const QString& name) {
        return object->inherits(name.toLatin1().constData());
    });
}

QString installPath(const char* relative)
{
    return QAInstall::installPath(QAStData::installDir(), QLatin1String(relative));
}

}

// --- construction

struct QAStData::Private {
    QPointer<QAProcess> m_process;
    QAStData::Console m_runConsole = OutputConsole;
    bool m_perlScriptSucceeded = false;
    QAStStringAttribute m_name;
    quint32 m_quid = 0;
    QAStStringAttribute m_iconFileName;
    mutable std::optional<QPixmap> m_icon;
    QAStBoolAttribute m_renameable{true};
    QAStBoolAttribute m_deletable{true};
    QAStBoolAttribute m_open{false};
    QAStBoolAttribute m_sorted{false};
    QAStIntAttribute m_executionResult{0};
    bool m_duplicable = true;
    bool m_modified = false;
    bool m_valid = true;
    QAStData* m_parent = nullptr;
    QAStData* m_first = nullptr;
    QAStData* m_last = nullptr;
    QAStData* m_next = nullptr;
    QAStData* m_previous = nullptr;
    int m_childCount = 0;
    // Children not made yet, and the quids taken for them.
    std::unique_ptr<DeferredChildren> m_deferred;
    quint32 m_deferredQuid = 0;
    quint32 m_deferredCount = 0;
};

QAStData::QAStData(const QString& name, const QPixmap& icon, QAStData* parent, QAStData* after)
    : d(std::make_unique<Private>())
{
    d->m_name = name;
    d->m_quid = takeFreshQuid();
    if (!icon.isNull())
        d->m_icon = icon;
    attachTo(parent, after);
}

QAStData::QAStData(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : d(std::make_unique<Private>())
{
    d->m_quid = takeFreshQuid();
    init(e, version);
    attachTo(parent, after);
}

QAStData::QAStData(QARes* res, QAStData* parent, QAStData* after)
    : d(std::make_unique<Private>())
{
    d->m_quid = takeFreshQuid();
    init(res);
    attachTo(parent, after);
}

QAStData::QAStData(QAStData* parent, QAStData* after) : d(std::make_unique<Private>())
{
    d->m_quid = takeFreshQuid();
    attachTo(parent, after);
}

QAStData::~QAStData()
{
    // Children go first, while this item is still whole: each detaches
    // itself from this list in its own destructor.
    while (d->m_first)
        delete d->m_first;
    if (d->m_parent)
        d->m_parent->detach(this);
}

void QAStData::attachTo(QAStData* parent, QAStData* after)
{
    if (parent)
        parent->addChild(this, after);
}

// --- attributes

QString QAStData::name() const
{
    return d->m_name.value();
}

QString QAStData::displayName() const
{
    return name();
}

void QAStData::setName(const QString& name)
{
    if (name == d->m_name.value())
        return;
    d->m_name.setValue(name);
    if (d->m_parent && d->m_parent->isAlphabeticallySorted())
        d->m_parent->sortChildren();
    emit renamed(name);
    emit attributeChanged(QStringLiteral("name"));
}

void QAStData::setQuid(quint32 quid)
{
    noteQuid(quid);
    if (quid == d->m_quid)
        return;
    d->m_quid = quid;
    emit attributeChanged(QStringLiteral("quid"));
}

void QAStData::renewQuids()
{
    makeDeferredChildren();
    d->m_quid = takeFreshQuid();
    for (QAStData* c = d->m_first; c; c = c->d->m_next)
        c->renewQuids();
}

quint32 QAStData::takeFreshQuid()
{
    Services& s = services();
    if (s.reservedNext < s.reservedEnd)
        return s.reservedNext++;
    return s.nextQuid++;
}

// --- deferred children

QAStData::DeferredChildren::~DeferredChildren() = default;

void QAStData::setDeferredChildren(std::unique_ptr<DeferredChildren> children, quint32 count)
{
    makeDeferredChildren();
    if (!children)
        return;
    Services& s = services();
    d->m_deferred = std::move(children);
    d->m_deferredQuid = s.nextQuid;
    d->m_deferredCount = count;
    s.nextQuid += count;
}

bool QAStData::hasDeferredChildren() const
{
    return d->m_deferred != nullptr;
}

void QAStData::makeDeferredChildren() const
{
    if (!d->m_deferred)
        return;
    // Taken first: making the children adds them through addChild.
    const std::unique_ptr<DeferredChildren> children = std::move(d->m_deferred);
    Services& s = services();
    const quint32 next = s.reservedNext;
    const quint32 end = s.reservedEnd;
    s.reservedNext = d->m_deferredQuid;
    s.reservedEnd = d->m_deferredQuid + d->m_deferredCount;
    children->make(const_cast<QAStData*>(this));
    s.reservedNext = next;
    s.reservedEnd = end;
}

void QAStData::noteQuid(quint32 quid)
{
    Services& s = services();
    if (quid >= s.nextQuid)
        s.nextQuid = quid + 1;
}

QPixmap QAStData::icon() const
{
    if (!d->m_icon && hasGui() && !d->m_iconFileName.value().isEmpty())
        d->m_icon = pixmap(d->m_iconFileName.value());
    return d->m_icon.value_or(QPixmap());
}

void QAStData::setIcon(const QPixmap& icon)
{
    d->m_icon = icon;
    emit iconChanged(icon);
}

void QAStData::setIconByFileName(const QString& fileName)
{
    d->m_iconFileName.setValue(fileName);
    d->m_icon.reset();
    if (hasGui())
        emit iconChanged(icon());
    emit iconFileNameChanged(fileName);
    emit attributeChanged(QStringLiteral("icon"));
}

template <typename T>
void QAStData::changeAttribute(QAStAttribute<T>& attribute, const T& value, const char* xmlName)
{
    const bool changed = !(attribute.value() == value);
    attribute.setValue(value);
    if (changed)
        emit attributeChanged(QLatin1String(xmlName));
}

template <typename T>
void QAStData::changeField(T& field, const T& value, const char* xmlName)
{
    if (field == value)
        return;
    field = value;
    emit attributeChanged(QLatin1String(xmlName));
}

void QAStData::setRenameable(bool renameable)
{
    changeAttribute(d->m_renameable, renameable, "renameable");
}

void QAStData::setDeletable(bool deletable)
{
    changeAttribute(d->m_deletable, deletable, "deletable");
}

void QAStData::setExtended(bool open)
{
    changeAttribute(d->m_open, open, "open");
}

void QAStData::setAlphabeticallySorted(bool sorted, bool recursive)
{
    changeAttribute(d->m_sorted, sorted, "sorted");
    if (sorted)
        sortChildren();
    if (recursive) {
        makeDeferredChildren();
        for (QAStData* c = d->m_first; c; c = c->d->m_next)
            c->setAlphabeticallySorted(sorted, true);
    }
}

void QAStData::setExecutionResult(int result)
{
    changeAttribute(d->m_executionResult, result, "executionResult");
}

void QAStData::setDuplicable(bool duplicable)
{
    changeField(d->m_duplicable, duplicable, "duplicable");
}

bool QAStData::isModified() const
{
    return d->m_modified;
}

void QAStData::setModified(bool modified)
{
    changeField(d->m_modified, modified, "modified");
}

// --- tree

QList<QAStData*> QAStData::childItems() const
{
    makeDeferredChildren();
    QList<QAStData*> items;
    items.reserve(d->m_childCount);
    for (QAStData* c = d->m_first; c; c = c->d->m_next)
        items.append(c);
    return items;
}

QAStData* QAStData::root() const
{
    const QAStData* item = this;
    while (item->d->m_parent)
        item = item->d->m_parent;
    return const_cast<QAStData*>(item);
}

QAStData* QAStData::projectItem() const
{
    for (const QAStData* item = this; item; item = item->d->m_parent) {
        if (item->asProject())
            return const_cast<QAStData*>(item);
    }
    return nullptr;
}

QAStData* QAStData::rootProjectItem() const
{
    const QAStData* outermost = nullptr;
    for (const QAStData* item = this; item; item = item->d->m_parent) {
        if (item->asProject())
            outermost = item;
    }
    return const_cast<QAStData*>(outermost);
}

QAStProject* QAStData::asProject() const
{
    return nullptr;
}

QAStProject* QAStData::project() const
{
    QAStData* item = projectItem();
    return item ? item->asProject() : nullptr;
}

QAStProject* QAStData::rootProject() const
{
    QAStData* item = rootProjectItem();
    return item ? item->asProject() : nullptr;
}

bool QAStData::isAncestorOf(const QAStData* item) const
{
    for (const QAStData* p = item ? item->d->m_parent : nullptr; p; p = p->d->m_parent) {
        if (p == this)
            return true;
    }
    return false;
}

void QAStData::addChild(QAStData* child, QAStData* after)
{
    if (!child || child == this || child->isAncestorOf(this))
        return;
    makeDeferredChildren();
    if (child->d->m_parent)
        child->remove();
    privAttach(child, after);
    childAddEvent(child);
    emit child->added();
    emit childAdded(child);
}

QAStData::KeepGivenPlace::KeepGivenPlace()
{
    ++services().keepGivenPlace;
}

QAStData::KeepGivenPlace::~KeepGivenPlace()
{
    --services().keepGivenPlace;
}

void QAStData::privAttach(QAStData* child, QAStData* after)
{
    if (isAlphabeticallySorted() && services().keepGivenPlace == 0)
        after = sortedPredecessor(child);
    else if (after && after->d->m_parent != this)
        after = nullptr;
    link(child, after);
    child->d->m_parent = this;
    child->QObject::setParent(this);
}

void QAStData::childAddEvent(QAStData*) {}

void QAStData::remove()
{
    QAStData* former = d->m_parent;
    if (!former)
        return;
    former->detach(this);
    emit removed();
    emit former->childRemoved(this);
}

void QAStData::deleteChildren()
{
    d->m_deferred.reset();
    while (QAStData* c = d->m_first) {
        c->remove();
        delete c;
    }
}

void QAStData::sortChildren()
{
    makeDeferredChildren();
    QList<QAStData*> items = childItems();
    std::stable_sort(items.begin(), items.end(), nameLess);
    d->m_first = d->m_last = nullptr;
    d->m_childCount = 0;
    for (QAStData* c : items) {
        c->d->m_previous = c->d->m_next = nullptr;
        link(c, d->m_last);
    }
}

void QAStData::link(QAStData* child, QAStData* after)
{
    // A child joins one list once, behind a sibling of this list.
    if (!SDK110_CHECK(!child->d->m_previous && !child->d->m_next && child != d->m_first))
        return;
    if (!SDK110_CHECK(!after || after->d->m_parent == this))
        after = d->m_last;
    child->d->m_previous = after;
    child->d->m_next = after ? after->d->m_next : d->m_first;
    if (child->d->m_next)
        child->d->m_next->d->m_previous = child;
    else
        d->m_last = child;
    if (after)
        after->d->m_next = child;
    else
        d->m_first = child;
    ++d->m_childCount;
    // Configurations inherit along the tree.
    QAPropertyStore::inheritanceChanged();
}

void QAStData::unlink(QAStData* child)
{
    // The sibling links of the list agree with the child's.
    if (!SDK110_CHECK(child->d->m_previous ? child->d->m_previous->d->m_next == child : d->m_first == child) ||
        !SDK110_CHECK(child->d->m_next ? child->d->m_next->d->m_previous == child : d->m_last == child))
        return;
    if (child->d->m_previous)
        child->d->m_previous->d->m_next = child->d->m_next;
    else
        d->m_first = child->d->m_next;
    if (child->d->m_next)
        child->d->m_next->d->m_previous = child->d->m_previous;
    else
        d->m_last = child->d->m_previous;
    child->d->m_next = child->d->m_previous = nullptr;
    --d->m_childCount;
    QAPropertyStore::inheritanceChanged();
}

void QAStData::detach(QAStData* child)
{
    if (!SDK110_CHECK(child->d->m_parent == this))
        return;
    unlink(child);
    child->d->m_parent = nullptr;
    child->QObject::setParent(nullptr);
}

QAStData* QAStData::sortedPredecessor(const QAStData* child) const
{
    QAStData* predecessor = nullptr;
    for (QAStData* c = d->m_first; c && !nameLess(child, c); c = c->d->m_next) {
        if (c != child)
            predecessor = c;
    }
    return predecessor;
}

QAStData* QAStData::parentOfClass(const char* className) const
{
    for (QAStData* p = d->m_parent; p; p = p->d->m_parent) {
        if (p->inherits(className))
            return p;
    }
    return nullptr;
}

QList<QAStData*> QAStData::parentsOfClass(const char* className) const
{
    QList<QAStData*> found;
    for (QAStData* p = d->m_parent; p; p = p->d->m_parent) {
        if (p->inherits(className))
            found.append(p);
    }
    return found;
}

QList<QAStData*> QAStData::childrenOfClass(const char* className, bool recursive) const
{
    QList<QAStData*> found;
    collectChildrenOfClass(className, recursive, found);
    return found;
}

void QAStData::collectChildrenOfClass(const char* className, bool recursive,
                                      QList<QAStData*>& found) const
{
    if (d->m_deferred && d->m_deferred->mayHold(className))
        makeDeferredChildren();
    for (QAStData* c = d->m_first; c; c = c->d->m_next) {
        if (c->inherits(className))
            found.append(c);
        if (recursive)
            c->collectChildrenOfClass(className, true, found);
    }
}

QAStData* QAStData::searchChildOfClass(const QString& name, const char* className,
                                       bool recursive) const
{
    if (d->m_deferred && d->m_deferred->mayHold(className))
        makeDeferredChildren();
    for (QAStData* c = d->m_first; c; c = c->d->m_next) {
        if (c->inherits(className) && c->name() == name)
            return c;
        if (recursive) {
            if (QAStData* found = c->searchChildOfClass(name, className, true))
                return found;
        }
    }
    return nullptr;
}

QAStData* QAStData::findNode(const QString& name) const
{
    if (this->name() == name)
        return const_cast<QAStData*>(this);
    makeDeferredChildren();
    for (QAStData* c = d->m_first; c; c = c->d->m_next) {
        if (QAStData* found = c->findNode(name))
            return found;
    }
    return nullptr;
}

// --- kinds' operations

QAPropertyGroup* QAStData::propertyGroup()
{
    return nullptr;
}

void QAStData::propertyModified(QAProperty*)
{
    setModified(true);
}

void QAStData::write(QTextStream& s, int indent) const
{
    QAXML::indent(s, indent);
    s << "<data>\n";
    const int inner = indent + 1;
    QAXML::toStream(s, "name", QAXML::stringToXMLValue(d->m_name.value()), inner);
    QAXML::toStream(s, "quid", QAXML::fromUInt(d->m_quid), inner);
    QAXML::toStream(s, "icon", QAXML::stringToXMLValue(d->m_iconFileName.value()), inner);
    QAXML::toStream(s, "renameable", QAXML::boolToXMLValue(isRenameable()), inner);
    QAXML::toStream(s, "deletable", QAXML::boolToXMLValue(isDeletable()), inner);
    QAXML::toStream(s, "open", QAXML::boolToXMLValue(isExtended()), inner);
    QAXML::toStream(s, "sorted", QAXML::boolToXMLValue(isAlphabeticallySorted()), inner);
    QAXML::toStream(s, "executionResult", QAXML::fromInt(executionResult()), inner);
    QAXML::indent(s, indent);
    s << "</data>\n";
}

QString QAStData::toString() const
{
    QString text;
    QTextStream s(&text);
    write(s, 0);
    s.flush();
    return text;
}

QString QAStData::environmentFileName() const
{
    return QString();
}

void QAStData::generateEnv(QTextStream& out)
{
    if (QAStPerlGen::generateEnv(out, this))
        QAStPerlGen::generatePluginVariables(out, qobject_cast<QAStNode*>(this));
}

void QAStData::createEnvironmentFile(QTextStream& out)
{
    QAStPerlGen::createEnvironmentFile(out, this);
}

// --- driver runs

QStringList QAStData::perlCommand()
{
    return QAInstall::perlCommand(installDir());
}

void QAStData::executePerlScript(const QString& script, const QString& workingDir,
                                 QTextStream* env, bool asynchronous, QAStData::Console console,
                                 QStringList* environment, const QStringList& arguments)
{
    if (isRunning())
        return;
    QStringList args = perlCommand();
    args << (QDir::isRelativePath(script)
                 ? scriptsDir() + QAInstall::separator() + script
                 : script);
    if (env) {
        *env << "\n1;\n";
        env->flush();
        QIODevice* device = env->device();
        env->setDevice(nullptr);
        if (device) {
            device->close();
            if (const auto* file = qobject_cast<const QFile*>(device))
                args << file->fileName();
        }
    }
    args << arguments;

    auto* process = new QAProcess(this);
    d->m_process = process;
    d->m_runConsole = console;
    connect(process, &QAProcess::stdoutReceived, this, &QAStData::charReceived);
    connect(process, &QAProcess::stderrReceived, this, &QAStData::charReceived);
    if (asynchronous)
        connect(process, &QAProcess::exited, this, &QAStData::processTerminated);
    emit perlScriptStarted();
    bool normalExit = false;
    int exitStatus = 0;
    if (!process->start(args, QDir(workingDir), normalExit, exitStatus, environment, asynchronous)) {
        displayMessage(console, QATr::project("%1: unable to start the command\n")
                                    .arg(args.constFirst()));
        delete process;
        perlScriptEnded(false);
        return;
    }
    if (!asynchronous) {
        process->deleteLater();
        perlScriptEnded(normalExit && exitStatus == 0);
    }
}

bool QAStData::isRunning() const
{
    return d->m_process && d->m_process->isRunning();
}

void QAStData::stop()
{
    if (d->m_process)
        d->m_process->kill();
}

void QAStData::charReceived(const QString& text)
{
    displayMessage(d->m_runConsole, text);
}

void QAStData::processTerminated(bool normalExit, int exitStatus)
{
    if (d->m_process)
        d->m_process->deleteLater();
    perlScriptEnded(normalExit && exitStatus == 0);
}

void QAStData::perlScriptEnded(bool succeeded)
{
    d->m_perlScriptSucceeded = succeeded;
    emit perlScriptTerminated();
}

QString QAStData::directory() const
{
    return d->m_parent ? d->m_parent->directory() : QString();
}

void QAStData::copy()
{
    if (isDuplicable() && hasGui())
        QGuiApplication::clipboard()->setText(toString());
}

void QAStData::cut()
{
    if (!isDuplicable() || !isDeletable())
        return;
    copy();
    del();
}

QAStData* QAStData::paste()
{
    QAStData* item = clipboardContentToData();
    if (!item)
        return nullptr;
    if (!acceptDrop(item)) {
        delete item;
        return nullptr;
    }
    addChild(item, last());
    undoManager()->add(new QAStDataUndoAction(QAStDataUndoAction::Added, item));
    return item;
}

bool QAStData::del()
{
    if (!isDeletable())
        return false;
    if (d->m_parent)
        undoManager()->add(new QAStDataUndoAction(QAStDataUndoAction::Removed, this));
    remove();
    deleteLater();
    return true;
}

bool QAStData::acceptDrop(QAStData*) const
{
    return false;
}

// --- edits of the user

bool QAStData::userAdd(QAStData* child, QAStData* after)
{
    if (!child)
        return false;
    if (child->d->m_parent)
        return userMove(child, this, after);
    addChild(child, after);
    if (child->d->m_parent != this)
        return false;
    undoManager()->add(new QAStDataUndoAction(QAStDataUndoAction::Added, child));
    return true;
}

bool QAStData::userMove(QAStData* item, QAStData* newParent, QAStData* after)
{
    if (!item || !newParent)
        return false;
    if (!item->d->m_parent)
        return newParent->userAdd(item, after);
    // The removal is taken at the old place, before the move.
    auto removal = std::make_unique<QAStDataUndoAction>(QAStDataUndoAction::Removed, item);
    newParent->addChild(item, after);
    if (item->d->m_parent != newParent)
        return false;
    undoManager()->add({removal.release(),
                        new QAStDataUndoAction(QAStDataUndoAction::Added, item)});
    return true;
}

QAStDataUndoActionManager* QAStData::undoManager()
{
    static QAStDataUndoActionManager manager;
    return &manager;
}

void QAStData::undo()
{
    undoManager()->undo();
}

void QAStData::redo()
{
    undoManager()->redo();
}

bool QAStData::isUndoAvailable()
{
    return undoManager()->hasUndoAction();
}

bool QAStData::isRedoAvailable()
{
    return undoManager()->hasRedoAction();
}

// --- reading

bool QAStData::checkTag(const QDomNode& node, const char* tag)
{
    const QString expected = QLatin1String(tag);
    if (node.isNull()) {
        appendLoadReport(tr("Unable to find tag %1\n").arg(expected));
        return false;
    }
    if (!node.isElement()) {
        appendLoadReport(tr("The xml tag %1 is not an element\n").arg(expected));
        return false;
    }
    const QString read = node.toElement().tagName();
    if (read != expected) {
        appendLoadReport(tr("Wait for tag %1 and read %2\n").arg(expected, read));
        return false;
    }
    return true;
}

bool QAStData::init(const QDomElement& e, int)
{
    d->m_valid = checkTag(e, "data");
    if (!d->m_valid)
        return false;

    const QDomElement nameElement = e.firstChildElement(QStringLiteral("name"));
    if (checkTag(nameElement, "name"))
        d->m_name.setValue(QAXML::domValue(nameElement));
    else
        d->m_valid = false;

    const QDomElement quidElement = e.firstChildElement(QStringLiteral("quid"));
    if (checkTag(quidElement, "quid")) {
        bool number = false;
        const uint quid = QAXML::toUInt(QAXML::domText(quidElement), &number);
        if (number)
            setQuid(quid);
        else
            reportBadQuid(QAXML::domText(quidElement));
    } else {
        d->m_valid = false;
    }

    const QDomElement icon = e.firstChildElement(QStringLiteral("icon"));
    if (!icon.isNull()) {
        d->m_iconFileName.setValue(QAXML::domValue(icon));
        d->m_icon.reset();
    }
    const auto readFlag = [&e](const char* tag, QAStBoolAttribute& flag) {
        const QDomElement f = e.firstChildElement(QLatin1String(tag));
        if (!f.isNull())
            flag.setValue(QAXML::toBool(QAXML::domText(f)));
    };
    readFlag("renameable", d->m_renameable);
    readFlag("deletable", d->m_deletable);
    readFlag("open", d->m_open);
    readFlag("sorted", d->m_sorted);
    const QDomElement result = e.firstChildElement(QStringLiteral("executionResult"));
    if (!result.isNull())
        d->m_executionResult.setValue(QAXML::toInt(QAXML::domText(result)));
    return d->m_valid;
}

bool QAStData::init(QARes* res)
{
    d->m_valid = res != nullptr;
    if (!res)
        return false;
    readStrVal(res, QStringLiteral("name"), d->m_name);
    QAStIntAttribute quid;
    if (readIntVal(res, QStringLiteral("quid"), quid)) {
        if (quid.value() >= 0)
            setQuid(quint32(quid.value()));
        else
            reportBadQuid(QString::number(quid.value()));
    }
    if (readStrVal(res, QStringLiteral("icon"), d->m_iconFileName))
        d->m_icon.reset();
    readBoolVal(res, QStringLiteral("renameable"), d->m_renameable);
    readBoolVal(res, QStringLiteral("deletable"), d->m_deletable);
    readBoolVal(res, QStringLiteral("open"), d->m_open);
    readBoolVal(res, QStringLiteral("sorted"), d->m_sorted);
    readIntVal(res, QStringLiteral("executionResult"), d->m_executionResult);
    return true;
}

void QAStData::initChildren(const QDomElement& e, int version, const QStringList& allowedClasses)
{
    const KeepGivenPlace keepFileOrder;
    QAStData* lastCreated = nullptr;
    for (QDomElement child = e.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        const QString tag = child.tagName();
        QAStData* item = QAStDataFactory::create(child, version, this, lastCreated);
        if (!item) {
            reportIgnoredTag(tr("No plugin found for feature \"%1\"\n").arg(tag), tag);
            continue;
        }
        if (!allowedClasses.isEmpty() && !inheritsAny(item, allowedClasses)) {
            reportIgnoredTag(tr("%1 bad place\n").arg(tag), tag);
            item->remove();
            delete item;
            continue;
        }
        if (item->d->m_parent != this)
            addChild(item, lastCreated);
        lastCreated = item;
    }
}

void QAStData::reportBadQuid(const QString& text)
{
    // The item keeps the fresh quid it was made with.
    appendLoadReport(tr("The quid \"%1\" of %2 is not a number: it is given the quid %3\n")
                         .arg(text, d->m_name.value())
                         .arg(d->m_quid));
}

void QAStData::reportIgnoredTag(const QString& reportLine, const QString& tag)
{
    appendLoadReport(reportLine);
    displayMessage(MessageConsole, tr("Tag ignored in the group: %1").arg(tag));
}

bool QAStData::readStrVal(const QARes* res, const QString& key, QAStStringAttribute& value)
{
    const QARes* r = res ? res->find(key) : nullptr;
    if (!r || !r->isString())
        return false;
    value.setValue(r->toResString()->value());
    return true;
}

bool QAStData::readBoolVal(const QARes* res, const QString& key, QAStBoolAttribute& value)
{
    const QARes* r = res ? res->find(key) : nullptr;
    if (!r)
        return false;
    if (r->isBoolean()) {
        value.setValue(r->toResBoolean()->value());
        return true;
    }
    bool ok = false;
    const bool b = r->isString() ? QAXML::toBool(r->toResString()->value(), &ok) : false;
    if (ok)
        value.setValue(b);
    return ok;
}

bool QAStData::readIntVal(const QARes* res, const QString& key, QAStIntAttribute& value)
{
    const QARes* r = res ? res->find(key) : nullptr;
    if (!r || !r->isInt())
        return false;
    value.setValue(int(r->toResInt()->value()));
    return true;
}

bool QAStData::readStrListVal(const QARes* res, const QString& key, QAStStringListAttribute& value)
{
    const QARes* r = res ? res->find(key) : nullptr;
    if (!r || !r->isListOf(QARes::String))
        return false;
    value.setValue(r->toResList()->strings());
    return true;
}

bool QAStData::readStrMapVal(const QARes* res, const QString& key, QAStStringMapAttribute& value)
{
    const QARes* r = res ? res->find(key) : nullptr;
    if (!r || !r->isListOf(QARes::String))
        return false;
    QMap<QString, QString> map;
    for (const QString& entry : r->toResList()->strings()) {
        const int eq = entry.indexOf(QLatin1Char('='));
        map.insert(entry.left(eq), eq < 0 ? QString() : entry.mid(eq + 1));
    }
    value.setValue(map);
    return true;
}

// --- load report

QString QAStData::loadReport()
{
    return services().loadReport;
}

void QAStData::clearLoadReport()
{
    services().loadReport.clear();
}

void QAStData::appendLoadReport(const QString& text)
{
    services().loadReport += text;
}

// --- static services

void QAStData::initialize(StudioInterface* host, QARes* preferenceResources)
{
    QAHost::setInterface(host);
    services().preferenceResources = preferenceResources;
    if (preferenceResources)
        preferences()->load(preferenceResources);
}

StudioInterface* QAStData::studioIFace()
{
    return QAHost::studioInterface();
}

QARes* QAStData::preferenceResources()
{
    return services().preferenceResources;
}

QMainWindow* QAStData::mainWindow()
{
    return QAHost::mainWindow();
}

QAStProjectPref* QAStData::preferences()
{
    return QAStProjectPref::instance();
}

void QAStData::displayMessage(QAStData::Console console, const QString& text)
{
    QAHost::displayMessage(console, text);
}

void QAStData::clearMessage(QAStData::Console console)
{
    QAHost::clearMessage(console);
}

QString QAStData::installDir()
{
    return QAInstall::installDir();
}

QString QAStData::binaryDir()
{
    return QAInstall::binaryDir(installDir());
}

QString QAStData::scriptsDir()
{
    return installPath("scripts");
}

QString QAStData::helpDir()
{
    return installPath("doc");
}

QString QAStData::targetDir()
{
    return installPath("targets");
}

QString QAStData::userName()
{
    const QString user = qEnvironmentVariable("USER");
    return user.isEmpty() ? qEnvironmentVariable("USERNAME") : user;
}

int QAStData::port()
{
    StudioInterface* host = studioIFace();
    return host ? host->studioPort() : 0;
}

QPixmap QAStData::pixmap(const QString& fileName)
{
    if (!hasGui() || fileName.isEmpty())
        return QPixmap();
    const QStringList candidates = QFileInfo(fileName).isAbsolute()
        ? QStringList{fileName}
        : QStringList{installDir() + QLatin1String("/lib/pixmaps/") + fileName,
                      QLatin1String(":/pixmaps/") + fileName};
    for (const QString& path : candidates) {
        if (QFileInfo::exists(path))
            return QPixmap(path);
    }
    return QPixmap();
}

void QAStData::editFile(const QString& file, int line)
{
    QAHost::editFile(file, line);
}

int QAStData::getViewerIdByName(const QString& name)
{
    StudioInterface* host = studioIFace();
    return host ? host->getViewerIdByName(name) : -1;
}

QString QAStData::getViewerNameById(int id)
{
    StudioInterface* host = studioIFace();
    return host ? host->getViewerNameById(id) : QString();
}

QString QAStData::determineRelativePathFile(const QString& dir, const QString& file)
{
    if (file.isEmpty() || dir.isEmpty() || QDir::isRelativePath(file))
        return file;
    return QDir(dir).relativeFilePath(file);
}

QString QAStData::determineAbsolutePathFile(const QString& dir, const QString& file)
{
    if (file.isEmpty())
        return file;
    return QDir::cleanPath(QDir::isAbsolutePath(file) ? file : QDir(dir).absoluteFilePath(file));
}

QStringList QAStData::determineRelativePathFiles(const QString& dir, const QStringList& files)
{
    QStringList result;
    result.reserve(files.size());
    for (const QString& f : files)
        result << determineRelativePathFile(dir, f);
    return result;
}

QStringList QAStData::determineAbsolutePathFiles(const QString& dir, const QStringList& files)
{
    QStringList result;
    result.reserve(files.size());
    for (const QString& f : files)
        result << determineAbsolutePathFile(dir, f);
    return result;
}

QAStData* QAStData::clipboardContentToData()
{
    if (!hasGui())
        return nullptr;
    return stringContentToData(QGuiApplication::clipboard()->text());
}

QAStData* QAStData::stringContentToData(const QString& text)
{
    QDomDocument doc(QStringLiteral("Clipboard"));
    if (!doc.setContent(text))
        return nullptr;
    QAStData* item = QAStDataFactory::create(doc.documentElement(), 1, nullptr, nullptr);
    if (item)
        item->renewQuids();
    return item;
}

quint32 QAStData::quid() const
{
    return d->m_quid;
}

QString QAStData::iconFileName() const
{
    return d->m_iconFileName.value();
}

bool QAStData::isRenameable() const
{
    return d->m_renameable.value();
}

bool QAStData::isDeletable() const
{
    return d->m_deletable.value();
}

bool QAStData::isExtended() const
{
    return d->m_open.value();
}

bool QAStData::isAlphabeticallySorted() const
{
    return d->m_sorted.value();
}

int QAStData::executionResult() const
{
    return d->m_executionResult.value();
}

bool QAStData::isDuplicable() const
{
    return d->m_duplicable;
}

bool QAStData::isValid() const
{
    return d->m_valid;
}

QAStData* QAStData::parent() const
{
    return d->m_parent;
}

QAStData* QAStData::child() const
{
    makeDeferredChildren();
    return d->m_first;
}

QAStData* QAStData::next() const
{
    return d->m_next;
}

QAStData* QAStData::previous() const
{
    return d->m_previous;
}

QAStData* QAStData::last() const
{
    makeDeferredChildren();
    return d->m_last;
}

int QAStData::childCount() const
{
    makeDeferredChildren();
    return d->m_childCount;
}

bool QAStData::perlScriptSucceeded() const
{
    return d->m_perlScriptSucceeded;
}

void QAStData::setValid(bool valid)
{
    d->m_valid = valid;
}
