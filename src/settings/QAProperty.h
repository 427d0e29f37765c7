#pragma once

#include "sdk110_export.h"

#include <QMetaType>
#include <QString>
#include <QVariant>

#include <memory>

class QAPropertyGroup;
class QValidator;
class QWidget;

// A typed setting descriptor. A property does not own the value it shows:
// the bound forms of each kind read and write a value held elsewhere (a
// QAStAttribute of a project item, or a key of a QAPropertyStore), so one
// descriptor tree serves every node and configuration.
//
// A property knows the group that holds it (set by QAPropertyGroup); a
// copy belongs to no group until it is added to one.
class SDK110_EXPORT QAProperty {
public:
    explicit QAProperty(const QString& name = QString());
    // Copies every field; the copy is held by no group.
    QAProperty(const QAProperty& other);
    // Copies every field but keeps the group that holds this property.
    QAProperty& operator=(const QAProperty& other);

    // Leaves the group that holds it, if any.
    virtual ~QAProperty();
    virtual bool isGroup() const;
    // Text shown in a property sheet when not editing.
    virtual QString displayValue() const = 0;
    // True when a local value exists on the bound item or store.
    virtual bool isOverriden() const = 0;
    // True when the local value can be removed so that an inherited one shows.
    virtual bool isResetable() const = 0;
    // Removes the local value.
    virtual void reset() = 0;
    virtual void setValue(const QVariant& v) = 0;
    // The effective value, inherited if need be.
    virtual QVariant value() const = 0;
    // The type of value the property holds.
    virtual QMetaType::Type type() const = 0;
    // The editing widget, or null for properties that have none.
    virtual QWidget* createEditor(QWidget* parent) = 0;

    const QString& name() const;
    void setName(const QString& name);
    const QString& whatThis() const;
    void setWhatThis(const QString& whatThis);
    // Key in a QAPropertyStore and element name in the serialised form.
    const QString& tag() const;
    void setTag(const QString& tag);
    bool readOnly() const;
    void setReadOnly(bool readOnly);
    // Input validator for text editors; not owned.
    const QValidator* validator() const;
    void setValidator(const QValidator* validator);
    // Variable carrying the setting into the generated Perl environment.
    const QString& perlVarName() const;
    void setPerlVarName(const QString& perlVarName);
    const QVariant& initValue() const;
    void setInitValue(const QVariant& initValue);
    bool hasInitValue() const;
    // Filter bits (languages, node kinds, hosts: see QAStPropertyFilters)
    // naming where the property applies and where it does not; 0 sets no
    // restriction. QAStPropertyFilters::isApplicable reads them.
    unsigned int applyMask() const;
    void setApplyMask(unsigned int mask);
    unsigned int unapplyMask() const;
    void setUnapplyMask(unsigned int mask);

    // The group holding this property, or null.
    QAPropertyGroup* parentGroup() const;

    // The form in which a bound property stores an edited value of the
    // given type: Int, Bool, String and StringList are converted, other
    // types are kept as they are. Kinds with a stricter rule hide it.
    static QVariant convertedValue(QMetaType::Type type, const QVariant& v);
    // What a bound property shows when it has no value of its type: the
    // empty string for String, the empty list for StringList, else invalid.
    static QVariant emptyValue(QMetaType::Type type);

private:
    friend class QAPropertyGroup;
    // The group that holds it, set by that group only.
    void setParentGroup(QAPropertyGroup* group);

    struct Private;
    std::unique_ptr<Private> d;
};
