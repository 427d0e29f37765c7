#pragma once

#include "sdk110_export.h"

#include <QHash>
#include <QObject>
#include <QString>
#include <QStringList>

class QMetElement;
class QMetReader;

// The metrics of a set of source files: one synthetic root element (type
// "ROOT", named "Root") holding what the metrics files hold, with every
// aggregate derived (QMetElement::updateMetrics).
//
// Built in two steps: the constructor takes the files, init() reads them.
// init() may be called again to read the files afresh.
//
// Ownership: the tree owns its root (and so every element) and its reader.
class SDK110_EXPORT QMetTree : public QObject {
    Q_OBJECT
public:
    // The Stroud number testing times are computed with unless a subclass
    // keeps another (QMetQuery).
    static constexpr float DefaultStroudNumber = 18.0f;

    explicit QMetTree(const QString& file, QObject* parent = nullptr);
    explicit QMetTree(const QStringList& files, QObject* parent = nullptr);
    ~QMetTree() override;

    // Builds the tree: a new root, the files read under it, every derived
    // metric made with stroudNumber(); then emits treeUpdated.
    virtual void init();
    // Recomputes every "TestingTime" and "TestingTime_SUM" with a new
    // Stroud number, then emits treeUpdated. A number that is not above 0
    // is refused: nothing changes.
    virtual void stroudChange(float stroudNumber);
    virtual float stroudNumber() const { return DefaultStroudNumber; }

    QStringList files() const { return m_files; }
    // The root; an empty root before init().
    QMetElement* root() const { return m_root; }
    // The reader of the last init(); null before.
    QMetReader* reader() const { return m_reader; }
    // The file element of a source file, by its path (the file element's
    // "Dir" and "Name" joined, cleaned); null when none.
    QMetElement* fileElement(const QString& sourceFile) const;
    // The file elements by cleaned path; the first of a path is kept.
    const QHash<QString, QMetElement*>& fileElements() const { return m_fileElements; }

signals:
    // The tree was built or its values changed: views show it again.
    void treeUpdated();

private:
    void indexFiles(QMetElement* element);

    QStringList m_files;
    QMetElement* m_root;
    QMetReader* m_reader = nullptr;
    QHash<QString, QMetElement*> m_fileElements;
};
