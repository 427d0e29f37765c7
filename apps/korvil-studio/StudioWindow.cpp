#include "StudioWindow.h"

#include "ProjectTree.h"
#include "PropertySheet.h"

#include "QAProcess.h"
#include "QAStATag.h"
#include "QAStConfiguration.h"
#include "QAStCoverageView.h"
#include "QAStData.h"
#include "QAStDataUndoActionManager.h"
#include "QAStFile.h"
#include "QASTSplitSurvey.h"
#include "QAStFileAnalyse.h"
#include "QAStMemoryView.h"
#include "QAStNode.h"
#include "QAStNodeTest.h"
#include "QAStObjectManager.h"
#include "QAStOutputWidget.h"
#include "QAStProfileView.h"
#include "QAStProject.h"
#include "QAStProjectImport.h"
#include "QAStProjectSetup.h"
#include "QASTSplitSurvey.h"
#include "QAStResultsView.h"
#include "QATagFiltersMgr.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QDockWidget>
#include <QDir>
#include <QDockWidget>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressDialog>
#include <QSettings>
#include <QSplitter>
#include <QStatusBar>
#include <QStringDecoder>
#include <QTabWidget>
#include <QTextBlock>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

const char* context = "StudioWindow";

QString tr(const char* text)
{
    return QCoreApplication::translate(context, text);
}

const int maxRecent = 6;

// A file's text: UTF-8 when it is valid, else Latin-1, which reads any byte.
QString decodedText(const QByteArray& bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = utf8.decode(bytes);
    return utf8.hasError() ? QString::fromLatin1(bytes) : text;
}

} // namespace

namespace {

// Two panes one above the other, the upper taking 3/5 of what is gained.
QSplitter* stacked(const QString& name, QWidget* top, QWidget* bottom, const QList<int>& sizes)
{
    auto* splitter = new QSplitter(Qt::Vertical);
    splitter->setObjectName(name);
    splitter->addWidget(top);
    splitter->addWidget(bottom);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);
    splitter->setSizes(sizes);
    return splitter;
}

} // namespace

StudioWindow::StudioWindow(QWidget* parent) : QMainWindow(parent)
{
    setObjectName(QStringLiteral("studioWindow"));
    QAStData::initialize(this);
    QAStProject::setModeBatch(false);
    createParts();
    createResultDocks();
    createCoverageDock();
    createActions();
    createMenus();
    if (!QAStConfiguration::initialize(this, nullptr))
        displayMessage(QAStData::MessageConsole,
                       tr("%1: the settings descriptor cannot be loaded; property sheets stay empty.\n")
                           .arg(QAStConfiguration::propertyDescriptorFile()));
    resize(1360, 840);
    updateTitle();
    updateActions();
    statusBar()->showMessage(tr("Ready"));
}

StudioWindow::~StudioWindow()
{
    dropProject();
    if (QAStData::studioIFace() == this)
        QAStData::initialize(nullptr);
}

// --- parts

void StudioWindow::createParts()
{
    m_tree = new ProjectTree;
    connect(m_tree, &ProjectTree::currentDataChanged, this, &StudioWindow::selectionChanged);
    connect(m_tree, &ProjectTree::customContextMenuRequested, this, &StudioWindow::treeContextMenu);
    connect(m_tree, &QTreeWidget::itemDoubleClicked, this,
            [this](QTreeWidgetItem* row) { openDataInEditor(m_tree->dataOf(row)); });
    connect(m_tree, &ProjectTree::treeChanged, this, &StudioWindow::updateActions);

    m_tagBrowser = new QAStObjectManager;
    m_tagBrowser->setObjectName(QStringLiteral("tagBrowser"));
    m_layoutChooser = new QComboBox;
    m_layoutChooser->setObjectName(QStringLiteral("tagLayout"));
    m_layoutChooser->addItems({tr("By file"), tr("By type"), tr("Alphabetical")});
    connect(m_layoutChooser, &QComboBox::activated, this, [this](int mode) {
        m_tagBrowser->sortModified(mode);
        setModified(true);
    });
    m_tagFilters = new QATagFiltersMgr(this);
    m_tagBrowser->setTagFilters(m_tagFilters);

    auto* tagPanel = new QWidget;
    auto* tagLayout = new QVBoxLayout(tagPanel);
    tagLayout->setContentsMargins(0, 0, 0, 0);
    tagLayout->setSpacing(2);
    auto* tagBar = new QHBoxLayout;
    tagBar->setContentsMargins(4, 0, 4, 0);
    tagBar->addWidget(new QLabel(tr("Tags:")));
    tagBar->addWidget(m_layoutChooser, 1);
    tagLayout->addLayout(tagBar);
    tagLayout->addWidget(m_tagBrowser);

    auto* left = stacked(QStringLiteral("leftSplitter"), m_tree, tagPanel, {460, 320});

    m_editors = new QTabWidget;
    m_editors->setObjectName(QStringLiteral("editorTabs"));
    m_editors->setTabsClosable(true);
    m_editors->setDocumentMode(true);
    connect(m_editors, &QTabWidget::tabCloseRequested, this,
            [this](int index) { delete m_editors->widget(index); });

    m_output = new QAStOutputWidget(nullptr, "outputConsole");
    m_messages = new QAStOutputWidget(nullptr, "messageConsole");
    for (QAStOutputWidget* window : {m_output, m_messages}) {
        window->connectToEditor(true);
        window->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    }
    m_consoles = new QTabWidget;
    m_consoles->setObjectName(QStringLiteral("consoles"));
    m_consoles->setDocumentMode(true);
    m_consoles->addTab(m_output, tr("Output"));
    m_consoles->addTab(m_messages, tr("Messages"));

    auto* middle = stacked(QStringLiteral("middleSplitter"), m_editors, m_consoles, {480, 300});

    m_sheet = new PropertySheet;
    connect(m_sheet, &PropertySheet::edited, this, [this] { setModified(true); });

    m_mainSplitter = new QSplitter(Qt::Horizontal);
    m_mainSplitter->setObjectName(QStringLiteral("mainSplitter"));
    m_mainSplitter->addWidget(left);
    m_mainSplitter->addWidget(middle);
    m_mainSplitter->addWidget(m_sheet);
    m_mainSplitter->setStretchFactor(0, 0);
    m_mainSplitter->setStretchFactor(1, 1);
    m_mainSplitter->setStretchFactor(2, 0);
    m_mainSplitter->setSizes({320, 620, 420});
    setCentralWidget(m_mainSplitter);

    m_configChooser = new QComboBox;
    m_configChooser->setObjectName(QStringLiteral("configurationChooser"));
    m_configChooser->setMinimumContentsLength(10);
    connect(m_configChooser, &QComboBox::activated, this,
            [this](int index) { setCurrentConfiguration(m_configChooser->itemText(index)); });
}

