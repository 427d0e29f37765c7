#pragma once

#include "QAStData.h"

#include <QList>
#include <QString>
#include <QStringList>

class QAProperty;
class QAPropertyGroup;
class QAStConfiguration;

// An item that can be built and executed. It carries its own build
// configurations, one per name, each inheriting key by key from the
// configuration of the same name of the parent node (inheritConfiguration),
// and the name of the configuration currently in use.
//
// Ownership: the node owns its configurations and deletes them with itself.
// A configuration added under the name of one the node already has
// replaces it (the old one is deleted).
class SDK110_EXPORT QAStNode : public QAStData {
    Q_OBJECT
public:
    // A new node, inserted into parent behind after.
    QAStNode(const QString& name, const QPixmap& icon, QAStData* parent = nullptr,
             QAStData* after = nullptr);
    // A node read from a data block of the project file (QAStData::init).
    QAStNode(const QDomElement& e, int version, QAStData* parent = nullptr,
             QAStData* after = nullptr);
    // A node read from the older resource format.
    QAStNode(QARes* res, QAStData* parent = nullptr, QAStData* after = nullptr);
    ~QAStNode() override;

    // --- configurations

    // The names of the node's own configurations, in the order added.
    QStringList configurations() const;
    // The node's own configurations, in the order added; owned by the node.
    const QList<QAStConfiguration*>& configurationList() const { return m_configurations; }
    // The node's own configuration of that name, or null.
    QAStConfiguration* configuration(const QString& name) const;
    // Takes ownership of c (from its former node, if any) and makes this
    // node its owner; one of the same name is replaced and deleted. Null is
    // ignored.
    virtual void addConfiguration(QAStConfiguration* c);
    // A new configuration of that name for this node, or the node's own one
    // when it already has it.
    QAStConfiguration* addConfiguration(const QString& name);
    // Deletes the node's configuration of that name; false when it has none.
    virtual bool removeConfiguration(const QString& name);

    // The name of the configuration in use; it need not name one of the
    // node's configurations (currentConfiguration() is then null).
    QString currentConfigurationName() const { return m_currentConfigurationName; }
    virtual void setCurrentConfigurationName(const QString& name);
    QAStConfiguration* currentConfiguration() const;

    // The configuration c inherits from: when c is this node's own
    // configuration of its name, the configuration of that name of the
    // parent node (null when the parent has none or is not a node);
    // otherwise null.
    virtual QAStConfiguration* inheritConfiguration(const QAStConfiguration* c) const;

    // --- property sheet

    // The node-kind bit (QAStPropertyFilters::Kind) by which the settings
    // descriptor restricts this node's settings; 0 in the base, so that
    // only unrestricted settings show. Each kind returns its own.
    virtual unsigned int propertyKind() const;
    // The context of the node's property sheet: its kind, the language of
    // its current configuration (C without one) and the host environment.
    unsigned int propertyContext() const;
    // The settings of the group (the shared settings descriptor by default)
    // that the node's property sheet shows, in order.
    QList<QAProperty*> visibleSettings(const QAPropertyGroup* group = nullptr) const;

protected:
    // For kinds that read their own element (see QAStData).
    QAStNode(QAStData* parent, QAStData* after);

private:
    // Takes the configuration of that name out of the list without deleting
    // it; null when the node has none.
    QAStConfiguration* takeConfiguration(const QString& name);

    QList<QAStConfiguration*> m_configurations;
    QString m_currentConfigurationName;
};
