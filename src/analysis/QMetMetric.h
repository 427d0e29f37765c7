#pragma once

#include "sdk110_export.h"

#include <QObject>
#include <QString>

class QDomElement;
class QMetElement;

// One named metric value of a metrics element: a key (the identifier, "VG",
// "Effort", "VG_SUM"), a display name and a 32-bit value.
//
// A metric is either read from a "METRIC" element of a metrics file (Read)
// or derived by the tree: the four aggregates over an element's children
// (Aggregate), the four over a class's members gathered from every file
// (ClassAggregate), or a testing time (TestingTime). Only Read metrics are
// aggregated by the parents; derived ones are made again on every update.
//
// Ownership: the owner element deletes the metrics it was given
// (QMetElement::addMetric); a metric has no QObject parent.
class SDK110_EXPORT QMetMetric : public QObject {
    Q_OBJECT
public:
    enum Kind { Read, Aggregate, ClassAggregate, TestingTime };
    Q_ENUM(Kind)

    // A metric read from a "METRIC" element: key from "Key", value from
    // "Value" (textToFloat), name = key. Not valid when the key is empty
    // or the value is not a number; the value is then 0.
    QMetMetric(const QDomElement& e, QMetElement* owner);
    // A metric made by the tree.
    QMetMetric(QMetElement* owner, const QString& key, const QString& name, float value,
               Kind kind = Aggregate);

    const QString& key() const { return m_key; }
    const QString& name() const { return m_name; }
    float value() const { return m_value; }
    void setValue(float value) { m_value = value; }
    Kind kind() const { return m_kind; }
    QMetElement* owner() const { return m_owner; }
    bool isValid() const { return m_valid; }

    // The conversion of a metrics file's value text: C-locale decimal
    // notation (an optional sign, digits with an optional "." fraction, an
    // optional exponent), blanks around it ignored. No group separator, no
    // decimal comma, no hexadecimal; "nan", "inf" and values beyond the
    // range of a float are refused. A refused text gives 0 and *ok false.
    static float textToFloat(const QString& text, bool* ok = nullptr);

private:
    QMetElement* m_owner;
    QString m_key;
    QString m_name;
    float m_value = 0;
    Kind m_kind = Read;
    bool m_valid = true;
};
