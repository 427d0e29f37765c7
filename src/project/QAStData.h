#pragma once

#include "sdk110_export.h"

#include "QAStAttribute.h"
#include "QAXML.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QPixmap>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

class QAProcess;
class QARes;
class QAProperty;
class QAPropertyGroup;
class QAStProject;
class QAStProjectPref;
class QAStDataUndoActionManager;
class QDomElement;
class QDomNode;
class QMainWindow;
class QTextStream;
class StudioInterface;

// Base of every project item: an ordered list of child items, the parent,
// the common attributes (name, quid, icon, editing flags, last execution
// result), its XML form, and the static services the items share (host
// studio, consoles, installation directories, preferences, load report).
//
// Ownership: an item owns its children (they are also its QObject children)
// and deletes them with itself, first of all in its destructor. Deleting an
// item detaches it from its parent quietly; listeners that must hear of it
// use QObject::destroyed. remove() and deleteChildren() emit the signals.
//
// Children keep their insertion order, or alphabetical order by name when
// the sorted flag is set (case-insensitive, ties case-sensitive). Items read
// from a file keep the file's order, sorted parent or not.
//
// quid: a fresh item takes the next number of a process-wide counter; every
// quid read from a file raises the counter above it, so a new item never
// reuses a number of a loaded project. Items rebuilt from the clipboard get
// fresh numbers (renewQuids), since they are copies.
//
// Icons are kept by file name (pixmap()); the pixmap itself is made only
// when a QGuiApplication exists, so a command-line host (QCoreApplication)
// builds items without a display. iconFileNameChanged accompanies every
// icon change made by file name, for hosts without pixmaps.
//
// Constructed inside a parent, an item is attached at the end of
// QAStData's constructor: childAddEvent and childAdded then see the child
// as a plain QAStData (as with QEvent::ChildAdded), so receivers keep the
// pointer and defer work that needs its kind. A kind that reads its own
// element uses the protected constructor (parent, after) and then calls
// init(dataElement, version) on the data block and initChildren.
class SDK110_EXPORT QAStData : public QObject {
    Q_OBJECT
public:
    // The host's two output consoles: OutputConsole (0) receives the output
    // of driver runs, MessageConsole (1) the library's own messages.
    // Any other value selects the second console, as 1 does: the type is
    // an int, so that every value is one.
    enum Console : int { OutputConsole = 0, MessageConsole = 1 };
    Q_ENUM(Console)

    // A new item, inserted into parent behind after (at the front when after
    // is null).
    QAStData(const QString& name, const QPixmap& icon, QAStData* parent = nullptr,
             QAStData* after = nullptr);
    // An item read from a data block of the project file (init).
    QAStData(const QDomElement& e, int version, QAStData* parent = nullptr,
             QAStData* after = nullptr);
    // An item read from the older resource format (init(QARes*)).
    QAStData(QARes* res, QAStData* parent = nullptr, QAStData* after = nullptr);
    ~QAStData() override;

    // --- common attributes

    virtual QString name() const;
    // The text the project view shows; the name unless a kind says more.
    virtual QString displayName() const;
    // Emits renamed when the name changes; a sorted parent re-sorts.
    virtual void setName(const QString& name);

    quint32 quid() const;
    void setQuid(quint32 quid);
    // Gives this item and all its descendants fresh quids.
    void renewQuids();

    virtual QPixmap icon() const;
    virtual void setIcon(const QPixmap& icon);
    QString iconFileName() const;
    // Looks the icon up by file name (pixmap()) and keeps the name, which
    // is what the project file stores.
    void setIconByFileName(const QString& fileName);

