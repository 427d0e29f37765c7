#pragma once

#include "sdk110_export.h"

#include <QString>

#include <functional>

class QAStData;
class QDomElement;

// The one place where an element of a project file becomes an item.
//
// Known tags come from a table of tag -> creator. Each item class adds its
// own row when it is defined, with registerClass or a static
// Registration<T> object in its source; the table starts empty, since the
// rows belong to the item classes themselves.
//
// Any other tag is a feature served by a node plug-in
// (QAStNodePluginCenter). The center is asked, in this order, for:
//   0  QAIActivityPlugin  the feature keeps data in the project file but
//                         has no item: nothing is built (deliberately)
//   1  QAITestNodePlugin  createTestNode builds the item
//   2  QAIProjectPlugin   createProjectItem builds the item
// The first that answers gives the kind, kept with the interface for the
// tag until the plug-in registrations change. When none answers, or for
// kind 0, "No plugin found for feature %s" goes to the debug output and no
// item is returned.
class SDK110_EXPORT QAStDataFactory {
public:
    using Creator = std::function<QAStData*(const QDomElement& e, int version, QAStData* parent,
                                            QAStData* after)>;

    // The new item, built inside parent behind after, or null.
    static QAStData* create(const QDomElement& e, int version, QAStData* parent, QAStData* after);

    // Adds (or replaces) the row of a tag.
    static void registerClass(const QString& tag, const Creator& creator);
    static void unregisterClass(const QString& tag);
    static bool isRegistered(const QString& tag);

    // The creator of a class with the element constructor.
    template <class T>
    static QAStData* construct(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    {
        return new T(e, version, parent, after);
    }

    // Registers T for a tag when constructed; meant as a static object in
    // T's source file.
    template <class T>
    struct Registration {
        explicit Registration(const char* tag)
        {
            registerClass(QString::fromLatin1(tag), &construct<T>);
        }
    };

private:
    static QAStData* createByPlugin(const QString& feature, const QDomElement& e, int version,
                                    QAStData* parent, QAStData* after);
};
