#pragma once

#include "QAStNodeContainer.h"

// The root of a test project.
//
// Beside its ordinary configurations the project keeps one initial
// configuration per name, holding the built-in defaults
// (QAStConfiguration::init()). It is made when a configuration of a new
// name is added to the project and sits at the top of the chain of that
// name: a node's configuration inherits from its parent node's, up to the
// project's, which inherits from the initial one, which inherits from
// nothing.
class SDK110_EXPORT QAStProject : public QAStNodeContainer {
    Q_OBJECT
public:
    // A new project, inserted into parent behind after (a sub-project).
    QAStProject(const QString& name, const QPixmap& icon, QAStData* parent = nullptr,
                QAStData* after = nullptr);
    // A project read from a data block of the project file.
    QAStProject(const QDomElement& e, int version, QAStData* parent = nullptr,
                QAStData* after = nullptr);
    // A project read from the older resource format.
    QAStProject(QARes* res, QAStData* parent = nullptr, QAStData* after = nullptr);
    ~QAStProject() override;

    using QAStNode::addConfiguration;
    // Adds c as QAStNode does and, when the project has no initial
    // configuration of its name yet, makes one with the built-in defaults.
    void addConfiguration(QAStConfiguration* c) override;
    // Removes the configuration and the initial configuration of that name.
    bool removeConfiguration(const QString& name) override;

    // The initial configuration of that name (owned by the project), or null.
    QAStConfiguration* initialConfiguration(const QString& name) const;

    // Null for an initial configuration (the top); the initial
    // configuration of its name for the project's own configuration;
    // otherwise null.
    QAStConfiguration* inheritConfiguration(const QAStConfiguration* c) const override;

    unsigned int propertyKind() const override;

protected:
    // For kinds that read their own element (see QAStData).
    QAStProject(QAStData* parent, QAStData* after);

private:
    void addInitialConfiguration(const QString& name);

    QList<QAStConfiguration*> m_initialConfigurations;
};