    bool isRenameable() const;
    void setRenameable(bool renameable);
    bool isDeletable() const;
    virtual void setDeletable(bool deletable);
    // Expanded in the project view.
    bool isExtended() const;
    void setExtended(bool open);
    bool isAlphabeticallySorted() const;
    // Sets the sorted flag (and sorts at once when set); with recursive,
    // every descendant takes the same flag.
    virtual void setAlphabeticallySorted(bool sorted, bool recursive = false);
    int executionResult() const;
    void setExecutionResult(int result);
    bool isDuplicable() const;
    virtual void setDuplicable(bool duplicable);
    virtual bool isModified() const;
    virtual void setModified(bool modified);
    // The item was built correctly from its element or resource.
    bool isValid() const;

    // --- tree

    QAStData* parent() const;
    // First child, next and previous sibling, last child.
    QAStData* child() const;
    QAStData* next() const;
    QAStData* previous() const;
    QAStData* last() const;
    int childCount() const;
    // The children in order; the list does not own them.
    QList<QAStData*> childItems() const;
    // The topmost item.
    QAStData* root() const;
    // The nearest item, this one included, whose class inherits
    // "QAStProject", and the outermost one; null when there is none.
    QAStData* projectItem() const;
    QAStData* rootProjectItem() const;
    // The same, typed.
    QAStProject* project() const;
    QAStProject* rootProject() const;
    // The item as a project (a project or a sub-project), else null.
    virtual QAStProject* asProject() const;
    bool isAncestorOf(const QAStData* item) const;

    // While one lives, an item attached to a sorted parent takes the place
    // it is given, not its place by name: the factory builds items from
    // elements with one, since an item is attached before its name is
    // read, and children keep the order of their file.
    class SDK110_EXPORT KeepGivenPlace {
    public:
        KeepGivenPlace();
        ~KeepGivenPlace();
        KeepGivenPlace(const KeepGivenPlace&) = delete;
        KeepGivenPlace& operator=(const KeepGivenPlace&) = delete;
    };

    // Inserts child behind after (front when after is null or not a child
    // of this; by name when sorted, unless a KeepGivenPlace lives), taking
    // it from its former parent.
    // Calls privAttach, childAddEvent, then emits added on the child and
    // childAdded. Refuses null, this item and its ancestors.
    virtual void addChild(QAStData* child, QAStData* after);
    // Detaches the item from its parent: emits removed, then childRemoved
    // on the former parent. The caller owns the item afterwards.
    virtual void remove();
    // Removes (with the signals) and deletes every child; children kept
    // unmade (setDeferredChildren) are dropped without being made.
    void deleteChildren();
    virtual void sortChildren();

    // Children kept in a compact form of the item's own until first
    // walked: the first call that walks or changes the children (child(),
    // last(), childCount(), childItems(), the searches, addChild, sorting,
    // renewQuids) makes them, in order, behind the children the item has,
    // as if they had been added at the time they were given.
    class SDK110_EXPORT DeferredChildren {
    public:
        virtual ~DeferredChildren();
        // Makes the children below owner.
        virtual void make(QAStData* owner) = 0;
        // Whether a child made may inherit className: a search for a class
        // no child may be passes them over without making them.
        virtual bool mayHold(const char* className) const = 0;
    };
    bool hasDeferredChildren() const;
    // Makes the children kept, if any.
    void makeDeferredChildren() const;

    // The nearest ancestor whose class inherits className, or null.
    QAStData* parentOfClass(const char* className) const;
    // Every such ancestor, nearest first.
    QList<QAStData*> parentsOfClass(const char* className) const;
    // The children (with recursive, all descendants, depth first) whose
    // class inherits className; the list does not own them.
    QList<QAStData*> childrenOfClass(const char* className, bool recursive = false) const;
    // The first such child (depth first with recursive) named name.
    QAStData* searchChildOfClass(const QString& name, const char* className,
                                 bool recursive = false) const;
    // The first item of this subtree, this one included, depth first,
    // named name; null when none.
    QAStData* findNode(const QString& name) const;

    // --- kinds' operations

