#include "QAPropertyMapLoader.h"

#include <utility>

#include "QAILogMonitor.h"
#include "QALogging.h"
#include "QAPropertyBool.h"
#include "QAPropertyComboInt.h"
#include "QAPropertyComboString.h"
#include "QAPropertyInt.h"
#include "QAPropertyLineEdit.h"
#include "QAPropertyListBox.h"
#include "QAPropertyMapGroup.h"
#include "QAPropertyPathBox.h"
#include "QAPropertyPathItem.h"
#include "QAPropertyYesNo.h"
#include "QARes.h"
#include "QATr.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <limits>
#include <memory>

namespace {

void sendToLog(QAILogMonitor* log, const QString& message)
{
    if (log)
        log->log(message);
    else
        qCWarning(lcSettings, "%s", qPrintable(message));
}

// Routes the reader's syntax errors to the loader's log while installed,
// and puts the previous handler back when it goes.
class LogErrorHandler : public QAResErrorHandler {
public:
    explicit LogErrorHandler(QAILogMonitor* log)
        : m_log(log)
        , m_previous(QARes::setErrorHandler(this))
    {
    }
    ~LogErrorHandler() override { QARes::setErrorHandler(m_previous); }

    void error(const QString& file, int line, const QString& message) override
    {
        sendToLog(m_log, QStringLiteral("%1:%2: %3").arg(file).arg(line).arg(message));
    }

private:
    QAILogMonitor* m_log;
    QAResErrorHandler* m_previous;
};

bool isScalar(const QARes* res)
{
    return res->isString() || res->isInt() || res->isBoolean();
}

bool fitsInt(qint64 value)
{
    return value >= std::numeric_limits<int>::min() && value <= std::numeric_limits<int>::max();
}

// The first group of that name directly in the group, or null.
QAPropertyGroup* childGroup(const QAPropertyGroup* group, const QString& name)
{
    for (QAProperty* child : group->children()) {
        if (child->isGroup() && child->name() == name)
            return static_cast<QAPropertyGroup*>(child);
    }
    return nullptr;
}

// One item of a combo's content: a list of a label and a value.
const QAResList* comboItem(const QARes* item)
{
    const QAResList* pair = item->toResList();
    if (!pair || pair->items().size() != 2 || !isScalar(pair->items().at(0)))
        return nullptr;
    return pair;
}

// The (label, value) items of an entry's combo content, each value accepted
// by valueFits. Absent content gives no items; false when the content is not
// a list of such pairs.
template <typename Fits>
bool comboContent(const QARes* entry, const QString& field, Fits valueFits,
                  QList<std::pair<QString, const QARes*>>* items)
{
    const QARes* content = entry->find(field);
    if (!content)
        return true;
    if (!content->isList())
        return false;
    for (const QARes* item : content->toResList()->items()) {
        const QAResList* pair = comboItem(item);
        if (!pair || !valueFits(pair->items().at(1)))
            return false;
        items->append({pair->items().at(0)->toText(), pair->items().at(1)});
    }
    return true;
}

}

QAPropertyMapLoader::QAPropertyMapLoader() = default;

QAPropertyMapLoader::~QAPropertyMapLoader() = default;

QString QAPropertyMapLoader::rootName()
{
    return QStringLiteral("Common");
}

QAPropertyMapGroup* QAPropertyMapLoader::load(const QString& file, const QMap<QString, int>& filters,
                                              const QList<unsigned int>& masks, QAILogMonitor* log)
{
    m_file = file;
    m_filters = filters;
    m_masks = masks;
    m_log = log;
    m_groups = 0;

    std::unique_ptr<QARes> resource;
    if (QFileInfo(file).isFile()) {
        LogErrorHandler handler(log);
        resource.reset(QARes::read(file));
    }
    if (!resource) {
        report(QATr::settings("%1: not found").arg(file));
        return nullptr;
    }
    if (QARes::errorCount() > 0)
        report(QATr::settings("%1 Error(s) in property file %2").arg(QString::number(QARes::errorCount()), file));
    return readDescriptor(resource.get());
}

