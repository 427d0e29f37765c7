#pragma once

#include "QATagFilterExpr.h"
#include "sdk110_export.h"

#include <QCoreApplication>
#include <QList>
#include <QString>

#include <functional>

class QAStATag;
class QAStFile;
class QAStProject;
class QATagFiltersMgr;

// The tag browser's layouts, without a widget: the entries the browser
// (QAStObjectManager, in the widgets library) shows and the command-line
// host prints.
//
//   0 by file       each file holding tags, in the order of the file
//                   trees, with its tags below it as they nest; a member
//                   standing apart from its class (a body in a source
//                   file) is named with its class, as far as the item it
//                   stands below does not say it ("Shape::move(...)"
//                   below "geo")
//   1 by type       "Test Items" holding "Classes" (class tags),
//                   "Functions" (function and method tags) and "Packages"
//                   (package tags), each a flat list by qualified name,
//                   in the order of the file trees
//   2 alphabetical  the by-file layout with the files, and the tags at
//                   every level, ordered by name (case ignored)
//
// An item filter, when given, keeps only the tags it accepts; the accepted
// tags below a refused one move up to the nearest entry shown, and a file
// with no tag shown is left out. The tag filters restrict what is shown
// once at least one of them is enabled: a tag they refuse is left out,
// unless a tag below it passes; then it stays as that tag's context. The
// by-type headers always show.
class SDK110_EXPORT QAStTagLayout {
    Q_DECLARE_TR_FUNCTIONS(QAStObjectManager)
public:
    enum SortMode { SortByFile = 0, SortByType = 1, SortAlpha = 2 };
    using ItemFilter = std::function<bool(const QAStATag*)>;

    // One entry: its text, the tag it shows (a file entry its file; null
    // for a header), the pixmap name of a header with an icon
    // ("project_xpm" for "Test Items"), and the entries below it. A context
    // entry shows a tag the tag filters refuse, above one they pass.
    struct Entry {
        QString text;
        QAStATag* tag = nullptr;
        QString icon;
        QList<Entry> children;
        bool context = false;
    };

    // The entries of a layout (SortMode; any other value lays out by file)
    // of files, taken in the order given, with the tags that filter accepts
    // (every tag when it is empty) and that tagFilters pass (every tag when
    // it is null or has no filter enabled).
    static QList<Entry> layout(const QList<QAStFile*>& files, int mode,
                               const ItemFilter& filter = ItemFilter(),
                               QATagFiltersMgr* tagFilters = nullptr);
    // What the tag filters test of tag: its name, its kind ("class",
    // "struct", "package", "method", "function"; "tag" for another tag),
    // the path of its file with "/" separators and its qualifier bits.
    static QATagFilterSubject filterSubject(const QAStATag* tag);
    // A project and its loaded sub-projects, and the files of all of them,
    // in tree order.
    static QList<QAStProject*> projectsOf(QAStProject* project);
    static QList<QAStFile*> filesOf(QAStProject* project);
};