    // The item's setting descriptors; none in the base.
    virtual QAPropertyGroup* propertyGroup();
    // A setting of the item changed: marks it modified.
    virtual void propertyModified(QAProperty* property);
    // Writes the data block: "<data>", name, quid, icon, renameable,
    // deletable, open, sorted, executionResult, "</data>". A kind writes
    // its own element around it and its children after it.
    virtual void write(QTextStream& s, int indent) const;
    // The item's XML text as write gives it at depth 0.
    QString toString() const;
    // The Perl environment file of the item; empty for items that run
    // nothing.
    virtual QString environmentFileName() const;
    // Writes the item's Perl environment script: the common part
    // (QAStPerlGen::generateEnv), then, for a node with a configuration,
    // the settings of the plug-in features of its kind. Kinds append their
    // own lines after their base's.
    virtual void generateEnv(QTextStream& out);
    // The whole script as the driver loads it, in the preferences' source
    // encoding (QAStPerlGen::createEnvironmentFile): generateEnv's lines.
    // The driver run adds the closing "1;".
    virtual void createEnvironmentFile(QTextStream& out);
    // The directory the item's relative paths refer to: the parent's, empty
    // at the root.
    virtual QString directory() const;

    // Clipboard: copy puts toString() on the clipboard (duplicable items,
    // with a QGuiApplication); cut copies and deletes; paste rebuilds the
    // clipboard's item and adds it as the last child when acceptDrop agrees,
    // returning it; del removes a deletable item and deletes it later.
    // Each records an undo entry (see userAdd).
    virtual void copy();
    virtual void cut();
    virtual QAStData* paste();
    virtual bool del();
    // Whether item may become a child of this one; none in the base.
    virtual bool acceptDrop(QAStData* item) const;

    // --- edits of the user, with undo
    //
    // The edits a user makes in the project view record one undo entry
    // each: del() and cut() a removal, paste() and userAdd() an addition,
    // userMove() a removal and an addition together. Every other change
    // of the tree (addChild, remove, deleteChildren, loading, the file
    // tree's normalize and addFiles) records nothing. The caller checks
    // acceptDrop first.

    // Adds a new item behind after, as addChild does; an item that already
    // has a parent is moved (userMove). False when the item was refused.
    bool userAdd(QAStData* child, QAStData* after);
    // Moves item into newParent behind after. False when refused (null, or
    // newParent lies inside item).
    static bool userMove(QAStData* item, QAStData* newParent, QAStData* after);

    // --- load report

    // Process-wide text of the faults found while reading: cleared by the
    // project loader before a load, shown after it.
    static QString loadReport();
    static void clearLoadReport();
    static void appendLoadReport(const QString& text);

    // --- static services

    // Keeps the host studio and the preferences' resource tree (not owned;
    // either may be null). With a resource tree, the preferences are read
    // from it. Call again to replace the host, e.g. in tests.
    static void initialize(StudioInterface* host, QARes* preferenceResources = nullptr);
    static StudioInterface* studioIFace();
    static QARes* preferenceResources();
    // The host's main window, or null.
    static QMainWindow* mainWindow();
    // The process-wide preferences, loaded from the user's settings on
    // first use.
    static QAStProjectPref* preferences();

    // The studio-wide undo manager, and shortcuts to it.
    static QAStDataUndoActionManager* undoManager();
    static void undo();
    static void redo();
    static bool isUndoAvailable();
    static bool isRedoAvailable();

    // Writes to, or clears, one of the host's consoles (OutputConsole to
    // the first, any other value to the second). Without a host the text
    // goes to the Qt warning channel.
    static void displayMessage(QAStData::Console console, const QString& text);
    static void clearMessage(QAStData::Console console);

