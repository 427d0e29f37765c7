#pragma once

#include "QAStNodeTest.h"
#include "StudioInterface.h"

#include <QMainWindow>
#include <QPointer>

#include <functional>
#include <memory>

class PropertySheet;
class ProjectTree;
class QAction;
class QAStCoverageView;
class QAStData;
class QAStFileAnalyse;
class QAStMemoryView;
class QAStNode;
class QAStProfileView;
class QAStResultsView;
class QAStObjectManager;
class QAStOutputWidget;
class QAStProject;
class QATagFiltersMgr;
class QComboBox;
class QDockWidget;
class QMenu;
class QPlainTextEdit;
class QProgressDialog;
class QSplitter;
class QTabWidget;

// The window host of the library: a main window that implements
// StudioInterface with real boxes, choosers and a progress dialog, and
// shows one project.
//
//   left     the project view (ProjectTree) over the tag browser
//   middle   the files opened from messages and tags (read-only editor
//            tabs) over the two consoles: output and messages
//   right    the property sheet of the selected node
//
// The window owns the project it shows. Every edit of the tree goes
// through the library's user operations (userAdd, userMove, del, cut,
// paste), so the library's undo manager undoes it; the window only keeps
// a modified flag of its own, since the library marks no change of the
// tree or of a setting as a modification of the project.
class StudioWindow : public QMainWindow, public StudioInterface {
    Q_OBJECT
public:
    explicit StudioWindow(QWidget* parent = nullptr);
    ~StudioWindow() override;

    // --- the project

    // Opens the project file at path, closing the one shown (asking to save
    // it when modified). False when the user kept the old project or the
    // file did not load (the library has told why).
    bool openProject(const QString& path);
    // Asks for a project file and opens it.
    bool openProjectDialog();
    // Makes a new project at path for a language ("C", "C++", "Ada",
    // "Java") on the installation's package for it, and shows it; the
    // project shown is closed first (asking to save it when modified).
    // False, told in a box, when the project cannot be made.
    bool newProject(const QString& path, const QString& language);
    // Closes the project shown (asking to save it when modified), asks for
    // the new project's file and language, then newProject.
    bool newProjectDialog();
    // Makes a project of a code base (a directory, or a compilation
    // database) saved at projectFile (the import's default when empty),
    // and shows it; as newProject otherwise.
    bool importProject(const QString& source, const QString& projectFile = QString());
    // Closes the project shown, asks for a directory, or for a
    // compilation database, then for the project file, then importProject.
    bool importDirectoryDialog();
    bool importDatabaseDialog();
    // Adds files and directories to the file tree of the project shown,
    // folders by directory; false, told in a box, when a path names
    // nothing.
    bool addFilesToTree(const QStringList& paths);
    // Asks for the files, then addFilesToTree.
    bool addFilesDialog();
    bool saveProject();
    bool saveProjectAs();
    // Closes the project, asking to save it when modified; false when the
    // user chose to keep it open.
    bool closeProject();
    QAStProject* project() const { return m_project.get(); }
    // The project or a setting changed since it was opened or saved.
    bool isModified() const { return m_modified; }

    // --- edits of the selected item

    QAStData* selectedData() const;
    QAStNode* selectedNode() const;
    // Adds a fresh node of the kind tag below the selected node, with an
    // undo entry; returns it, or null when the kind may not go there.
    QAStNode* addChild(const QString& tag);
    bool deleteSelected();
    bool cutSelected();
    void copySelected();
    // Pastes the clipboard's item below the selected item; returns it, or
    // null when it may not go there.
    QAStData* pasteIntoSelected();
    void renameSelected();
    void undo();
    void redo();

    // --- runs on the selected node with the current configuration

    // Each starts the walk and returns at once; the node's row shows how
    // it ends. False when there is no node or a walk of it runs already.
    bool buildSelected();
    bool rebuildSelected();
    bool executeSelected();
    bool cleanSelected();
    // Stops every walk and every child process.
    void stopAll();
    // Analyses every source file of the project (and of its sub-projects)
    // into tags, behind the progress dialog.
    bool analyseSources();
    // Runs the tag browser's filters dialog; the browser follows the
    // filters it changes.
    void editTagFilters();
    // Shows the tag browser again through the filters as they are now
    // (after a change made outside the dialog).
    void applyTagFilters();

    // Makes name the current configuration of every node of the project.
    void setCurrentConfiguration(const QString& name);

    // --- editor tabs

    // The read-only editor showing file, opened by editFile; null when it
    // is not open.
    QPlainTextEdit* editorOf(const QString& file) const;

    // --- parts, for the window's tests and the screenshot

