#include "QAFileUtil.h"
#include "QAStConfiguration.h"
#include "QAStFile.h"
#include "QAStFolder.h"
#include "QAStNode.h"
#include "QAStProjectPref.h"
#include "QAStRootFolder.h"
#include "QAStSubProject.h"
#include "RecordingStudio.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

using TestFiles::readFile;

namespace {

// "name" for files, "name/" for folders, children indented below.
QStringList outline(const QAStData* item, const QString& indent = QString())
{
    QStringList lines;
    for (QAStData* c = item->child(); c; c = c->next()) {
        const bool folder = qobject_cast<QAStFolder*>(c) != nullptr;
        lines << indent + c->name() + (folder ? u"/"_s : QString());
        if (folder)
            lines << outline(c, indent + u"  "_s);
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
    void init()
    {
        m_studio = std::make_unique<RecordingStudio>();
        QAStData::clearLoadReport();
        QAStData::preferences()->setUseRelativePath(true);
    }

    void filtersMatchFileNames_data()
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
    void filtersMatchFileNames()
    {
        QFETCH(QString, filters);
        QFETCH(QString, path);
        QAStFolder f(u"f"_s);
        f.setFilters(filters);
        QTEST(f.matches(path), "matches");
    }

    void openReadsTheFileTree()
    {
        QAStRootFolder root(u"old"_s);
        new QAStFile(u"/gone.c"_s, &root, nullptr);
        QVERIFY(root.open(TestPaths::data(u"folders/sample.inf"_s)));

        QCOMPARE(root.name(), u"Files"_s);
        QCOMPARE(root.quid(), 1u);
        QVERIFY(root.isExtended());
        QCOMPARE(outline(&root), (QStringList{"Sources/", "  main.c", "README"}));
        QCOMPARE(root.folders().at(0)->filters(), u"*.c;*.cpp"_s);
        QAStFile* main = root.file(u"src/main.c"_s);
        QVERIFY(main);
        QCOMPARE(main->filePath(), TestPaths::data(u"folders/src/main.c"_s));
        QCOMPARE(main->children().size(), 1);
        QCOMPARE(main->children().at(0)->line(), 10);
        QVERIFY(root.file(u"/abs/README"_s));
        QCOMPARE(QAStData::loadReport(), u"sub_project bad place\n"_s);
    }

    void objectInformationFileRoundTrip()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        QAStRootFolder root(u"Files"_s);
        root.setDirectory(dir.path());
        QAStFolder* sources = folder(u"a, <b> & c"_s, u"*.c; *.h"_s, &root);
        root.addFiles({u"src/a.c"_s, u"notes.txt"_s, u"/abs/b.c"_s});
        folder(u"Empty"_s, QString(), sources);

        const QString path = dir.filePath(u"p.inf"_s);
        QVERIFY(root.write(path));
        const QString text = QString::fromUtf8(readFile(path));
        const QStringList lines = text.split(QLatin1Char('\n'));
        QCOMPARE(lines.at(0), u"<?xml version=\"1.0\" encoding=\"utf-8\"?>"_s);
        QCOMPARE(lines.at(1), "<!DOCTYPE objects SYSTEM \"" + QAStData::installDir() + "/lib/project.dtd\">");
        QVERIFY(text.contains(u"<filepath>src/a.c</filepath>"_s));
        QVERIFY(text.contains(u"<filters>*.c; *.h</filters>"_s));
        const QString outside = QDir(dir.path()).relativeFilePath(u"/abs/b.c"_s);
        QVERIFY(text.contains("<filepath>" + outside + "</filepath>"));

        QAStRootFolder back(u"other"_s);
        QVERIFY(back.open(path));
        QCOMPARE(QAStData::loadReport(), QString());
        QCOMPARE(back.directory(), dir.path());
        QCOMPARE(back.files().size(), 3);
        QCOMPARE(back.files().at(0)->filePath(), dir.filePath(u"src/a.c"_s));
        QCOMPARE(back.folders().at(0)->name(), sources->name());
        QString again;
        QTextStream s(&again);
        back.writeDocument(s);
        s.flush();
        QCOMPARE(again, text);
    }

    void openFailures_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("report");
        QTest::newRow("missing") << "folders/none.inf" << "Unable to open the object information file";
        QTest::newRow("malformed") << "folders/malformed.inf" << "at line #6 column #";
        QTest::newRow("wrong root") << "folders/wrong-root.inf" << "Wait for tag objects and read project";
        QTest::newRow("no folder") << "folders/no-folder.inf" << "Unable to find tag folder";
    }
    void openFailures()
    {
        QFETCH(QString, file);
        QFETCH(QString, report);
        QAStRootFolder root(u"Files"_s);
        new QAStFile(u"/old.c"_s, &root, nullptr);
        QVERIFY(!root.open(TestPaths::data(file)));
        QVERIFY2(QAStData::loadReport().contains(report), qPrintable(QAStData::loadReport()));
        QCOMPARE(root.childCount(), 0);
    }

