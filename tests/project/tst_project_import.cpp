// Making projects without writing their XML: the compilation database
// reader, the new-project, add and settings rules, and the imports, one of
// them of a real CMake project, built and run.
#include "QAProcess.h"
#include "QAStCompilationDatabase.h"
#include "QAStConfiguration.h"
#include "QAStFile.h"
#include "QAStFolder.h"
#include "QAStNode.h"
#include "QAStNodeFileRef.h"
#include "QAStNodeLink.h"
#include "QAStProject.h"
#include "QAStProjectImport.h"
#include "QAStProjectSetup.h"
#include "QAStRootFolder.h"
#include "QAStTargetPackage.h"
#include "RecordingStudio.h"
#include "TestEnvironment.h"
#include "TestFiles.h"
#include "TestPaths.h"
#include "TestWalk.h"

#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

// "alpha:static[1] app:app[2]<alpha>{-lm}": each target with its kind,
// source count, the targets it links and its other libraries.
QString summary(const QAStCompilationDatabase& database)
{
    QStringList parts;
    for (const QAStCompilationDatabase::Target& target : database.targets()) {
        const char* kind = target.kind == QAStCompilationDatabase::StaticLibrary   ? "static"
                           : target.kind == QAStCompilationDatabase::SharedLibrary ? "shared" : "app";
        QString part = u"%1:%2[%3]"_s.arg(target.name, QLatin1String(kind)).arg(target.sources.size());
        if (!target.links.isEmpty())
            part += u'<' + target.links.join(u',') + u'>';
        if (!target.libraries.isEmpty())
            part += u'{' + target.libraries.join(u',') + u'}';
        parts.append(part);
    }
    return parts.join(u' ');
}

// The names of a folder's children, folders marked with "/", nested in
// brackets: "src/[a.c b.c] main.c".
QString treeText(const QAStFolder* folder)
{
    QStringList parts;
    for (const QAStData* child = folder->child(); child; child = child->next()) {
        if (const auto* sub = qobject_cast<const QAStFolder*>(child))
            parts.append(sub->name() + u"/["_s + treeText(sub) + u']');
        else
            parts.append(child->name());
    }
    return parts.join(u' ');
}

constexpr int filesPerLibrary = 100;

// One library of functions spread over nested directories, each
// returning its number (scaled by SCALE, a macro the build defines, when
// scaled), and a sum of them all.
void writeLibrary(const QString& root, const QString& name, bool scaled)
{
    QByteArray header = "#pragma once\n";
    QByteArray sum = "#include <" + name.toUtf8() + "/" + name.toUtf8() + ".h>\nint " + name.toUtf8() +
                     "_sum(void)\n{\n    return 0";
    for (int i = 0; i < filesPerLibrary; ++i) {
        const QByteArray function = name.toUtf8() + "_f" + QByteArray::number(i);
        header += "int " + function + "(void);\n";
        sum += "\n        + " + function + "()";
        const QString file = u"%1/src/d%2/e%3/%4.c"_s.arg(root).arg(i % 4).arg(i % 3)
                                 .arg(QString::fromUtf8(function));
        TestFiles::writeFile(file, "#include <" + name.toUtf8() + "/" + name.toUtf8() + ".h>\nint " +
                                       function + "(void) { return " + QByteArray::number(i) +
                                       (scaled ? " * SCALE" : "") + "; }\n");
    }
    header += "int " + name.toUtf8() + "_sum(void);\n";
    TestFiles::writeFile(root + u"/include/%1/%1.h"_s.arg(name), header);
    TestFiles::writeFile(root + u"/src/sum.c"_s, sum + ";\n}\n");
}

} // namespace

class TestProjectImport : public QObject {
    Q_OBJECT

    QString path(const QString& relative) const { return m_dir->filePath(relative); }

    // Copies the files of tests/data/databases/<name> into the test's
    // directory, "@DIR@" in them standing for that directory.
    void copyFixture(const QString& name)
    {
        const QString from = TestPaths::data(u"databases/"_s + name);
        for (QDirIterator it(from, QDir::Files, QDirIterator::Subdirectories); it.hasNext();) {
            const QString file = it.next();
            TestFiles::writeFile(path(QDir(from).relativeFilePath(file)),
                                 TestFiles::readFile(file).replace("@DIR@", QFile::encodeName(m_dir->path())));
        }
    }