QDockWidget* StudioWindow::addResultDock(const char* objectName, const QString& title, QWidget* view)
{
    auto* dock = new QDockWidget(title, this);
    dock->setObjectName(QLatin1String(objectName));
    dock->setWidget(view);
    addDockWidget(Qt::BottomDockWidgetArea, dock);
    return dock;
}

// The results, profile and memory docks, tabbed at the bottom.
void StudioWindow::createResultDocks()
{
    m_resultsView = new QAStResultsView;
    m_profileView = new QAStProfileView;
    m_memoryView = new QAStMemoryView;
    QDockWidget* results = addResultDock("resultsDock", tr("Test results"), m_resultsView);
    QDockWidget* profile = addResultDock("profileDock", tr("Performance profile"), m_profileView);
    QDockWidget* memory = addResultDock("memoryDock", tr("Memory profile"), m_memoryView);
    tabifyDockWidget(results, profile);
    tabifyDockWidget(profile, memory);
    results->raise();
}

void StudioWindow::showResultsOf(QAStNodeTest* test)
{
    const QStringList files = test ? test->runtimeResultFiles() : QStringList();
    m_shownTest = files.isEmpty() ? nullptr : test;
    if (files.isEmpty()) {
        m_resultsView->follow(QString(), QString());
        m_profileView->follow(QString());
        m_memoryView->follow(QString());
        return;
    }
    m_resultsView->follow(files.at(QASTSplitSurvey::Results), files.at(QASTSplitSurvey::EndOfTest));
    m_profileView->follow(files.at(QASTSplitSurvey::PerformanceProfile));
    m_memoryView->follow(files.at(QASTSplitSurvey::MemoryProfile));
}

void StudioWindow::followRunsBelow(QAStNode* node)
{
    QList<QAStData*> nodes{node};
    nodes += node->childrenOfClass("QAStNodeTest", true);
    auto invoked = std::make_shared<QList<QMetaObject::Connection>>();
    for (QAStData* item : nodes) {
        if (auto* test = qobject_cast<QAStNodeTest*>(item))
            invoked->append(connect(test, &QAStNode::buildExecuteInvoked, this, [this, test] { showResultsOf(test); }));
    }
    connect(node, &QAStNode::buildExecuteFinished, this, [this, invoked] {
        for (const QMetaObject::Connection& connection : std::as_const(*invoked))
            disconnect(connection);
        // The last lines of the run, without waiting for a tick.
        m_resultsView->poll();
        m_profileView->poll();
        m_memoryView->poll();
    }, Qt::SingleShotConnection);
}

QAction* StudioWindow::newAction(const char* objectName, const QString& text,
                                 const QKeySequence& shortcut, const std::function<void()>& slot)
{
    auto* action = new QAction(text, this);
    action->setObjectName(QLatin1String(objectName));
    action->setShortcut(shortcut);
    connect(action, &QAction::triggered, this, slot);
    return action;
}

QAction* StudioWindow::action(const QString& objectName) const
{
    return findChild<QAction*>(objectName, Qt::FindDirectChildrenOnly);
}