    void failedSaveIntoAMissingDirectory()
    {
        QTemporaryDir dir;
        const QString regular = dir.filePath(u"regular"_s);
        TestFiles::writeFile(regular, QByteArray());

        QAStRootFolder root(u"Files"_s);
        root.setDirectory(dir.path());
        const QString target = regular + u"/p.inf"_s;
        QVERIFY(!root.write(target));
        QCOMPARE(root.directory(), dir.path());
        const QStringList messages = m_studio->messages(QAStData::MessageConsole);
        QCOMPARE(messages.size(), 1);
        QVERIFY(messages.at(0).startsWith(target + u"\n\nUnable to save the object information file: "_s));
    }

    void addFilesByFilters()
    {
        QAStRootFolder root(u"Files"_s);
        root.setDirectory(u"/p"_s);
        folder(u"Misc"_s, QString(), &root);
        QAStFolder* code = folder(u"Code"_s, QString(), &root);
        QAStFolder* sources = folder(u"Sources"_s, u"*.c;*.cpp"_s, code);
        QAStFolder* headers = folder(u"Headers"_s, u"*.h;*.c"_s, &root);

        const QList<QAStFile*> added = root.addFiles({u"a.c"_s, u"inc/B.H"_s, u"x.txt"_s,
             u"/p/a.c"_s, u"sub/../a.c"_s, QString()});
        QCOMPARE(added.size(), 3);
        QCOMPARE(added.at(0)->parent(), sources); // first match, depth first
        QCOMPARE(added.at(1)->parent(), headers); // case ignored
        QCOMPARE(added.at(2)->parent(), &root);   // no filter matches; Misc attracts nothing
        QCOMPARE(added.at(0)->filePath(), u"/p/a.c"_s);

        QVERIFY(root.addFiles({u"/p/inc/B.H"_s}).isEmpty());
        QCOMPARE(root.files().size(), 3);
    }

    void normalizeRules()
    {
        QAStRootFolder root(u"Files"_s);
        root.setDirectory(u"/p"_s);
        new QAStFile(u"z.c"_s, &root, root.last());
        QAStFolder* misc = folder(u"misc"_s, QString(), &root);
        new QAStFile(u"notes.txt"_s, misc, nullptr);
        new QAStFile(u"b.h"_s, misc, misc->last());
        QAStFolder* sources = folder(u"Sources"_s, u"*.c"_s, &root);
        new QAStFile(u"m.h"_s, sources, nullptr);
        new QAStFile(u"z.c"_s, sources, sources->last());
        folder(u"Headers"_s, u"*.h"_s, &root);
        new QAStFile(u"A.txt"_s, &root, root.last());

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

    void dropsIntoFolders()
    {
        QAStRootFolder root(u"Files"_s);
        QAStFolder* sources = folder(u"Sources"_s, u"*.c"_s, &root);
        QAStFolder* inner = folder(u"inner"_s, QString(), sources);
        QAStFile* present = root.addFiles({u"/p/a.c"_s}).at(0);
        QAStFile copy(u"/p/a.c"_s);
        QAStFile header(u"/p/a.h"_s);
        QAStFile other(u"/p/b.c"_s);

        QVERIFY(inner->acceptDrop(present));   // a move within the tree
        QVERIFY(!inner->acceptDrop(&copy));    // a second a.c
        QVERIFY(!sources->acceptDrop(&header)); // filters
        QVERIFY(sources->acceptDrop(&other));
        QVERIFY(root.acceptDrop(inner));
        QVERIFY(!inner->acceptDrop(sources));  // would hold itself
        QVERIFY(!sources->acceptDrop(&root));
    }

    void subProjectInheritsByTheNodeRule()
    {
        QAStNode parent(u"project"_s, QPixmap());
        auto* sub = new QAStSubProject(u"/s.rtp"_s, &parent, nullptr);
        QAStConfiguration* own = sub->addConfiguration(u"Debug"_s);
        QAStConfiguration* above = parent.addConfiguration(u"Debug"_s);
        QCOMPARE(sub->inheritConfiguration(own), above);
        QVERIFY(!sub->inheritConfiguration(sub->initialConfiguration(u"Debug"_s)));
    }

    void fileUtilPaths_data()
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
    void fileUtilPaths()
    {
        QFETCH(QString, dir);
        QFETCH(QString, absolute);
        QFETCH(QString, relative);
        QCOMPARE(QAFileUtil::absPathToRelative(dir, absolute), relative);
        QCOMPARE(QAFileUtil::relativePathToAbs(dir, relative), QAFileUtil::cleanDirPath(absolute));
        QCOMPARE(QAFileUtil::relativePathToAbs(QString(), u"x/../y"_s), u"y"_s);
    }

private:
    std::unique_ptr<RecordingStudio> m_studio;
};

QTEST_MAIN(TestFolders)
#include "tst_folders.moc"
