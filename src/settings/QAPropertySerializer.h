#pragma once

#include "sdk110_export.h"

#include <QString>

class QAPropertyGroup;
class QAPropertyStore;
class QARes;
class QDomElement;
class QTextStream;

// Saves and loads the values of a store through a descriptor tree. Only
// values set locally on the store are written, one element per setting,
// named by the property's tag; groups add no level, so the output is flat.
// Reading decodes each text by the type of the property describing it and
// leaves absent settings untouched, so they keep inheriting.
class SDK110_EXPORT QAPropertySerializer {
public:
    // The locally set values, one line each at the given depth.
    static void write(QAPropertyStore* store, QAPropertyGroup* group, QTextStream& s, int indent);
    // The same, wrapped in an element of the given name.
    static void write(QAPropertyStore* store, QAPropertyGroup* group, const QString& element,
                      QTextStream& s, int indent);
    // Reads the child elements of element that the tree describes.
    static void read(QAPropertyStore* store, QAPropertyGroup* group, const QDomElement& element);
    // Reads the older resource form, searching each tag as a dotted path.
    static void read(QAPropertyStore* store, QAPropertyGroup* group, QARes* res);
};