void StudioWindow::createActions()
{
    newAction("newProject", tr("&New project..."), QKeySequence::New, [this] { newProjectDialog(); });
    newAction("open", tr("&Open project..."), QKeySequence::Open, [this] { openProjectDialog(); });
    newAction("importDirectory", tr("From a &directory..."), QKeySequence(),
              [this] { importDirectoryDialog(); });
    newAction("importDatabase", tr("From a &compilation database..."), QKeySequence(),
              [this] { importDatabaseDialog(); });
    newAction("addFiles", tr("Add &files..."), QKeySequence(), [this] { addFilesDialog(); });
    newAction("save", tr("&Save"), QKeySequence::Save, [this] { saveProject(); });
    newAction("saveAs", tr("Save &as..."), QKeySequence::SaveAs, [this] { saveProjectAs(); });
    newAction("closeProject", tr("&Close project"), QKeySequence(), [this] { closeProject(); });
    newAction("quit", tr("&Quit"), QKeySequence::Quit, [this] { close(); });

    newAction("undo", tr("&Undo"), QKeySequence::Undo, [this] { undo(); });
    newAction("redo", tr("&Redo"), QKeySequence::Redo, [this] { redo(); });
    newAction("cut", tr("Cu&t"), QKeySequence::Cut, [this] { cutSelected(); });
    newAction("copy", tr("&Copy"), QKeySequence::Copy, [this] { copySelected(); });
    newAction("paste", tr("&Paste"), QKeySequence::Paste, [this] { pasteIntoSelected(); });
    newAction("delete", tr("&Delete"), QKeySequence::Delete, [this] { deleteSelected(); });
    newAction("rename", tr("Re&name..."), QKeySequence(Qt::Key_F2), [this] { renameSelected(); });

    newAction("build", tr("&Build"), QKeySequence(Qt::Key_F7), [this] { buildSelected(); });
    newAction("rebuild", tr("Re&build"), QKeySequence(Qt::CTRL | Qt::Key_F7), [this] { rebuildSelected(); });
    newAction("execute", tr("E&xecute"), QKeySequence(Qt::Key_F5), [this] { executeSelected(); });
    newAction("clean", tr("C&lean"), QKeySequence(), [this] { cleanSelected(); });
    newAction("stopAll", tr("&Stop all"), QKeySequence(Qt::SHIFT | Qt::Key_F5), [this] { stopAll(); });
    newAction("analyse", tr("&Analyse sources"), QKeySequence(), [this] { analyseSources(); });
    newAction("filters", tr("&Filters..."), QKeySequence(), [this] { editTagFilters(); });

    const struct { const char* name; QStyle::StandardPixmap icon; } icons[] = {
        {"open", QStyle::SP_DialogOpenButton}, {"save", QStyle::SP_DialogSaveButton},
        {"undo", QStyle::SP_ArrowBack},        {"redo", QStyle::SP_ArrowForward},
        {"delete", QStyle::SP_TrashIcon},      {"build", QStyle::SP_FileDialogListView},
        {"execute", QStyle::SP_MediaPlay},     {"stopAll", QStyle::SP_MediaStop},
        {"rebuild", QStyle::SP_BrowserReload}, {"clean", QStyle::SP_DialogResetButton},
    };
    for (const auto& icon : icons)
        action(QLatin1String(icon.name))->setIcon(style()->standardIcon(icon.icon));
}

void StudioWindow::createMenus()
{
    QMenu* file = menuBar()->addMenu(tr("&File"));
    file->addAction(action("newProject"));
    file->addAction(action("open"));
    QMenu* import = file->addMenu(tr("&Import"));
    import->setObjectName(QStringLiteral("importMenu"));
    import->addAction(action("importDirectory"));
    import->addAction(action("importDatabase"));
    m_recentMenu = file->addMenu(tr("Open &recent"));
    connect(m_recentMenu, &QMenu::aboutToShow, this, &StudioWindow::fillRecentMenu);
    file->addAction(action("save"));
    file->addAction(action("saveAs"));
    file->addAction(action("closeProject"));
    file->addSeparator();
    file->addAction(action("quit"));

    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    m_addMenu = edit->addMenu(tr("&Add"));
    m_addMenu->setObjectName(QStringLiteral("addMenu"));
    edit->addAction(action("addFiles"));
    edit->addSeparator();
    for (const char* name : {"undo", "redo"})
        edit->addAction(action(QLatin1String(name)));
    edit->addSeparator();
    for (const char* name : {"cut", "copy", "paste", "delete", "rename"})
        edit->addAction(action(QLatin1String(name)));

    QMenu* run = menuBar()->addMenu(tr("&Run"));
    for (const char* name : {"build", "rebuild", "execute", "clean"})
        run->addAction(action(QLatin1String(name)));
    run->addSeparator();
    run->addAction(action("stopAll"));

    QMenu* tags = menuBar()->addMenu(tr("&Tags"));
    tags->addAction(action("analyse"));
    tags->addAction(action("filters"));

    QToolBar* bar = addToolBar(tr("Main"));
    bar->setObjectName(QStringLiteral("mainToolBar"));
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->setIconSize(QSize(16, 16));
    bar->addAction(action("open"));
    bar->addAction(action("save"));
    bar->addSeparator();
    bar->addAction(action("undo"));
    bar->addAction(action("redo"));
    bar->addSeparator();
    for (const char* name : {"build", "rebuild", "execute", "clean", "stopAll"})
        bar->addAction(action(QLatin1String(name)));
    bar->addSeparator();
    bar->addAction(action("analyse"));
    bar->addAction(action("filters"));
    bar->addSeparator();
    bar->addWidget(new QLabel(tr(" Configuration: ")));
    bar->addWidget(m_configChooser);
}

// --- the project

bool StudioWindow::openProjectDialog()
{
    const QString dir = m_project ? m_project->directory() : QString();
    const QString path = getOpenFileName(this, tr("Open project"), dir,
                                         tr("Projects (*.rtp);;All files (*)"));
    return !path.isEmpty() && openProject(path);
}

