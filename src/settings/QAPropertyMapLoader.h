#pragma once

#include "sdk110_export.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

class QAILogMonitor;
class QAProperty;
class QAPropertyGroup;
class QAPropertyMapComboInt;
class QAPropertyMapComboString;
class QAPropertyMapGroup;
class QAPropertyMapInt;
class QAPropertyMapPathBox;
class QAPropertyMapPathItem;
class QARes;

// Builds a descriptor tree of map-bound properties from a settings
// descriptor file (docs/formats/settings-descriptor.md).
//
// The root is an implicit map group named "Common", the group shared by
// all: every "path" starts with it ("Common" puts an entry in the root,
// "Common/Build" in the group "Build" of the root). Entries are taken in
// file order, so a group is defined before what goes in it.
//
// Reading never stops at a faulty entry: the fault goes to the log monitor
// as one message naming the entry's line, the entry is left out and the
// rest of the file loads. Each entry's "apply" and "unapply" filter names
// become the property's apply and unapply masks (QAStPropertyFilters).
//
// The hooks let a subclass add property types or read further fields;
// each returns false when it has reported a fault, which leaves the entry
// out.
class SDK110_EXPORT QAPropertyMapLoader {
public:
    QAPropertyMapLoader();
    virtual ~QAPropertyMapLoader();

    // Reads the file and returns the root group (the caller owns it), or
    // null when the file is missing, is not a descriptor or defines no
    // group. filters maps each filter name the file may use to its bits;
    // masks are the filter categories (languages, node kinds, hosts).
    // Messages go to log, or to the Qt warning channel without one.
    QAPropertyMapGroup* load(const QString& file, const QMap<QString, int>& filters,
                             const QList<unsigned int>& masks, QAILogMonitor* log);

    // The name of the root group and the first name of every path.
    static QString rootName();

protected:
    // A new property of the given type ("Group", "Int", ...) bound to the
    // store key tag, or null for a type the loader does not know.
    virtual QAProperty* createProperty(const QString& type, const QString& tag, QARes* entry);
    // Reads the fields every kind has: name, whatThis, perlVarName,
    // readonly, apply, unapply and the initial value "value", read in the
    // property's own value type.
    virtual bool loadProperty(QAProperty* property, QARes* entry);

    // The kind-specific fields; tag is the entry's store key.
    // "min", "max", "step", "suffix".
    virtual bool init(QAPropertyMapInt* property, const QString& tag, QARes* entry);
    // "content": ( ( label, integer ), ... ).
    virtual bool init(QAPropertyMapComboInt* property, const QString& tag, QARes* entry);
    // "content": ( ( label, text ), ... ).
    virtual bool init(QAPropertyMapComboString* property, const QString& tag, QARes* entry);
    // "mode", "extension".
    virtual bool init(QAPropertyMapPathItem* property, const QString& tag, QARes* entry);
    // "mode", "extension", "button".
    virtual bool init(QAPropertyMapPathBox* property, const QString& tag, QARes* entry);

    // Sends one message to the log of the running load.
    void report(const QString& message) const;
    // Reports "Property at line N: " followed by the reason.
    void reportEntry(const QARes* entry, const QString& reason) const;
    // Reports a field whose value has the wrong form or an unknown word.
    bool fieldNotExpected(const QARes* entry, const QString& field) const;

    // Optional fields of an entry. An absent field leaves *value as it is
    // and passes; a field of another form is reported and fails.
    // Any single value as its text.
    bool readText(const QARes* entry, const QString& field, QString* value) const;
    bool readInt(const QARes* entry, const QString& field, int* value) const;
    bool readBool(const QARes* entry, const QString& field, bool* value) const;
    // A list of single values as their texts; a single value is a list of one.
    bool readStrings(const QARes* entry, const QString& field, QStringList* value) const;

private:
    QAPropertyMapGroup* readDescriptor(QARes* resource);
    void loadEntry(QAPropertyMapGroup* root, QARes* entry);
    QAPropertyGroup* findGroup(QAPropertyMapGroup* root, const QString& path, const QARes* entry) const;
    bool initKind(QAProperty* property, const QString& tag, QARes* entry);
    bool readInitValue(QAProperty* property, QARes* entry);
    bool readFilters(const QARes* entry, const QString& field, unsigned int* bits) const;
    unsigned int applyRestriction(unsigned int bits) const;
    unsigned int unapplyRestriction(unsigned int bits) const;

    QString m_file;
    QMap<QString, int> m_filters;
    QList<unsigned int> m_masks;
    QAILogMonitor* m_log = nullptr;
    int m_groups = 0;
};
