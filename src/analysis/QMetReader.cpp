#include "QMetReader.h"

#include "QAHost.h"
#include "QALogging.h"
#include "QAStData.h"
#include "QAStProject.h"
#include "QATr.h"
#include "QAXML.h"
#include "QMetElement.h"
#include "QMetMetric.h"
#include "QMetTree.h"
#include "StudioInterface.h"

#include <QCoreApplication>
#include <QDomDocument>
#include <QFile>

namespace {
const QString nameAttribute = QStringLiteral("Name");
const QString lineAttribute = QStringLiteral("Line");
const QString dirAttribute = QStringLiteral("Dir");
const QString classAttribute = QStringLiteral("Class");
const QString keyAttribute = QStringLiteral("Key");
const QString valueAttribute = QStringLiteral("Value");
const QString metricsTag = QStringLiteral("METRICS");
const QString metricTag = QStringLiteral("METRIC");
const QString itemsTag = QStringLiteral("ITEMS");
}

QMetReader::QMetReader(const QString& file, QMetTree* tree, const char* name)
    : QMetReader(QStringList{file}, tree, name)
{
}

QMetReader::QMetReader(const QStringList& files, QMetTree* tree, const char* name)
    : QObject(tree)
    , m_tree(tree)
{
    if (name)
        setObjectName(QString::fromLatin1(name));
    addMetFiles(files);
}

int QMetReader::addMetFiles(const QStringList& files)
{
    int read = 0;
    for (const QString& file : files)
        read += addMetFile(file) ? 1 : 0;
    return read;
}

bool QMetReader::addMetFile(const QString& file)
{
    if (!m_tree)
        return false;
    const QDomElement document = readXmlFile(file);
    if (document.isNull())
        return false;
    readElement(document, m_tree->root(), file);
    m_files.append(file);
    return true;
}

QDomElement QMetReader::readXmlFile(const QString& file)
{
    QFile device(file);
    if (!device.open(QIODevice::ReadOnly)) {
        reportParsingError(file, device.errorString());
        return QDomElement();
    }
    QDomDocument document;
    QString message;
    int line = 0, column = 0;
    if (!QAXML::setContent(document, &device, &message, &line, &column)) {
        reportParsingError(file, QStringLiteral("line %1, column %2: %3").arg(line).arg(column).arg(message));
        return QDomElement();
    }
    return document.documentElement();
}

void QMetReader::reportParsingError(const QString& file, const QString& reason)
{
    m_errors.append(QStringLiteral("%1: %2").arg(file, reason));
    qCWarning(lcAnalysis, "Parsing error for file %s: %s", qUtf8Printable(file), qUtf8Printable(reason));
    const QString text = QATr::analysis("Parsing error for file %1").arg(file);
    StudioInterface* host = QAStData::studioIFace();
    if (QAStProject::modeBatch() || !host)
        QAStData::displayMessage(QAStData::MessageConsole, text);
    else
        host->warning(QAHost::boxParent(), QATr::analysis("Metrics"), text);
}

// One element and everything inside it. Its file name and directory are
// its own for a file, else its parent's; a member without "Class" inside a
// class belongs to that class.
void QMetReader::readElement(const QDomElement& e, QMetElement* parent, const QString& file)
{
    auto* element = new QMetElement(e.tagName(), e.attribute(nameAttribute), parent);
    element->setLine(e.attribute(lineAttribute));
    if (element->isFile()) {
        element->setFileName(element->name());
        element->setPath(e.attribute(dirAttribute));
    } else {
        element->setFileName(parent->fileName());
        element->setPath(parent->path());
    }
    if (element->isMember()) {
        QString className = e.attribute(classAttribute);
        if (className.isEmpty() && parent->isClass())
            className = parent->name();
        element->setClassName(className);
    }
    attach(element, parent);

    for (QDomElement child = e.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        const QString tag = child.tagName();
        if (tag == metricsTag) {
            readMetrics(child, element, file);
        } else if (tag == itemsTag) {
            for (QDomElement item = child.firstChildElement(); !item.isNull();
                 item = item.nextSiblingElement())
                readElement(item, element, file);
        }
    }
}

// A class is registered at the root; a member joins the second list of its
// parent class, or of the class it names elsewhere.
void QMetReader::attach(QMetElement* element, QMetElement* parent)
{
    QMetElement* root = parent->root();
    if (element->isClass())
        root->addClass(element);
    if (parent->isClass() && (!element->isMember() || element->className() == parent->name()))
        parent->addChild2(element);
    else if (element->isMember())
        root->addElement(element);
}

void QMetReader::readMetrics(const QDomElement& metrics, QMetElement* owner, const QString& file)
{
    for (QDomElement m = metrics.firstChildElement(metricTag); !m.isNull();
         m = m.nextSiblingElement(metricTag)) {
        auto* metric = new QMetMetric(m, owner);
        if (metric->isValid()) {
            owner->addMetric(metric);
            continue;
        }
        const QString key = m.attribute(keyAttribute);
        const QString reason = key.isEmpty()
            ? QStringLiteral("it has no key")
            : QStringLiteral("its value \"%1\" is not a number").arg(m.attribute(valueAttribute));
        m_errors.append(QStringLiteral("%1: line %2: metric \"%3\" of \"%4\" left out: %5")
                            .arg(file)
                            .arg(m.lineNumber())
                            .arg(key, owner->name(), reason));
        delete metric;
    }
}
