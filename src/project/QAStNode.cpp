#include "QAStNode.h"
#include "QAStNode_p.h"

#include "QAFileUtil.h"
#include "QAPropertyMapGroup.h"
#include "QAStConfiguration.h"
#include "QAStMenus.h"
#include "QAStNodeKinds.h"
#include "QAStPerlGen.h"
#include "QAStProject.h"
#include "QAStPropertyFilters.h"
#include "QAStTargetPackage.h"
#include "QATr.h"

#include <QCoreApplication>
#include <QDir>
#include <QDomElement>
#include <QFile>
#include <QHash>
#include <QTextStream>

#include <algorithm>
#include <utility>

namespace {

// A value read from the file stands for a state only when it names one.
bool isState(int value)
{
    return value >= QAStNode::Selected && value <= QAStNode::UnSelectedReported;
}

}

// --- construction

QAStNode::QAStNode(const QString& name, const QPixmap& icon, QAStData* parent, QAStData* after)
    : QAStData(name, icon, parent, after), d(std::make_unique<Private>())
{
}

QAStNode::QAStNode(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : QAStData(parent, after), d(std::make_unique<Private>())
{
    init(e, version);
}

QAStNode::QAStNode(QARes* res, QAStData* parent, QAStData* after)
    : QAStData(res, parent, after), d(std::make_unique<Private>())
{
}

QAStNode::QAStNode(QAStData* parent, QAStData* after)
    : QAStData(parent, after), d(std::make_unique<Private>())
{
}

QAStNode::~QAStNode()
{
    // Emptied first, so that no look-up made while they go finds them.
    qDeleteAll(std::exchange(d->m_configurations, {}));
}

// --- configurations

QStringList QAStNode::configurations() const
{
    QStringList names;
    names.reserve(d->m_configurations.size());
    for (const QAStConfiguration* c : d->m_configurations)
        names.append(c->name());
    return names;
}

QAStConfiguration* QAStNode::configuration(const QString& name) const
{
    for (QAStConfiguration* c : d->m_configurations) {
        if (c->name() == name)
            return c;
    }
    return nullptr;
}

void QAStNode::addConfiguration(QAStConfiguration* c)
{
    if (!c || d->m_configurations.contains(c))
        return;
    if (c->m_node)
        c->m_node->d->m_configurations.removeOne(c);
    delete takeConfiguration(c->name());
    c->m_node = this;
    d->m_configurations.append(c);
    QAPropertyStore::inheritanceChanged();
}

QAStConfiguration* QAStNode::addConfiguration(const QString& name)
{
    if (QAStConfiguration* own = configuration(name))
        return own;
    auto* c = new QAStConfiguration(name, this);
    addConfiguration(c);
    return c;
}

bool QAStNode::removeConfiguration(const QString& name)
{
    QAStConfiguration* c = takeConfiguration(name);
    delete c;
    return c != nullptr;
}

QAStConfiguration* QAStNode::takeConfiguration(const QString& name)
{
    QAStConfiguration* c = configuration(name);
    if (c) {
        d->m_configurations.removeOne(c);
        QAPropertyStore::inheritanceChanged();
    }
    return c;
}

void QAStNode::setCurrentConfigurationName(const QString& name)
{
    d->m_currentConfigurationName = name;
}

QAStConfiguration* QAStNode::currentConfiguration() const
{
    return configuration(d->m_currentConfigurationName);
}

QAStConfiguration* QAStNode::inheritConfiguration(const QAStConfiguration* c) const
{
    // By identity: names are unique among a node's configurations.
    if (!c || !d->m_configurations.contains(const_cast<QAStConfiguration*>(c)))
        return nullptr;
    const QAStNode* parentNode = qobject_cast<const QAStNode*>(parent());
    return parentNode ? parentNode->configuration(c->name()) : nullptr;
}

QString QAStNode::kindId() const
{
    return QString::fromLatin1(metaObject()->className());
}

QString QAStNode::environmentFileName() const
{
    QString safeName = name();
    for (QChar& c : safeName) {
        if (!(c.isLetterOrNumber() && c.unicode() < 128) && c != u'-' && c != u'_' && c != u'.')
            c = u'_';
    }
    const QString dir = directory();
    return (dir.isEmpty() ? QString() : dir + u'/') + QStringLiteral(".korvil/") + safeName +
           u'-' + QString::number(quid()) + QStringLiteral(".pl");
}

// --- objects of a build

bool QAStNode::linksObjects() const
{
    return false;
}

QString QAStNode::objectDirectory() const
{
    QString safeName = name();
    for (QChar& c : safeName) {
        if (c == u'/' || c == u'\\' || c == u':' || c.unicode() < 0x20)
            c = u'_';
    }
    const QString intdir = QAStPerlGen::settingPath(currentConfiguration(), QStringLiteral("intdir"));
    return QAFileUtil::cleanDirPath(
        QAStPerlGen::joinPath(intdir.isEmpty() ? QStringLiteral(".") : intdir,
                              safeName + QStringLiteral(".objects")));
}

QString QAStNode::objectFileFor(const QString& source) const
{
    const QAStProject* p = project();
    const QString base = p ? p->directory() : directory();
    QString relative = QAFileUtil::cleanDirPath(source);
    if (!base.isEmpty())
        relative = QAFileUtil::absPathToRelative(base, relative);
    QStringList steps = relative.split(u'/', Qt::SkipEmptyParts);
    for (QString& step : steps) {
        if (step == QLatin1String(".."))
            step = QStringLiteral("__");
        else if (step.endsWith(u':'))
            step.chop(1);
    }
    if (!QDir::isRelativePath(relative))
        steps.prepend(QStringLiteral("_"));
    // The setting, else the target package's, else ".o", as the drivers
    // take it.
    const QAStConfiguration* c = currentConfiguration();
    QString extension = QAStPerlGen::settingValue(c, QStringLiteral("objectExt")).toString();
    if (extension.isEmpty()) {
        const QAStTargetPackage* package = c ? c->targetPackage() : nullptr;
        extension = package ? package->objExtension() : QString();
    }
    if (extension.isEmpty())
        extension = QStringLiteral(".o");
    return objectDirectory() + u'/' + steps.join(u'/') + extension;
}

QStringList QAStNode::libraryOutputs() const
{
    return outputFiles(QStringLiteral("LIB"));
}

// --- state and run data

void QAStNode::setState(State state)
{
    if (state == d->m_state)
        return;
    d->m_state = state;
    emit stateChanged(state);
}

void QAStNode::setBackground(bool background)
{
    d->m_background = background;
}

QStringList QAStNode::outputFiles(const QString& filetype) const
{
    for (const OutputFile& file : d->m_outputFiles) {
        if (file.filetype == filetype)
            return file.filepaths;
    }
    return QStringList();
}

void QAStNode::addOutputFile(const QString& filetype, const QStringList& filepaths)
{
    auto own =
        std::find_if(d->m_outputFiles.begin(), d->m_outputFiles.end(),
                     [&filetype](const OutputFile& file) { return file.filetype == filetype; });
    if (own == d->m_outputFiles.end()) {
        d->m_outputFiles.append(OutputFile{filetype, QStringList()});
        own = d->m_outputFiles.end() - 1;
    }
    for (const QString& path : filepaths) {
        if (!own->filepaths.contains(path))
            own->filepaths.append(path);
    }
}

void QAStNode::removeOutputFiles(const QString& filetype)
{
    d->m_outputFiles.removeIf(
        [&filetype](const OutputFile& file) { return file.filetype == filetype; });
}

void QAStNode::setPerlScriptBeforeChild(const QString& script)
{
    d->m_perlScriptBeforeChild = script;
}

void QAStNode::setPerlScriptAfterChild(const QString& script)
{
    d->m_perlScriptAfterChild = script;
}

// --- writing

void QAStNode::write(QTextStream& s, int indent) const
{
    openElement(s, indent, "node");
    const int inner = indent + 1;
    QAStData::write(s, inner);
    writeText(s, inner, "current_configuration", d->m_currentConfigurationName);
    writeInt(s, inner, "state", d->m_state);
    writeBool(s, inner, "background", d->m_background);
    writeOutputFiles(s, inner);
    writeText(s, inner, "perlscript_before_child", d->m_perlScriptBeforeChild);
    writeText(s, inner, "perlscript_after_child", d->m_perlScriptAfterChild);
    writeConfigurationList(s, inner);
    closeElement(s, indent, "node");
}

void QAStNode::writeOutputFiles(QTextStream& s, int indent) const
{
    openElement(s, indent, "outfilename_list");
    for (const OutputFile& file : d->m_outputFiles) {
        openElement(s, indent + 1, "outfilename");
        writeText(s, indent + 2, "filetype", file.filetype);
        QAXML::toStream(s, "filepath", QAXML::stringListToXMLValue(file.filepaths), indent + 2);
        closeElement(s, indent + 1, "outfilename");
    }
    closeElement(s, indent, "outfilename_list");
}

void QAStNode::writeConfigurationList(QTextStream& s, int indent) const
{
    openElement(s, indent, "configuration_list");
    for (const QAStConfiguration* c : d->m_configurations)
        c->write(s, indent + 1);
    closeElement(s, indent, "configuration_list");
}

// --- reading

bool QAStNode::init(const QDomElement& nodeElement, int version)
{
    if (!checkElement(nodeElement, "node"))
        return false;
    if (!QAStData::init(innerBlock(nodeElement, "data"), version))
        return false;
    d->m_currentConfigurationName = readText(nodeElement, "current_configuration");
    const int state = readInt(nodeElement, "state", Selected);
    d->m_state = isState(state) ? State(state) : Selected;
    d->m_background = readBool(nodeElement, "background", false);
    initOutputFiles(field(nodeElement, "outfilename_list"));
    d->m_perlScriptBeforeChild = readText(nodeElement, "perlscript_before_child");
    d->m_perlScriptAfterChild = readText(nodeElement, "perlscript_after_child");
    initConfigurationList(field(nodeElement, "configuration_list"), version);
    return isValid();
}

void QAStNode::initOutputFiles(const QDomElement& listElement)
{
    const QString fileTag = QStringLiteral("outfilename");
    for (QDomElement file = listElement.firstChildElement(fileTag); !file.isNull();
         file = file.nextSiblingElement(fileTag)) {
        const QString filetype = readText(file, "filetype");
        addOutputFile(filetype, QAXML::domValueList(field(file, "filepath")));
    }
}

void QAStNode::initConfigurationList(const QDomElement& listElement, int version)
{
    const QString configurationTag = QStringLiteral("configuration");
    for (QDomElement e = listElement.firstChildElement(configurationTag); !e.isNull();
         e = e.nextSiblingElement(configurationTag)) {
        auto* c = new QAStConfiguration(QString(), this);
        if (c->init(e, version))
            addConfiguration(c);
        else
            delete c;
    }
}

// --- helpers of the kinds' blocks

bool QAStNode::checkElement(const QDomElement& e, const char* tag)
{
    if (checkTag(e, tag))
        return true;
    setValid(false);
    return false;
}

void QAStNode::openElement(QTextStream& s, int indent, const char* tag)
{
    QAXML::indent(s, indent);
    s << '<' << tag << ">\n";
}

void QAStNode::closeElement(QTextStream& s, int indent, const char* tag)
{
    QAXML::indent(s, indent);
    s << "</" << tag << ">\n";
}

void QAStNode::writeText(QTextStream& s, int indent, const char* tag, const QString& text)
{
    QAXML::toStream(s, tag, QAXML::stringToXMLValue(text), indent);
}

void QAStNode::writeBool(QTextStream& s, int indent, const char* tag, bool value)
{
    QAXML::toStream(s, tag, QAXML::boolToXMLValue(value), indent);
}

void QAStNode::writeInt(QTextStream& s, int indent, const char* tag, int value)
{
    QAXML::toStream(s, tag, QAXML::fromInt(value), indent);
}

void QAStNode::writeTextList(QTextStream& s, int indent, const char* listTag, const char* itemTag,
                             const QStringList& texts)
{
    openElement(s, indent, listTag);
    for (const QString& text : texts)
        writeText(s, indent + 1, itemTag, text);
    closeElement(s, indent, listTag);
}

QDomElement QAStNode::field(const QDomElement& block, const char* tag)
{
    const QDomElement e = block.firstChildElement(QLatin1String(tag));
    checkTag(e, tag);
    return e;
}

QDomElement QAStNode::innerBlock(const QDomElement& block, const char* tag)
{
    return block.firstChildElement(QLatin1String(tag));
}

QString QAStNode::readText(const QDomElement& block, const char* tag, const QString& fallback)
{
    const QDomElement e = field(block, tag);
    return e.isNull() ? fallback : QAXML::domValue(e);
}

bool QAStNode::readBool(const QDomElement& block, const char* tag, bool fallback)
{
    bool ok = false;
    const bool value = QAXML::toBool(QAXML::domText(field(block, tag)), &ok);
    return ok ? value : fallback;
}

int QAStNode::readInt(const QDomElement& block, const char* tag, int fallback)
{
    bool ok = false;
    const int value = QAXML::toInt(QAXML::domText(field(block, tag)), &ok);
    return ok ? value : fallback;
}

QStringList QAStNode::readTextList(const QDomElement& block, const char* listTag,
                                   const char* itemTag)
{
    QStringList texts;
    const QString item = QLatin1String(itemTag);
    const QDomElement list = field(block, listTag);
    for (QDomElement e = list.firstChildElement(item); !e.isNull(); e = e.nextSiblingElement(item))
        texts.append(QAXML::domValue(e));
    return texts;
}

void QAStNode::writeChildList(QTextStream& s, int indent, const char* tag) const
{
    openElement(s, indent, tag);
    for (const QAStData* c = child(); c; c = c->next())
        c->write(s, indent + 1);
    closeElement(s, indent, tag);
}

void QAStNode::initChildList(const QDomElement& block, const char* tag, int version)
{
    const QDomElement list = field(block, tag);
    if (!list.isNull())
        initChildren(list, version, allowedChildClasses());
}

// --- children by kind

QStringList QAStNode::allowedChildClasses() const
{
    const QAStNodeKind* kind = QAStNodeKind::of(metaObject());
    return kind ? kind->childClasses() : QStringList();
}

bool QAStNode::acceptDrop(QAStData* item) const
{
    if (!item || item == this || item->isAncestorOf(this) || !qobject_cast<const QAStNode*>(item))
        return false;
    const QStringList classes = allowedChildClasses();
    return std::any_of(classes.cbegin(), classes.cend(), [item](const QString& className) {
        return item->inherits(className.toLatin1().constData());
    });
}

QStringList QAStNode::addableChildKinds() const
{
    const QAStNodeKind* kind = QAStNodeKind::of(metaObject());
    return kind ? kind->addableChildren() : QStringList();
}

QAStNode* QAStNode::addNewChild(const QString& tag)
{
    if (!addableChildKinds().contains(tag))
        return nullptr;
    // Made detached and added as the user adds, so that it is one undo entry.
    QAStNode* fresh = createNode(tag, freshChildName(tag), nullptr, nullptr);
    if (!fresh)
        return nullptr;
    for (const QString& name : configurations())
        fresh->addConfiguration(name);
    fresh->setCurrentConfigurationName(currentConfigurationName());
    if (!userAdd(fresh, last())) {
        delete fresh;
        return nullptr;
    }
    return fresh;
}

QString QAStNode::freshChildName(const QString& tag) const
{
    const QString label = kindLabel(tag);
    const QAStData* top = root();
    QString name = label;
    for (int n = 2; top->findNode(name); ++n)
        name = label + QLatin1Char(' ') + QString::number(n);
    return name;
}

QMenu* QAStNode::addChildPopupMenu(QWidget* parent)
{
    return QAStMenus::addChildMenu(this, parent);
}

QMenu* QAStNode::popupMenu(QWidget* parent)
{
    return QAStMenus::nodeMenu(this, parent);
}

QString QAStNode::kindLabel(const QString& tag)
{
    const QAStNodeKind* kind = QAStNodeKind::byName(tag);
    if (!kind || !kind->label)
        return tag;
    return QATr::project(kind->label);
}

QAStNode* QAStNode::createNode(const QString& tag, const QString& name, QAStData* parent,
                               QAStData* after)
{
    const QAStNodeKind* kind = QAStNodeKind::byName(tag);
    return kind && kind->make ? kind->make(name, parent, after) : nullptr;
}

// --- property sheet

unsigned int QAStNode::propertyKind() const
{
    const QAStNodeKind* kind = QAStNodeKind::of(metaObject());
    return kind ? kind->propertyKind : 0;
}

unsigned int QAStNode::propertyContext() const
{
    const QAStConfiguration* c = currentConfiguration();
    const unsigned int language = c ? unsigned(c->languageType()) : QAStPropertyFilters::LanguageC;
    return language | propertyKind() | QAStPropertyFilters::host();
}

QList<QAProperty*> QAStNode::visibleSettings(const QAPropertyGroup* group) const
{
    if (!group)
        group = QAStConfiguration::propertyDescriptor();
    if (!group)
        return {};
    return QAStPropertyFilters::visibleChildren(group, propertyContext());
}

// --- accessors

const QList<QAStConfiguration*>& QAStNode::configurationList() const
{
    return d->m_configurations;
}

QString QAStNode::currentConfigurationName() const
{
    return d->m_currentConfigurationName;
}

QAStNode::State QAStNode::state() const
{
    return d->m_state;
}

bool QAStNode::isSelected() const
{
    return d->m_state == Selected;
}

bool QAStNode::isUnSelected() const
{
    return d->m_state != Selected;
}

bool QAStNode::provideReports() const
{
    return d->m_state != UnSelected;
}

bool QAStNode::background() const
{
    return d->m_background;
}

const QList<QAStNode::OutputFile>& QAStNode::outputFiles() const
{
    return d->m_outputFiles;
}

QString QAStNode::perlScriptBeforeChild() const
{
    return d->m_perlScriptBeforeChild;
}

QString QAStNode::perlScriptAfterChild() const
{
    return d->m_perlScriptAfterChild;
}

bool QAStNode::walkSucceeded() const
{
    return d->m_walkSucceeded;
}

QAStNode* QAStNode::buildExecuteChildNode() const
{
    return d->m_walkChild;
}

bool QAStNode::isWalking() const
{
    return d->m_walking;
}
