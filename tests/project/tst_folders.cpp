#include "QAFileUtil.h"
#include "QAStConfiguration.h"
#include "QAStDataFactory.h"
#include "QAStFile.h"
#include "QAStFolder.h"
#include "QAStNode.h"
#include "QAStProjectPref.h"
#include "QAStRootFolder.h"
#include "QAStSubProject.h"
#include "RecordingStudio.h"
#include "TestPaths.h"

#include <QDomDocument>
#include <QDomElement>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

// An item whose directory() is given, standing for an including project.
class DirectoryItem : public QAStData {
public:
    explicit DirectoryItem(const QString& dir) : QAStData(QStringLiteral("dir"), QPixmap()), m_dir(dir) {}
    QString directory() const override { return m_dir; }

private:
    QString m_dir;
};

std::unique_ptr<QAStData> build(const QString& xml, QAStData* parent = nullptr)
{
    QDomDocument doc;
    doc.setContent(xml);
    return std::unique_ptr<QAStData>(
        QAStDataFactory::create(doc.documentElement(), 1, parent, nullptr));
}

QByteArray contentOf(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// "name" for files, "name/" for folders, children indented below.
QStringList outline(const QAStData* item, const QString& indent = QString())
{
    QStringList lines;
    for (QAStData* c = item->child(); c; c = c->next()) {
        const bool folder = qobject_cast<QAStFolder*>(c) != nullptr;
        lines << indent + c->name() + (folder ? QStringLiteral("/") : QString());
        if (folder)
            lines << outline(c, indent + QStringLiteral("  "));
    }
    return lines;
}

QAStFolder* folder(const QString& name, const QString& filters, QAStData* parent)
{
    auto* f = new QAStFolder(name, QPixmap(), parent, parent->last());
    f->setFilters(filters);
    return f;
}

}

class TestFolders : public QObject {
    Q_OBJECT
private slots:
    void init();

    void folderElementRoundTrip();
    void filtersMatchFileNames_data();
    void filtersMatchFileNames();
    void openReadsTheFileTree();
    void objectInformationFileRoundTrip();
    void openFailures_data();
    void openFailures();
    void failedSaveIntoAMissingDirectory();
    void failedSaveLeavesTheOldFileWhole();
    void addFilesByFilters();
    void normalizeRules();
    void dropsIntoFolders();

    void subProjectElement();
    void subProjectInheritsByTheNodeRule();
    void fileUtilPaths_data();
    void fileUtilPaths();

private:
    std::unique_ptr<RecordingStudio> m_studio;
};

void TestFolders::init()
{
    m_studio = std::make_unique<RecordingStudio>();
    QAStData::clearLoadReport();
    QAStData::preferences()->setUseRelativePath(true);
}

void TestFolders::folderElementRoundTrip()
{
    QAStRootFolder root(QStringLiteral("Files"));
    root.setDirectory(QStringLiteral("/p"));
    QAStFolder* sources = folder(QStringLiteral("a, <b> & c"), QStringLiteral("*.c; *.h"), &root);
    folder(QStringLiteral("empty"), QString(), sources);
    new QAStFile(QStringLiteral("/p/src/x.c"), sources, sources->last());
    new QAStFile(QStringLiteral("/other/y.c"), &root, root.last());

    const QString text = sources->toString();
    QVERIFY(text.contains(QStringLiteral("<filters>*.c; *.h</filters>")));
    std::unique_ptr<QAStData> back = build(text, &root);
    QVERIFY(qobject_cast<QAStFolder*>(back.get()));
    QVERIFY(back->isValid());
    QCOMPARE(back->name(), sources->name());
    QCOMPARE(back->toString(), text);
    QCOMPARE(QAStData::loadReport(), QString());
}

void TestFolders::filtersMatchFileNames_data()
{
    QTest::addColumn<QString>("filters");
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("matches");
    QTest::newRow("none: any") << "" << "/a/b.txt" << true;
    QTest::newRow("only blanks: any") << " ; " << "/a/b.txt" << true;
    QTest::newRow("case ignored") << "*.c;*.h" << "/a/B.H" << true;
    QTest::newRow("blanks trimmed") << " *.txt ; *.c " << "b.c" << true;
    QTest::newRow("whole name") << "*.c" << "/a/b.cpp" << false;
    QTest::newRow("name not path") << "src*" << "/src/b.c" << false;
    QTest::newRow("prefix pattern") << "Makefile*" << "/x/makefile.old" << true;
}

