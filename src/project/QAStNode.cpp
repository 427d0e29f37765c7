#include "QAStNode.h"

#include "QAPropertyMapGroup.h"
#include "QAStConfiguration.h"
#include "QAStPropertyFilters.h"

#include <utility>

QAStNode::QAStNode(const QString& name, const QPixmap& icon, QAStData* parent, QAStData* after)
    : QAStData(name, icon, parent, after)
{
}

QAStNode::QAStNode(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : QAStData(e, version, parent, after)
{
}

QAStNode::QAStNode(QARes* res, QAStData* parent, QAStData* after)
    : QAStData(res, parent, after)
{
}

QAStNode::QAStNode(QAStData* parent, QAStData* after)
    : QAStData(parent, after)
{
}

QAStNode::~QAStNode()
{
    // Emptied first, so that no look-up made while they go finds them.
    qDeleteAll(std::exchange(m_configurations, {}));
}

QStringList QAStNode::configurations() const
{
    QStringList names;
    names.reserve(m_configurations.size());
    for (const QAStConfiguration* c : m_configurations)
        names.append(c->name());
    return names;
}

QAStConfiguration* QAStNode::configuration(const QString& name) const
{
    for (QAStConfiguration* c : m_configurations) {
        if (c->name() == name)
            return c;
    }
    return nullptr;
}

void QAStNode::addConfiguration(QAStConfiguration* c)
{
    if (!c || m_configurations.contains(c))
        return;
    if (c->m_node)
        c->m_node->m_configurations.removeOne(c);
    delete takeConfiguration(c->name());
    c->m_node = this;
    m_configurations.append(c);
}

QAStConfiguration* QAStNode::addConfiguration(const QString& name)
{
    if (QAStConfiguration* own = configuration(name))
        return own;
    auto* c = new QAStConfiguration(name, this);
    addConfiguration(c);
    return c;
}

bool QAStNode::removeConfiguration(const QString& name)
{
    QAStConfiguration* c = takeConfiguration(name);
    delete c;
    return c != nullptr;
}

QAStConfiguration* QAStNode::takeConfiguration(const QString& name)
{
    QAStConfiguration* c = configuration(name);
    if (c)
        m_configurations.removeOne(c);
    return c;
}

void QAStNode::setCurrentConfigurationName(const QString& name)
{
    m_currentConfigurationName = name;
}

QAStConfiguration* QAStNode::currentConfiguration() const
{
    return configuration(m_currentConfigurationName);
}

QAStConfiguration* QAStNode::inheritConfiguration(const QAStConfiguration* c) const
{
    if (!c || configuration(c->name()) != c)
        return nullptr;
    const QAStNode* parentNode = qobject_cast<const QAStNode*>(parent());
    return parentNode ? parentNode->configuration(c->name()) : nullptr;
}

unsigned int QAStNode::propertyKind() const
{
    return 0;
}

unsigned int QAStNode::propertyContext() const
{
    const QAStConfiguration* c = currentConfiguration();
    const unsigned int language = c ? unsigned(c->languageType()) : QAStPropertyFilters::LanguageC;
    return language | propertyKind() | QAStPropertyFilters::host();
}

QList<QAProperty*> QAStNode::visibleSettings(const QAPropertyGroup* group) const
{
    if (!group)
        group = QAStConfiguration::propertyDescriptor();
    if (!group)
        return {};
    return QAStPropertyFilters::visibleChildren(group, propertyContext());
}
