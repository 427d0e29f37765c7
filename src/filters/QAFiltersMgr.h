#pragma once

#include "QAFilterList.h"
#include "sdk110_export.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

class QAFilter;
class QAFiltersMgrEditorView;
class QDomDocument;
class QDomElement;
class QWidget;

// The filters of one viewer: an owned list of named filters, a modified
// flag, and the viewer's editor dialog, made on the first edit and kept.
//
// An item passes the manager when an enabled filter matches it; with no
// enabled filter nothing passes (filterActive() tells the viewer whether
// to filter at all).
//
// A viewer derives the manager to make its own filters (createFilter), to
// accept the root of an export file (xmlLoad) and, if it wants, its own
// editor (createEditor).
//
// Export file: an XML document of type "Korvil-Filters" whose root element
// "filters" holds one element per filter, named by QAFilter::xmlTag() and
// filled by QAFilter::xmlSave (docs/formats/filters.md). The file's value
// encoding is the manager's: filters see plain texts.
class SDK110_EXPORT QAFiltersMgr : public QObject {
    Q_OBJECT
public:
    // Outcome of importFile; every outcome but Imported changes nothing.
    enum class ImportResult {
        Imported,       // the filters that load, maybe with entries left out
        CannotOpen,     // the file cannot be opened for reading
        NotWellFormed,  // the text is not well-formed XML
        BadRoot,        // the root is not "filters", or xmlLoad refused it
    };

    static const QString documentType;  // "Korvil-Filters"
    static const QString rootTag;       // "filters"

    explicit QAFiltersMgr(QObject* parent = nullptr);
    // Deletes the filters and the editor.
    ~QAFiltersMgr() override;

    const QAFilterList& filters() const { return m_filters; }
    // Appends filter and takes ownership of it; the open editor shows it at
    // once.
    void addFilter(QAFilter* filter);
    // Removes and deletes the filter at index; false (nothing changed) for
    // an index out of range.
    bool remove(int index);
    // The first filter named name exactly, or null.
    QAFilter* fromName(const QString& name) const;

    // True when at least one filter is enabled.
    bool filterActive() const;
    // True as soon as an enabled filter matches item; false when none does.
    bool match(void* item, void* context);

    // The manager's own flag, or any filter's.
    bool hasModification() const;
    bool modified() const { return m_modified; }
    // Setting the flag also emits filtersChanged: the editor sets it after
    // each change it makes (a tick, an edit, a new, removed or imported
    // filter).
    void setModified(bool modified);
    // Passes a change of filter's enabled flag (or of its content), made
    // outside the editor, to the open editor and emits filtersChanged.
    void updateEnabled(QAFilter* filter);

    // The editor made by the first edit(); null before.
    QAFiltersMgrEditorView* editor() const;
    // Makes the editor through createEditor on first use (false when it
    // gives none), hands it the modified flag, runs it as a modal dialog and
    // takes the flag back.
    virtual bool edit(QWidget* parent = nullptr, const char* name = nullptr);
    // A new editor of the manager: in the base, the widgets library's
    // QAFiltersMgrEditor (QAFiltersMgrEditorView::make), named name; null
    // without the widgets library.
    virtual QAFiltersMgrEditorView* createEditor(QWidget* parent, const char* name);
    // A new filter of the viewer's kind (a plain QAFilter in the base); the
    // caller owns it.
    virtual QAFilter* createFilter();
    // Reads what the manager keeps on the root of an export file before its
    // filter elements are read; false refuses the file. The base refuses
    // every file: a viewer that imports accepts its roots.
    virtual bool xmlLoad(QDomDocument& doc, QDomElement& root);

    // Writes filters to an export file at path, replacing it in one piece:
    // on failure (false) an older file is left whole and reason, when
    // given, holds the system's reason. Attributes are written in name
    // order and every text in the value encoding, so the same filters give
    // the same bytes and every text reads back equal.
    bool exportFile(const QString& path, const QList<QAFilter*>& filters,
                    QString* reason = nullptr);
    // Reads an export file: appends the filters that load, not modified,
    // and marks the manager modified when there is one. A bad entry (a
    // filter, or a group or expression inside one) costs itself alone:
    // faults, when given, receives one text for each entry left out ("line
    // <n>: ..."). Any other failure changes nothing.
    ImportResult importFile(const QString& path, QStringList* faults = nullptr);

signals:
    // The filters or their flags changed: emitted by addFilter, remove,
    // updateEnabled, a successful import (once) and setModified(true). A
    // viewer shows its items again. A change made to a filter directly
    // (QAFilter::setEnabled, new groups) is announced by updateEnabled.
    void filtersChanged();

private:
    // Appends filter and shows it in the open editor.
    void append(QAFilter* filter);

    QAFilterList m_filters;
    bool m_modified = false;
    // The editor, while its dialog lives.
    QAFiltersMgrEditorView* m_editor = nullptr;
    QPointer<QObject> m_editorObject;
};
