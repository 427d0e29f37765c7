#include "QAStConfiguration.h"

#include "QAILogMonitor.h"
#include "QAInstall.h"
#include "QAPropertyMapGroup.h"
#include "QAPropertyMapLoader.h"
#include "QAPropertySerializer.h"
#include "QARes.h"
#include "QAStAnalyseMacro.h"
#include "QAStData.h"
#include "QAStNode.h"
#include "QAStProject.h"
#include "QAStPropertyFilters.h"
#include "QAStTargetPackage.h"
#include "QAStTargetPackageList.h"
#include "QAXML.h"

#include <QDomElement>
#include <QHash>
#include <QSet>
#include <QTextStream>

#include <memory>

namespace {

constexpr QLatin1String nameKey("name");
constexpr QLatin1String targetPathKey("targetPath");
constexpr QLatin1String sourceLanguageKey("sourceLanguage");
constexpr QLatin1String executionFlagKey("executionFlag");

// The descriptor shared by every configuration, whether loading it was
// tried, and the keys it describes.
struct SharedDescriptor {
    std::unique_ptr<QAPropertyMapGroup> tree;
    bool tried = false;
    QSet<QString> keys;
};

SharedDescriptor& shared()
{
    static SharedDescriptor descriptor;
    return descriptor;
}

void collectKeys(const QAPropertyGroup& group, QSet<QString>& keys)
{
    for (const QAProperty* child : group.children()) {
        if (child->isGroup())
            collectKeys(*static_cast<const QAPropertyGroup*>(child), keys);
        else
            keys.insert(child->tag());
    }
}

// The descriptor loader's messages, shown on the message console.
class MessageConsoleLog : public QAILogMonitor {
public:
    void log(const QString& message) override
    {
        QAStData::displayMessage(QAStData::MessageConsole, message);
    }
};

// The settings a target package gives a configuration, by key.
struct PackageText {
    const char* key;
    QString (QAStTargetPackage::*value)() const;
};
struct PackageList {
    const char* key;
    QStringList (QAStTargetPackage::*value)() const;
};

const PackageText packageTexts[] = {
    {"targetPath", &QAStTargetPackage::directory},
    {"sourceLanguage", &QAStTargetPackage::language},
    {"sourceExt", &QAStTargetPackage::srcExtension},
    {"objectExt", &QAStTargetPackage::objExtension},
    {"binaryExt", &QAStTargetPackage::exeExtension},
    {"libraryStaticExt", &QAStTargetPackage::libExtension},
    {"libraryDynamicExt", &QAStTargetPackage::dllExtension},
    {"cppFlags", &QAStTargetPackage::cppFlags},
    {"cflags", &QAStTargetPackage::cFlags},
    {"ldflags", &QAStTargetPackage::ldFlags},
};

const PackageList packageLists[] = {
    {"ge_incdir", &QAStTargetPackage::includePaths},
    {"ge_libdir", &QAStTargetPackage::libraryPaths},
    {"javaBootClasspath", &QAStTargetPackage::bootClassPath},
};

const QAPropertyGroup* asGroup(const QAProperty* property)
{
    return property->isGroup() ? static_cast<const QAPropertyGroup*>(property) : nullptr;
}

// Sets every leaf that has an initial value through its own binding, so
// the value is stored in the form the leaf's kind keeps.
void setInitialValues(const QAPropertyGroup& group)
{
    for (QAProperty* child : group.children()) {
        if (const QAPropertyGroup* subGroup = asGroup(child))
            setInitialValues(*subGroup);
        else if (child->hasInitValue())
            child->setValue(child->initValue());
    }
}

void collectPerlVariables(const QAPropertyGroup& group, QList<QAProperty*>& found)
{
    for (QAProperty* child : group.children()) {
        if (const QAPropertyGroup* subGroup = asGroup(child))
            collectPerlVariables(*subGroup, found);
        else if (!child->perlVarName().isEmpty())
            found.append(child);
    }
}

}

QAStConfiguration::QAStConfiguration(const QString& name, QAStNode* node)
    : m_node(node)
{
    setName(name);
}

QAStConfiguration& QAStConfiguration::operator=(const QAStConfiguration& other)
{
    if (this != &other) {
        const QString ownName = name();
        QAPropertyStore::operator=(other);
        m_keptValues = other.m_keptValues;
        setName(ownName);
    }
    return *this;
}

QAStConfiguration::~QAStConfiguration()
{
    QAPropertyMapGroup* descriptor = propertyDescriptor();
    if (descriptor && descriptor->propertyStore() == this)
        descriptor->setPropertyStore(nullptr);
}

QAPropertyStore* QAStConfiguration::inheritOf() const
{
    return m_node ? m_node->inheritConfiguration(this) : nullptr;
}

QAStNode* QAStConfiguration::node() const
{
    return m_node;
}

QString QAStConfiguration::name() const
{
    // Names are asked at every step of an inheritance look-up.
    if (m_nameRevision != revision()) {
        m_name = localProperty(nameKey).toString();
        m_nameRevision = revision();
    }
    return m_name;
}

void QAStConfiguration::setName(const QString& name)
{
    setProperty(nameKey, name);
}

// --- the descriptor

QAPropertyMapGroup* QAStConfiguration::boundDescriptor() const
{
    QAPropertyMapGroup* descriptor = propertyDescriptor();
    // Binding points the shared tree at this store; values are only read
    // through it here.
    if (descriptor)
        descriptor->setPropertyStore(const_cast<QAStConfiguration*>(this));
    return descriptor;
}

