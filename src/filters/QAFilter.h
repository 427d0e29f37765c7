#pragma once

#include "sdk110_export.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

class QAFilterExprGroup;
class QDomDocument;
class QDomElement;
class QDomNode;

// Groups of a filter, in order; the filter owns them.
using QAFilterExprGroupList = QList<QAFilterExprGroup*>;

// A named filter: a list of expression groups, OR-ed. The filter chooses
// whether its expression texts are wildcards or regular expressions
// (useWildcard, passed to every expression) and carries the enabled and
// modified flags its manager and editor use.
//
// The XML form of a filter belongs to the viewer that derives it: the base
// names its element "filter", writes nothing and loads nothing. The texts
// xmlSave puts in the document and xmlLoad reads from it are plain: the
// filters file encodes them (QAFiltersMgr).
class SDK110_EXPORT QAFilter : public QObject {
    Q_OBJECT
public:
    // No name, not enabled, not modified, wildcard text, no group.
    QAFilter();
    // Deletes the groups.
    ~QAFilter() override;

    QString filterName() const { return m_filterName; }
    void setFilterName(const QString& name) { m_filterName = name; }
    bool enabled() const { return m_enabled; }
    void setEnabled(bool enabled) { m_enabled = enabled; }
    bool modified() const { return m_modified; }
    void setModified(bool modified) { m_modified = modified; }
    bool useWildcard() const { return m_useWildcard; }
    void setUseWildcard(bool useWildcard) { m_useWildcard = useWildcard; }

    const QAFilterExprGroupList& groups() const { return m_groups; }
    // Appends group and takes ownership of it.
    void addGroup(QAFilterExprGroup* group);
    // Removes and deletes the group at index; false (nothing changed) for an
    // index out of range.
    bool removeGroup(int index);
    // Removes the group at index and hands it to the caller; null for an
    // index out of range.
    QAFilterExprGroup* takeGroup(int index);
    // Deletes every group.
    void clearGroups();

    // A new group of the filter's family (a plain QAFilterExprGroup in the
    // base); the caller owns it. The editor adds groups through it.
    virtual QAFilterExprGroup* createGroup();

    // The groups in order: true as soon as one matches, false when none
    // does and for a filter without groups. A group's enabled flag is not
    // consulted.
    virtual bool match(void* item, void* context);
    // Element name of the filter in an export file ("filter" in the base).
    virtual QString xmlTag() const;
    // Fills e, an element named xmlTag() of doc (the base writes nothing).
    virtual void xmlSave(QDomDocument& doc, QDomElement& e);
    // Reads the filter from e; false when e is not a filter of this kind
    // (the base refuses every element). A filter that loads may leave out
    // bad entries of its own (groups, expressions).
    virtual bool xmlLoad(QDomDocument& doc, QDomElement& e);
    // What the last xmlLoad left out, or why it refused e: one text a
    // fault, "line <n>: <what>".
    const QStringList& loadFaults() const { return m_loadFaults; }

protected:
    // Notes a fault of xmlLoad at node of the document read.
    void addLoadFault(const QDomNode& node, const QString& text);
    void clearLoadFaults() { m_loadFaults.clear(); }

private:
    QString m_filterName;
    bool m_enabled = false;
    bool m_modified = false;
    bool m_useWildcard = true;
    QAFilterExprGroupList m_groups;
    QStringList m_loadFaults;
};
