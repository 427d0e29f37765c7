// The project file and its object information file: their layout, what a
// load and a save keep byte for byte, sub-projects, templates, the older
// resource forms, the DTD, the faults of a load, XML nested too deep, and
// saves that fail without harming the files already there.
#include "FailingStorage.h"
#include "QAFiltersMgr.h"
#include "QAPropertyGroup.h"
#include "QAPropertyMapGroup.h"
#include "QAStAFunctionTag.h"
#include "QAStConfiguration.h"
#include "QAStDataUndoActionManager.h"
#include "QAStFile.h"
#include "QAStFolder.h"
#include "QAStNodeApplication.h"
#include "QAStNodeGroup.h"
#include "QAStNodeLibrary.h"
#include "QAStNodeSource.h"
#include "QAStNodeSystemTesting.h"
#include "QAStNodeUnitTesting.h"
#include "QAStNodeUser.h"
#include "QAStProject.h"
#include "QAStRootFolder.h"
#include "QAStSubProject.h"
#include "QATagFiltersMgr.h"
#include "QAXML.h"
#include "QMetReader.h"
#include "QMetTree.h"
#include "RecordingStudio.h"
#include "TestEnvironment.h"
#include "TestFiles.h"
#include "TestItems.h"
#include "TestPaths.h"

#include <QDir>
#include <QDirIterator>
#include <QDomDocument>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

#include <unistd.h>

using namespace Qt::StringLiterals;
using FailingStorage::FileSizeLimit;
using TestFiles::readFile;
using TestFiles::writeFile;

namespace {

const QByteArray header = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<!DOCTYPE project SYSTEM \"project.dtd\">\n";

// Texts a user can type that the XML form must carry: blanks only, line
// ends of every kind, control characters, the encoding's own escapes.
const QStringList hostileTexts = {u"   "_s, u"a\r\nb\rc"_s, u"bell\x07 esc\x1b[0m"_s,
                                  u"#comma# #x41# a,b <c> & \"d\" 'e'"_s, u"\t"_s,
                                  QString::fromUtf8("Gr\xC3\xB6\xC3\x9F" "e \xF0\x9F\x98\x80")};

// Every item below root, depth first, as "Class:name" lines indented by
// depth.
QStringList outline(const QAStData* root, int depth = 0)
{
    QStringList lines;
    for (const QAStData* c = root->child(); c; c = c->next()) {
        lines << QString(depth * 2, u' ') + QLatin1String(c->metaObject()->className()) + u':' + c->name();
        if (!qobject_cast<const QAStSubProject*>(c))
            lines << outline(c, depth + 1);
    }
    return lines;
}

// Every file below dir (or in dir only) with its bytes, by relative path.
QMap<QString, QByteArray> snapshot(const QString& dir, bool below = true)
{
    QMap<QString, QByteArray> files;
    QDirIterator it(dir, QDir::Files | QDir::Hidden, below ? QDirIterator::Subdirectories : QDirIterator::NoIteratorFlags);
    while (it.hasNext()) {
        const QString path = it.next();
        files.insert(QDir(dir).relativeFilePath(path), readFile(path));
    }
    return files;
}

QStringList configurationValues(const QAStNode* node)
{
    QStringList values;
    for (const QAStConfiguration* c : node->configurationList())
        values << c->name() + u'=' + c->localProperty(u"cflags"_s).toString();
    return values;
}

// The settings of the descriptor, depth first.
void collectSettings(const QAPropertyGroup* group, QList<QAProperty*>& found)
{
    for (QAProperty* child : group->children()) {
        if (child->isGroup())
            collectSettings(static_cast<const QAPropertyGroup*>(child), found);
        else
            found << child;
    }
}

// Checks written XML against the installation's DTD with xmllint.
void validate(const QString& file)
{
    QProcess xmllint;
    xmllint.start(u"xmllint"_s, {u"--noout"_s, u"--valid"_s, file});
    QVERIFY(xmllint.waitForFinished());
    QVERIFY2(xmllint.exitCode() == 0, xmllint.readAllStandardError().constData());
}

// Opens file, checks its load report is empty, saves it.
void openAndSave(const QString& file)
{
    QAStProject project(u"p"_s, QPixmap());
    QVERIFY(project.open(file));
    QCOMPARE(QAStData::loadReport(), QString());
    QVERIFY(project.save());
}

QString regression(const char* name)
{
    return TestPaths::data(u"regressions/"_s + QLatin1String(name));
}

QByteArray nested(int depth)
{
    return QByteArray("<a>").repeated(depth) + QByteArray("</a>").repeated(depth);
}

}

class TestProjectFile : public QObject {
    Q_OBJECT

    QString path(const QString& relative) const { return m_dir->filePath(relative); }