bool StudioWindow::newProjectDialog()
{
    // The project shown goes first, so that its question comes first.
    if (!closeProject())
        return false;
    const QString path = getSaveFileName(this, tr("New project"), QDir::currentPath(),
                                         tr("Projects (*.rtp)"));
    if (path.isEmpty())
        return false;
    bool ok = false;
    const QString language =
        QInputDialog::getItem(this, tr("New project"), tr("Language of the sources:"),
                              {QStringLiteral("C"), QStringLiteral("C++"), QStringLiteral("Ada"),
                               QStringLiteral("Java")},
                              0, false, &ok);
    return ok && newProject(path, language);
}

bool StudioWindow::newProject(const QString& path, const QString& language)
{
    if (!closeProject())
        return false;
    QString error;
    QAStTargetPackage* package =
        QAStProjectSetup::packageForLanguage(QAStProjectSetup::languageOf(language), &error);
    auto project = std::make_unique<QAStProject>(QFileInfo(path).completeBaseName(), QPixmap());
    if (!package || !QAStProjectSetup::createProject(*project, QFileInfo(path).absoluteFilePath(),
                                                     *package, &error)) {
        warning(this, tr("New project"), error);
        return false;
    }
    return showNewProject(std::move(project));
}

bool StudioWindow::importDirectoryDialog()
{
    if (!closeProject())
        return false;
    const QString dir = getExistingDirectory(this, tr("Import a directory of sources"),
                                             QDir::currentPath());
    return !dir.isEmpty() && importDialog(dir);
}

bool StudioWindow::importDatabaseDialog()
{
    if (!closeProject())
        return false;
    const QString database = getOpenFileName(
        this, tr("Import a compilation database"), QDir::currentPath(),
        tr("Compilation databases (compile_commands.json);;JSON files (*.json);;All files (*)"));
    return !database.isEmpty() && importDialog(database);
}

// Asks where the project of source goes, the import's own choice first.
bool StudioWindow::importDialog(const QString& source)
{
    const QString projectFile = getSaveFileName(this, tr("Save the imported project as"),
                                                QAStProjectImport::defaultProjectFile(source),
                                                tr("Projects (*.rtp)"));
    return !projectFile.isEmpty() && importProject(source, projectFile);
}

bool StudioWindow::importProject(const QString& source, const QString& projectFile)
{
    if (!closeProject())
        return false;
    statusMessage(tr("Importing %1...").arg(source));
    auto project = std::make_unique<QAStProject>(QFileInfo(source).completeBaseName(), QPixmap());
    QString error;
    if (!QAStProjectImport::importSource(*project, QFileInfo(source).absoluteFilePath(),
                                         projectFile.isEmpty() ? QString()
                                                               : QFileInfo(projectFile).absoluteFilePath(),
                                         QString(), &error)) {
        warning(this, tr("Import"), error);
        statusMessage(tr("%1 was not imported").arg(source));
        return false;
    }
    return showNewProject(std::move(project));
}

// Shows a project just made and saved, as an opened one.
bool StudioWindow::showNewProject(std::unique_ptr<QAStProject> project)
{
    m_project = std::move(project);
    showProject();
    rememberRecent(m_project->path());
    statusMessage(tr("Project %1 made").arg(m_project->filename()));
    return true;
}

bool StudioWindow::addFilesDialog()
{
    if (!m_project)
        return false;
    const QStringList files = getOpenFileNames(this, tr("Add files to the file tree"),
                                               m_project->directory(), tr("All files (*)"));
    return !files.isEmpty() && addFilesToTree(files);
}

bool StudioWindow::addFilesToTree(const QStringList& paths)
{
    if (!m_project)
        return false;
    QString error;
    const QList<QAStFile*> added = QAStProjectSetup::addFiles(*m_project, paths, &error);
    if (!error.isEmpty()) {
        warning(this, tr("Add files"), error);
        return false;
    }
    if (!added.isEmpty())
        setModified(true);
    statusMessage(tr("%n file(s) added to the file tree", nullptr, int(added.size())));
    return true;
}

bool StudioWindow::openProject(const QString& path)
{
    if (!closeProject())
        return false;
    const QString absolute = QFileInfo(path).absoluteFilePath();
    statusMessage(tr("Opening %1...").arg(absolute));
    auto project = std::make_unique<QAStProject>(QFileInfo(path).completeBaseName(), QPixmap());
    if (!project->open(absolute)) {
        statusMessage(tr("%1 was not opened").arg(absolute));
        return false;
    }
    m_project = std::move(project);
    showProject();
    rememberRecent(absolute);
    statusMessage(tr("Project %1 opened").arg(m_project->filename()));
    return true;
}

void StudioWindow::showProject()
{
    QAStProject* project = m_project.get();
    m_tree->setProject(project);
    m_tagBrowser->setProject(project);
    m_layoutChooser->setCurrentIndex(project ? project->sortMethod() : 0);
    const QString dir = project ? project->directory() : QString();
    m_output->setBaseDirectory(dir);
    m_messages->setBaseDirectory(dir);
    m_coverage->setBaseDirectory(dir);
    fillConfigurationChooser();
    applyTagFilters();
    selectionChanged(m_tree->currentData());
    setModified(false);
}