    ProjectTree* projectTree() const { return m_tree; }
    PropertySheet* propertySheet() const { return m_sheet; }
    QAStOutputWidget* console(int console) const;
    QTabWidget* editorTabs() const { return m_editors; }
    QAStObjectManager* tagBrowser() const { return m_tagBrowser; }
    // The coverage of the selected test node, or of the last run.
    QAStCoverageView* coverageView() const { return m_coverage; }
    QComboBox* tagLayoutChooser() const { return m_layoutChooser; }
    QComboBox* configurationChooser() const { return m_configChooser; }
    QATagFiltersMgr* tagFilters() const { return m_tagFilters; }
    // The docked views of a test node's last run: its results, its
    // performance and memory profiles, following the node's result files.
    QAStResultsView* resultsView() const { return m_resultsView; }
    QAStProfileView* profileView() const { return m_profileView; }
    QAStMemoryView* memoryView() const { return m_memoryView; }
    // The test node whose result files the docks show; null when none.
    QAStNodeTest* shownTestNode() const { return m_shownTest; }
    // The add menu of the selected node, rebuilt on each selection.
    QMenu* addMenu() const { return m_addMenu; }
    QAction* action(const QString& objectName) const;

    // --- StudioInterface
    QMainWindow* mainWindow() const override;
    void displayMessage(int console, const QString& text) override;
    void clearMessage(int console) override;
    void statusMessage(const QString& text) override;
    void editFile(const QString& file, int line) override;
    void warning(QWidget* parent, const QString& caption, const QString& text) override;
    void information(QWidget* parent, const QString& caption, const QString& text) override;
    void critical(QWidget* parent, const QString& caption, const QString& text) override;
    StandardButton question(QWidget* parent, const QString& caption, const QString& text,
                            StandardButtons buttons, StandardButton defaultButton,
                            Icon icon) override;
    QWidget* boxParent() const override;
    QString getText(QWidget* parent, const QString& caption, const QString& label,
                    const QString& text, bool* ok) override;
    QString getOpenFileName(QWidget* parent, const QString& caption, const QString& dir,
                            const QString& filter) override;
    QStringList getOpenFileNames(QWidget* parent, const QString& caption, const QString& dir,
                                 const QString& filter) override;
    QString getSaveFileName(QWidget* parent, const QString& caption, const QString& dir,
                            const QString& filter) override;
    QString getExistingDirectory(QWidget* parent, const QString& caption,
                                 const QString& dir) override;
    void startProgress(const QString& label, const QString& cancelText, int maximum) override;
    void setProgressValue(int value) override;
    void setProgressLabel(const QString& label) override;
    bool progressWasCanceled() const override;
    void finishProgress() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void createParts();
    void createCoverageDock();
    // Shows the coverage file of node, or of the first test node below it
    // that has one.
    void showCoverageOf(QAStNode* node);
    QDockWidget* addResultDock(const char* objectName, const QString& title, QWidget* view);
    void createResultDocks();
    // Points the docks at the result files of test (none when null).
    void showResultsOf(QAStNodeTest* test);
    // During a walk from node, the docks follow each test node it runs.
    void followRunsBelow(QAStNode* node);
    void createActions();
    void createMenus();
    QAction* newAction(const char* objectName, const QString& text, const QKeySequence& shortcut,
                       const std::function<void()>& slot);
    // The parent of a box: the one given, else the window.
    QWidget* dialogParent(QWidget* parent);
    void showProject();
    void selectionChanged(QAStData* data);
    void updateActions();
    void updateTitle();
    void rebuildAddMenu();
    void fillConfigurationChooser();
    void setModified(bool modified);
    void treeEdited();
    // Asks whether to save a modified project: true to go on (saved or
    // discarded), false to stay.
    bool maybeSave();
    bool importDialog(const QString& source);
    bool showNewProject(std::unique_ptr<QAStProject> project);
    void dropProject();
    bool startWalk(void (QAStNode::*command)(), const QString& what);
    void treeContextMenu(const QPoint& position);
    void openDataInEditor(QAStData* data);
    void rememberRecent(const QString& path);
    void fillRecentMenu();

    std::unique_ptr<QAStProject> m_project;
    bool m_modified = false;

    ProjectTree* m_tree = nullptr;
    PropertySheet* m_sheet = nullptr;
    QTabWidget* m_editors = nullptr;
    QTabWidget* m_consoles = nullptr;
    QAStOutputWidget* m_output = nullptr;
    QAStOutputWidget* m_messages = nullptr;
    QAStObjectManager* m_tagBrowser = nullptr;
    QAStCoverageView* m_coverage = nullptr;
    QComboBox* m_layoutChooser = nullptr;
    QComboBox* m_configChooser = nullptr;
    QATagFiltersMgr* m_tagFilters = nullptr;
    QSplitter* m_mainSplitter = nullptr;
    QMenu* m_addMenu = nullptr;
    QMenu* m_recentMenu = nullptr;
    QPointer<QProgressDialog> m_progress;
    QPointer<QAStFileAnalyse> m_analyse;
    QAStResultsView* m_resultsView = nullptr;
    QAStProfileView* m_profileView = nullptr;
    QAStMemoryView* m_memoryView = nullptr;
    QPointer<QAStNodeTest> m_shownTest;
};
