#include "QAStNodeSystemTesting.h"

#include "QAStConfiguration.h"
#include "QAStNodeSystemTestingScript.h"
#include "QAStPerlGen.h"

#include <QDir>
#include <QDomElement>
#include <QTextStream>

#include <utility>

namespace {

using Attributes = QList<std::pair<const char*, QString>>;

// The element's attributes, each value encoded and in double quotes.
void writeAttributes(QTextStream& s, const Attributes& attributes)
{
    for (const auto& [name, value] : attributes)
        s << ' ' << name << "=\"" << QAXML::attributeToXMLValue(value) << '"';
}

// One line: an empty element with its attributes.
void writeEmptyElement(QTextStream& s, int indent, const char* tag, const Attributes& attributes)
{
    QAXML::indent(s, indent);
    s << '<' << tag;
    writeAttributes(s, attributes);
    s << "/>\n";
}

QString textAttribute(const QDomElement& e, const char* name)
{
    return QAXML::commaToString(e.attribute(QLatin1String(name)));
}

int intAttribute(const QDomElement& e, const char* name, int fallback)
{
    bool ok = false;
    const int value = QAXML::toInt(e.attribute(QLatin1String(name)), &ok);
    return ok ? value : fallback;
}

bool boolAttribute(const QDomElement& e, const char* name, bool fallback)
{
    bool ok = false;
    const bool value = QAXML::toBool(e.attribute(QLatin1String(name)), &ok);
    return ok ? value : fallback;
}

// The child elements of list named tag, in order.
QList<QDomElement> elements(const QDomElement& list, const char* tag)
{
    QList<QDomElement> found;
    const QString name = QLatin1String(tag);
    for (QDomElement e = list.firstChildElement(name); !e.isNull(); e = e.nextSiblingElement(name))
        found.append(e);
    return found;
}

}

QAStNodeSystemTesting::QAStNodeSystemTesting(const QDomElement& e, int version, QAStData* parent,
                                             QAStData* after)
    : QAStNodeTest(parent, after)
{
    init(e, version);
}

void QAStNodeSystemTesting::setDeployments(const QList<Deployment>& deployments)
{
    m_deployments = deployments;
}

void QAStNodeSystemTesting::setRendezvous(const QList<Rendezvous>& rendezvous)
{
    m_rendezvous = rendezvous;
}

void QAStNodeSystemTesting::setRendezvousAutoGenerate(bool autoGenerate)
{
    m_autoGenerate = autoGenerate;
}

void QAStNodeSystemTesting::setMachines(const QStringList& machines)
{
    m_machines = machines;
}

void QAStNodeSystemTesting::setConnectedTDFChannel(int channel)
{
    m_tdfChannel = channel;
}

// --- writing

void QAStNodeSystemTesting::write(QTextStream& s, int indent) const
{
    openElement(s, indent, "system_testing");
    QAStNodeTest::write(s, indent + 1);
    writeDeployments(s, indent + 1);
    writeRendezvous(s, indent + 1);
    writeMachines(s, indent + 1);
    closeElement(s, indent, "system_testing");
}

void QAStNodeSystemTesting::writeDeployments(QTextStream& s, int indent) const
{
    openElement(s, indent, "deployment_table");
    for (const Deployment& d : m_deployments) {
        writeEmptyElement(s, indent + 1, "deployment_data",
                          {{"isActivated", QAXML::boolToXMLValue(d.activated)},
                           {"vtNodeName", d.vtNodeName},
                           {"instance", d.instance},
                           {"delay", QAXML::fromInt(d.delay)},
                           {"number", QAXML::fromInt(d.number)},
                           {"occId", QAXML::fromInt(d.occId)},
                           {"hostIp", d.hostIp},
                           {"portAgent", QAXML::fromInt(d.portAgent)},
                           {"startRoutine", d.startRoutine}});
    }
    closeElement(s, indent, "deployment_table");
}

void QAStNodeSystemTesting::writeRendezvous(QTextStream& s, int indent) const
{
    QAXML::indent(s, indent);
    s << "<rendezvous_list";
    writeAttributes(s, {{"autogenerate", QAXML::boolToXMLValue(m_autoGenerate)}});
    s << ">\n";
    for (const Rendezvous& r : m_rendezvous)
        writeEmptyElement(s, indent + 1, "rendezvous",
                          {{"name", r.name}, {"number", QAXML::fromInt(r.number)}});
    closeElement(s, indent, "rendezvous_list");
}

void QAStNodeSystemTesting::writeMachines(QTextStream& s, int indent) const
{
    openElement(s, indent, "machine_list");
    for (const QString& machine : m_machines)
        writeEmptyElement(s, indent + 1, "machine", {{"name", machine}});
    closeElement(s, indent, "machine_list");
}

// --- reading

bool QAStNodeSystemTesting::init(const QDomElement& e, int version)
{
    if (!checkElement(e, "system_testing") || !QAStNodeTest::init(innerBlock(e, "test"), version))
        return false;
    initDeployments(field(e, "deployment_table"));
    initRendezvous(field(e, "rendezvous_list"));
    initMachines(field(e, "machine_list"));
    return isValid();
}