bool StudioWindow::saveProject()
{
    if (!m_project)
        return false;
    if (!m_project->save())
        return false;
    setModified(false);
    m_sheet->refresh();
    statusMessage(tr("Project saved to %1").arg(m_project->path()));
    return true;
}

bool StudioWindow::saveProjectAs()
{
    if (!m_project || !m_project->saveAs())
        return false;
    setModified(false);
    m_sheet->refresh();
    rememberRecent(m_project->path());
    m_output->setBaseDirectory(m_project->directory());
    m_messages->setBaseDirectory(m_project->directory());
    statusMessage(tr("Project saved to %1").arg(m_project->path()));
    return true;
}

bool StudioWindow::maybeSave()
{
    if (!m_project || !m_modified)
        return true;
    const StandardButton answer = question(
        this, tr("Save project"),
        tr("The project %1 has been modified.\nDo you want to save your changes?")
            .arg(m_project->name()),
        Save | Discard | Cancel, Save, Warning);
    if (answer == Save)
        return saveProject();
    return answer == Discard;
}

bool StudioWindow::closeProject()
{
    if (!m_project)
        return true;
    if (!maybeSave())
        return false;
    dropProject();
    showProject();
    return true;
}

// Stops every run, detaches the views and deletes the project, without a
// question.
void StudioWindow::dropProject()
{
    if (m_analyse)
        m_analyse->stop();
    QAProcess::killAll();
    m_tree->setProject(nullptr);
    m_sheet->setNode(nullptr);
    showResultsOf(nullptr);
    m_tagBrowser->setProject(nullptr);
    m_coverage->setFile(QString());
    m_project.reset();
    // The entries would name items of the project gone.
    QAStData::undoManager()->clear();
}

void StudioWindow::setModified(bool modified)
{
    m_modified = modified;
    updateTitle();
}

void StudioWindow::updateTitle()
{
    const QString name = m_project ? m_project->filename() : tr("no project");
    setWindowTitle(QStringLiteral("%1%2 \u2014 korvil-studio").arg(name, m_modified ? QStringLiteral("*") : QString()));
}

void StudioWindow::rememberRecent(const QString& path)
{
    QSettings settings(QStringLiteral("Korvil"), QStringLiteral("korvil-studio"));
    QStringList recent = settings.value(QStringLiteral("recentProjects")).toStringList();
    recent.removeAll(path);
    recent.prepend(path);
    settings.setValue(QStringLiteral("recentProjects"), recent.mid(0, maxRecent));
}

void StudioWindow::fillRecentMenu()
{
    m_recentMenu->clear();
    const QSettings settings(QStringLiteral("Korvil"), QStringLiteral("korvil-studio"));
    for (const QString& path : settings.value(QStringLiteral("recentProjects")).toStringList()) {
        QAction* open = m_recentMenu->addAction(path);
        open->setEnabled(QFileInfo::exists(path));
        connect(open, &QAction::triggered, this, [this, path] { openProject(path); });
    }
    if (m_recentMenu->isEmpty())
        m_recentMenu->addAction(tr("(none)"))->setEnabled(false);
}

void StudioWindow::closeEvent(QCloseEvent* event)
{
    if (!maybeSave()) {
        event->ignore();
        return;
    }
    // Saved or discarded: nothing is asked again on the way out.
    m_modified = false;
    if (m_analyse)
        m_analyse->stop();
    QAProcess::killAll();
    event->accept();
}

// --- selection

QAStData* StudioWindow::selectedData() const
{
    return m_tree->currentData();
}

QAStNode* StudioWindow::selectedNode() const
{
    return qobject_cast<QAStNode*>(selectedData());
}

void StudioWindow::selectionChanged(QAStData* data)
{
    m_sheet->setNode(qobject_cast<QAStNode*>(data));
    showCoverageOf(qobject_cast<QAStNode*>(data));
    if (auto* test = qobject_cast<QAStNodeTest*>(data))
        showResultsOf(test);
    rebuildAddMenu();
    updateActions();
}

void StudioWindow::rebuildAddMenu()
{
    m_addMenu->clear();
    QAStNode* node = selectedNode();
    const QStringList kinds = node ? node->addableChildKinds() : QStringList();
    for (const QString& tag : kinds) {
        QAction* add = m_addMenu->addAction(QAStNode::kindLabel(tag));
        add->setData(tag);
        connect(add, &QAction::triggered, this, [this, tag] { addChild(tag); });
    }
    m_addMenu->setEnabled(!kinds.isEmpty());
}

void StudioWindow::updateActions()
{
    QAStData* data = selectedData();
    QAStNode* node = selectedNode();
    const bool open = bool(m_project);
    const bool movable = data && data->parent() && data->isDeletable();
    action("save")->setEnabled(open);
    action("saveAs")->setEnabled(open);
    action("closeProject")->setEnabled(open);
    action("addFiles")->setEnabled(open);
    action("undo")->setEnabled(QAStData::isUndoAvailable());
    action("redo")->setEnabled(QAStData::isRedoAvailable());
    action("cut")->setEnabled(movable && data->isDuplicable());
    action("copy")->setEnabled(data && data->isDuplicable());
    action("paste")->setEnabled(data != nullptr);
    action("delete")->setEnabled(movable);
    action("rename")->setEnabled(data && data->isRenameable());
    for (const char* name : {"build", "rebuild", "execute", "clean"})
        action(QLatin1String(name))->setEnabled(node && !node->isWalking());
    action("stopAll")->setEnabled(open);
    action("analyse")->setEnabled(open && !m_analyse);
    action("filters")->setEnabled(true);
}

