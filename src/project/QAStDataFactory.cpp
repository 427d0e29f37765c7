#include "QAStDataFactory.h"

#include "QAIActivityPlugin.h"
#include "QAIProjectPlugin.h"
#include "QAITestNodePlugin.h"
#include "QALogging.h"
#include "QAStData.h"
#include "QAStNodePluginCenter.h"

#include <QDomElement>
#include <QHash>
#include <QtDebug>

namespace {

enum PluginKind { ActivityKind = 0, TestNodeKind = 1, ProjectKind = 2 };

struct PluginEntry {
    PluginKind kind;
    void* iface;
};

QHash<QString, QAStDataFactory::Creator>& classTable()
{
    static QHash<QString, QAStDataFactory::Creator> table;
    return table;
}

// Tag -> plug-in kind and interface, filled on first sight of a tag and
// forgotten when the plug-in registrations change.
struct PluginTable {
    QHash<QString, PluginEntry> entries;
    quint64 generation = 0;
};

PluginTable& pluginTable()
{
    static PluginTable table;
    const quint64 current = QAStNodePluginCenter::nodePluginCenter()->generation();
    if (table.generation != current) {
        table.entries.clear();
        table.generation = current;
    }
    return table;
}

// Asks the center for the three interfaces in their fixed order.
bool lookUpPlugin(const QString& feature, PluginEntry& entry)
{
    static const char* const interfaceIds[] = {
        QAIActivityPlugin::interfaceId(),
        QAITestNodePlugin::interfaceId(),
        QAIProjectPlugin::interfaceId(),
    };
    const QAStNodePluginCenter* center = QAStNodePluginCenter::nodePluginCenter();
    for (int kind = ActivityKind; kind <= ProjectKind; ++kind) {
        void* iface = nullptr;
        if (center->queryComponentInterface(feature, interfaceIds[kind], &iface)) {
            entry = PluginEntry{static_cast<PluginKind>(kind), iface};
            return true;
        }
    }
    return false;
}

void reportNoPlugin(const QString& feature)
{
    qCDebug(lcProject, "No plugin found for feature %s", qPrintable(feature));
}

}

QAStData* QAStDataFactory::create(const QDomElement& e, int version, QAStData* parent,
                                  QAStData* after)
{
    if (e.isNull())
        return nullptr;
    // The item is attached before its name is read: it takes its place in
    // file order, not by its (still empty) name.
    const QAStData::KeepGivenPlace keepFileOrder;
    const QString tag = e.tagName();
    const auto row = classTable().constFind(tag);
    if (row != classTable().cend())
        return (*row)(e, version, parent, after);
    return createByPlugin(tag, e, version, parent, after);
}

QAStData* QAStDataFactory::createByPlugin(const QString& feature, const QDomElement& e,
                                          int version, QAStData* parent, QAStData* after)
{
    PluginTable& table = pluginTable();
    auto found = table.entries.constFind(feature);
    if (found == table.entries.cend()) {
        PluginEntry entry{};
        if (!lookUpPlugin(feature, entry)) {
            reportNoPlugin(feature);
            return nullptr;
        }
        found = table.entries.insert(feature, entry);
    }
    switch (found->kind) {
    case TestNodeKind:
        return static_cast<QAITestNodePlugin*>(found->iface)
            ->createTestNode(feature, e, version, parent, after);
    case ProjectKind:
        return static_cast<QAIProjectPlugin*>(found->iface)
            ->createProjectItem(feature, e, version, parent, after);
    case ActivityKind:
        break;
    }
    reportNoPlugin(feature);
    return nullptr;
}

void QAStDataFactory::registerClass(const QString& tag, const Creator& creator)
{
    classTable().insert(tag, creator);
}

void QAStDataFactory::unregisterClass(const QString& tag)
{
    classTable().remove(tag);
}

bool QAStDataFactory::isRegistered(const QString& tag)
{
    return classTable().contains(tag);
}