    // The installation: $ZELTAHOME, else $KORVILDIR, else share/korvil
    // beside the application's bin directory (<appdir>/../share/korvil)
    // when it exists, else empty.
    static QString installDir();
    // <install>/bin/intel/linux, or <install>\bin\intel\win32 (QAInstall).
    static QString binaryDir();
    static QString scriptsDir(); // <install>/scripts
    static QString helpDir();    // <install>/doc
    static QString targetDir();  // <install>/targets
    // The user's login name ($USER, else $USERNAME).
    static QString userName();
    // The port on which the studio listens for runtime feedback (from the
    // host); 0 without a host.
    static int port();
    // The picture of an icon file: an absolute path, else looked up under
    // <install>/lib/pixmaps, then in the resources under :/pixmaps. A null
    // pixmap when not found or without a QGuiApplication.
    static QPixmap pixmap(const QString& fileName);
    static void editFile(const QString& file, int line);
    static int getViewerIdByName(const QString& name);
    static QString getViewerNameById(int id);

    // Paths relative to, and absolute from, a project directory (the
    // project class supplies its own directory). A relative path stays as
    // it is in determineRelativePathFile; determineAbsolutePathFile joins a
    // relative path to dir and cleans every result.
    static QString determineRelativePathFile(const QString& dir, const QString& file);
    static QString determineAbsolutePathFile(const QString& dir, const QString& file);
    static QStringList determineRelativePathFiles(const QString& dir, const QStringList& files);
    static QStringList determineAbsolutePathFiles(const QString& dir, const QStringList& files);

    // Rebuilds an item, detached and with fresh quids, from the clipboard's
    // XML text (null without a QGuiApplication) or from a given text. The
    // text is parsed into a document named "Clipboard" and its root element
    // handed to the factory. The caller owns the result; null on failure.
    static QAStData* clipboardContentToData();
    static QAStData* stringContentToData(const QString& text);

    // The value encoding of the project file (QAXML).
    static QString stringToXMLValue(const QString& s) { return QAXML::stringToXMLValue(s); }
    static QString xmlValueToString(const QString& s) { return QAXML::xmlValueToString(s); }
    static QString stringListToXMLValue(const QStringList& l) { return QAXML::stringListToXMLValue(l); }
    static QStringList xmlValueToStringList(const QString& s) { return QAXML::xmlValueToStringList(s); }
    static QString stringMapToXMLValue(const QMap<QString, QString>& m)
    {
        return QAXML::stringMapToXMLValue(m);
    }
    static QMap<QString, QString> xmlValueToStringMap(const QString& s)
    {
        return QAXML::xmlValueToStringMap(s);
    }
    static QString boolToXMLValue(bool b) { return QAXML::boolToXMLValue(b); }

    // --- driver runs
    //
    // An item runs the product's Perl interpreter on a driver script, one
    // run at a time; the child's output goes to the console the run was
    // started for.

    // The interpreter's command prefix for the installation (QAInstall::
    // perlCommand): the interpreter, then "-I" and its module directory.
    static QStringList perlCommand();
    // Runs script (a relative name is taken under scriptsDir()) with the
    // interpreter in workingDir. With env, "\n1;\n" is written at its end,
    // its device is closed and released, and the path of its file (a
    // QFile) becomes the next argument; arguments follow. Does nothing
    // while a script of this item runs. Emits perlScriptStarted, and
    // perlScriptTerminated at the end (at once when the interpreter cannot
    // start: "%1: unable to start the command" on the console). Synchronous
    // runs return after the end, keeping the event loop turning.
    void executePerlScript(const QString& script, const QString& workingDir, QTextStream* env,
                           bool asynchronous, QAStData::Console console,
                           QStringList* environment = nullptr,
                           const QStringList& arguments = QStringList());
    // A Perl script of this item runs.
    virtual bool isRunning() const;
    // Kills the running script, if any; its end is reported as a failure.
    virtual void stop();
    // The last script run started and ended normally with status 0.
    bool perlScriptSucceeded() const;

public slots:
    // Output of the running script: to its console.
    virtual void charReceived(const QString& text);
    // End of an asynchronous script: records the outcome, emits
    // perlScriptTerminated.
    virtual void processTerminated(bool normalExit, int exitStatus);

signals:
    void added();
    void removed();
    void renamed(const QString& name);
    void iconChanged(const QPixmap& icon);
    void iconFileNameChanged(const QString& fileName);
    // Any common attribute changed value; attribute is its element name
    // in the project file ("name", "quid", "icon", "renameable",
    // "deletable", "open", "sorted", "executionResult"), or "duplicable"
    // or "modified".
    void attributeChanged(const QString& attribute);
    void childAdded(QAStData* child);
    void childRemoved(QAStData* child);
    void perlScriptStarted();
    void perlScriptTerminated();

protected:
    // For kinds that read their own element: a fresh item attached to
    // parent behind after; the kind then calls init on its data block.
    QAStData(QAStData* parent, QAStData* after);

