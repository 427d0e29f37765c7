#pragma once

#include "QAStData.h"
#include "QATr.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

class QAProperty;
class QAPropertyGroup;
class QAStConfiguration;
class QMenu;
class QWidget;

// An item that can be built and executed. It carries its own build
// configurations, one per name, each inheriting key by key from the
// configuration of the same name of the parent node (inheritConfiguration),
// the name of the configuration currently in use, its state in a run, its
// output files and the Perl texts run before and after its children.
//
// XML: the node block, "<node>", the data block, current_configuration,
// state, background, outfilename_list, perlscript_before_child,
// perlscript_after_child, configuration_list, "</node>". Each kind opens its
// own element around its base's block (docs/formats/project-file.md).
//
// Kinds: the kind table (QAStNodeKind) holds every kind with its element,
// class, wrapped block, the kinds it takes, its driver and its property
// kind. A node's row is its class's or its nearest base's: the classes it
// accepts when reading (allowedChildClasses, checked by inheritance), the
// tags a user may add below it (addableChildKinds, in menu order), its
// driverKind and propertyKind come from there; a plug-in's class may
// override them.
//
// Ownership: the node owns its configurations and deletes them with itself.
// A configuration added under the name of one the node already has
// replaces it (the old one is deleted).
class SDK110_EXPORT QAStNode : public QAStData {
    Q_OBJECT
public:
    // The node's part in a run: Selected is built, executed and reported;
    // UnSelected is left out of the run and of the reports; UnSelectedReported
    // is left out of the run but its reports are still provided.
    enum State { Selected = 0, UnSelected = 1, UnSelectedReported = 2 };
    Q_ENUM(State)

    // One kind of output file of the node and its paths.
    struct OutputFile {
        QString filetype;
        QStringList filepaths;
    };

    // A new node, inserted into parent behind after.
    QAStNode(const QString& name, const QPixmap& icon, QAStData* parent = nullptr,
             QAStData* after = nullptr);
    // A node read from a node block ("node" element) of the project file.
    QAStNode(const QDomElement& e, int version, QAStData* parent = nullptr,
             QAStData* after = nullptr);
    // A node read from the older resource format.
    QAStNode(QARes* res, QAStData* parent = nullptr, QAStData* after = nullptr);
    ~QAStNode() override;

    // --- configurations

    // The names of the node's own configurations, in the order added.
    QStringList configurations() const;
    // The node's own configurations, in the order added; owned by the node.
    const QList<QAStConfiguration*>& configurationList() const;
    // The node's own configuration of that name, or null.
    QAStConfiguration* configuration(const QString& name) const;
    // Takes ownership of c (from its former node, if any) and makes this
    // node its owner; one of the same name is replaced and deleted. Null is
    // ignored.
    virtual void addConfiguration(QAStConfiguration* c);
    // A new configuration of that name for this node, or the node's own one
    // when it already has it.
    QAStConfiguration* addConfiguration(const QString& name);
    // Deletes the node's configuration of that name; false when it has none.
    virtual bool removeConfiguration(const QString& name);

    // The name of the configuration in use; it need not name one of the
    // node's configurations (currentConfiguration() is then null).
    QString currentConfigurationName() const;
    virtual void setCurrentConfigurationName(const QString& name);
    QAStConfiguration* currentConfiguration() const;

    // The configuration c inherits from: when c is this node's own
    // configuration of its name, the configuration of that name of the
    // parent node (null when the parent has none or is not a node);
    // otherwise null.
    virtual QAStConfiguration* inheritConfiguration(const QAStConfiguration* c) const;

    // --- run support

    // The node kind's id, its class name ("QAStNodeApplication"), by which
    // plug-ins give kinds settings of their own.
    QString kindId() const;
    // <directory>/.korvil/<name>-<quid>.pl, the name reduced to letters,
    // digits, "-", "_" and ".", so that nodes of one name differ.
    QString environmentFileName() const override;

    // --- state and run data

    State state() const;
    // Emits stateChanged when the state changes.
    void setState(State state);
    // Built, executed and reported.
    bool isSelected() const;
    // Left out of the run.
    bool isUnSelected() const;
    // Its reports are provided.
    bool provideReports() const;

