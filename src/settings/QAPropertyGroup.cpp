#include "QAPropertyGroup.h"

#include <QGuiApplication>

#include <algorithm>
#include <utility>

namespace {

// Pixmaps need a GUI application; a command-line host has none.
QPixmap pixmapFromFile(const QString& fileName)
{
    if (fileName.isEmpty() || !qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return QPixmap();
    return QPixmap(fileName);
}

}

QAPropertyGroup::QAPropertyGroup(const QString& name)
    : QAProperty(name)
{
}

QAPropertyGroup::QAPropertyGroup(const QAPropertyGroup& other)
    : QAProperty(other), m_openedPix(other.m_openedPix), m_closedPix(other.m_closedPix)
{
}

QAPropertyGroup& QAPropertyGroup::operator=(const QAPropertyGroup& other)
{
    QAProperty::operator=(other);
    m_openedPix = other.m_openedPix;
    m_closedPix = other.m_closedPix;
    return *this;
}

QAPropertyGroup::~QAPropertyGroup()
{
    const QList<QAProperty*> children = std::exchange(m_children, {});
    for (QAProperty* child : children) {
        child->setParentGroup(nullptr);
        delete child;
    }
}

bool QAPropertyGroup::isGroup() const
{
    return true;
}

QString QAPropertyGroup::displayValue() const
{
    return QString();
}

bool QAPropertyGroup::isOverriden() const
{
    return std::any_of(m_children.cbegin(), m_children.cend(),
                       [](const QAProperty* child) { return child->isOverriden(); });
}

bool QAPropertyGroup::isResetable() const
{
    return false;
}

void QAPropertyGroup::reset()
{
}

void QAPropertyGroup::setValue(const QVariant&)
{
}

QVariant QAPropertyGroup::value() const
{
    return QVariant();
}

QMetaType::Type QAPropertyGroup::type() const
{
    return QMetaType::UnknownType;
}

QWidget* QAPropertyGroup::createEditor(QWidget*)
{
    return nullptr;
}

void QAPropertyGroup::addChild(QAProperty* child)
{
    if (!child || child == this)
        return;
    if (QAPropertyGroup* former = child->parentGroup())
        former->removeChild(child);
    m_children.append(child);
    child->setParentGroup(this);
}

void QAPropertyGroup::removeChild(QAProperty* child)
{
    if (child && m_children.removeOne(child))
        child->setParentGroup(nullptr);
}

QAProperty* QAPropertyGroup::property(const QString& key) const
{
    const auto it = std::find_if(m_children.cbegin(), m_children.cend(),
                                 [&](const QAProperty* child) { return child->tag() == key; });
    return it == m_children.cend() ? nullptr : *it;
}

int QAPropertyGroup::nbGroup() const
{
    return int(std::count_if(m_children.cbegin(), m_children.cend(),
                             [](const QAProperty* child) { return child->isGroup(); }));
}

QPixmap QAPropertyGroup::openedPix() const
{
    return pixmapFromFile(m_openedPix);
}

QPixmap QAPropertyGroup::closedPix() const
{
    return pixmapFromFile(m_closedPix);
}