// The entries of the top group "properties", in file order.
QAPropertyMapGroup* QAPropertyMapLoader::readDescriptor(QARes* resource)
{
    const QARes* properties = resource->find(QStringLiteral("properties"));
    if (!properties || !properties->isGroup()) {
        report(QATr::settings("%1 is not property definition file").arg(m_file));
        return nullptr;
    }
    auto root = std::make_unique<QAPropertyMapGroup>(rootName());
    for (QARes* entry : properties->toResGroup()->findAll(QStringLiteral("property")))
        loadEntry(root.get(), entry);
    if (m_groups == 0) {
        report(QATr::settings("%1: no group defined in the file").arg(m_file));
        return nullptr;
    }
    return root.release();
}

void QAPropertyMapLoader::loadEntry(QAPropertyMapGroup* root, QARes* entry)
{
    QString path;
    QString type;
    QString tag;
    const QARes* pathField = entry->find(QStringLiteral("path"));
    const QARes* typeField = entry->find(QStringLiteral("type"));
    if (!pathField)
        reportEntry(entry, QATr::settings(": the field path is required in property definition"));
    if (!typeField)
        reportEntry(entry, QATr::settings(": the field type is required in property definition"));
    if (!pathField || !typeField || !readText(entry, QStringLiteral("path"), &path)
        || !readText(entry, QStringLiteral("type"), &type) || !readText(entry, QStringLiteral("tag"), &tag))
        return;

    QAPropertyGroup* group = findGroup(root, path, entry);
    if (!group)
        return;
    std::unique_ptr<QAProperty> property(createProperty(type, tag, entry));
    if (!property) {
        reportEntry(entry, QATr::settings(": the type '%1' is not expected").arg(type));
        return;
    }
    if (!property->isGroup() && tag.isEmpty()) {
        reportEntry(entry, QATr::settings(": the field tag is required in property definition"));
        return;
    }
    const bool common = loadProperty(property.get(), entry);
    if (!initKind(property.get(), tag, entry) || !common)
        return;
    if (property->isGroup())
        ++m_groups;
    group->addChild(property.release());
}

// Walks the path's names from above the root: the first names the root,
// each further one a group of the one before.
QAPropertyGroup* QAPropertyMapLoader::findGroup(QAPropertyMapGroup* root, const QString& path,
                                                const QARes* entry) const
{
    const QStringList names = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    if (names.isEmpty()) {
        reportEntry(entry, QATr::settings(": unable to find the path '%1'").arg(path));
        return nullptr;
    }
    QAPropertyGroup* group = nullptr;
    for (const QString& name : names) {
        group = group ? childGroup(group, name) : (name == root->name() ? root : nullptr);
        if (!group) {
            reportEntry(entry, QATr::settings(": unable to find the group '%1'").arg(name));
            return nullptr;
        }
    }
    return group;
}

QAProperty* QAPropertyMapLoader::createProperty(const QString& type, const QString& tag, QARes*)
{
    QAProperty* property = nullptr;
    if (type == QLatin1String("Group"))
        property = new QAPropertyMapGroup;
    else if (type == QLatin1String("Int"))
        property = new QAPropertyMapInt(tag);
    else if (type == QLatin1String("ComboInt"))
        property = new QAPropertyMapComboInt(tag);
    else if (type == QLatin1String("Bool"))
        property = new QAPropertyMapBool(tag);
    else if (type == QLatin1String("YesNo"))
        property = new QAPropertyMapYesNo(tag);
    else if (type == QLatin1String("LineEdit"))
        property = new QAPropertyMapLineEdit(tag);
    else if (type == QLatin1String("ComboString"))
        property = new QAPropertyMapComboString(tag);
    else if (type == QLatin1String("PathItem"))
        property = new QAPropertyMapPathItem(tag);
    else if (type == QLatin1String("ListBox"))
        property = new QAPropertyMapListBox(tag);
    else if (type == QLatin1String("PathBox"))
        property = new QAPropertyMapPathBox(tag);
    if (property)
        property->setTag(tag);
    return property;
}

bool QAPropertyMapLoader::loadProperty(QAProperty* property, QARes* entry)
{
    QString name;
    QString whatThis;
    QString perlVarName;
    bool readOnly = false;
    unsigned int apply = 0;
    unsigned int unapply = 0;
    // Every field is read, so that one pass reports all of an entry's faults.
    bool ok = readText(entry, QStringLiteral("name"), &name);
    ok &= readText(entry, QStringLiteral("whatThis"), &whatThis);
    ok &= readText(entry, QStringLiteral("perlVarName"), &perlVarName);
    ok &= readBool(entry, QStringLiteral("readonly"), &readOnly);
    ok &= readFilters(entry, QStringLiteral("apply"), &apply);
    ok &= readFilters(entry, QStringLiteral("unapply"), &unapply);
    ok &= readInitValue(property, entry);
    property->setName(name);
    property->setWhatThis(whatThis);
    property->setPerlVarName(perlVarName);
    property->setReadOnly(readOnly);
    property->setApplyMask(applyRestriction(apply));
    property->setUnapplyMask(unapplyRestriction(unapply));
    return ok;
}

