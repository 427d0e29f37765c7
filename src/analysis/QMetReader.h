#pragma once

#include "sdk110_export.h"

#include <QDomElement>
#include <QObject>
#include <QString>
#include <QStringList>

class QMetElement;
class QMetTree;

// Reads metrics files (docs/formats/metrics.md) into the root element of a
// tree: each file's document element, and everything inside it, becomes
// an element under the root.
//
// A file that cannot be read or parsed is skipped: "Parsing error for file
// %1" is shown (a warning box of the host; the message console in batch
// mode or without a host) and the reason kept in errors(); the other files
// still load. A metric without a key or whose value is not a number
// (QMetMetric::textToFloat) is left out and noted in errors().
//
// Ownership: the tree is the reader's QObject parent.
class SDK110_EXPORT QMetReader : public QObject {
    Q_OBJECT
public:
    // Reads the file, or the files in order, under tree's root.
    QMetReader(const QString& file, QMetTree* tree, const char* name = nullptr);
    QMetReader(const QStringList& files, QMetTree* tree, const char* name = nullptr);

    // Reads one more file under the root; false when it was skipped (or
    // the reader has no tree).
    bool addMetFile(const QString& file);
    // Reads each file in turn; returns how many were read.
    int addMetFiles(const QStringList& files);
    // The document element of a metrics file; a null element (and the
    // message above) when it cannot be read or parsed.
    QDomElement readXmlFile(const QString& file);

    // The files read, in order.
    QStringList files() const { return m_files; }
    // One line for each fault met, in order.
    QStringList errors() const { return m_errors; }

private:
    void readElement(const QDomElement& e, QMetElement* parent, const QString& file);
    void readMetrics(const QDomElement& metrics, QMetElement* owner, const QString& file);
    void attach(QMetElement* element, QMetElement* parent);
    void reportParsingError(const QString& file, const QString& reason);

    QMetTree* m_tree;
    QStringList m_files;
    QStringList m_errors;
};