void TestFolders::filtersMatchFileNames()
{
    QFETCH(QString, filters);
    QFETCH(QString, path);
    QAStFolder f(QStringLiteral("f"));
    f.setFilters(filters);
    QTEST(f.matches(path), "matches");
}

void TestFolders::openReadsTheFileTree()
{
    QAStRootFolder root(QStringLiteral("old"));
    new QAStFile(QStringLiteral("/gone.c"), &root, nullptr);
    QVERIFY(root.open(TestPaths::data(QStringLiteral("folders/sample.inf"))));

    QCOMPARE(root.name(), QStringLiteral("Files"));
    QCOMPARE(root.quid(), 1u);
    QVERIFY(root.isExtended());
    QCOMPARE(outline(&root), (QStringList{"Sources/", "  main.c", "README"}));
    QCOMPARE(root.folders().at(0)->filters(), QStringLiteral("*.c;*.cpp"));
    QAStFile* main = root.file(QStringLiteral("src/main.c"));
    QVERIFY(main);
    QCOMPARE(main->filePath(), TestPaths::data(QStringLiteral("folders/src/main.c")));
    QCOMPARE(main->children().size(), 1);
    QCOMPARE(main->children().at(0)->line(), 10);
    QVERIFY(root.file(QStringLiteral("/abs/README")));
    QCOMPARE(QAStData::loadReport(), QStringLiteral("sub_project bad place\n"));
}

void TestFolders::objectInformationFileRoundTrip()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QAStRootFolder root(QStringLiteral("Files"));
    root.setDirectory(dir.path());
    QAStFolder* sources = folder(QStringLiteral("Sources"), QStringLiteral("*.c"), &root);
    root.addFiles({QStringLiteral("src/a.c"), QStringLiteral("notes.txt"), QStringLiteral("/abs/b.c")});
    folder(QStringLiteral("Empty"), QString(), sources);

    const QString path = dir.filePath(QStringLiteral("p.inf"));
    QVERIFY(root.write(path));
    const QString text = QString::fromUtf8(contentOf(path));
    const QStringList lines = text.split(QLatin1Char('\n'));
    QCOMPARE(lines.at(0), QStringLiteral("<?xml version=\"1.0\" encoding=\"utf-8\"?>"));
    QCOMPARE(lines.at(1), "<!DOCTYPE objects SYSTEM \"" + QAStData::installDir() +
                              "/lib/project.dtd\">");
    QCOMPARE(lines.at(2), QStringLiteral("<objects>"));
    QCOMPARE(lines.at(3), QStringLiteral("  <folder>"));
    QVERIFY(text.endsWith(QStringLiteral("  </folder>\n  <version_file>1</version_file>\n</objects>\n")));
    QVERIFY(text.contains(QStringLiteral("<filepath>src/a.c</filepath>")));
    const QString outside = QDir(dir.path()).relativeFilePath(QStringLiteral("/abs/b.c"));
    QVERIFY(text.contains("<filepath>" + outside + "</filepath>"));

    QAStRootFolder back(QStringLiteral("other"));
    QVERIFY(back.open(path));
    QCOMPARE(QAStData::loadReport(), QString());
    QCOMPARE(back.directory(), dir.path());
    QCOMPARE(back.files().size(), 3);
    QCOMPARE(back.files().at(0)->filePath(), dir.filePath(QStringLiteral("src/a.c")));
    QString again;
    QTextStream s(&again);
    back.writeDocument(s);
    s.flush();
    QCOMPARE(again, text);
}

void TestFolders::openFailures_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("report");
    QTest::newRow("missing") << "folders/none.inf" << "Unable to open the object information file";
    QTest::newRow("malformed") << "folders/malformed.inf" << "at line #6 column #";
    QTest::newRow("wrong root") << "folders/wrong-root.inf" << "Wait for tag objects and read project";
    QTest::newRow("no folder") << "folders/no-folder.inf" << "Unable to find tag folder";
}

void TestFolders::openFailures()
{
    QFETCH(QString, file);
    QFETCH(QString, report);
    QAStRootFolder root(QStringLiteral("Files"));
    new QAStFile(QStringLiteral("/old.c"), &root, nullptr);
    QVERIFY(!root.open(TestPaths::data(file)));
    QVERIFY2(QAStData::loadReport().contains(report), qPrintable(QAStData::loadReport()));
    QCOMPARE(root.childCount(), 0);
}

