#pragma once

#include "QATr.h"
#include "sdk110_export.h"

#include <QList>
#include <QString>
#include <QStringList>

class QAStData;
class QAStNode;
class QDomElement;
struct QMetaObject;

// One kind of node of the project file: a row of the kind table.
//
// The table is the one place that says which kinds exist and how they
// nest. From it come the factory's rows of the kinds (read), the fresh
// nodes of the add menus and of addNewChild (make, label), what a node
// takes below it (QAStNode::allowedChildClasses, addableChildKinds), its
// driver (QAStNode::driverKind) and the kind bit of its property sheet
// (QAStNode::propertyKind).
//
// Besides the kinds a file holds, the table has rows for the bases that
// give their children to kinds deriving from them (QAStNodeContainer,
// QAStNodeTest): they have no element of their own, no label and no maker.
struct SDK110_EXPORT QAStNodeKind {
    // The element of the kind in the project file, also the kind's name in
    // the add menus and on the command line; for a base, the name of its
    // block, by which other rows list it among their children.
    const char* name;
    const QMetaObject* meta;
    // The add menu's entry and the name of a fresh node (translated with
    // QATr::project); null when a user does not add the kind from a menu.
    const char* label;
    // The base block wrapped inside the kind's element (the project file's
    // layout, docs/formats/project-file.md); null for the bases.
    const char* block;
    // The kinds it takes below it, by name, in menu order, blank-separated.
    // A child read from the file must inherit the class of one of them.
    const char* children;
    // The kind's driver (docs/formats/driver-scripts.md); null for none.
    const char* driver;
    // Its bit of QAStPropertyFilters::Kind; 0 for none.
    unsigned int propertyKind;
    // The item read from its element; null for a kind the factory does not
    // build from an element of its own.
    QAStData* (*read)(const QDomElement& e, int version, QAStData* parent, QAStData* after);
    // A fresh node with that name; null for a kind not added this way.
    QAStNode* (*make)(const QString& name, QAStData* parent, QAStData* after);

    // The row of a kind by its name, or null.
    static const QAStNodeKind* byName(const QString& name);
    // The row of the class or of its nearest base that has one, or null.
    static const QAStNodeKind* of(const QMetaObject* meta);
    // Every row, in table order.
    static const QList<const QAStNodeKind*>& all();

    // The classes of the kinds it takes.
    QStringList childClasses() const;
    // The names of the kinds it takes that a user may add, in menu order.
    QStringList addableChildren() const;
};