void QAStNodeSystemTesting::initDeployments(const QDomElement& table)
{
    m_deployments.clear();
    const Deployment defaults;
    for (const QDomElement& e : elements(table, "deployment_data")) {
        Deployment d;
        d.activated = boolAttribute(e, "isActivated", defaults.activated);
        d.vtNodeName = textAttribute(e, "vtNodeName");
        d.instance = textAttribute(e, "instance");
        d.delay = intAttribute(e, "delay", defaults.delay);
        d.number = intAttribute(e, "number", defaults.number);
        d.occId = intAttribute(e, "occId", defaults.occId);
        d.hostIp = textAttribute(e, "hostIp");
        d.portAgent = intAttribute(e, "portAgent", defaults.portAgent);
        d.startRoutine = textAttribute(e, "startRoutine");
        m_deployments.append(d);
    }
}

void QAStNodeSystemTesting::initRendezvous(const QDomElement& list)
{
    m_autoGenerate = boolAttribute(list, "autogenerate", true);
    m_rendezvous.clear();
    for (const QDomElement& e : elements(list, "rendezvous"))
        m_rendezvous.append(Rendezvous{textAttribute(e, "name"), intAttribute(e, "number", 0)});
}

void QAStNodeSystemTesting::initMachines(const QDomElement& list)
{
    m_machines.clear();
    for (const QDomElement& e : elements(list, "machine"))
        m_machines.append(textAttribute(e, "name"));
}

namespace {

// @var=(, one quoted path a line, the closing empty item and );
void writeFileList(QTextStream& out, const char* var, const QStringList& files)
{
    out << '@' << var << "=(\n";
    for (const QString& file : files)
        out << " '" << QAStPerlGen::safePath(file) << "',\n";
    out << " ''\n );\n";
}

bool isAllInstances(const QString& instance)
{
    return instance.isEmpty() || instance.compare(QLatin1String("<all>"), Qt::CaseInsensitive) == 0;
}

} // namespace

void QAStNodeSystemTesting::generateEnv(QTextStream& out)
{
    QAStNodeTest::generateEnv(out);
    if (!currentConfiguration())
        return;
    writeFileList(out, "RIO_LIST", QAStPerlGen::outputFilesOf(this, QStringLiteral("RIO"), true));
    writeFileList(out, "TDC_LIST", QAStPerlGen::outputFilesOf(this, QStringLiteral("TDC"), true));
    if (isPostProcessingOnly())
        out << "$ATS_POSTPRO_ONLY=1;\n";
    writeDeploymentConfiguration(out);
}

bool QAStNodeSystemTesting::isPostProcessingOnly() const
{
    bool any = false;
    for (const QAStData* child = this->child(); child; child = child->next()) {
        const auto* script = qobject_cast<const QAStNodeSystemTestingScript*>(child);
        if (!script || !script->isSelected())
            continue;
        if (!script->fileKey().endsWith(QLatin1String(".spv"), Qt::CaseInsensitive))
            return false;
        any = true;
    }
    return any;
}

void QAStNodeSystemTesting::writeDeploymentConfiguration(QTextStream& out) const
{
    out << "@VT_DEP_CONF=(\n";
    for (const Deployment& deployment : m_deployments) {
        if (!deployment.activated)
            continue;
        auto* tester = static_cast<QAStNode*>(
            searchChildOfClass(deployment.vtNodeName, "QAStNodeVirtualTester", true));
        const QAStNode* owner = tester ? tester : this;
        const QAStConfiguration* c = owner->currentConfiguration();
        const auto setting = [&](const char* key) {
            return QAStPerlGen::safePath(QAStPerlGen::settingValue(c, QLatin1String(key)).toString(),
                                         const_cast<QAStNode*>(owner));
        };
        const QString instance =
            isAllInstances(deployment.instance) ? QStringLiteral("<all>") : deployment.instance;
        out << " [\n"
            << "  '" << QAStPerlGen::safeStr(deployment.vtNodeName) << "',\n"
            << "  '" << setting("ge_host_workdir") << "',\n"
            << "  '" << setting("intdir") << "',\n"
            << "  '" << setting("outdir") << "',\n"
            << "  '" << QAStPerlGen::safeStr(instance) << "',\n"
            << "  '" << QAStPerlGen::safeStr(deployment.hostIp) << "',\n"
            << "  " << deployment.portAgent << ",\n"
            << "  " << deployment.delay << ",\n"
            << "  " << deployment.number << ",\n"
            << "  " << deployment.occId << ",\n"
            << "  '" << QAStPerlGen::safeStr(deployment.startRoutine) << "'\n"
            << " ],\n";
    }
    out << " );\n";
}

void QAStNodeSystemTesting::generateVtRdvConfEnv(QTextStream& out) const
{
    QAStPerlGen::writeNumber(out, QStringLiteral("VT_RDV_AUTOGENERATE"), m_autoGenerate ? 1 : 0);
    out << "@VT_RDV_CONF=(";
    for (qsizetype i = 0; i < m_rendezvous.size(); ++i) {
        out << (i ? ", " : "") << "['" << QAStPerlGen::safeStr(m_rendezvous.at(i).name) << "', "
            << m_rendezvous.at(i).number << ']';
    }
    out << ");\n";
    QAStPerlGen::writePathList(out, QStringLiteral("VT_MACHINES"), m_machines);
}

bool QAStNodeSystemTesting::executesDriver() const
{
    return true;
}

QStringList QAStNodeSystemTesting::driverArguments() const
{
    QStringList scripts;
    for (const QAStData* child = this->child(); child; child = child->next()) {
        const auto* script = qobject_cast<const QAStNodeSystemTestingScript*>(child);
        if (script && script->isSelected())
            scripts << QDir::toNativeSeparators(script->absoluteFilePath());
    }
    return scripts;
}

bool QAStNodeSystemTesting::splitsRuntimeOutput() const
{
    return true;
}