    QString copyFixture(const QString& name)
    {
        const QString target = path(QFileInfo(name).fileName());
        QFile::copy(TestPaths::data(u"projects/"_s + name), target);
        QFile::setPermissions(target, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        return target;
    }

    // The example project copied into the scratch directory and open, with a
    // change, so that a save that went through would show.
    std::unique_ptr<QAStProject> openExample()
    {
        TestFiles::copyTree(TestPaths::sourceDir() + u"/examples/calculator"_s, m_dir->path());
        auto project = std::make_unique<QAStProject>(u"calculator"_s, QPixmap());
        if (!project->open(path(u"calculator.rtp"_s)))
            return nullptr;
        project->setName(u"renamed before the save"_s);
        m_studio->reset();
        return project;
    }

    // The warnings and console messages a save gave, joined.
    QString reported() const
    {
        return (m_studio->requestTexts(RecordingStudio::Request::Warning)
                + m_studio->messages(QAStData::MessageConsole)).join(u'\n');
    }

    std::unique_ptr<RecordingStudio> m_studio;
    std::unique_ptr<QTemporaryDir> m_dir;

private slots:
    void init()
    {
        QAStConfiguration::initialize(nullptr, nullptr);
        QVERIFY(QAStConfiguration::propertyDescriptor());
        m_studio = std::make_unique<RecordingStudio>();
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        QAStProject::setModeBatch(false);
    }

    void cleanup()
    {
        QFile::setPermissions(m_dir->path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        QAStProject::setModeBatch(false);
        m_studio.reset();
    }

    // --- the written form

    // Every kind reads back; a load and a save of it then give the same
    // bytes every time. Both files are valid by the DTD (when xmllint is
    // there to tell).
    void everyKindReadsBackStable()
    {
        const QString file = path(u"every.rtp"_s);
        QAStProject written(u"every"_s, QPixmap());
        QVERIFY(written.create(file));
        written.addConfiguration(u"Debug"_s)->setProperty(u"cflags"_s, "-g -O0");
        written.addConfiguration(u"Release"_s)->setProperty(u"cflags"_s, "-O2");
        written.setCurrentConfigurationName(u"Release"_s);
        written.setSortMethod(2);
        QVERIFY(addEveryKind(&written));
        (new QAStSubProject(path(u"sub.rtp"_s), &written, written.last()))->setUnloaded(true);
        written.setPluginList({u"coverage"_s});
        written.configuration(u"Debug"_s)->setProperty(u"ge_incdir"_s, QStringList{u"a,b"_s, u"<c>"_s});
        (new QAStFolder(u"Sources"_s, QPixmap(), written.rootFolder(), nullptr))->setFilters(u"*.c;*.h"_s);
        written.addFiles({path(u"src/main.c"_s), path(u"src/calc.c"_s), path(u"doc/notes.txt"_s)});
        QVERIFY(written.save());
        if (!QStandardPaths::findExecutable(u"xmllint"_s).isEmpty()) {
            validate(file);
            validate(path(u"every.inf"_s));
        }

        QAStProject read(u"other"_s, QPixmap());
        QVERIFY(read.open(file));
        QCOMPARE(QAStData::loadReport(), QString());
        QCOMPARE(read.name(), u"every"_s);
        QCOMPARE(outline(&read), outline(&written));
        QCOMPARE(read.configurations(), QStringList({u"Debug"_s, u"Release"_s}));
        QCOMPARE(configurationValues(&read), configurationValues(&written));
        QVERIFY(read.initialConfiguration(u"Release"_s));
        QCOMPARE(read.currentConfigurationName(), u"Release"_s);
        QCOMPARE(read.sortMethod(), 2);
        const auto* app = qobject_cast<QAStNode*>(read.childrenOfClass("QAStNodeApplication", true).value(0));
        QVERIFY(app);
        QCOMPARE(app->configuration(u"Debug"_s)->localProperty(u"cflags"_s), QVariant(u"-g"_s));
        // The DOCTYPE names the DTD of the installation in use.
        QVERIFY(readFile(file).startsWith(header.left(header.indexOf("SYSTEM \"") + 8)
                                          + QFile::encodeName(QAStData::installDir()) + "/lib/project.dtd\">\n<project>\n"));

        QVERIFY(read.save());
        const QByteArray project = readFile(file);
        const QByteArray information = readFile(path(u"every.inf"_s));
        QVERIFY(project.contains("<plugin_list>coverage</plugin_list>"));
        openAndSave(file);
        QCOMPARE(readFile(file), project);
        QCOMPARE(readFile(path(u"every.inf"_s)), information);
    }

    // The example, its sub-project and both file trees, as they are shipped
    // but for the DOCTYPE line, which names the installation in use.
    // It loads clean, every kind of node in it and its files on disk.
    void exampleIsByteStable()
    {
        TestFiles::copyTree(TestPaths::sourceDir() + u"/examples/calculator"_s, m_dir->path());
        const QString file = path(u"calculator.rtp"_s);
        {
            QAStProject p(u"x"_s, QPixmap());
            QVERIFY(p.open(file));
            QCOMPARE(QAStData::loadReport(), QString());
            QVERIFY(m_studio->requests().isEmpty());
            QCOMPARE(p.configurations(), QStringList({u"Debug"_s, u"Release"_s}));
            const QString tree = outline(&p).join(u'\n');
            for (const char* kind : {"QAStNodeApplication", "QAStNodeLibrary", "QAStNodeSource", "QAStNodeUnitTesting",
                                     "QAStNodeUnitTestingScript", "QAStNodeSystemTesting", "QAStNodeSystemTestingScript",
                                     "QAStNodeVirtualTester", "QAStNodeGroup", "QAStSubProject"})
                QVERIFY2(tree.contains(QLatin1String(kind) + u':'), kind);
            const QList<QAStData*> subs = p.childrenOfClass("QAStSubProject", true);
            QCOMPARE(subs.size(), 1);
            auto* sub = static_cast<QAStSubProject*>(subs.first());
            QVERIFY(sub->isOpen());
            QCOMPARE(sub->currentConfigurationName(), p.currentConfigurationName());
            QVERIFY(!p.rootFolder()->childItems().isEmpty());
            for (const QAStFile* f : p.files())
                QVERIFY2(QFile::exists(f->filePath()), qPrintable(f->filePath()));
        }
        const auto withoutDoctype = [](QMap<QString, QByteArray> files) {
            static const QRegularExpression doctype(u"<!DOCTYPE [^\n]*\n"_s);
            for (QByteArray& bytes : files)
                bytes = QString::fromUtf8(bytes).remove(doctype).toUtf8();
            return files;
        };
        const auto shipped = snapshot(m_dir->path());
        openAndSave(file);
        const auto saved = snapshot(m_dir->path());
        QCOMPARE(withoutDoctype(saved), withoutDoctype(shipped));
        openAndSave(file);
        QCOMPARE(snapshot(m_dir->path()), saved);
    }

    void sortedAndHostileProjectIsByteStable()
    {
        const QString file = path(u"hostile.rtp"_s);
        QStringList expectedShape;
        QStringList expectedFiles;
        {
            QAStProject project(u"hostile"_s, QPixmap());
            QVERIFY(project.create(file));
            QAStConfiguration* debug = project.addConfiguration(u"Debug"_s);
            debug->setProperty(u"cflags"_s, hostileTexts.join(u'\n'));
            debug->setProperty(u"ge_incdir"_s, hostileTexts);
            project.setCurrentConfigurationName(u"Debug"_s);
            auto* sorted = new QAStNodeGroup(u"sorted"_s, QPixmap(), &project, nullptr);
            for (const QString& name : QStringList{u"c"_s, u"a"_s} + hostileTexts)
                new QAStNodeUser(name, QPixmap(), sorted, sorted->last());
            sorted->setAlphabeticallySorted(true);
            static_cast<QAStNodeUser*>(sorted->child())->setPerlScriptAfterChild(hostileTexts.join(u';'));
            auto* system = new QAStNodeSystemTesting(u"system"_s, QPixmap(), &project, sorted);
            QAStNodeSystemTesting::Deployment deployment;
            deployment.vtNodeName = hostileTexts.at(1);
            deployment.hostIp = hostileTexts.at(4) + u"\"\n"_s;
            deployment.startRoutine = hostileTexts.at(3);
            system->setDeployments({deployment});
            system->setMachines(hostileTexts);
            auto* folder = new QAStFolder(u"folder"_s, QPixmap(), project.rootFolder(), nullptr);
            folder->setAlphabeticallySorted(true);
            for (const QString& name : {u"z.c"_s, u"b.c"_s, u"m.c"_s})
                new QAStFile(path(u"src/"_s + name), folder, folder->last());
            auto* tag = new QAStAFunctionTag(hostileTexts.at(2), path(u"src/m.c"_s), 3, folder->child(), nullptr);
            tag->setSignature(u"(int a,\x02 char* b)\r\n"_s);
            QVERIFY(project.save());
            expectedShape = outline(&project);
            expectedFiles = outline(project.rootFolder());
        }
        const QByteArray written = readFile(file);
        const QByteArray writtenTree = readFile(path(u"hostile.inf"_s));
        for (int round = 0; round < 2; ++round) {
            QAStProject project(u"p"_s, QPixmap());
            QVERIFY(project.open(file));
            QCOMPARE(QAStData::loadReport(), QString());
            QCOMPARE(outline(&project), expectedShape);
            QCOMPARE(outline(project.rootFolder()), expectedFiles);
            const QAStConfiguration* debug = project.configuration(u"Debug"_s);
            QCOMPARE(debug->localProperty(u"cflags"_s).toString(), hostileTexts.join(u'\n'));
            QCOMPARE(debug->localProperty(u"ge_incdir"_s).toStringList(), hostileTexts);
            const auto* system = qobject_cast<QAStNodeSystemTesting*>(project.findNode(u"system"_s));
            QVERIFY(system);
            QCOMPARE(system->deployments().value(0).hostIp, hostileTexts.at(4) + u"\"\n"_s);
            QCOMPARE(system->machines(), hostileTexts);
            const auto* tag = project.rootFolder()->findNode(hostileTexts.at(2));
            QVERIFY(tag);
            QCOMPARE(static_cast<const QAStATag*>(tag)->signature(), u"(int a,\x02 char* b)\r\n"_s);
            QVERIFY(project.save());
            QCOMPARE(readFile(file), written);
            QCOMPARE(readFile(path(u"hostile.inf"_s)), writtenTree);
        }
    }

    // Without its descriptor a project opens with a warning, and its save
    // keeps every setting as it was read.
    void settingsSurviveAMissingDescriptor()
    {
        QTemporaryDir install;
        TestFiles::copyTree(TestPaths::installTree(), install.path());
        EnvironmentVariable scope("ZELTAHOME", QFile::encodeName(install.path()));
        const QString project = path(u"calculator.rtp"_s);
        TestFiles::copyTree(TestPaths::sourceDir() + u"/examples/calculator"_s, m_dir->path());
        openAndSave(project);
        const auto reference = snapshot(m_dir->path());
        QVERIFY(reference.value(u"calculator.rtp"_s).contains("<cflags>"));

        QAStConfiguration::terminate(nullptr, nullptr);
        QVERIFY(QFile::remove(QAStConfiguration::propertyDescriptorFile()));
        {
            QAStProject p(u"p"_s, QPixmap());
            QVERIFY(p.open(project));
            const QStringList warnings = m_studio->requestTexts(RecordingStudio::Request::Warning);
            QCOMPARE(warnings.size(), 1);
            QVERIFY2(warnings.first().startsWith(QAStConfiguration::propertyDescriptorFile() + u"\n\n"_s),
                     qPrintable(warnings.first()));
            QVERIFY(p.save());
        }
        QCOMPARE(snapshot(m_dir->path()), reference);
        QAStConfiguration::terminate(nullptr, nullptr);
    }

    // A file written with a newer descriptor: the keys this one does not
    // know are written back as they were read.
    void undescribedSettingsAreKept()
    {
        const QString file = path(u"newer.rtp"_s);
        {
            QAStProject project(u"newer"_s, QPixmap());
            QVERIFY(project.create(file));
            project.addConfiguration(u"Debug"_s)->setProperty(u"cflags"_s, "-g");
            QVERIFY(project.save());
        }
        QByteArray text = readFile(file);
        const int at = text.indexOf("    </configuration>");
        QVERIFY(at > 0);
        text.insert(at, "      <futureSetting>a#comma#b &amp; &#13;#x1B#</futureSetting>\n"
                        "      <anotherOne>3</anotherOne>\n");
        writeFile(file, text);
        openAndSave(file);
        QCOMPARE(readFile(file), text);
    }

    // --- saves

    // The example's save fails: the file grows past the limit while it is
    // written (for a project file shorter than the write buffers the failure
    // only shows when they are flushed, which must still stop the commit),
    // its directory is read only, gone, or a file. The files there stay
    // whole, the host is told (in a box, or on the console in batch mode)
    // with the file and the system's reason, and a save once the fault is
    // gone goes through.
    void failedSaveKeepsTheFiles_data()
    {
        QTest::addColumn<QString>("fault"); // as FailingStorage::Failure names it, or "replaced"
        QTest::addColumn<int>("error");
        QTest::addColumn<bool>("batch");
        QTest::newRow("full disk at once") << "limit:0" << EFBIG << false;
        QTest::newRow("full disk at once, batch") << "limit:0" << EFBIG << true;
        QTest::newRow("full disk on the last flush") << "limit:200" << EFBIG << false;
        QTest::newRow("full disk after the first buffer") << "limit:17000" << EFBIG << false;
        QTest::newRow("read-only directory") << "read-only" << EACCES << false;
        QTest::newRow("directory removed") << "removed" << ENOENT << false;
        QTest::newRow("directory replaced by a file") << "replaced" << ENOTDIR << false;
    }
    void failedSaveKeepsTheFiles()
    {
        QFETCH(QString, fault);
        QFETCH(int, error);
        QFETCH(bool, batch);
        auto project = openExample();
        QVERIFY(project);
        const auto before = snapshot(m_dir->path(), false);
        QAStProject::setModeBatch(batch);
        bool saved = true;
        {
            FailingStorage::Failure failure(fault == u"replaced"_s ? u"removed"_s : fault, m_dir->path());
            QVERIFY(failure.ready());
            if (failure.powerless())
                QSKIP("running as root without the right to drop capabilities: permission bits bind nothing");
            if (fault == u"replaced"_s)
                writeFile(m_dir->path(), "a file where the project's directory was\n");
            saved = project->save();
        }
        QVERIFY(!saved);
        const QStringList told = batch ? m_studio->messages(QAStData::MessageConsole)
                                       : m_studio->requestTexts(RecordingStudio::Request::Warning);
        QVERIFY(!told.isEmpty()); // the sub-project's save is told too
        QVERIFY2(told.first().startsWith(path(u"calculator.rtp"_s) + u"\n\nUnable to save the project.\n"_s)
                     && told.first().contains(FailingStorage::reason(error)), qPrintable(told.first()));
        if (batch)
            QVERIFY(m_studio->requests().isEmpty());
        if (fault == u"removed"_s) {
            QVERIFY(!QFileInfo::exists(m_dir->path()));
            return;
        }
        if (fault == u"replaced"_s) {
            QCOMPARE(readFile(m_dir->path()), QByteArray("a file where the project's directory was\n"));
            QFile::remove(m_dir->path());
            return;
        }
        QCOMPARE(snapshot(m_dir->path(), false), before);
        QVERIFY(project->save());
        QVERIFY(readFile(path(u"calculator.rtp"_s)) != before.value(u"calculator.rtp"_s));
    }

    // The project file fits, its object information file does not: neither
    // is replaced, the message names the file that failed, and no temporary
    // file is left beside them.
    void objectInformationFileFailsAfterTheProject()
    {
        auto project = openExample();
        QVERIFY(project);
        QStringList files;
        for (int i = 0; i < 400; ++i)
            files << path(u"src/generated/a-rather-long-file-name-%1.c"_s.arg(i));
        project->rootFolder()->addFiles(files);
        const auto before = snapshot(m_dir->path(), false);
        bool saved = true;
        {
            FileSizeLimit full(readFile(path(u"calculator.rtp"_s)).size() + 4096);
            QVERIFY(full.active());
            saved = project->save();
        }
        QVERIFY(!saved);
        QCOMPARE(snapshot(m_dir->path(), false), before);
        QVERIFY2(reported().contains(path(u"calculator.inf"_s)), qPrintable(reported()));
        QVERIFY2(reported().contains(FailingStorage::reason(EFBIG)), qPrintable(reported()));
        QVERIFY(project->save());
        QVERIFY(readFile(path(u"calculator.rtp"_s)).contains("renamed before the save"));
        QVERIFY(readFile(path(u"calculator.inf"_s)).contains("a-rather-long-file-name-399.c"));
    }

    // A failed "save as" leaves the project where it was: its next save goes
    // to its own file again.
    void saveAsIntoReadOnlyDirectoryKeepsThePlace()
    {
        auto project = openExample();
        QVERIFY(project);
        QTemporaryDir other;
        const QString target = other.filePath(u"copy.rtp"_s);
        writeFile(target, "an older copy\n");
        m_studio->answerPath(target);
        bool saved = true;
        {
            FailingStorage::Failure readOnly(u"read-only"_s, other.path());
            if (readOnly.powerless())
                QSKIP("running as root without the right to drop capabilities: permission bits bind nothing");
            saved = project->saveAs();
        }
        QVERIFY(!saved);
        QCOMPARE(readFile(target), QByteArray("an older copy\n"));
        QVERIFY(reported().contains(target));
        QCOMPARE(project->path(), path(u"calculator.rtp"_s));
        QVERIFY(project->save());
        QVERIFY(readFile(path(u"calculator.rtp"_s)).contains("renamed before the save"));
    }

    void readOnlyProjectIsNotWritten()
    {
        const QString file = path(u"calc.rtp"_s);
        QAStProject p(u"calc"_s, QPixmap());
        QVERIFY(p.create(file));
        const QByteArray before = readFile(file);
        p.setReadOnly(true);
        new QAStNodeGroup(u"g"_s, QPixmap(), &p, nullptr);
        QVERIFY(!p.save());
        QCOMPARE(readFile(file), before);
        QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Warning),
                 QStringList{file + u"\n\nUnable to save the project.\nThe project is read only."_s});
        // A project whose file may not be written opens read only.
        if (::geteuid() != 0) {
            QFile::setPermissions(file, QFileDevice::ReadOwner);
            QAStProject reopened(u"x"_s, QPixmap());
            QVERIFY(reopened.open(file));
            QVERIFY(reopened.isReadOnly());
        }
    }