// The initial value in the property's own type; a group has none.
bool QAPropertyMapLoader::readInitValue(QAProperty* property, QARes* entry)
{
    const QString field = QStringLiteral("value");
    if (!entry->find(field))
        return true;
    bool ok = true;
    switch (property->type()) {
    case QMetaType::Int: {
        int value = 0;
        if ((ok = readInt(entry, field, &value)))
            property->setInitValue(value);
        break;
    }
    case QMetaType::Bool: {
        bool value = false;
        if ((ok = readBool(entry, field, &value)))
            property->setInitValue(value);
        break;
    }
    case QMetaType::QString: {
        QString value;
        if ((ok = readText(entry, field, &value)))
            property->setInitValue(value);
        break;
    }
    case QMetaType::QStringList: {
        QStringList value;
        if ((ok = readStrings(entry, field, &value)))
            property->setInitValue(value);
        break;
    }
    default:
        ok = fieldNotExpected(entry, field);
    }
    return ok;
}

// Each name must be one of the filters handed to load; their bits are ORed.
bool QAPropertyMapLoader::readFilters(const QARes* entry, const QString& field, unsigned int* bits) const
{
    QStringList names;
    if (!readStrings(entry, field, &names))
        return false;
    bool ok = true;
    for (const QString& name : names) {
        const auto filter = m_filters.constFind(name);
        if (filter == m_filters.constEnd()) {
            report(QATr::settings("The value for filter '%1' does not exist in the loader").arg(name));
            ok = false;
        } else {
            *bits |= static_cast<unsigned int>(filter.value());
        }
    }
    return ok;
}

// Keeps the bits under the categories. A category named whole, with every
// bit the filters have under it (as "Common" does), restricts nothing.
unsigned int QAPropertyMapLoader::applyRestriction(unsigned int bits) const
{
    unsigned int known = 0;
    for (int value : m_filters)
        known |= static_cast<unsigned int>(value);
    unsigned int restriction = 0;
    for (unsigned int mask : m_masks) {
        if ((bits & mask) != (known & mask))
            restriction |= bits & mask;
    }
    return restriction;
}

unsigned int QAPropertyMapLoader::unapplyRestriction(unsigned int bits) const
{
    unsigned int categories = 0;
    for (unsigned int mask : m_masks)
        categories |= mask;
    return bits & categories;
}

// Hands the property to the hook of its kind; kinds without fields of
// their own have none.
bool QAPropertyMapLoader::initKind(QAProperty* property, const QString& tag, QARes* entry)
{
    if (auto* p = dynamic_cast<QAPropertyMapInt*>(property))
        return init(p, tag, entry);
    if (auto* p = dynamic_cast<QAPropertyMapComboInt*>(property))
        return init(p, tag, entry);
    if (auto* p = dynamic_cast<QAPropertyMapComboString*>(property))
        return init(p, tag, entry);
    if (auto* p = dynamic_cast<QAPropertyMapPathItem*>(property))
        return init(p, tag, entry);
    if (auto* p = dynamic_cast<QAPropertyMapPathBox*>(property))
        return init(p, tag, entry);
    return true;
}

bool QAPropertyMapLoader::init(QAPropertyMapInt* property, const QString&, QARes* entry)
{
    int min = property->minimum();
    int max = property->maximum();
    int step = property->step();
    QString suffix = property->suffix();
    bool ok = readInt(entry, QStringLiteral("min"), &min);
    ok &= readInt(entry, QStringLiteral("max"), &max);
    ok &= readInt(entry, QStringLiteral("step"), &step);
    ok &= readText(entry, QStringLiteral("suffix"), &suffix);
    property->setMinimum(min);
    property->setMaximum(max);
    property->setStep(step);
    property->setSuffix(suffix);
    return ok;
}