    // Runs in the background.
    bool background() const;
    void setBackground(bool background);

    // The output files by kind, in the order their kinds were first added.
    const QList<OutputFile>& outputFiles() const;
    // The paths of one kind; empty when the node has none of it.
    QStringList outputFiles(const QString& filetype) const;
    // Adds paths to the node's files of that kind (a path it has already is
    // not added twice).
    void addOutputFile(const QString& filetype, const QStringList& filepaths);
    // Forgets the node's files of that kind.
    void removeOutputFiles(const QString& filetype);

    // Perl text run before, and after, the node's children are processed.
    QString perlScriptBeforeChild() const;
    void setPerlScriptBeforeChild(const QString& script);
    QString perlScriptAfterChild() const;
    void setPerlScriptAfterChild(const QString& script);

    // --- XML

    // The node block (see above).
    void write(QTextStream& s, int indent) const override;

    // --- children by kind

    // The classes a child read from the file must inherit; empty for kinds
    // that hold no children (they have no child element to read).
    virtual QStringList allowedChildClasses() const;
    // Takes a node whose class inherits one of allowedChildClasses(),
    // neither this node nor one above it, so that paste and drops move
    // nodes within the rules the project file holds.
    bool acceptDrop(QAStData* item) const override;
    // The element tags of the kinds a user may add below the node, in menu
    // order; none by default.
    virtual QStringList addableChildKinds() const;
    // A fresh node of an addable kind as the last child, named after its
    // kind (made unique in the tree) and given this node's configuration
    // names (empty, inheriting everything) and current configuration; the
    // addition is an undo entry. Null for a tag that is not addable here.
    QAStNode* addNewChild(const QString& tag);
    // A menu, parented to parent, titled "Add", with one action per
    // addable kind; an action adds that kind (addNewChild). The caller owns
    // it; it is empty when nothing may be added.
    QMenu* addChildPopupMenu(QWidget* parent);
    // The node's context menu, parented to parent: the add menu when the
    // node takes children. The caller owns it.
    virtual QMenu* popupMenu(QWidget* parent);

    // The label of a kind of the kind table (translated, QATr::project),
    // used in the add menu and as the name of a fresh node; the tag itself
    // for an unknown kind.
    static QString kindLabel(const QString& tag);
    // A fresh node of a kind of the kind table with that name, inserted
    // into parent behind after; null for an unknown kind or a base.
    static QAStNode* createNode(const QString& tag, const QString& name, QAStData* parent,
                                QAStData* after);

    // --- property sheet

    // The node-kind bit (QAStPropertyFilters::Kind) by which the settings
    // descriptor restricts this node's settings: its row's; 0 without one,
    // so that only unrestricted settings show.
    virtual unsigned int propertyKind() const;
    // The context of the node's property sheet: its kind, the language of
    // its current configuration (C without one) and the host environment.
    unsigned int propertyContext() const;
    // The settings of the group (the shared settings descriptor by default)
    // that the node's property sheet shows, in order.
    QList<QAProperty*> visibleSettings(const QAPropertyGroup* group = nullptr) const;

    // --- build, execution and clean
    //
    // A command walks the node: its selected child nodes one at a time,
    // each child's own walk complete before the next begins, then the
    // node's own step, a driver run (docs/formats/driver-scripts.md). The
    // walk is asynchronous: it needs a running event loop, and it reports
    // its end with buildExecuteFinished (walkSucceeded() tells how it
    // ended). A failed step aborts the node's walk and the walks of the
    // nodes above it. The node's directory is the current directory while
    // it walks.

    virtual void build();
    // Cleans, then builds.
    virtual void rebuild();
    // Executes (execute) or debugs (debug: the debug bit 0x100 of
    // executionFlag during the run). Outside batch mode, a node changed
    // since its last good build first asks whether to rebuild.
    virtual void execute();
    virtual void debug();
    virtual void clean();
    // The node's last walk ended without abort.
    bool walkSucceeded() const;
    // The child node whose walk runs now; null when none.
    QAStNode* buildExecuteChildNode() const;
    // A walk of this node runs.
    bool isWalking() const;