    void saveAsAsksTheHost()
    {
        QAStProject p(u"calc"_s, QPixmap());
        QVERIFY(p.create(path(u"calc.rtp"_s)));
        QDir(m_dir->path()).mkdir(u"moved"_s);
        const QString moved = path(u"moved/renamed"_s);
        m_studio->answerPath(moved);
        QVERIFY(p.saveAs());
        QCOMPARE(p.path(), moved + u".rtp"_s);
        QVERIFY(QFile::exists(path(u"moved/renamed.inf"_s)));
        QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::SaveFile), QStringList{m_dir->path()});
        QVERIFY(readFile(p.path()).contains("<object_file>renamed.inf</object_file>"));
        // No host chooser in batch mode: nothing is asked nor written.
        QAStProject::setModeBatch(true);
        m_studio->answerPath(path(u"never.rtp"_s));
        QVERIFY(!p.saveAs());
        QVERIFY(!QFile::exists(path(u"never.rtp"_s)));
    }

    void templates()
    {
        const QString file = path(u"calc.rtp"_s);
        QAStProject p(u"calc"_s, QPixmap());
        QVERIFY(p.create(file));
        QVERIFY(addEveryKind(&p));
        QVERIFY(p.save());
        const QByteArray information = readFile(path(u"calc.inf"_s));
        new QAStFolder(u"only in the template"_s, QPixmap(), p.rootFolder(), nullptr);
        // A template beside the project, of the same stem, keeps its own tree.
        m_studio->answerPath(path(u"calc"_s));
        QVERIFY(p.saveAsTemplate());
        QCOMPARE(p.path(), file);
        QVERIFY(!p.isTemplate());
        QCOMPARE(readFile(path(u"calc.inf"_s)), information);
        QVERIFY(readFile(path(u"calc.rtt.inf"_s)).contains("only in the template"));
        QAStProject fromTemplate(u"x"_s, QPixmap());
        QVERIFY(fromTemplate.open(path(u"calc.rtt"_s)));
        QVERIFY(fromTemplate.isTemplate());
        QCOMPARE(outline(&fromTemplate), outline(&p));
        QCOMPARE(fromTemplate.rootFolder()->childCount(), 1);
    }

    // --- sub-projects

    void subProjects()
    {
        const QString subFile = path(u"parts/printer/printer.rtp"_s);
        QDir().mkpath(QFileInfo(subFile).absolutePath());
        {
            QAStProject sub(u"printer"_s, QPixmap());
            QVERIFY(sub.create(subFile));
            sub.addConfiguration(u"Debug"_s);
            sub.addConfiguration(u"Release"_s);
            sub.setCurrentConfigurationName(u"Debug"_s);
            new QAStNodeLibrary(u"libprinter"_s, QPixmap(), &sub, nullptr);
            QVERIFY(sub.save());
        }
        const QString file = path(u"main.rtp"_s);
        {
            QAStProject p(u"main"_s, QPixmap());
            QVERIFY(p.create(file));
            p.addConfiguration(u"Release"_s);
            p.setCurrentConfigurationName(u"Release"_s);
            QAStSubProject* sub = p.addSubProject(u"parts/printer/printer.rtp"_s);
            QVERIFY(sub && sub->isOpen());
            QCOMPARE(sub->currentConfigurationName(), u"Release"_s);
            QCOMPARE(sub->directory(), QFileInfo(subFile).absolutePath());
            sub->addChild(new QAStNodeGroup(u"added in the sub-project"_s, QPixmap()), sub->last());
            QVERIFY(p.save());
        }
        QVERIFY(readFile(file).contains("<project_file>parts/printer/printer.rtp</project_file>"));
        QVERIFY(readFile(subFile).contains("added in the sub-project"));
        QAStProject p(u"x"_s, QPixmap());
        QVERIFY(p.open(file));
        auto* sub = qobject_cast<QAStSubProject*>(p.child());
        QVERIFY(sub && sub->isOpen());
        QCOMPARE(sub->path(), subFile);
        QCOMPARE(outline(sub), QStringList({u"QAStNodeLibrary:libprinter"_s, u"QAStNodeGroup:added in the sub-project"_s}));
        QCOMPARE(sub->currentConfigurationName(), u"Release"_s);
    }

    void unloadedAndSelfIncludingSubProjects()
    {
        const QString file = path(u"loop.rtp"_s);
        QAStProject p(u"loop"_s, QPixmap());
        QVERIFY(p.create(file));
        auto* self = new QAStSubProject(file, &p, nullptr);
        (new QAStSubProject(path(u"gone.rtp"_s), &p, self))->setUnloaded(true);
        QVERIFY(p.save());
        m_studio->reset();
        QAStProject reopened(u"x"_s, QPixmap());
        QVERIFY(reopened.open(file));
        const QList<QAStData*> subs = reopened.childrenOfClass("QAStSubProject");
        QCOMPARE(subs.size(), 2);
        QVERIFY(!static_cast<QAStProject*>(subs.at(0))->isOpen());
        QVERIFY(!static_cast<QAStProject*>(subs.at(1))->isOpen());
        QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Warning),
                 QStringList{file + u"\n\nThe project includes itself: it is left closed."_s});
    }

    void addProjectsThroughTheHost()
    {
        QAStProject p(u"main"_s, QPixmap());
        QVERIFY(p.create(path(u"main.rtp"_s)));
        p.addConfiguration(u"Debug"_s);
        p.setCurrentConfigurationName(u"Debug"_s);
        QAStData::undoManager()->clear();
        m_studio->answerPath(path(u"fresh"_s));
        QAStSubProject* fresh = p.addNewProject();
        QVERIFY(fresh);
        QCOMPARE(fresh->parent(), &p);
        QCOMPARE(fresh->configurations(), QStringList{u"Debug"_s});
        QVERIFY(QFile::exists(path(u"fresh.rtp"_s)));
        QVERIFY(QAStData::isUndoAvailable());
        m_studio->answerPath(path(u"fresh.rtp"_s));
        QAStSubProject* existing = p.addExistingProject();
        QVERIFY(existing && existing->isOpen());
        QCOMPARE(existing->currentConfigurationName(), u"Debug"_s);
        QVERIFY(!p.addExistingProject()); // nothing chosen
        QCOMPARE(p.childCount(), 2);
    }

    // --- the older resource forms

    void olderProjectFile()
    {
        const QString file = copyFixture(u"older/calc.rtp"_s);
        QAStProject p(u"x"_s, QPixmap());
        QVERIFY(p.open(file));
        QCOMPARE(p.name(), u"Calculator"_s);
        QCOMPARE(outline(&p), QStringList({u"QAStNodeGroup:Build"_s, u"  QAStNodeLibrary:libcalc"_s,
                                           u"    QAStNodeSource:calc.c"_s, u"  QAStNodeApplication:calc"_s,
                                           u"    QAStNodeSource:main.c"_s, u"QAStNodeUnitTesting:Unit"_s,
                                           u"  QAStNodeUnitTestingScript:calc.ptu"_s}));
        QCOMPARE(configurationValues(&p), QStringList({u"Debug=-g -O0"_s, u"Release=-O2"_s}));
        QCOMPARE(p.configuration(u"Debug"_s)->localProperty(u"ge_incdir"_s),
                 QVariant(QStringList{u"include"_s, u"/usr/include"_s}));
        QCOMPARE(p.currentConfigurationName(), u"Release"_s);
        QCOMPARE(p.sortMethod(), 1);
        const auto* app = qobject_cast<QAStNode*>(p.findNode(u"calc"_s));
        QCOMPARE(app->configuration(u"Release"_s)->localProperty(u"ldflags"_s), QVariant(u"-s"_s));
        QCOMPARE(app->currentConfigurationName(), u"Release"_s);
        // No object information file yet: the tree is made from the nodes.
        QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Question).size(), 1);
        QStringList keys;
        for (const QAStFile* f : p.files())
            keys << QDir(m_dir->path()).relativeFilePath(f->filePath());
        keys.sort();
        QCOMPARE(keys, QStringList({u"src/calc.c"_s, u"src/main.c"_s, u"tests/calc.ptu"_s}));
        // Saved, it becomes an XML project file with the same content.
        QVERIFY(p.save());
        QCOMPARE(QAStProject::fileKind(file), QAStProject::XmlProject);
        QAStProject reread(u"y"_s, QPixmap());
        QVERIFY(reread.open(file));
        QCOMPARE(outline(&reread), outline(&p));
        QCOMPARE(reread.files().size(), 3);
    }

    void olderWorkspaceFile()
    {
        copyFixture(u"older/calc.rtp"_s);
        const QString file = copyFixture(u"older/all.rtw"_s);
        QAStProject::setModeBatch(true);
        QAStProject workspace(u"x"_s, QPixmap());
        QVERIFY(workspace.open(file));
        QCOMPARE(QAStProject::fileKind(file), QAStProject::ResourceWorkspace);
        QCOMPARE(workspace.name(), u"All projects"_s);
        QCOMPARE(workspace.childCount(), 2);
        auto* calc = qobject_cast<QAStSubProject*>(workspace.child());
        QVERIFY(calc && calc->isOpen());
        QCOMPARE(calc->name(), u"Calculator"_s);
        QCOMPARE(calc->childCount(), 2);
        // The listed project that does not exist stays closed, and said so.
        auto* missing = qobject_cast<QAStSubProject*>(calc->next());
        QVERIFY(missing && !missing->isOpen());
        QVERIFY(m_studio->messages(QAStData::MessageConsole)
                    .contains(path(u"missing.rtp"_s) + u"\n\nThe project file don't exist."_s));
        QVERIFY(m_studio->requests().isEmpty());
        // One report for the whole load: the workspace's lines and its projects'.
        const QString report = QAStData::loadReport();
        QVERIFY2(report.contains(u"all.rtw.inf"_s) && report.contains(u"calc.inf"_s), qPrintable(report));
    }

    void faultsOfOlderFiles()
    {
        const QString file = copyFixture(u"older/faults.rtp"_s);
        QAStProject p(u"x"_s, QPixmap());
        QVERIFY(p.open(file));
        // The faulty entries are left out, the others read.
        QCOMPARE(outline(&p), QStringList({u"QAStNodeGroup:kept"_s, u"  QAStNodeUser:kept too"_s}));
        QCOMPARE(p.configurations(), QStringList{u"Debug"_s});
        const QString report = QAStData::loadReport();
        for (const QString& line : {u"%1:6: CONFIGURATION without a name\n"_s, u"%1:11: unknown kind \"WIDGET\"\n"_s,
                                    u"%1:12: SOURCE bad place\n"_s, u"%1:13: a child is not a group\n"_s})
            QVERIFY2(report.contains(line.arg(file)), qPrintable(report));
    }

    // --- the DTD

    void dtdDeclaresEverySetting()
    {
        const QString dtd = QString::fromUtf8(readFile(QAStData::installDir() + u"/lib/project.dtd"_s));
        const QRegularExpressionMatch match = QRegularExpression(u"<!ENTITY % settings\\s+\"([^\"]*)\">"_s).match(dtd);
        QVERIFY(match.hasMatch());
        QSet<QString> inEntity;
        for (const QString& name : match.captured(1).split(u'|'))
            inEntity.insert(name.trimmed());
        QList<QAProperty*> settings;
        collectSettings(QAStConfiguration::propertyDescriptor(), settings);
        QSet<QString> described;
        for (const QAProperty* setting : settings) {
            described.insert(setting->tag());
            QVERIFY2(dtd.contains(u"<!ELEMENT %1 (#PCDATA)>"_s.arg(setting->tag())), qPrintable(setting->tag()));
        }
        QCOMPARE(inEntity, described);
    }

    // --- loads

    void loadMessages_data()
    {
        QTest::addColumn<bool>("exists");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("batch");
        QTest::addColumn<QString>("message");
        const QString missing = u"%1\n\nThe project file don't exist."_s;
        const QString invalid = u"%1\n\nThis file content is not a valid project file"_s;
        QTest::newRow("missing file") << false << QByteArray() << false << missing;
        QTest::newRow("missing file, batch: no box") << false << QByteArray() << true << missing;
        QTest::newRow("no marker line") << true << QByteArray("<project>\n</project>\nPROJECT =\n") << false << invalid;
        QTest::newRow("empty file") << true << QByteArray() << false << invalid;
        QTest::newRow("no group")
            << true << header + "<project>\n  <version_file>1</version_file>\n</project>\n" << false
            << u"%1\n\nIt is a bad project file.\nThe reason is:\nUnable to find tag group\n"_s;
        QTest::newRow("other root") << true << header + "<objects/>\n" << false
            << u"%1\n\nIt is a bad project file.\nThe reason is:\nWait for tag project and read objects\n"_s;
        QTest::newRow("older format, not a group") << true << QByteArray("PROJECT = \"calc\"\n") << false
            << u"%1\n\nIt is a bad project file\n%1:1: PROJECT is not a group\n"_s;
        // Malformed XML: the parser's message and place.
        const QByteArray malformed = header + "<project>\n  <group>\n</project>\n";
        QDomDocument document;
        QString parserMessage;
        int line = 0;
        int column = 0;
        QVERIFY(!document.setContent(malformed, &parserMessage, &line, &column));
        QCOMPARE(line, 5);
        QTest::newRow("malformed XML") << true << malformed << false
            << u"%1\n\nUnable to read the project :"_s + parserMessage + u" at line #5 column #"_s + QString::number(column);
    }
    void loadMessages()
    {
        QFETCH(bool, exists);
        QFETCH(QByteArray, content);
        QFETCH(bool, batch);
        QFETCH(QString, message);
        const QString file = path(u"p.rtp"_s);
        if (exists)
            writeFile(file, content);
        QAStProject::setModeBatch(batch);
        QAStProject p(u"p"_s, QPixmap());
        QSignalSpy loaded(&p, &QAStProject::loaded);
        QVERIFY(!p.open(file));
        if (batch) {
            QVERIFY(m_studio->requests().isEmpty());
            QCOMPARE(m_studio->messages(QAStData::MessageConsole), QStringList{message.arg(file)});
        } else {
            QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Warning), QStringList{message.arg(file)});
        }
        QVERIFY(!p.isOpen());
        QCOMPARE(p.childCount(), 0);
        QCOMPARE(loaded.count(), 0);
        QVERIFY(!p.signalsBlocked());
    }

    void unreadableFile()
    {
        if (::geteuid() == 0)
            QSKIP("root reads any file");
        // Even without a marker line: the file cannot be read to look for one.
        const QString file = path(u"locked.rtp"_s);
        writeFile(file, "no marker here\n");
        QFile::setPermissions(file, QFileDevice::WriteOwner);
        QAStProject p(u"p"_s, QPixmap());
        QVERIFY(!p.open(file));
        QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Warning),
                 QStringList{file + u"\n\nYou don't have the read access right"_s});
    }

    void missingObjectInformationFile_data()
    {
        QTest::addColumn<bool>("batch");
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("rebuilt");
        QTest::newRow("no") << false << int(QMessageBox::No) << false;
        QTest::newRow("yes") << false << int(QMessageBox::Yes) << true;
        QTest::newRow("batch") << true << int(QMessageBox::No) << true;
    }
    void missingObjectInformationFile()
    {
        QFETCH(bool, batch);
        QFETCH(int, answer);
        QFETCH(bool, rebuilt);
        const QString file = path(u"calc.rtp"_s);
        {
            QAStProject p(u"calc"_s, QPixmap());
            QVERIFY(p.create(file));
            auto* app = new QAStNodeApplication(u"calc"_s, QPixmap(), &p, nullptr);
            (new QAStNodeSource(u"main.c"_s, QPixmap(), app, nullptr))->setFileKey(u"src/main.c"_s);
            QVERIFY(p.save());
        }
        const QString information = path(u"calc.inf"_s);
        QVERIFY(QFile::remove(information));
        m_studio->answer(QMessageBox::StandardButton(answer));
        QAStProject::setModeBatch(batch);
        QAStProject p(u"x"_s, QPixmap());
        QVERIFY(p.open(file));
        const QString question = information
            + u"\n\nUnable to open the project Object Information File\nDo you want to create it automatically?"_s;
        if (batch) {
            QVERIFY(m_studio->requests().isEmpty());
            QVERIFY(m_studio->messages(QAStData::MessageConsole).contains(question));
        } else {
            QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Question), QStringList{question});
        }
        QCOMPARE(p.files().size(), rebuilt ? 1 : 0);
        if (rebuilt)
            QVERIFY(p.file(path(u"src/main.c"_s)));
        QVERIFY(!QFile::exists(information)); // made when the project is saved
    }

    // A load says it is done once, adds quietly, starts a fresh report and
    // records no undo; a reload reads the file again; a closed project
    // keeps its path but never writes it empty.
    void loadReloadAndClose()
    {
        const QString file = path(u"calc.rtp"_s);
        {
            QAStProject p(u"calc"_s, QPixmap());
            QVERIFY(p.create(file));
            p.addConfiguration(u"Debug"_s);
            new QAStNodeApplication(u"saved"_s, QPixmap(), &p, nullptr);
            QVERIFY(p.save());
        }
        QAStData::undoManager()->clear();
        QAStData::appendLoadReport(u"left from before\n"_s);
        QAStProject p(u"x"_s, QPixmap());
        QSignalSpy loaded(&p, &QAStProject::loaded);
        QSignalSpy added(&p, &QAStData::childAdded);
        QVERIFY(p.open(file));
        QCOMPARE(loaded.count(), 1);
        QCOMPARE(loaded.at(0).at(0).value<QAStProject*>(), &p);
        QCOMPARE(added.count(), 0); // the project's signals are blocked while it is read
        QVERIFY(!p.signalsBlocked());
        QVERIFY(p.isOpen());
        QCOMPARE(QAStData::loadReport(), QString());
        QVERIFY(!QAStData::isUndoAvailable());

        new QAStNodeApplication(u"not saved"_s, QPixmap(), &p, p.last());
        QVERIFY(p.reload());
        QCOMPARE(p.childCount(), 1);
        QCOMPARE(p.child()->name(), u"saved"_s);
        QCOMPARE(p.configurations(), QStringList{u"Debug"_s});
        const QByteArray saved = readFile(file);
        p.close();
        QVERIFY(!p.isOpen());
        QCOMPARE(p.childCount(), 0);
        QCOMPARE(p.path(), file);
        QVERIFY(!p.save());
        QCOMPARE(readFile(file), saved);
    }

    // --- XML nested deeper than QAXML::maxDepth

    // Refused quickly and with the place named, and a file just within the
    // limit still reads. (QDomDocument's own parse takes time in the square
    // of the depth: 20,000 levels took it seconds.)
    void limitOfTheParse()
    {
        QDomDocument document;
        QVERIFY(QAXML::setContent(document, nested(QAXML::maxDepth)));
        QCOMPARE(document.documentElement().tagName(), u"a"_s);
        // Markup that opens no level, at the deepest level allowed.
        const QByteArray noLevel = "<!-- <a><a> --><![CDATA[<a>]]><?pi <a>?><b x=\"/>\" y='a>b'/>";
        QVERIFY(QAXML::setContent(document, "<!DOCTYPE a [ <!ELEMENT a ANY> ]>\n" +
                                                QByteArray("<a>").repeated(QAXML::maxDepth) + noLevel +
                                                QByteArray("</a>").repeated(QAXML::maxDepth)));
        QString message;
        int line = 0;
        int column = 0;
        QVERIFY(!QAXML::setContent(document, readFile(regression("deep-nesting.xml")), &message, &line, &column));
        QCOMPARE(message, u"elements nested more than 1000 deep"_s);
        QCOMPARE(line, 2);
        QCOMPARE(column, 3 * (QAXML::maxDepth + 1));
        QVERIFY(document.isNull());
        // A malformed text is still the parser's to tell.
        QVERIFY(!QAXML::setContent(document, "<a><b></a>", &message, &line, &column));
        QVERIFY(!message.contains(QLatin1String("nested")));
        // Deep enough to take QDomDocument seconds: refused at once.
        QVERIFY(!QAXML::setContent(document, nested(200000)));
        // A file past a megabyte is checked through a map of its pages and
        // parsed from the file: the same answers.
        const QByteArray padding = "<!--" + QByteArray(1 << 20, ' ') + "-->\n";
        for (const int depth : {QAXML::maxDepth, QAXML::maxDepth + 1}) {
            const QString path = m_dir->filePath(u"large.xml"_s);
            TestFiles::writeFile(path, padding + QByteArray("<a>").repeated(depth) +
                                           QByteArray("</a>").repeated(depth));
            QFile large(path);
            QVERIFY(large.open(QIODevice::ReadOnly));
            const bool read = QAXML::setContent(document, &large, &message, &line, &column);
            QCOMPARE(read, depth == QAXML::maxDepth);
            if (!read) {
                QCOMPARE(message, u"elements nested more than 1000 deep"_s);
                QCOMPARE(line, 2);
                QCOMPARE(column, 3 * (QAXML::maxDepth + 1));
            }
        }
    }

    // Every reader of the library's XML files refuses it.
    void everyReaderRefusesDeepNesting()
    {
        QAStProject::setModeBatch(true);
        QAStProject project(u"p"_s, QPixmap());
        QVERIFY(!project.open(regression("deep-groups.rtp")));
        QVERIFY(!project.isOpen());
        const QString projectMessage = m_studio->messages(QAStData::MessageConsole).join(u'\n');
        QVERIFY2(projectMessage.contains(regression("deep-groups.rtp"))
                     && projectMessage.contains(QLatin1String("nested more than 1000 deep")),
                 qPrintable(projectMessage));
        QAStRootFolder root(u"p"_s);
        QAStData::clearLoadReport();
        QVERIFY(!root.open(regression("deep-folders.inf")));
        QCOMPARE(root.childCount(), 0);
        QVERIFY2(QAStData::loadReport().contains(QLatin1String("nested more than 1000 deep")),
                 qPrintable(QAStData::loadReport()));
        QMetTree tree{QStringList()};
        QMetReader reader(QStringList(), &tree);
        QVERIFY(!reader.addMetFile(regression("deep-items.met")));
        QVERIFY2(reader.errors().join(u'\n').contains(QLatin1String("nested more than 1000 deep")),
                 qPrintable(reader.errors().join(u'\n')));
        QATagFiltersMgr filters;
        QCOMPARE(filters.importFile(regression("deep-filters.xfl")), QAFiltersMgr::ImportResult::NotWellFormed);
        QVERIFY(filters.filters().isEmpty());
    }
};

QTEST_MAIN(TestProjectFile)
#include "tst_project_file.moc"