bool QAPropertyMapLoader::init(QAPropertyMapComboInt* property, const QString&, QARes* entry)
{
    const QString field = QStringLiteral("content");
    const auto isIntValue = [](const QARes* v) { return v->isInt() && fitsInt(v->toResInt()->value()); };
    QList<std::pair<QString, const QARes*>> items;
    if (!comboContent(entry, field, isIntValue, &items))
        return fieldNotExpected(entry, field);
    for (const auto& [label, value] : items)
        property->insertItem(label, int(value->toResInt()->value()));
    return true;
}

bool QAPropertyMapLoader::init(QAPropertyMapComboString* property, const QString&, QARes* entry)
{
    const QString field = QStringLiteral("content");
    QList<std::pair<QString, const QARes*>> items;
    if (!comboContent(entry, field, isScalar, &items))
        return fieldNotExpected(entry, field);
    for (const auto& [label, value] : items)
        property->insertItem(label, value->toText());
    return true;
}

bool QAPropertyMapLoader::init(QAPropertyMapPathItem* property, const QString&, QARes* entry)
{
    QString modeName;
    QStringList filters = property->filters();
    bool ok = readText(entry, QStringLiteral("mode"), &modeName);
    ok &= readStrings(entry, QStringLiteral("extension"), &filters);
    QAPropertyFileChooser::Mode mode = property->mode();
    if (!modeName.isEmpty() && !QAPropertyFileChooser::modeFromString(modeName, &mode))
        ok = fieldNotExpected(entry, QStringLiteral("mode"));
    property->setMode(mode);
    property->setFilters(filters);
    return ok;
}

bool QAPropertyMapLoader::init(QAPropertyMapPathBox* property, const QString&, QARes* entry)
{
    QString modeName;
    QString buttonsName;
    QStringList filters = property->filters();
    bool ok = readText(entry, QStringLiteral("mode"), &modeName);
    ok &= readText(entry, QStringLiteral("button"), &buttonsName);
    ok &= readStrings(entry, QStringLiteral("extension"), &filters);
    QAPropertyFileChooser::Mode mode = property->mode();
    if (!modeName.isEmpty() && !QAPropertyFileChooser::modeFromString(modeName, &mode))
        ok = fieldNotExpected(entry, QStringLiteral("mode"));
    QAPropertyPathBox::Buttons buttons = property->buttons();
    if (!buttonsName.isEmpty() && !QAPropertyPathBox::buttonsFromString(buttonsName, &buttons))
        ok = fieldNotExpected(entry, QStringLiteral("button"));
    property->setMode(mode);
    property->setButtons(buttons);
    property->setFilters(filters);
    return ok;
}

void QAPropertyMapLoader::report(const QString& message) const
{
    sendToLog(m_log, message);
}

void QAPropertyMapLoader::reportEntry(const QARes* entry, const QString& reason) const
{
    report(QATr::settings("Property at line %1").arg(entry->line()) + reason);
}

bool QAPropertyMapLoader::fieldNotExpected(const QARes* entry, const QString& field) const
{
    reportEntry(entry, QATr::settings(": the value of the field '%1' is not expected").arg(field));
    return false;
}

bool QAPropertyMapLoader::readText(const QARes* entry, const QString& field, QString* value) const
{
    const QARes* res = entry->find(field);
    if (!res)
        return true;
    if (!isScalar(res))
        return fieldNotExpected(entry, field);
    *value = res->toText();
    return true;
}

bool QAPropertyMapLoader::readInt(const QARes* entry, const QString& field, int* value) const
{
    const QARes* res = entry->find(field);
    if (!res)
        return true;
    if (!res->isInt() || !fitsInt(res->toResInt()->value()))
        return fieldNotExpected(entry, field);
    *value = int(res->toResInt()->value());
    return true;
}

bool QAPropertyMapLoader::readBool(const QARes* entry, const QString& field, bool* value) const
{
    const QARes* res = entry->find(field);
    if (!res)
        return true;
    if (!res->isBoolean())
        return fieldNotExpected(entry, field);
    *value = res->toResBoolean()->value();
    return true;
}

bool QAPropertyMapLoader::readStrings(const QARes* entry, const QString& field, QStringList* value) const
{
    const QARes* res = entry->find(field);
    if (!res)
        return true;
    if (isScalar(res)) {
        *value = QStringList{res->toText()};
        return true;
    }
    const QAResList* list = res->toResList();
    if (!list)
        return fieldNotExpected(entry, field);
    for (const QARes* item : list->items()) {
        if (!isScalar(item))
            return fieldNotExpected(entry, field);
    }
    *value = list->strings();
    return true;
}
