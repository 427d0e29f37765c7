#pragma once

#include "QMetMetric.h"
#include "sdk110_export.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

#include <utility>

// One element of a metrics tree: the root ("ROOT"), a file ("FILE"), a
// class ("CLASS"), a method ("METHOD", "CONSTRUCTOR", "DESTRUCTOR"), a
// function ("FUNCTION" or any other kind a metrics file names), with its
// metric values.
//
// Two child lists:
// - children(): the elements read inside this one, owned (they are also
//   its QObject children). Aggregates "_SUM", "_MEAN", "_MAX", "_STD" are
//   made over them.
// - children2(): for a class, every member: its own children and the
//   methods, constructors and destructors of other places whose "Class"
//   names it (addElement). Not owned. Aggregates "_SUM2", "_MEAN2",
//   "_MAX2", "_STD2" are made over them.
//
// The root keeps the classes by name (addClass). Members naming a class
// that is not registered yet wait at the root until it is, so the order in
// which files are read does not matter; members naming a class that never
// comes stay under their own parent only (unattachedMembers()).
//
// Ownership: an element owns its children (its QObject children) and its
// metrics (deleted with it; not QObject children).
//
// Derived metrics are kept as plain values (key, name, value, kind) and
// made into QMetMetric objects the first time metrics() or metric() is
// called on the element: a tree of ten thousand files holds half a million
// derived values, of which a view asks for few.
//
// The counter map holds, for every mean, the number of elements it
// divides by, under the mean's key ("VG_MEAN" -> children having "VG").
class SDK110_EXPORT QMetElement : public QObject {
    Q_OBJECT
public:
    // A new element of a type, added as the last child of parent (when
    // not null).
    QMetElement(const QString& type, const QString& name, QMetElement* parent = nullptr);
    ~QMetElement() override;

    QString name() const { return m_name; }
    QString type() const { return m_type; }
    // The "Line" text as read; lineNumber() its value, -1 when it is not a
    // whole number.
    QString line() const { return m_line; }
    void setLine(const QString& line) { m_line = line; }
    int lineNumber() const;
    // The directory of the element's file ("Dir" of the file element).
    QString path() const { return m_path; }
    void setPath(const QString& path) { m_path = path; }
    // The name of the element's file ("Name" of the file element).
    QString fileName() const { return m_fileName; }
    void setFileName(const QString& fileName) { m_fileName = fileName; }
    // The class a member belongs to ("Class"); empty for others.
    QString className() const { return m_className; }
    void setClassName(const QString& className) { m_className = className; }

    bool isFile() const;
    bool isClass() const;
    // A method, constructor or destructor.
    bool isMember() const;
    static bool isMemberType(const QString& type);

    // The name with its class for a member: "Class::name", or "Class.name"
    // in Java files (extension "JAVA") and Ada files ("ADA", "ADS", "ADB"),
    // in any case. Other elements, and members without a class, give the
    // name alone.
    QString qualifiedName() const;
    // The separator qualifiedName uses for a file name.
    static QString separatorFor(const QString& fileName);

    QMetElement* parentElement() const { return m_parent; }
    // The topmost element.
    QMetElement* root();

    // --- metrics, in the order added

    const QList<QMetMetric*>& metrics() const;
    // The first metric with that key; null when none.
    QMetMetric* metric(const QString& key) const;
    // Its value; 0 and *ok false when the element has no such metric.
    // Derived values are answered without making their objects.
    float metricValue(const QString& key, bool* ok = nullptr) const;
    // Takes a metric (its owner must be this element), which the element
    // deletes with itself. A Read metric replaces (and deletes) an earlier
    // Read metric of the same key.
    void addMetric(QMetMetric* metric);
    // Deletes every metric that is not Read.
    void removeDerivedMetrics();

    // --- children

    const QList<QMetElement*>& children() const { return m_children; }
    const QList<QMetElement*>& children2() const { return m_children2; }
    // Adds a member to the second list (not owned; once).
    void addChild2(QMetElement* member);

    // --- at the root

    // Registers a class by name; the first class of a name is kept. Members
    // waiting for that name join its second list. False when refused (no
    // name, or the name is taken).
    bool addClass(QMetElement* c);
    // The registered class of that name, or null.
    QMetElement* findClass(const QString& name) const;
    QList<QMetElement*> classes() const { return m_classList; }
    // Attaches a member to the class its className() names: at once when it
    // is registered, else when it comes. False while it waits.
    bool addElement(QMetElement* member);
    // The members whose class has not come.
    QList<QMetElement*> unattachedMembers() const;

    // --- counters of the means

    // The count kept under key; 0 when none.
    int counter(const QString& key) const;
    void setCounter(const QString& key, int count);
    // Every key and count, in the order set.
    const QList<std::pair<QString, int>>& counters() const { return m_counters; }

    // --- derived metrics

    // Makes the aggregates of this element and of every element below it
    // afresh, and the testing times with stroudNumber.
    void updateMetrics(float stroudNumber);
    // Recomputes "TestingTime" from "Effort" and "TestingTime_SUM" from
    // "Effort_SUM" here and below.
    void updateTestingTime(float stroudNumber);

private:
    // The keys and names of derived metrics, made once per update.
    struct DerivedTexts;

    void addChild(QMetElement* child);
    void update(DerivedTexts& texts, float stroudNumber);
    void updateTestingTime(const DerivedTexts& texts, float stroudNumber);
    void aggregate(const QList<QMetElement*>& elements, bool classWide, DerivedTexts& texts);
    // fresh: the element has no testing time yet.
    void setTestingTimes(const DerivedTexts& texts, float stroudNumber, bool fresh);
    void setTestingTime(const QString& sourceKey, const QString& key, const QString& name,
                        float stroudNumber, bool fresh);

    QString m_type;
    QString m_name;
    QString m_line;
    QString m_path;
    QString m_fileName;
    QString m_className;
    QMetElement* m_parent;
    // A derived metric not made into an object yet.
    struct DerivedValue {
        QString key;
        QString name;
        float value;
        QMetMetric::Kind kind;
    };
    // Makes the derived values into objects at the end of m_metrics.
    void makeDerivedMetrics() const;
    void addDerived(const QString& key, const QString& name, float value, QMetMetric::Kind kind);
    // Sets the derived value of that key, made into an object or not;
    // false when there is none.
    bool setDerivedValue(const QString& key, float value);

    mutable QList<QMetMetric*> m_metrics;
    mutable QList<DerivedValue> m_derived;
    QList<QMetElement*> m_children;
    QList<QMetElement*> m_children2;
    QList<std::pair<QString, int>> m_counters; // few keys: a flat map

    // At the root only.
    QHash<QString, QMetElement*> m_classes;
    QList<QMetElement*> m_classList;
    QMultiHash<QString, QMetElement*> m_waiting;
};