    // A new C project in the test's directory.
    std::unique_ptr<QAStProject> newProject(const QString& file)
    {
        auto project = std::make_unique<QAStProject>(QString(), QPixmap());
        QString error;
        const QAStTargetPackage* package = QAStProjectSetup::packageForLanguage(QAStFile::LanguageC, &error);
        if (!package || !QAStProjectSetup::createProject(*project, path(file), *package, &error))
            qWarning("%s", qPrintable(error));
        return project;
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<RecordingStudio> m_studio;

private slots:
    void initTestCase()
    {
        m_studio = std::make_unique<RecordingStudio>();
        QAStProject::setModeBatch(true);
        QVERIFY(QAStConfiguration::initialize(m_studio.get(), nullptr));
    }

    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        m_studio->reset();
    }

    void cleanupTestCase() { QAStProject::setModeBatch(false); }

    // --- command lines

    void splitCommand_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QStringList>("words");
        QTest::newRow("blanks") << " cc  -c\ta.c " << QStringList{"cc", "-c", "a.c"};
        QTest::newRow("CMake's quoted macro")
            << "cc -DMSG=\\\"a\\ b\\\" -c a.c" << QStringList{"cc", "-DMSG=\"a b\"", "-c", "a.c"};
        QTest::newRow("double quotes keep backslashes but before specials")
            << "cc \"-DP=\\\"C:\\dir\\\"\" x" << QStringList{"cc", "-DP=\"C:\\dir\"", "x"};
        QTest::newRow("single quotes keep all")
            << "cc '-DA=\"x y\"' '\\n'" << QStringList{"cc", "-DA=\"x y\"", "\\n"};
        QTest::newRow("quotes join a word") << "cc -I'my dir'/inc" << QStringList{"cc", "-Imy dir/inc"};
        QTest::newRow("empty word") << "cc '' x" << QStringList{"cc", "", "x"};
    }

    // A command reads as a POSIX shell reads it; the words written back
    // for the drivers read back the same.
    void splitCommand()
    {
        QFETCH(QString, command);
        QFETCH(QStringList, words);
        QStringList split;
        QVERIFY(QAStCompilationDatabase::splitCommand(command, &split));
        QCOMPARE(split, words);
        QStringList again;
        QVERIFY(QAStCompilationDatabase::splitCommand(QAStCompilationDatabase::joinCommand(words), &again));
        QCOMPARE(again, words);
    }

    // --- the database

    void databaseFaults_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("reason");
        QTest::newRow("not JSON") << QByteArray("[{\"file\": ")
                                  << "Unable to read the compilation database: ";
        QTest::newRow("no list") << QByteArray("{\"file\": \"a.c\"}") << "holds no list of entries";
        QTest::newRow("no directory") << QByteArray("[{\"file\": \"a.c\", \"command\": \"cc a.c\"}]")
            << "Entry 1 of the compilation database: it has no \"directory\".";
        QTest::newRow("no command, second entry") << QByteArray(
                   "[{\"directory\": \"/\", \"file\": \"a.c\", \"command\": \"cc a.c\"}, {\"directory\": \"/\", \"file\": \"b.c\"}]")
            << "Entry 2 of the compilation database: it has neither \"arguments\" nor \"command\".";
        QTest::newRow("unbalanced quote")
            << QByteArray("[{\"directory\": \"/\", \"file\": \"a.c\", \"command\": \"cc 'a.c\"}]")
            << "its \"command\" cannot be read: a single quote is not closed";
    }

    // Each fault names the database and what was wrong; nothing is read.
    void databaseFaults()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, reason);
        TestFiles::writeFile(path("compile_commands.json"), content);
        QAStCompilationDatabase database;
        QString error;
        QVERIFY(!database.read(path("compile_commands.json"), &error));
        QVERIFY2(error.startsWith(path("compile_commands.json") + u"\n\n"_s), qPrintable(error));
        QVERIFY2(error.contains(reason), qPrintable(error));
        QVERIFY(database.targets().isEmpty());
    }

    // tests/data/databases/<fixture> (its README tells what each holds).
    void databaseTargets_data()
    {
        QTest::addColumn<QString>("fixture");
        QTest::addColumn<QString>("database");
        QTest::addColumn<QString>("targets");
        QTest::addColumn<QString>("sourceDirectory");
        QTest::newRow("CMake, Makefiles") << "cmake-makefiles" << "b"
            << "alpha:static[1] beta:shared[1] app:app[1]<alpha,beta>{-lm,-pthread,/usr/lib/libz.a}" << "src";
        QTest::newRow("CMake, Ninja") << "cmake-ninja" << "b" << "alpha:static[1] app:app[1]<alpha>{-lm}" << "";
        QTest::newRow("Meson") << "meson" << "bm" << "alpha:static[1] gamma:shared[1] app:app[1]<alpha,gamma>" << ".";
        QTest::newRow("Meson, output names only") << "meson-outputs" << "bm"
                                                  << "gamma:shared[1] alpha:static[1] app:app[1]" << ".";
        QTest::newRow("Bear") << "bear" << "proj" << "proj:app[2]" << "proj";
        QTest::newRow("CMake, nothing beside") << "cmake-bare" << "b" << "tool:app[1]" << "";
    }

    // Targets by writer: kinds, sources, links and other libraries, in
    // build order (libraries first, each after what it links).
    void databaseTargets()
    {
        QFETCH(QString, fixture);
        QFETCH(QString, database);
        QFETCH(QString, targets);
        QFETCH(QString, sourceDirectory);
        copyFixture(fixture);
        QAStCompilationDatabase read;
        QString error;
        QVERIFY2(read.read(path(database + u"/compile_commands.json"_s), &error), qPrintable(error));
        QCOMPARE(summary(read), targets);
        if (!sourceDirectory.isEmpty())
            QCOMPARE(read.sourceDirectory(), QDir::cleanPath(path(sourceDirectory)));
    }

    void compilerOptions_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QStringList>("includes"); // relative to the entry's directory
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QStringList>("leftOut");
        QTest::newRow("separate and joined values")
            << "cc -I inc -Iinc2 -isystem sys -iquote q -idirafter late -D A=1 -DB -U C -c x.c -o x.o"
            << QStringList{"inc", "inc2", "sys", "q", "late"} << QStringList{"-DA=1", "-DB", "-UC"}
            << QStringList{};
        QTest::newRow("standard and forced include kept, the rest left")
            << "cc -std=c99 -include cfg.h -O2 -g -Wall -fno-common -x c -MD -MF x.d -c x.c"
            << QStringList{} << QStringList{"-std=c99", "-include", "@/cfg.h"}
            << QStringList{"-O2", "-g", "-Wall", "-fno-common", "-x c"};
    }

    // What a command keeps: include directories, macros, the standard and
    // forced includes; optimisation, warnings and the like are told.
    void compilerOptions()
    {
        QFETCH(QString, command);
        QFETCH(QStringList, includes);
        QFETCH(QStringList, options);
        QFETCH(QStringList, leftOut);
        const QJsonArray entries{
            QJsonObject{{"directory", m_dir->path()}, {"command", command}, {"file", "x.c"}}};
        TestFiles::writeFile(path("compile_commands.json"), QJsonDocument(entries).toJson());
        QAStCompilationDatabase database;
        QVERIFY(database.read(path("compile_commands.json")));
        const QAStCompilationDatabase::Source& source = database.targets().constFirst().sources.constFirst();
        QStringList expected;
        for (const QString& include : includes)
            expected.append(path(include));
        QCOMPARE(source.includeDirectories, expected);
        QStringList expectedOptions = options;
        expectedOptions.replaceInStrings(u"@/"_s, m_dir->path() + u'/');
        QCOMPARE(source.preprocessorOptions, expectedOptions);
        QCOMPARE(source.file, path("x.c"));
        QCOMPARE(database.leftOutOptions(), leftOut);
    }

    // --- a new project

    // Debug and Release on the installation's package, the package's own
    // values, build directories; the files refuse to be replaced.
    void newProject()
    {
        const std::unique_ptr<QAStProject> project = newProject(u"calc"_s);
        QVERIFY(project->isOpen());
        QCOMPARE(project->path(), path("calc.rtp"));
        QCOMPARE(project->configurations(), (QStringList{"Debug", "Release"}));
        QCOMPARE(project->currentConfigurationName(), u"Debug"_s);
        const QAStConfiguration* debug = project->configuration(u"Debug"_s);
        QCOMPARE(debug->property(u"targetPath"_s).toString(), u"${ZELTAHOME}/targets/gcc-c"_s);
        QVERIFY(debug->targetPackage());
        QCOMPARE(project->configuration(u"Release"_s)->property(u"cflags"_s).toString(), u"-O2"_s);
        QCOMPARE(debug->property(u"outdir"_s).toString(), u"build/results"_s);
        QVERIFY(QFileInfo::exists(path("calc.inf")));

        // Neither file is ever replaced: not the project file, nor an
        // object information file that lies where the new one would.
        const QAStTargetPackage* package = QAStProjectSetup::packageForLanguage(QAStFile::LanguageC);
        TestFiles::writeFile(path("other.inf"), "mine");
        for (const char* target : {"calc.rtp", "other.rtp"}) {
            QAStProject again{QString(), QPixmap()};
            QString error;
            QVERIFY(!QAStProjectSetup::createProject(again, path(QLatin1String(target)), *package, &error));
            QVERIFY2(error.contains(QLatin1String("The file exists already")), qPrintable(error));
        }
        QCOMPARE(TestFiles::readFile(path("other.inf")), QByteArray("mine"));
        QVERIFY(!QFileInfo::exists(path("other.rtp")));
    }

    // --- nodes and files

    void addNode_data()
    {
        QTest::addColumn<QString>("under"); // a node's name; empty: the project
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QString>("fault"); // empty: added
        QTest::newRow("application with sources") << "" << "application"
                                                  << "calc" << QStringList{"src/main.c", "src"} << "";
        QTest::newRow("library is static") << "" << "library" << "libcalc" << QStringList{"src/util.c"} << "";
        QTest::newRow("source refers to its name") << "lib" << "source"
                                                   << "src/util.c" << QStringList{} << "";
        QTest::newRow("library takes no application") << "lib" << "application"
            << "x" << QStringList{} << "\"lib\" takes no \"application\" node: it takes source, link.";
        QTest::newRow("group takes no source") << "" << "group"
            << "g" << QStringList{"src/main.c"} << "A \"group\" node takes no source";
        QTest::newRow("name taken") << "" << "library"
                                    << "lib" << QStringList{} << "has a node named \"lib\" already.";
        QTest::newRow("missing file") << "" << "application"
            << "app" << QStringList{"src/gone.c"} << "No such file or directory.";
    }

    // A node of a kind the parent takes; its sources and files; else a
    // reason naming what the parent takes, and nothing changed.
    void addNode()
    {
        QFETCH(QString, under);
        QFETCH(QString, kind);
        QFETCH(QString, name);
        QFETCH(QStringList, files);
        QFETCH(QString, fault);
        const std::unique_ptr<QAStProject> project = newProject(u"p.rtp"_s);
        TestFiles::writeFile(path("src/main.c"), "int main(void) { return 0; }\n");
        TestFiles::writeFile(path("src/util.c"), "int util;\n");
        TestFiles::writeFile(path("src/util.h"), "extern int util;\n");
        QVERIFY(QAStProjectSetup::addNode(project.get(), u"library"_s, u"lib"_s));
        QAStNode* parent =
            under.isEmpty() ? project.get() : qobject_cast<QAStNode*>(project->findNode(under));
        QVERIFY(parent);
        const QString before = project->toString();
        const int filesBefore = int(project->files().size());

        QString error;
        QAStNode* node = QAStProjectSetup::addNode(parent, kind, name, files, &error);
        if (!fault.isEmpty()) {
            QVERIFY(!node);
            QVERIFY2(error.contains(fault), qPrintable(error));
            QVERIFY2(error.contains(u"\n\n"_s), qPrintable(error));
            QCOMPARE(project->toString(), before);
            QCOMPARE(project->files().size(), filesBefore);
            return;
        }
        QVERIFY2(node, qPrintable(error));
        QCOMPARE(node->parent(), parent);
        QCOMPARE(node->configurations(), parent->configurations());
        if (kind == QLatin1String("source")) {
            QCOMPARE(node->name(), u"util.c"_s);
            QCOMPARE(static_cast<QAStNodeFileRef*>(node)->fileKey(), u"src/util.c"_s);
            QVERIFY(project->file(path("src/util.c")));
            return;
        }
        QCOMPARE(node->name(), name);
        if (kind == QLatin1String("library")) {
            for (const QAStConfiguration* c : node->configurationList())
                QCOMPARE(c->property(u"generationFormat"_s).toString(), u"LIB"_s);
        }
        // Sources in file order, each once; the header only in the tree.
        QStringList keys;
        for (QAStData* source : node->childrenOfClass("QAStNodeSource"))
            keys.append(static_cast<QAStNodeFileRef*>(source)->fileKey());
        const QStringList expected = kind == QLatin1String("application")
                                         ? QStringList{"src/main.c", "src/util.c"}
                                         : QStringList{"src/util.c"};
        QCOMPARE(keys, expected);
        QCOMPARE(treeText(project->rootFolder()), kind == QLatin1String("application")
                                                      ? u"src/[main.c util.c util.h]"_s : u"src/[util.c]"_s);
    }

    // Files go into the folders of their directories, folders before
    // files, each by name; a directory brings its known files, hidden ones
    // and the project's own build directories left out; a file is added
    // once; a missing path adds nothing.
    void addFiles()
    {
        const std::unique_ptr<QAStProject> project = newProject(u"p.rtp"_s);
        for (const char* file : {"b.c", "a/z.h", "a/y/x.c", "a/README", "a/.hidden.c", ".git/c.c",
                                 "build/out.c", "build/results/r.tio", "m/Makefile"})
            TestFiles::writeFile(path(QLatin1String(file)), "x\n");
        QVERIFY(QAStProjectSetup::addFiles(*project, {path("b.c")}).size() == 1);
        QString error;
        const QList<QAStFile*> added = QAStProjectSetup::addFiles(*project, {u"."_s, path("b.c")}, &error);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        QCOMPARE(added.size(), 3);
        QCOMPARE(treeText(project->rootFolder()), u"a/[y/[x.c] z.h] m/[Makefile] b.c"_s);
        QVERIFY(QAStProjectSetup::addFiles(*project, {path("a/README")}).size() == 1);
        QCOMPARE(treeText(project->rootFolder()), u"a/[y/[x.c] README z.h] m/[Makefile] b.c"_s);

        QVERIFY(QAStProjectSetup::addFiles(*project, {path("b2.c"), path("build/out.c")}, &error).isEmpty());
        QCOMPARE(error, path("b2.c") + u"\n\nNo such file or directory."_s);
        QVERIFY(!project->file(path("build/out.c")));
    }

    // --- settings

    void settings_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QStringList>("values");
        QTest::addColumn<QStringList>("lines"); // what get gives after; empty with a fault
        QTest::addColumn<QString>("fault");
        QTest::newRow("text joined") << "cflags" << QStringList{"-O3", "-g"} << QStringList{"-O3 -g"} << "";
        QTest::newRow("list") << "ge_incdir" << QStringList{"inc", "a,b"} << QStringList{"inc", "a,b"}
                              << "";
        QTest::newRow("number") << "buildJobs" << QStringList{"4"} << QStringList{"4"} << "";
        QTest::newRow("number out of range") << "buildJobs" << QStringList{"999"} << QStringList{}
                                             << "takes a number from 0 to 256, not 999.";
        QTest::newRow("yes") << "debug" << QStringList{"Yes"} << QStringList{"true"} << "";
        QTest::newRow("not a switch")
            << "debug" << QStringList{"maybe"} << QStringList{} << "takes true or false";
        QTest::newRow("combo value") << "generationFormat" << QStringList{"DLL"} << QStringList{"DLL"} << "";
        QTest::newRow("combo label")
            << "generationFormat" << QStringList{"static library"} << QStringList{"LIB"} << "";
        QTest::newRow("combo none") << "generationFormat" << QStringList{"ZIP"} << QStringList{}
            << "takes one of EXE (Executable), DLL (Shared library), LIB (Static library), not \"ZIP\".";
        QTest::newRow("path takes one")
            << "intdir" << QStringList{"a", "b"} << QStringList{} << "takes one value.";
        QTest::newRow("read only") << "executionFlag" << QStringList{"1"} << QStringList{}
                                   << "is read only.";
        QTest::newRow("unknown, close") << "cflag" << QStringList{"x"} << QStringList{}
            << "No setting has the key \"cflag\"; the closest keys are cflags (Compiler options), tcflags";
        QTest::newRow("unknown, by display name")
            << "include" << QStringList{"x"} << QStringList{} << "ge_incdir (Include directories)";
        QTest::newRow("unknown, far") << "zzzzqqqq" << QStringList{"x"} << QStringList{}
                                      << "No setting has the key \"zzzzqqqq\", nor a key close to it.";
    }

    // A value read by the descriptor's kind of the setting, read back
    // through the inheriting store; a bad key or value changes nothing.
    void settings()
    {
        QFETCH(QString, key);
        QFETCH(QStringList, values);
        QFETCH(QStringList, lines);
        QFETCH(QString, fault);
        const std::unique_ptr<QAStProject> project = newProject(u"p.rtp"_s);
        QAStNode* node = QAStProjectSetup::addNode(project.get(), u"application"_s, u"app"_s);
        QAStConfiguration* c = QAStProjectSetup::configurationOf(node, QString(), false);
        QVERIFY(c);
        const QStringList before = c->propertyNames();
        QString error;
        if (!fault.isEmpty()) {
            QVERIFY(!QAStProjectSetup::setSetting(*c, key, values, &error));
            QVERIFY2(error.startsWith(path("p.rtp") + u"\n\n"_s), qPrintable(error));
            QVERIFY2(error.contains(fault), qPrintable(error));
            QCOMPARE(c->propertyNames(), before);
            return;
        }
        const QAStConfiguration* above = QAStProjectSetup::configurationOf(project.get(), QString(), false);
        const QVariant aboveBefore = above->localProperty(key);
        QVERIFY2(QAStProjectSetup::setSetting(*c, key, values, &error), qPrintable(error));
        QCOMPARE(QAStProjectSetup::settingLines(QAStProjectSetup::setting(*c, key)), lines);
        // The value is the node's own; the project's stays.
        QVERIFY(c->hasProperty(key));
        QCOMPARE(above->localProperty(key), aboveBefore);
    }

    // A setting not set anywhere reads as the descriptor's initial value;
    // one set above is inherited; a name the project lacks is told.
    void settingInheritance()
    {
        const std::unique_ptr<QAStProject> project = newProject(u"p.rtp"_s);
        QAStNode* node = QAStProjectSetup::addNode(project.get(), u"application"_s, u"app"_s);
        const QAStConfiguration* release = QAStProjectSetup::configurationOf(node, u"Release"_s, false);
        QCOMPARE(QAStProjectSetup::settingLines(QAStProjectSetup::setting(*release, u"cflags"_s)),
                 QStringList{"-O2"});
        QCOMPARE(QAStProjectSetup::settingLines(QAStProjectSetup::setting(*release, u"generationFormat"_s)),
                 QStringList{"EXE"});
        QString error;
        QVERIFY(!QAStProjectSetup::configurationOf(node, u"Nightly"_s, true, &error));
        QVERIFY2(error.endsWith(QLatin1String(
                     "The project has no configuration \"Nightly\"; it has Debug, Release.")),
                 qPrintable(error));
        QVERIFY(node->removeConfiguration(u"Release"_s));
        QVERIFY(!QAStProjectSetup::configurationOf(node, u"Release"_s, false, &error));
        QVERIFY(QAStProjectSetup::configurationOf(node, u"Release"_s, true, &error));
    }

    // --- imports

    // A database import writes a project whose nodes, settings, links and
    // file tree read back from the files; the build goes beside the build
    // system's.
    void importDatabase()
    {
        copyFixture(u"import"_s);
        QCOMPARE(QAStProjectImport::defaultProjectFile(path("src/b/compile_commands.json")),
                 path("src/src.rtp"));
        QAStProject project{QString(), QPixmap()};
        QString error;
        QVERIFY2(QAStProjectImport::importSource(project, path("src/b/compile_commands.json"),
                                                 QString(), QString(), &error), qPrintable(error));
        const QString notes = m_studio->consoleText(QAStData::MessageConsole);
        QVERIFY(notes.contains(QLatin1String("compiler options left to the project's configurations: -O3")));
        QVERIFY(notes.contains(QLatin1String("sources not on disk, left out of the file tree: ") +
                               path("src/calc.c")));

        QAStProject reread{QString(), QPixmap()};
        QVERIFY(reread.open(path("src/src.rtp")));
        QCOMPARE(reread.configuration(u"Debug"_s)->property(u"intdir"_s).toString(), u"b/korvil"_s);
        const QList<QAStData*> nodes = reread.childrenOfClass("QAStNode");
        QCOMPARE(nodes.size(), 2);
        auto* calc = static_cast<QAStNode*>(nodes.at(0));
        auto* app = static_cast<QAStNode*>(nodes.at(1));
        QVERIFY(calc->inherits("QAStNodeLibrary"));
        QVERIFY(app->inherits("QAStNodeApplication"));
        const QAStConfiguration* appDebug = app->configuration(u"Debug"_s);
        QCOMPARE(appDebug->property(u"ge_incdir"_s).toStringList(), QStringList{"inc"});
        QCOMPARE(appDebug->property(u"cppFlags"_s).toString(), u"-DAPP"_s);
        QCOMPARE(appDebug->property(u"additionnalObjects"_s).toString(), u"-lm"_s);
        QCOMPARE(calc->configuration(u"Release"_s)->property(u"cppFlags"_s).toString(), u"-std=c11"_s);
        // The source with other macros has its own, the others inherit.
        const QList<QAStData*> sources = app->childrenOfClass("QAStNodeSource");
        QCOMPARE(sources.size(), 3);
        QCOMPARE(static_cast<QAStNode*>(sources.at(0))->configuration(u"Debug"_s)
                     ->localProperty(u"cppFlags"_s).toString(), u"-DAPP '-DMSG=\"a b\"'"_s);
        QVERIFY(!static_cast<QAStNode*>(sources.at(1))->configuration(u"Debug"_s)
                     ->hasProperty(u"cppFlags"_s));
        const QList<QAStData*> links = app->childrenOfClass("QAStNodeLink");
        QCOMPARE(links.size(), 1);
        QCOMPARE(static_cast<QAStNodeLink*>(links.first())->linkedNode(), calc);
        // Sources, the include directory's headers and those beside the
        // sources; none of the build directory.
        QCOMPARE(treeText(reread.rootFolder()), u"inc/[sub/[deep.h] calc.h] local.h main.c three.c two.c"_s);

        // A second import does not replace the project.
        QAStProject again{QString(), QPixmap()};
        QVERIFY(!QAStProjectImport::importSource(again, path("src/b/compile_commands.json"), QString(),
                                                 QString(), &error));
        QVERIFY(error.contains(QLatin1String("exists already")));
    }

    // A bare directory: an application when a source defines main (found
    // by the tagging), else a library; include directories where headers
    // are, and "include" above them.
    void importDirectory_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QStringList>("includes");
        QTest::newRow("program") << QStringList{"src/main.c",
                           "#include \"util.h\"\nint main(void) { return util(); }\n", "src/util.c",
                           "int util(void) { return 0; }\n", "include/app/util.h", "int util(void);\n"}
            << "QAStNodeApplication" << QStringList{"include/app", "include"};
        QTest::newRow("library, main only mentioned")
            << QStringList{"lib.c", "/* main(void) is elsewhere */\nint mainly(void) { return 1; }\n",
                           "lib.h", "int mainly(void);\n"}
            << "QAStNodeLibrary" << QStringList{"."};
    }

    void importDirectory()
    {
        SKIP_WITHOUT("perl", "ctags");
        QFETCH(QStringList, files);
        QFETCH(QString, kind);
        QFETCH(QStringList, includes);
        for (qsizetype i = 0; i + 1 < files.size(); i += 2)
            TestFiles::writeFile(path(u"tree/"_s + files.at(i)), files.at(i + 1).toUtf8());
        QAStProject project{QString(), QPixmap()};
        QString error;
        QVERIFY2(QAStProjectImport::importSource(project, path("tree"), QString(), QString(), &error),
                 qPrintable(error));
        QCOMPARE(project.path(), path("tree/tree.rtp"));
        const QList<QAStData*> nodes = project.childrenOfClass("QAStNode");
        QCOMPARE(nodes.size(), 1);
        QVERIFY2(nodes.first()->inherits(kind.toLatin1()), nodes.first()->metaObject()->className());
        QCOMPARE(nodes.first()->name(), u"tree"_s);
        QCOMPARE(static_cast<QAStNode*>(nodes.first())->configuration(u"Debug"_s)->property(u"ge_incdir"_s)
                     .toStringList(), includes);
        QCOMPARE(project.files().size(), files.size() / 2);
        QVERIFY(QFileInfo::exists(path("tree/tree.inf")));
    }

    void importFaults()
    {
        QDir().mkpath(path("empty"));
        TestFiles::writeFile(path("empty/notes.txt"), "x\n");
        QAStProject project{QString(), QPixmap()};
        QString error;
        QVERIFY(!QAStProjectImport::importSource(project, path("empty"), QString(), QString(), &error));
        QCOMPARE(error, path("empty") + u"\n\nNo C, C++, Ada or Java source lies in this directory."_s);
        TestFiles::writeFile(path("j/a.java"), "class A {}\n");
        QVERIFY(!QAStProjectImport::importSource(project, path("j"), QString(), QString(), &error));
        QVERIFY2(error.contains(QLatin1String("No target package for Java is installed")), qPrintable(error));
        QCOMPARE(QDir(path("j")).entryList(QDir::Files), QStringList{"a.java"});
    }

    // An existing code base made a project and run for real: a generated
    // tree of C sources, configured by the real cmake, imported from its
    // compilation database, then built and executed by the drivers with no
    // hand edit.
    // Two libraries of a hundred sources each in nested directories and a
    // program calling both, which returns 0 only when every function is
    // linked in and the macro of one library's build is applied.
    void importsCMakeProjectAndRuns()
    {
        SKIP_WITHOUT("cmake", "make", "gcc", "perl");
        const QString tree = path("tree");
        writeLibrary(tree + u"/alpha"_s, u"alpha"_s, false);
        writeLibrary(tree + u"/beta"_s, u"beta"_s, true);
        const int sum = filesPerLibrary * (filesPerLibrary - 1) / 2;
        TestFiles::writeFile(tree + u"/app/util/check.h"_s, "int check(int value, int expected);\n");
        TestFiles::writeFile(tree + u"/app/util/check.c"_s,
            "#include \"check.h\"\nint check(int value, int expected) { return value != expected; }\n");
        TestFiles::writeFile(tree + u"/app/main.c"_s,
            "#include <alpha/alpha.h>\n#include <beta/beta.h>\n#include \"util/check.h\"\n"
            "int main(void)\n{\n    return check(alpha_sum(), " +
                QByteArray::number(sum) + ") + check(beta_sum(), 3 * " + QByteArray::number(sum) + ");\n}\n");
        TestFiles::writeFile(tree + u"/CMakeLists.txt"_s, "cmake_minimum_required(VERSION 3.16)\n"
                             "project(generated C)\n"
                             "file(GLOB_RECURSE alpha_sources alpha/src/*.c)\n"
                             "add_library(alpha STATIC ${alpha_sources})\n"
                             "target_include_directories(alpha PUBLIC alpha/include)\n"
                             "file(GLOB_RECURSE beta_sources beta/src/*.c)\n"
                             "add_library(beta STATIC ${beta_sources})\n"
                             "target_include_directories(beta PUBLIC beta/include)\n"
                             "target_compile_definitions(beta PRIVATE SCALE=3)\n"
                             "add_executable(app app/main.c app/util/check.c)\n"
                             "target_link_libraries(app PRIVATE alpha beta)\n");
        const int sources = 2 * (filesPerLibrary + 1) + 2; // with the sums and the program's two

        QProcess cmake;
        cmake.start(u"cmake"_s, {u"-G"_s, u"Unix Makefiles"_s,
                     u"-DCMAKE_EXPORT_COMPILE_COMMANDS=ON"_s, u"-S"_s, tree, u"-B"_s, tree + u"/build"_s});
        QVERIFY(cmake.waitForFinished(180000));
        QVERIFY2(cmake.exitCode() == 0, cmake.readAllStandardError().constData());

        QAStProject imported{QString(), QPixmap()};
        QString error;
        QVERIFY2(QAStProjectImport::importSource(imported, tree + u"/build/compile_commands.json"_s,
                                                 QString(), QString(), &error), qPrintable(error));
        QCOMPARE(imported.path(), tree + u"/tree.rtp"_s);

        // Read back from the files, as a user opening it would.
        QAStProject project{QString(), QPixmap()};
        QVERIFY(project.open(imported.path()));
        const QList<QAStData*> nodes = project.childrenOfClass("QAStNode");
        QCOMPARE(nodes.size(), 3);
        QCOMPARE(nodes.at(0)->name(), u"alpha"_s);
        QCOMPARE(nodes.at(1)->name(), u"beta"_s);
        QCOMPARE(nodes.at(2)->name(), u"app"_s);
        QCOMPARE(project.childrenOfClass("QAStNodeSource", true).size(), sources);
        QCOMPARE(nodes.at(2)->childrenOfClass("QAStNodeLink").size(), 2);

        QVERIFY2(walk(&project, &QAStNode::build),
                 qPrintable(m_studio->consoleText(QAStData::OutputConsole)));
        QVERIFY(QFileInfo::exists(tree + u"/build/korvil/app"_s));
        m_studio->reset();
        QVERIFY2(walk(&project, &QAStNode::execute),
                 qPrintable(m_studio->consoleText(QAStData::OutputConsole)));
        QVERIFY(m_studio->consoleText(QAStData::OutputConsole).contains(QLatin1String("app: passed")));
        QVERIFY(QAProcess::listOfProcess().isEmpty());
    }
};

QTEST_MAIN(TestProjectImport)
#include "tst_project_import.moc"
