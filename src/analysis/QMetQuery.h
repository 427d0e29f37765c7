#pragma once

#include "QMetTree.h"

// A metrics tree that answers the component-selection page: one metric of
// a file, or of the unit (class, function, method) at a line of a file,
// and the source-lines text of a file. It keeps the Stroud number the
// testing times are computed with.
//
// Values come back as floats with *ok telling whether the metric exists
// (0 and false when the file, the unit or the key is unknown).
class SDK110_EXPORT QMetQuery : public QMetTree {
    Q_OBJECT
public:
    explicit QMetQuery(const QString& file, QObject* parent = nullptr);
    explicit QMetQuery(const QStringList& files, QObject* parent = nullptr);

    float stroudNumber() const override { return QStroudNumber; }
    // Keeps the number, then recomputes (refused when not above 0).
    void stroudChange(float stroudNumber) override;

    // A metric of the file element of sourceFile.
    float fileMetric(const QString& sourceFile, const QString& key, bool* ok = nullptr) const;
    // A metric of the unit of sourceFile at line (findLine). For a class,
    // "VG", "Statements" and "NestedLevel" are its values over every member
    // from every file ("VG_SUM2" ...), its own value when it has no member.
    float itemMetric(const QString& sourceFile, int line, const QString& key,
                     bool* ok = nullptr) const;
    // The first element below the file element of sourceFile, depth first
    // in file order, whose "Line" is line; null when none.
    QMetElement* findLine(const QString& sourceFile, int line) const;
    static QMetElement* findLine(QMetElement* element, int line);
    // The file's "Src1" (lines of code) and "Src2" (comment lines) as
    // "<Src1>/<Src2>", each value as its shortest decimal form ("120/35",
    // "7.5/2"), "-" for a value the file lacks; empty when it lacks both or
    // is unknown.
    QString getSourceLinesValue(const QString& sourceFile) const;

protected:
    float QStroudNumber = DefaultStroudNumber;
};
