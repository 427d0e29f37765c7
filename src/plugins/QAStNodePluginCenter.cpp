#include "QAStNodePluginCenter.h"

#include "QAINodeSettingsPlugin.h"

#include "QAINodePlugin.h"

QAStNodePluginCenter* QAStNodePluginCenter::nodePluginCenter()
{
    static QAStNodePluginCenter center;
    return &center;
}

void QAStNodePluginCenter::registerPlugin(QAINodePlugin* plugin)
{
    if (!plugin || m_plugins.contains(plugin))
        return;
    m_plugins.append(plugin);
    ++m_generation;
}

void QAStNodePluginCenter::unregisterPlugin(QAINodePlugin* plugin)
{
    if (m_plugins.removeAll(plugin) > 0)
        ++m_generation;
}

bool QAStNodePluginCenter::queryComponentInterface(const QString& feature, const char* interfaceId,
                                                   void** result) const
{
    *result = nullptr;
    for (QAINodePlugin* plugin : m_plugins) {
        if (!plugin->features().contains(feature))
            continue;
        if (void* iface = plugin->queryInterface(interfaceId)) {
            *result = iface;
            return true;
        }
    }
    return false;
}

QStringList QAStNodePluginCenter::featureList(const QString& kindId) const
{
    QStringList found;
    for (QAINodePlugin* plugin : m_plugins) {
        auto* settings = static_cast<QAINodeSettingsPlugin*>(
            plugin->queryInterface(QAINodeSettingsPlugin::interfaceId()));
        if (!settings)
            continue;
        for (const QString& feature : plugin->features()) {
            if (!found.contains(feature) && settings->settingsNodeKinds(feature).contains(kindId))
                found.append(feature);
        }
    }
    return found;
}
