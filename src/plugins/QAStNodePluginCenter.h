#pragma once

#include "sdk110_export.h"

#include <QList>
#include <QString>
#include <QStringList>

class QAINodePlugin;

// The registry of node plug-ins: given a feature (an element tag of the
// project file) and an interface id, it finds the plug-in interface that
// serves that element. One process-wide center, nodePluginCenter().
class SDK110_EXPORT QAStNodePluginCenter {
public:
    static QAStNodePluginCenter* nodePluginCenter();

    // Plug-ins are not owned; a plug-in stays registered until it is
    // unregistered, so unregister it before deleting it. Registering twice
    // has no effect.
    void registerPlugin(QAINodePlugin* plugin);
    void unregisterPlugin(QAINodePlugin* plugin);
    // In registration order; the list does not own them.
    QList<QAINodePlugin*> plugins() const { return m_plugins; }

    // Sets *result to the interface interfaceId of the first plug-in, in
    // registration order, that serves feature and has that interface, and
    // returns true; else sets it to null and returns false.
    bool queryComponentInterface(const QString& feature, const char* interfaceId,
                                 void** result) const;

    // The features that add settings to the node kind kindId (see
    // QAINodeSettingsPlugin), in registration order, each once.
    QStringList featureList(const QString& kindId) const;

    // Changes with every registration change, so that whoever keeps found
    // interfaces knows when to look them up again.
    quint64 generation() const { return m_generation; }

private:
    QAStNodePluginCenter() = default;

    QList<QAINodePlugin*> m_plugins;
    quint64 m_generation = 0;
};
