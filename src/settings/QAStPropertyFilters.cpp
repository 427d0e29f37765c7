#include "QAStPropertyFilters.h"

#include "QAPropertyGroup.h"

namespace QAStPropertyFilters {

QMap<QString, int> table()
{
    static const QMap<QString, int> filters = {
        {QStringLiteral("C++"), LanguageCpp},
        {QStringLiteral("ADA"), LanguageAda},
        {QStringLiteral("JAVA"), LanguageJava},
        {QStringLiteral("PROJECT"), Project},
        {QStringLiteral("GROUP"), Group},
        {QStringLiteral("TEST"), Test},
        {QStringLiteral("UNIT_TESTING"), UnitTesting},
        {QStringLiteral("OBJECT_TESTING"), ObjectTesting},
        {QStringLiteral("SYSTEM_TESTING"), SystemTesting},
        {QStringLiteral("USER"), User},
        {QStringLiteral("SOURCE"), Source},
        {QStringLiteral("TEST_SCRIPT"), TestScript},
        {QStringLiteral("UNIT_TESTSCRIPT"), UnitTestScript},
        {QStringLiteral("SYSTEM_TESTSCRIPT"), SystemTestScript},
        {QStringLiteral("VIRTUAL_TESTER"), VirtualTester},
        {QStringLiteral("APPLICATION"), Application},
        {QStringLiteral("LIBRARY"), Library},
        {QStringLiteral("JAVA_TESTING"), JavaTesting},
        {QStringLiteral("STUDIO"), int(Studio)},
        {QStringLiteral("ECLIPSE_RTA"), int(EclipseRta)},
        {QStringLiteral("ECLIPSE_TPTP"), int(EclipseTptp)},
        {QStringLiteral("Common"), int(0x07FFFFFFu)},
    };
    return filters;
}

QList<unsigned int> masks()
{
    return {LanguageMask, KindMask, HostMask};
}

unsigned int context(Language language, Kind kind, Host host)
{
    return unsigned(language) | unsigned(kind) | unsigned(host);
}

namespace {
Host currentHost = Studio;
}

Host host()
{
    return currentHost;
}

void setHost(Host host)
{
    currentHost = host;
}

namespace {

// The property's own restriction, leaving its groups aside.
bool passesOwnFilters(const QAProperty* property, unsigned int context,
                      const QList<unsigned int>& categories)
{
    if (property->unapplyMask() & context)
        return false;
    for (unsigned int mask : categories) {
        const unsigned int apply = property->applyMask() & mask;
        if (apply && !(apply & context))
            return false;
    }
    return true;
}

// The property passes its own filters and, being a group, holds something
// that shows.
bool showsBelowItsGroup(const QAProperty* property, unsigned int context,
                        const QList<unsigned int>& categories)
{
    if (!passesOwnFilters(property, context, categories))
        return false;
    if (!property->isGroup())
        return true;
    for (const QAProperty* child : static_cast<const QAPropertyGroup*>(property)->children()) {
        if (showsBelowItsGroup(child, context, categories))
            return true;
    }
    return false;
}

bool groupsAboveShow(const QAProperty* property, unsigned int context,
                     const QList<unsigned int>& categories)
{
    for (const QAPropertyGroup* group = property->parentGroup(); group; group = group->parentGroup()) {
        if (!passesOwnFilters(group, context, categories))
            return false;
    }
    return true;
}

}

bool isApplicable(const QAProperty* property, unsigned int context, const QList<unsigned int>& categories)
{
    return groupsAboveShow(property, context, categories)
        && showsBelowItsGroup(property, context, categories);
}

QList<QAProperty*> visibleChildren(const QAPropertyGroup* group, unsigned int context,
                                   const QList<unsigned int>& categories)
{
    QList<QAProperty*> visible;
    if (!groupsAboveShow(group, context, categories) || !passesOwnFilters(group, context, categories))
        return visible;
    for (QAProperty* child : group->children()) {
        if (showsBelowItsGroup(child, context, categories))
            visible.append(child);
    }
    return visible;
}

}