    // --- objects of a build

    // The node links objects into a program or library (application,
    // library, unit testing): its build's driver run compiles the sources
    // it holds, those in its groups included, and links them.
    virtual bool linksObjects() const;
    // The directory of the objects the node's build makes,
    // "<intdir>/<name>.objects", as the drivers see it (relative to the
    // node's directory unless intdir is absolute).
    QString objectDirectory() const;
    // The object a source file (an absolute path) compiles to in this
    // node's object directory: its path relative to the project's
    // directory (a ".." step written "__", the root of a path on another
    // root "_") with the object extension appended: src/calc.c gives
    // <objects>/src/calc.c.o, so that equal file names in other folders
    // stay apart.
    QString objectFileFor(const QString& source) const;
    // The library files the node gives a node that links it (as its child
    // or through a link): its "LIB" output files. A library names its own
    // from its configuration, built in this run or not.
    virtual QStringList libraryOutputs() const;
    // A build or clean walk of this node runs now.
    bool isBuildingOrCleaning() const;
    // The objects the node's own build compiles (as the drivers see them):
    // a linker's sources' objects; none for other kinds.
    virtual QStringList builtObjects() const;
    // The node is selected and executes something, or a node below it
    // does: a driver of its kind (the test kinds) or its after-children
    // text. Executing a node that has nothing to execute says so on the
    // output console ("%1: nothing to execute") and ends well.
    bool hasSomethingToExecute() const;

    // The driver of the node's kind ("source", "application", ...: the
    // kind argument of Build.pl, Execute.pl and Clean.pl), from its row;
    // empty for kinds that run none.
    virtual QString driverKind() const;
    // Further arguments of the kind's driver runs.
    virtual QStringList driverArguments() const;
    // The kind runs a driver when executed (the test kinds).
    virtual bool executesDriver() const;

signals:
    void stateChanged(QAStNode::State state);
    // A command was accepted.
    void buildExecuteInvoked();
    // The walk of the children began.
    void buildExecuteStarted();
    // This node's walk is over, with or without success.
    void buildExecuteFinished();

protected:
    // --- hooks of the walk, which the kinds override

    // fromParent: the parent's walk asks (no console clearing, no question).
    virtual void buildProcess(bool fromParent);
    virtual void rebuildProcess(bool fromParent);
    // Enters the node's directory, then buildFirstChild.
    virtual void buildNode();
    virtual void executeNode();
    // Collect the child nodes and walk the first one accepted; a kind that
    // links prepares its link step here.
    virtual void buildFirstChild();
    virtual void buildCurrentChild();
    // The node's own step: its after-children Perl text, run as a driver
    // run with the execute and report stages cleared; an empty text aborts.
    // Kinds run their driver or end well.
    virtual void buildAfterChildren();
    virtual void executeFirstChild();
    virtual void executeCurrentChild();
    // The base logs and aborts; kinds that execute run their driver.
    virtual void executeAfterChildren(bool debug);
    virtual void buildStartEvent() {}
    virtual void buildFinishEvent() {}
    virtual void executeStartEvent() {}
    virtual void executeFinishEvent() {}
    virtual void cleanStartEvent() {}
    virtual void cleanFinishEvent() {}
    virtual void buildChildStartEvent(QAStNode* child) { Q_UNUSED(child); }
    virtual void buildChildFinishEvent(QAStNode* child) { Q_UNUSED(child); }
    virtual void executeChildStartEvent(QAStNode* child) { Q_UNUSED(child); }
    virtual void executeChildFinishEvent(QAStNode* child) { Q_UNUSED(child); }

    // The walk's own step, shared by the kinds: the after-children text
    // when there is one, else the kind's driver (Build.pl, Execute.pl or
    // Clean.pl by the walk's command), else an end without a run when
    // endWithoutStep, an abort otherwise.
    void runOwnStep(bool endWithoutStep);
    // Ends this node's walk well.
    void finishWalk();
    // Ends this node's walk and, through them, the walks above.
    void abortBuildExecute();

    // For kinds that read their own element (see QAStData).
    QAStNode(QAStData* parent, QAStData* after);