    // Reads the data block (name and quid required, the rest when present)
    // and returns whether the item is valid; faults go to the load report.
    bool init(const QDomElement& e, int version);
    // Reads the common attributes from the keys "name", "quid", "icon",
    // "renameable", "deletable", "open", "sorted" and "executionResult" of
    // a resource group; a missing key keeps the default. Valid unless res
    // is null.
    bool init(QARes* res);
    // Builds the children from the child elements of e, in file order,
    // through the factory. Unknown tags and items whose class inherits none
    // of allowedClasses (when not empty) are reported and dropped.
    void initChildren(const QDomElement& e, int version, const QStringList& allowedClasses);
    void setValid(bool valid);

    // True when node is an element named tag; else appends the reason to
    // the load report ("Unable to find tag", "is not an element", "Wait for
    // tag").
    static bool checkTag(const QDomNode& node, const char* tag);

    // Fill one attribute from one key of a resource group; false (attribute
    // untouched) when the key is missing or of another type. Booleans also
    // accept the strings "true"/"false"; map entries are "key=value"
    // strings split at the first "=".
    static bool readStrVal(const QARes* res, const QString& key, QAStStringAttribute& value);
    static bool readBoolVal(const QARes* res, const QString& key, QAStBoolAttribute& value);
    static bool readIntVal(const QARes* res, const QString& key, QAStIntAttribute& value);
    static bool readStrListVal(const QARes* res, const QString& key, QAStStringListAttribute& value);
    static bool readStrMapVal(const QARes* res, const QString& key, QAStStringMapAttribute& value);

    // Makes the children kept so far, then keeps children. count items
    // will be made: their quids are taken now, so they are the numbers
    // the items would have had if made at once. Null keeps none.
    void setDeferredChildren(std::unique_ptr<DeferredChildren> children, quint32 count);

    // Links child into the list behind after (see addChild), without
    // signals.
    virtual void privAttach(QAStData* child, QAStData* after);
    // Hook run by addChild after the child is linked.
    virtual void childAddEvent(QAStData* child);

private:
    // The end of a run, both ways.
    void perlScriptEnded(bool succeeded);

    struct Private;
    std::unique_ptr<Private> d;

    void attachTo(QAStData* parent, QAStData* after);
    void link(QAStData* child, QAStData* after);
    void unlink(QAStData* child);
    void detach(QAStData* child);
    QAStData* sortedPredecessor(const QAStData* child) const;
    void collectChildrenOfClass(const char* className, bool recursive,
                                QList<QAStData*>& found) const;
    void reportIgnoredTag(const QString& reportLine, const QString& tag);
    void reportBadQuid(const QString& text);
    // Set an attribute or a plain field, emitting attributeChanged when the
    // value differs.
    template <typename T>
    void changeAttribute(QAStAttribute<T>& attribute, const T& value, const char* xmlName);
    template <typename T>
    void changeField(T& field, const T& value, const char* xmlName);
    static quint32 takeFreshQuid();
    static void noteQuid(quint32 quid);
};