void TestFolders::failedSaveIntoAMissingDirectory()
{
    QTemporaryDir dir;
    const QString regular = dir.filePath(QStringLiteral("regular"));
    QFile f(regular);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.close();

    QAStRootFolder root(QStringLiteral("Files"));
    root.setDirectory(dir.path());
    const QString target = regular + QStringLiteral("/p.inf");
    QVERIFY(!root.write(target));
    QCOMPARE(root.directory(), dir.path());
    const QStringList messages = m_studio->messages(QAStData::MessageConsole);
    QCOMPARE(messages.size(), 1);
    QVERIFY(messages.at(0).startsWith(
        target + QStringLiteral("\n\nUnable to save the object information file: ")));
}

void TestFolders::failedSaveLeavesTheOldFileWhole()
{
    QTemporaryDir dir;
    QAStRootFolder root(QStringLiteral("Files"));
    const QString path = dir.filePath(QStringLiteral("p.inf"));
    QVERIFY(root.write(path));
    const QByteArray before = contentOf(path);

    QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::ExeOwner);
    QFile probe(dir.filePath(QStringLiteral("probe")));
    if (probe.open(QIODevice::WriteOnly)) {
        QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QSKIP("directory permissions are not enforced for this user");
    }
    root.addFiles({QStringLiteral("/new.c")});
    const bool written = root.write(path);
    QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QVERIFY(!written);
    QCOMPARE(contentOf(path), before);
    QCOMPARE(m_studio->messages(QAStData::MessageConsole).size(), 1);
}

void TestFolders::addFilesByFilters()
{
    QAStRootFolder root(QStringLiteral("Files"));
    root.setDirectory(QStringLiteral("/p"));
    folder(QStringLiteral("Misc"), QString(), &root);
    QAStFolder* code = folder(QStringLiteral("Code"), QString(), &root);
    QAStFolder* sources = folder(QStringLiteral("Sources"), QStringLiteral("*.c;*.cpp"), code);
    QAStFolder* headers = folder(QStringLiteral("Headers"), QStringLiteral("*.h;*.c"), &root);

    const QList<QAStFile*> added = root.addFiles(
        {QStringLiteral("a.c"), QStringLiteral("inc/B.H"), QStringLiteral("x.txt"),
         QStringLiteral("/p/a.c"), QStringLiteral("sub/../a.c"), QString()});
    QCOMPARE(added.size(), 3);
    QCOMPARE(added.at(0)->parent(), sources); // first match, depth first
    QCOMPARE(added.at(1)->parent(), headers); // case ignored
    QCOMPARE(added.at(2)->parent(), &root);   // no filter matches; Misc attracts nothing
    QCOMPARE(added.at(0)->filePath(), QStringLiteral("/p/a.c"));

    QVERIFY(root.addFiles({QStringLiteral("/p/inc/B.H")}).isEmpty());
    QCOMPARE(root.files().size(), 3);
}

void TestFolders::normalizeRules()
{
    QAStRootFolder root(QStringLiteral("Files"));
    root.setDirectory(QStringLiteral("/p"));
    new QAStFile(QStringLiteral("z.c"), &root, root.last());
    QAStFolder* misc = folder(QStringLiteral("misc"), QString(), &root);
    new QAStFile(QStringLiteral("notes.txt"), misc, nullptr);
    new QAStFile(QStringLiteral("b.h"), misc, misc->last());
    QAStFolder* sources = folder(QStringLiteral("Sources"), QStringLiteral("*.c"), &root);
    new QAStFile(QStringLiteral("m.h"), sources, nullptr);
    new QAStFile(QStringLiteral("z.c"), sources, sources->last());
    folder(QStringLiteral("Headers"), QStringLiteral("*.h"), &root);
    new QAStFile(QStringLiteral("A.txt"), &root, root.last());

    root.normalize();
    QCOMPARE(outline(&root), (QStringList{
                                 "Headers/",
                                 "  m.h",      // misfiled: its folder's filters refuse it
                                 "misc/",
                                 "  b.h",      // a folder without filters keeps any file
                                 "  notes.txt",
                                 "Sources/",   // the later z.c went, the empty folder stays
                                 "A.txt",
                                 "z.c",        // the first z.c stays where it was found
                             }));

    const QStringList settled = outline(&root);
    root.normalize();
    QCOMPARE(outline(&root), settled);
}