    // Reads the node block: the data block (required: without it the node
    // is not valid), then the node's fields in written order; a missing
    // field is reported and keeps its default. Returns isValid().
    bool init(const QDomElement& nodeElement, int version);
    // "configuration_list" with each configuration's own write. The project
    // keeps its configurations elsewhere and overrides it.
    virtual void writeConfigurationList(QTextStream& s, int indent) const;

    // --- helpers of the kinds' blocks

    // checkTag; the node is left not valid when it fails.
    bool checkElement(const QDomElement& e, const char* tag);
    // The indented lines "<tag>" and "</tag>".
    static void openElement(QTextStream& s, int indent, const char* tag);
    static void closeElement(QTextStream& s, int indent, const char* tag);
    // One element line holding an encoded text, a Boolean or an integer.
    static void writeText(QTextStream& s, int indent, const char* tag, const QString& text);
    static void writeBool(QTextStream& s, int indent, const char* tag, bool value);
    static void writeInt(QTextStream& s, int indent, const char* tag, int value);
    // "<listTag>", one itemTag element per text, "</listTag>".
    static void writeTextList(QTextStream& s, int indent, const char* listTag, const char* itemTag,
                              const QStringList& texts);
    // The first child of block named tag; a null element, reported in the
    // load report, when it has none.
    static QDomElement field(const QDomElement& block, const char* tag);
    // The first child of block named tag, unreported: the wrapped block
    // that the base's init checks itself.
    static QDomElement innerBlock(const QDomElement& block, const char* tag);
    // The decoded value of a field; fallback (reported) when it is missing
    // or, for numbers and Booleans, unreadable.
    static QString readText(const QDomElement& block, const char* tag,
                            const QString& fallback = QString());
    static bool readBool(const QDomElement& block, const char* tag, bool fallback);
    static int readInt(const QDomElement& block, const char* tag, int fallback);
    // The texts of the itemTag elements of the list field listTag.
    static QStringList readTextList(const QDomElement& block, const char* listTag,
                                    const char* itemTag);
    // "<tag>", each child's own write, "</tag>".
    void writeChildList(QTextStream& s, int indent, const char* tag) const;
    // The children of the field tag of block, kept when their class is
    // allowed (allowedChildClasses).
    void initChildList(const QDomElement& block, const char* tag, int version);

private slots:
    void buildNextChild();
    void executeNextChild();
    void buildScriptTerminated();

private:
    enum class Command { Build, Execute, Clean };
    // What follows a walk that ends well, as part of the same command.
    enum class Then { Nothing, Build, Execute };

    void startWalk(Command command, bool fromParent);
    void executeOrDebug(bool debug);
    void executeProcess(bool fromParent);
    void cleanProcess(bool fromParent);
    // The next selected child; skipped user nodes say they are up-to-date.
    QAStNode* nextChildToBuild();
    QAStNode* nextChildToExecute();
    void walkCurrentChild();
    void childWalkEnded();
    // Runs a Perl script for the walk with the node's environment script;
    // the execute and report stages are cleared for a build, the debug
    // bit set for a debug run, during the start.
    bool runWalkScript(const QString& script, const QStringList& arguments);
    // The after-children text's script, beside the environment script.
    QString afterChildrenScriptPath() const;
    void removeRunFiles();
    // The node changed since its last good build.
    bool changedSinceBuild() const;
    QString settingsDigest() const;
    // The record of the node's last good build, beside its products:
    // <intdir>/<name>.built (docs/ARCHITECTURE.md, "Build and execution walk").
    QString buildRecordFile() const;
    void recordBuild();
    void forgetBuild();
    bool readBuildRecord(QDateTime& built, QString& digest) const;
    void endWalk(bool succeeded);

    struct Private;
    std::unique_ptr<Private> d;

    // Takes the configuration of that name out of the list without deleting
    // it; null when the node has none.
    QAStConfiguration* takeConfiguration(const QString& name);
    void writeOutputFiles(QTextStream& s, int indent) const;
    void initOutputFiles(const QDomElement& listElement);
    void initConfigurationList(const QDomElement& listElement, int version);
    // The kind's label, followed by a number when the tree has that name.
    QString freshChildName(const QString& tag) const;

};