void StudioWindow::treeContextMenu(const QPoint& position)
{
    QTreeWidgetItem* row = m_tree->itemAt(position);
    if (!row)
        return;
    m_tree->setCurrentItem(row);
    QAStData* data = m_tree->dataOf(row);
    QMenu menu(this);
    if (qobject_cast<QAStATag*>(data))
        menu.addAction(tr("Open"), this, [this, data] { openDataInEditor(data); });
    if (!m_addMenu->isEmpty())
        menu.addMenu(m_addMenu);
    for (const char* name : {"cut", "copy", "paste", "delete", "rename"})
        menu.addAction(action(QLatin1String(name)));
    if (selectedNode()) {
        menu.addSeparator();
        for (const char* name : {"build", "rebuild", "execute", "clean"})
            menu.addAction(action(QLatin1String(name)));
    }
    menu.exec(m_tree->viewport()->mapToGlobal(position));
}

void StudioWindow::openDataInEditor(QAStData* data)
{
    if (auto* tag = qobject_cast<QAStATag*>(data))
        editFile(tag->filePath(), qMax(tag->line(), 0));
}

// --- edits

void StudioWindow::treeEdited()
{
    m_tree->synchronize();
    setModified(true);
    updateActions();
}

QAStNode* StudioWindow::addChild(const QString& tag)
{
    QAStNode* parent = selectedNode();
    QAStNode* fresh = parent ? parent->addNewChild(tag) : nullptr;
    if (!fresh)
        return nullptr;
    treeEdited();
    m_tree->setCurrentData(fresh);
    statusMessage(tr("%1 added to %2").arg(fresh->name(), parent->name()));
    return fresh;
}

bool StudioWindow::deleteSelected()
{
    QAStData* data = selectedData();
    if (!data || !data->parent() || !data->isDeletable())
        return false;
    QAStData* parent = data->parent();
    const QString name = data->name();
    if (!data->del())
        return false;
    treeEdited();
    m_tree->setCurrentData(parent);
    statusMessage(tr("%1 deleted").arg(name));
    return true;
}

bool StudioWindow::cutSelected()
{
    QAStData* data = selectedData();
    if (!data || !data->parent() || !data->isDeletable() || !data->isDuplicable())
        return false;
    QAStData* parent = data->parent();
    data->cut();
    treeEdited();
    m_tree->setCurrentData(parent);
    return true;
}

void StudioWindow::copySelected()
{
    if (QAStData* data = selectedData())
        data->copy();
}

QAStData* StudioWindow::pasteIntoSelected()
{
    QAStData* target = selectedData();
    if (!target)
        return nullptr;
    QAStData* item = QAStData::clipboardContentToData();
    if (!item) {
        statusMessage(tr("The clipboard holds no project item"));
        return nullptr;
    }
    const bool accepted = target->acceptDrop(item);
    if (!accepted)
        statusMessage(tr("%1 cannot hold %2").arg(target->name(), item->name()));
    delete item;
    QAStData* pasted = accepted ? target->paste() : nullptr;
    if (pasted) {
        treeEdited();
        m_tree->setCurrentData(pasted);
    }
    return pasted;
}

void StudioWindow::renameSelected()
{
    QAStData* data = selectedData();
    if (!data || !data->isRenameable())
        return;
    bool ok = false;
    const QString name = getText(this, tr("Rename"), tr("New name:"), data->name(), &ok).trimmed();
    if (!ok || name.isEmpty() || name == data->name())
        return;
    data->setName(name);
    setModified(true);
}

void StudioWindow::undo()
{
    QAStData::undo();
    treeEdited();
}

void StudioWindow::redo()
{
    QAStData::redo();
    treeEdited();
}

// --- runs

bool StudioWindow::startWalk(void (QAStNode::*command)(), const QString& what)
{
    QAStNode* node = selectedNode();
    if (!node || node->isWalking())
        return false;
    m_consoles->setCurrentWidget(m_output);
    statusMessage(tr("%1: %2...").arg(node->name(), what));
    QPointer<QAStNode> guard(node);
    auto finished = std::make_shared<QMetaObject::Connection>();
    *finished = connect(node, &QAStNode::buildExecuteFinished, this, [this, guard, finished, what] {
        disconnect(*finished);
        if (guard)
            statusMessage(tr("%1: %2 %3")
                              .arg(guard->name(), what,
                                   guard->walkSucceeded() ? ProjectTree::succeededText()
                                                          : ProjectTree::failedText()));
        if (guard)
            showCoverageOf(guard);
        // The walk pointed the shared descriptor at other configurations.
        m_sheet->refresh();
        updateActions();
    });
    followRunsBelow(node);
    (node->*command)();
    updateActions();
    return true;
}