void QAStConfiguration::write(QTextStream& s, int indent) const
{
    QAXML::indent(s, indent);
    s << "<configuration>\n";
    QAXML::toStream(s, "name", QAXML::stringToXMLValue(name()), indent + 1);
    if (QAPropertyMapGroup* descriptor = boundDescriptor())
        QAPropertySerializer::write(descriptor->propertyStore(), descriptor, s, indent + 1);
    for (const auto& [key, text] : m_keptValues) {
        QAXML::indent(s, indent + 1);
        s << '<' << key << '>' << text << "</" << key << ">\n";
    }
    QAXML::indent(s, indent);
    s << "</configuration>\n";
}

QList<QAProperty*> QAStConfiguration::perlVariables() const
{
    QList<QAProperty*> found;
    if (const QAPropertyMapGroup* descriptor = boundDescriptor())
        collectPerlVariables(*descriptor, found);
    return found;
}

// --- the target package and the language

QString QAStConfiguration::targetPackagePath() const
{
    QString path = property(targetPathKey).toString();
    if (path.isEmpty())
        return path;
    path = QAStAnalyseMacro::analyse(path, m_node.data(), QStringLiteral("Prompt Dialog"));
    if (property(QStringLiteral("targetPathAsRelative")).toBool() && m_node) {
        if (const QAStProject* project = m_node->project())
            path = QAStData::determineAbsolutePathFile(project->directory(), path);
    }
    return path;
}

QAStTargetPackage* QAStConfiguration::targetPackage() const
{
    const QString path = targetPackagePath();
    if (path.isEmpty())
        return nullptr;
    return QAStTargetPackageList::installTargetPackages()->packageAt(path);
}

int QAStConfiguration::languageType() const
{
    static const QHash<QString, int> bits = {
        {QStringLiteral("C"), QAStTargetPackage::LanguageC},
        {QStringLiteral("CPP"), QAStTargetPackage::LanguageCpp},
        {QStringLiteral("ADA"), QAStTargetPackage::LanguageAda},
        {QStringLiteral("ADA83"), QAStTargetPackage::LanguageAda},
        {QStringLiteral("ADA95"), QAStTargetPackage::LanguageAda},
        {QStringLiteral("JAVA"), QAStTargetPackage::LanguageJava},
    };
    return bits.value(property(sourceLanguageKey).toString().toUpper(),
                      QAStTargetPackage::LanguageC);
}

// --- filling

void QAStConfiguration::init(const QAStConfiguration& c)
{
    *this = c;
}

bool QAStConfiguration::init(const QDomElement& e, int)
{
    const QDomElement nameElement = e.firstChildElement(nameKey);
    if (nameElement.isNull()) {
        QAStData::appendLoadReport(QStringLiteral("Unable to find tag name\n"));
        return false;
    }
    setName(QAXML::domValue(nameElement));
    if (QAPropertyMapGroup* descriptor = boundDescriptor())
        QAPropertySerializer::read(this, descriptor, e);
    keepUndescribedValues(e);
    return true;
}

void QAStConfiguration::keepUndescribedValues(const QDomElement& e)
{
    m_keptValues.clear();
    const QSet<QString>& described = shared().keys;
    for (QDomElement value = e.firstChildElement(); !value.isNull();
         value = value.nextSiblingElement()) {
        const QString key = value.tagName();
        if (key != nameKey && !described.contains(key))
            m_keptValues.append({key, QAXML::parsedTextToXMLValue(value.text())});
    }
}

void QAStConfiguration::init(QARes* res)
{
    if (!res)
        return;
    const QARes* nameRes = res->isGroup() ? res->search(nameKey) : nullptr;
    if (nameRes && nameRes->isString())
        setName(nameRes->toResString()->value());
    if (QAPropertyMapGroup* descriptor = boundDescriptor())
        QAPropertySerializer::read(this, descriptor, res);
}

void QAStConfiguration::init(const QAStTargetPackage& package)
{
    for (const PackageText& text : packageTexts)
        setProperty(QLatin1String(text.key), (package.*text.value)());
    for (const PackageList& list : packageLists)
        setProperty(QLatin1String(list.key), (package.*list.value)());
}

void QAStConfiguration::reset(const QAStTargetPackage& package)
{
    const QString ownName = name();
    clear();
    m_keptValues.clear();
    setName(ownName);
    init(package);
}

void QAStConfiguration::init()
{
    if (const QAPropertyMapGroup* descriptor = boundDescriptor())
        setInitialValues(*descriptor);
    setProperty(executionFlagKey, allStages);
}

// --- the shared descriptor

bool QAStConfiguration::initialize(StudioInterface*, QARes*)
{
    SharedDescriptor& descriptor = shared();
    if (descriptor.tried)
        return true;
    descriptor.tried = true;
    descriptor.tree.reset(createPropertyDescriptor());
    descriptor.keys.clear();
    if (descriptor.tree)
        collectKeys(*descriptor.tree, descriptor.keys);
    return descriptor.tree != nullptr;
}

void QAStConfiguration::terminate(StudioInterface*, QARes*)
{
    SharedDescriptor& descriptor = shared();
    descriptor.tree.reset();
    descriptor.keys.clear();
    descriptor.tried = false;
}

QAPropertyMapGroup* QAStConfiguration::propertyDescriptor()
{
    return shared().tree.get();
}

QString QAStConfiguration::propertyDescriptorFile()
{
    return QAInstall::installPath(QAStData::installDir(),
                                  QStringLiteral("korvilprojectsettings.properties"));
}

QAPropertyMapGroup* QAStConfiguration::createPropertyDescriptor()
{
    MessageConsoleLog log;
    QAPropertyMapLoader loader;
    return loader.load(propertyDescriptorFile(), QAStPropertyFilters::table(),
                       QAStPropertyFilters::masks(), &log);
}