void TestFolders::dropsIntoFolders()
{
    QAStRootFolder root(QStringLiteral("Files"));
    QAStFolder* sources = folder(QStringLiteral("Sources"), QStringLiteral("*.c"), &root);
    QAStFolder* inner = folder(QStringLiteral("inner"), QString(), sources);
    QAStFile* present = root.addFiles({QStringLiteral("/p/a.c")}).at(0);
    QAStFile copy(QStringLiteral("/p/a.c"));
    QAStFile header(QStringLiteral("/p/a.h"));
    QAStFile other(QStringLiteral("/p/b.c"));

    QVERIFY(inner->acceptDrop(present));   // a move within the tree
    QVERIFY(!inner->acceptDrop(&copy));    // a second a.c
    QVERIFY(!sources->acceptDrop(&header)); // filters
    QVERIFY(sources->acceptDrop(&other));
    QVERIFY(root.acceptDrop(inner));
    QVERIFY(!inner->acceptDrop(sources));  // would hold itself
    QVERIFY(!sources->acceptDrop(&root));
}

void TestFolders::subProjectElement()
{
    DirectoryItem including(QStringLiteral("/work/main"));
    auto* sub = new QAStSubProject(QStringLiteral("/work/lib/lib.rtp"), &including, nullptr);
    sub->setUnloaded(true);
    QCOMPARE(sub->name(), QStringLiteral("lib"));

    const QString text = sub->toString();
    QVERIFY(text.startsWith(QStringLiteral("<sub_project>\n  <data>\n")));
    QVERIFY(text.endsWith(QStringLiteral("  </data>\n"
                                         "  <project_file>../lib/lib.rtp</project_file>\n"
                                         "  <unload>true</unload>\n"
                                         "</sub_project>\n")));

    DirectoryItem elsewhere(QStringLiteral("/other/main"));
    std::unique_ptr<QAStData> back = build(text, &elsewhere);
    auto* read = qobject_cast<QAStSubProject*>(back.get());
    QVERIFY(read && read->isValid());
    QVERIFY(read->isUnloaded());
    QCOMPARE(read->projectFile(), QStringLiteral("/other/lib/lib.rtp"));
    QCOMPARE(read->quid(), sub->quid());
}

void TestFolders::subProjectInheritsByTheNodeRule()
{
    QAStNode parent(QStringLiteral("project"), QPixmap());
    auto* sub = new QAStSubProject(QStringLiteral("/s.rtp"), &parent, nullptr);
    QAStConfiguration* own = sub->addConfiguration(QStringLiteral("Debug"));
    QAStConfiguration* above = parent.addConfiguration(QStringLiteral("Debug"));
    QCOMPARE(sub->inheritConfiguration(own), above);
    QVERIFY(!sub->inheritConfiguration(sub->initialConfiguration(QStringLiteral("Debug"))));
}

void TestFolders::fileUtilPaths_data()
{
    QTest::addColumn<QString>("dir");
    QTest::addColumn<QString>("absolute");
    QTest::addColumn<QString>("relative");
    QTest::newRow("below") << "/a/b" << "/a/b/c/d.rtp" << "c/d.rtp";
    QTest::newRow("beside") << "/a/b/" << "/a/x/d.rtp" << "../x/d.rtp";
    QTest::newRow("unclean") << "/a/./b" << "/a/b/../b/d.rtp" << "d.rtp";
    QTest::newRow("no directory") << "" << "/a/d.rtp" << "/a/d.rtp";
    QTest::newRow("empty") << "/a" << "" << "";
}

void TestFolders::fileUtilPaths()
{
    QFETCH(QString, dir);
    QFETCH(QString, absolute);
    QFETCH(QString, relative);
    QCOMPARE(QAFileUtil::absPathToRelative(dir, absolute), relative);
    QCOMPARE(QAFileUtil::relativePathToAbs(dir, relative), QAFileUtil::cleanDirPath(absolute));
    QCOMPARE(QAFileUtil::relativePathToAbs(QString(), QStringLiteral("x/../y")),
             QStringLiteral("y"));
}

QTEST_MAIN(TestFolders)
#include "tst_folders.moc"