bool StudioWindow::buildSelected() { return startWalk(&QAStNode::build, tr("build")); }
bool StudioWindow::rebuildSelected() { return startWalk(&QAStNode::rebuild, tr("rebuild")); }
bool StudioWindow::executeSelected() { return startWalk(&QAStNode::execute, tr("execution")); }
bool StudioWindow::cleanSelected() { return startWalk(&QAStNode::clean, tr("clean")); }

void StudioWindow::stopAll()
{
    if (m_analyse)
        m_analyse->stop();
    if (m_project) {
        QList<QAStData*> nodes = m_project->childrenOfClass("QAStNode", true);
        nodes.prepend(m_project.get());
        for (QAStData* node : nodes) {
            if (node->isRunning())
                node->stop();
        }
    }
    QAProcess::killAll();
    statusMessage(tr("Every run stopped"));
    updateActions();
}

bool StudioWindow::analyseSources()
{
    if (!m_project || m_analyse)
        return false;
    const QList<QAStFile*> files = m_tagBrowser->files();
    if (files.isEmpty()) {
        statusMessage(tr("The project has no file to analyse"));
        return false;
    }
    m_analyse = new QAStFileAnalyse(files, true, true, this);
    connect(m_analyse, &QAStFileAnalyse::finished, this, [this] {
        const QAStFileAnalyse* run = m_analyse;
        statusMessage(tr("%1 files analysed, %2 failed%3")
                          .arg(run->analysedFiles().size())
                          .arg(run->failedFiles().size())
                          .arg(run->wasStopped() ? tr(" (stopped)") : QString()));
        m_analyse = nullptr;
        m_tagBrowser->rebuild();
        m_tree->synchronize();
        setModified(true);
        updateActions();
    });
    m_analyse->start();
    updateActions();
    return true;
}

void StudioWindow::editTagFilters()
{
    m_tagFilters->edit(this);
    applyTagFilters();
}

void StudioWindow::applyTagFilters()
{
    m_tagBrowser->rebuild();
}

void StudioWindow::fillConfigurationChooser()
{
    m_configChooser->clear();
    if (!m_project)
        return;
    m_configChooser->addItems(m_project->configurations());
    m_configChooser->setCurrentText(m_project->currentConfigurationName());
}

void StudioWindow::setCurrentConfiguration(const QString& name)
{
    if (!m_project || name.isEmpty())
        return;
    QList<QAStData*> nodes = m_project->childrenOfClass("QAStNode", true);
    nodes.prepend(m_project.get());
    for (QAStData* item : nodes)
        static_cast<QAStNode*>(item)->setCurrentConfigurationName(name);
    m_configChooser->setCurrentText(name);
    m_sheet->setNode(selectedNode());
    setModified(true);
    statusMessage(tr("Configuration %1 in use").arg(name));
}

// --- coverage

void StudioWindow::createCoverageDock()
{
    m_coverage = new QAStCoverageView;
    connect(m_coverage, &QAStCoverageView::sourceRequested, this, [this](const QString& file, int line) {
        editFile(file, line);
        m_coverage->markLines(editorOf(file), file);
    });
    // Beside the result docks, in their tabs.
    QDockWidget* results = findChild<QDockWidget*>(QStringLiteral("memoryDock"));
    QDockWidget* dock = addResultDock("coverageDock", tr("Coverage"), m_coverage);
    if (results)
        tabifyDockWidget(results, dock);
}

void StudioWindow::showCoverageOf(QAStNode* node)
{
    if (!node)
        return;
    // A test node's own file; for a node above them, the first test node
    // below it that has one.
    QList<QAStNodeTest*> tests;
    if (auto* test = qobject_cast<QAStNodeTest*>(node))
        tests.append(test);
    else
        for (QAStData* item : node->childrenOfClass("QAStNodeTest", true))
            tests.append(static_cast<QAStNodeTest*>(item));
    for (const QAStNodeTest* test : tests) {
        const QString file = test->runtimeResultFiles().value(QASTSplitSurvey::Coverage);
        if (QFileInfo(file).size() > 0 || test == node) {
            m_coverage->setFile(file);
            return;
        }
    }
}

// --- editor tabs

QPlainTextEdit* StudioWindow::editorOf(const QString& file) const
{
    const QString path = QFileInfo(file).absoluteFilePath();
    for (int i = 0; i < m_editors->count(); ++i) {
        auto* editor = qobject_cast<QPlainTextEdit*>(m_editors->widget(i));
        if (editor && editor->property("filePath").toString() == path)
            return editor;
    }
    return nullptr;
}

void StudioWindow::editFile(const QString& file, int line)
{
    QString path = file;
    if (QFileInfo(path).isRelative() && m_project)
        path = QDir(m_project->directory()).absoluteFilePath(path);
    path = QFileInfo(path).absoluteFilePath();
    QPlainTextEdit* editor = editorOf(path);
    if (!editor) {
        QFile source(path);
        if (!source.open(QIODevice::ReadOnly)) {
            warning(this, tr("Open file"), tr("%1\n\n%2").arg(path, source.errorString()));
            return;
        }
        editor = new QPlainTextEdit;
        editor->setReadOnly(true);
        editor->setLineWrapMode(QPlainTextEdit::NoWrap);
        editor->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
        editor->setProperty("filePath", path);
        editor->setPlainText(decodedText(source.readAll()));
        const int index = m_editors->addTab(editor, QFileInfo(path).fileName());
        m_editors->setTabToolTip(index, path);
    }
    m_editors->setCurrentWidget(editor);
    if (line > 0) {
        const QTextBlock block = editor->document()->findBlockByNumber(line - 1);
        if (block.isValid()) {
            QTextCursor cursor(block);
            editor->setTextCursor(cursor);
            editor->centerCursor();
            QTextEdit::ExtraSelection mark;
            mark.cursor = cursor;
            mark.format.setBackground(QColor(0xff, 0xf1, 0xa8));
            mark.format.setProperty(QTextFormat::FullWidthSelection, true);
            editor->setExtraSelections({mark});
        }
    }
    statusMessage(line > 0 ? tr("%1, line %2").arg(path).arg(line) : path);
}

