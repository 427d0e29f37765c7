#include "QAStProject.h"

#include "QAStConfiguration.h"
#include "QAStPropertyFilters.h"

#include <utility>

QAStProject::QAStProject(const QString& name, const QPixmap& icon, QAStData* parent,
                         QAStData* after)
    : QAStNodeContainer(name, icon, parent, after)
{
}

QAStProject::QAStProject(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : QAStNodeContainer(e, version, parent, after)
{
}

QAStProject::QAStProject(QARes* res, QAStData* parent, QAStData* after)
    : QAStNodeContainer(res, parent, after)
{
}

QAStProject::QAStProject(QAStData* parent, QAStData* after)
    : QAStNodeContainer(parent, after)
{
}

QAStProject::~QAStProject()
{
    qDeleteAll(std::exchange(m_initialConfigurations, {}));
}

void QAStProject::addConfiguration(QAStConfiguration* c)
{
    if (!c)
        return;
    QAStNodeContainer::addConfiguration(c);
    if (!initialConfiguration(c->name()))
        addInitialConfiguration(c->name());
}

bool QAStProject::removeConfiguration(const QString& name)
{
    if (QAStConfiguration* initial = initialConfiguration(name)) {
        m_initialConfigurations.removeOne(initial);
        delete initial;
    }
    return QAStNodeContainer::removeConfiguration(name);
}

void QAStProject::addInitialConfiguration(const QString& name)
{
    auto* initial = new QAStConfiguration(name, this);
    initial->init();
    m_initialConfigurations.append(initial);
}

QAStConfiguration* QAStProject::initialConfiguration(const QString& name) const
{
    for (QAStConfiguration* c : m_initialConfigurations) {
        if (c->name() == name)
            return c;
    }
    return nullptr;
}

QAStConfiguration* QAStProject::inheritConfiguration(const QAStConfiguration* c) const
{
    if (!c)
        return nullptr;
    QAStConfiguration* initial = initialConfiguration(c->name());
    if (c == initial)
        return nullptr;
    return configuration(c->name()) == c ? initial : nullptr;
}

unsigned int QAStProject::propertyKind() const
{
    return QAStPropertyFilters::Project;
}
