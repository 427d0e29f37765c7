#pragma once

#include "sdk110_export.h"

#include <QMetaType>
#include <QString>
#include <QVariant>

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

    const QString& name() const { return m_name; }
    void setName(const QString& name) { m_name = name; }
    const QString& whatThis() const { return m_whatThis; }
    void setWhatThis(const QString& whatThis) { m_whatThis = whatThis; }
    // Key in a QAPropertyStore and element name in the serialised form.
    const QString& tag() const { return m_tag; }
    void setTag(const QString& tag) { m_tag = tag; }
    bool readOnly() const { return m_readOnly; }
    void setReadOnly(bool readOnly) { m_readOnly = readOnly; }
    // Input validator for text editors; not owned.
    const QValidator* validator() const { return m_validator; }
    void setValidator(const QValidator* validator) { m_validator = validator; }
    // Variable carrying the setting into the generated Perl environment.
    const QString& perlVarName() const { return m_perlVarName; }
    void setPerlVarName(const QString& perlVarName) { m_perlVarName = perlVarName; }
    const QVariant& initValue() const { return m_initValue; }
    void setInitValue(const QVariant& initValue) { m_initValue = initValue; }
    bool hasInitValue() const { return m_initValue.isValid(); }
    // Filter bits (languages, node kinds, hosts: see QAStPropertyFilters)
    // naming where the property applies and where it does not; 0 sets no
    // restriction. QAStPropertyFilters::isApplicable reads them.
    unsigned int applyMask() const { return m_applyMask; }
    void setApplyMask(unsigned int mask) { m_applyMask = mask; }
    unsigned int unapplyMask() const { return m_unapplyMask; }
    void setUnapplyMask(unsigned int mask) { m_unapplyMask = mask; }

    // The group holding this property, or null.
    QAPropertyGroup* parentGroup() const { return m_parent; }

    // The form in which a bound property stores an edited value of the
    // given type: Int, Bool, String and StringList are converted, other
    // types are kept as they are. Kinds with a stricter rule hide it.
    static QVariant convertedValue(QMetaType::Type type, const QVariant& v);
    // What a bound property shows when it has no value of its type: the
    // empty string for String, the empty list for StringList, else invalid.
    static QVariant emptyValue(QMetaType::Type type);

private:
    friend class QAPropertyGroup;

    QString m_name;
    QString m_whatThis;
    QString m_tag;
    bool m_readOnly = false;
    const QValidator* m_validator = nullptr;
    QString m_perlVarName;
    QVariant m_initValue;
    unsigned int m_applyMask = 0;
    unsigned int m_unapplyMask = 0;
    QAPropertyGroup* m_parent = nullptr;
};
