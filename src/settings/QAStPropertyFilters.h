#pragma once

#include "sdk110_export.h"

#include <QList>
#include <QMap>
#include <QString>

class QAProperty;
class QAPropertyGroup;

// The names a settings descriptor uses to restrict a setting to languages,
// node kinds and host environments, and their values. Each name is one bit;
// the bits of a category lie under that category's mask:
//
//   languages   "C++" 0x2, "ADA" 0x4, "JAVA" 0x8 (the language bits;
//               C, 0x1, has no name of its own)
//   node kinds  "PROJECT" 0x100 ... "JAVA_TESTING" 0x400000
//   hosts       "STUDIO" 0x1000000, "ECLIPSE_RTA" 0x2000000,
//               "ECLIPSE_TPTP" 0x4000000
//   "Common"    every bit: the settings shared by all
//
// A context is the OR of one language bit, one node-kind bit and one host
// bit: the place a property sheet is shown for.
//
// Visibility. A property keeps the bits its descriptor entry applies to
// and the bits it does not apply to (QAProperty::applyMask, unapplyMask).
// It is applicable in a context when
//   - for each category, its apply bits under that category's mask are
//     empty or the context holds one of them;
//   - the context holds none of its unapply bits;
//   - every group above it is applicable;
//   - being a group, at least one of its children is applicable.
// So a property sheet shows exactly the settings that apply to the node's
// kind, its language and the host.
namespace QAStPropertyFilters {

enum Language : unsigned {
    LanguageC = 0x1,
    LanguageCpp = 0x2,
    LanguageAda = 0x4,
    LanguageJava = 0x8,
};

enum Kind : unsigned {
    Project = 1u << 8,
    Group = 1u << 9,
    Test = 1u << 10,
    UnitTesting = 1u << 11,
    ObjectTesting = 1u << 12,
    SystemTesting = 1u << 13,
    User = 1u << 14,
    Source = 1u << 15,
    TestScript = 1u << 16,
    UnitTestScript = 1u << 17,
    SystemTestScript = 1u << 18,
    VirtualTester = 1u << 19,
    Application = 1u << 20,
    Library = 1u << 21,
    JavaTesting = 1u << 22,
};

enum Host : unsigned {
    Studio = 1u << 24,
    EclipseRta = 1u << 25,
    EclipseTptp = 1u << 26,
};

enum Mask : unsigned {
    LanguageMask = 0xFFu,
    KindMask = 0xFFFF00u,
    HostMask = 0xFF000000u,
};

// Filter name -> value, as handed to the descriptor loader.
SDK110_EXPORT QMap<QString, int> table();
// The category masks, in the order languages, node kinds, hosts.
SDK110_EXPORT QList<unsigned int> masks();

// The context of a property sheet: a language, a node kind and a host.
SDK110_EXPORT unsigned int context(Language language, Kind kind, Host host);

// The host environment the library serves (Studio unless a host says
// otherwise); it is part of every node's context.
SDK110_EXPORT Host host();
SDK110_EXPORT void setHost(Host host);

// True when the property shows in the context (see Visibility above).
SDK110_EXPORT bool isApplicable(const QAProperty* property, unsigned int context,
                                const QList<unsigned int>& categories = masks());
// The children of the group that show in the context, in order; none when
// the group itself does not show.
SDK110_EXPORT QList<QAProperty*> visibleChildren(const QAPropertyGroup* group, unsigned int context,
                                                 const QList<unsigned int>& categories = masks());

}