// --- StudioInterface

QMainWindow* StudioWindow::mainWindow() const
{
    return const_cast<StudioWindow*>(this);
}

QAStOutputWidget* StudioWindow::console(int console) const
{
    return console == QAStData::OutputConsole ? m_output : m_messages;
}

void StudioWindow::displayMessage(int console, const QString& text)
{
    this->console(console)->Append(text);
}

void StudioWindow::clearMessage(int console)
{
    this->console(console)->clear();
}

void StudioWindow::statusMessage(const QString& text)
{
    statusBar()->showMessage(text);
}

QWidget* StudioWindow::dialogParent(QWidget* parent)
{
    return parent ? parent : this;
}

void StudioWindow::warning(QWidget* parent, const QString& caption, const QString& text)
{
    QMessageBox::warning(dialogParent(parent), caption, text);
}

void StudioWindow::information(QWidget* parent, const QString& caption, const QString& text)
{
    QMessageBox::information(dialogParent(parent), caption, text);
}

void StudioWindow::critical(QWidget* parent, const QString& caption, const QString& text)
{
    QMessageBox::critical(dialogParent(parent), caption, text);
}

StudioInterface::StandardButton StudioWindow::question(QWidget* parent, const QString& caption,
                                                      const QString& text, StandardButtons buttons,
                                                      StandardButton defaultButton, Icon icon)
{
    // The host seam's values are QMessageBox's.
    QMessageBox box(QMessageBox::Icon(icon), caption, text,
                    QMessageBox::StandardButtons(int(buttons)), dialogParent(parent));
    box.setDefaultButton(QMessageBox::StandardButton(defaultButton));
    const auto answer = StandardButton(box.exec());
    if (buttons.testFlag(answer))
        return answer;
    // Closed without a button: the way out the box offers.
    for (StandardButton out : {Cancel, No, Abort})
        if (buttons.testFlag(out))
            return out;
    return defaultButton;
}

QWidget* StudioWindow::boxParent() const
{
    return const_cast<StudioWindow*>(this);
}

QString StudioWindow::getText(QWidget* parent, const QString& caption, const QString& label,
                              const QString& text, bool* ok)
{
    return QInputDialog::getText(dialogParent(parent), caption, label, QLineEdit::Normal, text, ok);
}

QString StudioWindow::getOpenFileName(QWidget* parent, const QString& caption, const QString& dir,
                                      const QString& filter)
{
    return QFileDialog::getOpenFileName(dialogParent(parent), caption, dir, filter, nullptr,
                                        QFileDialog::DontUseNativeDialog);
}

QStringList StudioWindow::getOpenFileNames(QWidget* parent, const QString& caption,
                                           const QString& dir, const QString& filter)
{
    return QFileDialog::getOpenFileNames(dialogParent(parent), caption, dir, filter, nullptr,
                                         QFileDialog::DontUseNativeDialog);
}

QString StudioWindow::getSaveFileName(QWidget* parent, const QString& caption, const QString& dir,
                                      const QString& filter)
{
    return QFileDialog::getSaveFileName(dialogParent(parent), caption, dir, filter, nullptr,
                                        QFileDialog::DontUseNativeDialog);
}

QString StudioWindow::getExistingDirectory(QWidget* parent, const QString& caption,
                                           const QString& dir)
{
    return QFileDialog::getExistingDirectory(
        dialogParent(parent), caption, dir,
        QFileDialog::ShowDirsOnly | QFileDialog::DontUseNativeDialog);
}

void StudioWindow::startProgress(const QString& label, const QString& cancelText, int maximum)
{
    delete m_progress;
    m_progress = new QProgressDialog(label, cancelText, 0, qMax(maximum, 0), this);
    m_progress->setObjectName(QStringLiteral("progress"));
    if (cancelText.isEmpty())
        m_progress->setCancelButton(nullptr);
    m_progress->setWindowModality(Qt::WindowModal);
    m_progress->setAutoClose(false);
    m_progress->setAutoReset(false);
    m_progress->setMinimumDuration(0);
    m_progress->setValue(0);
    m_progress->show();
}

void StudioWindow::setProgressValue(int value)
{
    if (m_progress)
        m_progress->setValue(value);
}

void StudioWindow::setProgressLabel(const QString& label)
{
    if (m_progress)
        m_progress->setLabelText(label);
}

bool StudioWindow::progressWasCanceled() const
{
    return m_progress && m_progress->wasCanceled();
}

void StudioWindow::finishProgress()
{
    if (m_progress)
        m_progress->deleteLater();
    m_progress = nullptr;
}
