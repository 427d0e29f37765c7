// Tags kept as rows below their file until the file's children are walked:
// whatever comes first to walk them (the tree's accessors, a save, the tag
// filters' layouts), and whatever happened to the file meanwhile, the items
// made are those reading into items at once gave.

#include "QAStAClassTag.h"
#include "QAStFile.h"
#include "QAStFolder.h"
#include "QAStProject.h"
#include "QAStProjectPref.h"
#include "QAStRootFolder.h"
#include "QAStTagFileReader.h"
#include "QAStTagLayout.h"
#include "QATagFiltersMgr.h"
#include "RecordingStudio.h"
#include "TagFilters.h"
#include "TagFixtures.h"
#include "TestFiles.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

// Scopes, a member of a missing class, a base list, escapes, a UTF-8
// name, a malformed line and a kind of no class.
const QByteArray tagText =
    "!_TAG_FILE_FORMAT\t2\t/extended format/\n"
    "geo\ta.h\t1;\"\tnamespace\n"
    "Shape\ta.h\t2;\"\tclass\tnamespace:geo\tinherits:Base,Other\n"
    "move\ta.h\t3;\"\tprototype\tclass:geo::Shape\tsignature:(double dx)\taccess:public\n"
    "area\ta.h\t4;\"\tfunction\tclass:geo::Gone\tsignature:() const\n"
    "broken line\n"
    "Point\ta.h\t6;\"\tstruct\tnamespace:geo\n"
    "MAX\ta.h\t7;\"\tmacro\n"
    "Gr\xc3\xb6\xc3\x9f" "e\ta.h\t8;\"\tfunction\tsignature:(char c = '\\t')\n"
    "strlen\ta.h\t9;\"\tfunction\n";

const QStringList tagTree{
    "package geo",
    "  class Shape",
    "    method move(double dx) q1",
    "  method area() const",
    "  struct Point",
    u"function Gr\u00f6\u00dfe(char c = '\t')"_s,
    "function strlen",
};

// What a tag shows of itself, its depth and class first.
QStringList summary(const QAStATag* top)
{
    QStringList lines;
    for (const QAStATag* tag : top->descendants()) {
        int depth = 0;
        for (const QAStData* p = tag->parent(); p != top; p = p->parent())
            ++depth;
        lines.append(QStringLiteral("%1 %2 %3 %4 %5 %6 %7 %8")
                         .arg(depth)
                         .arg(QLatin1String(tag->metaObject()->className()), tag->displayName(),
                              tag->qualifiedName(), tag->filePath())
                         .arg(tag->line())
                         .arg(tag->qualifier())
                         .arg(tag->language()));
    }
    return lines;
}

QStringList entryTexts(const QList<QAStTagLayout::Entry>& entries, const QString& indent = QString())
{
    QStringList texts;
    for (const QAStTagLayout::Entry& entry : entries) {
        texts.append(indent + entry.text + (entry.context ? " (context)" : ""));
        texts.append(entryTexts(entry.children, indent + "  "));
    }
    return texts;
}

// The file items of an object information file, quids left out.
QString filesWithoutQuids(const QByteArray& information)
{
    static const QRegularExpression quid(u"<quid>\\d+</quid>"_s);
    QString text = QString::fromUtf8(information);
    return text.mid(text.indexOf(u"<file>"_s)).replace(quid, u"<quid/>"_s);
}

}

class TestTagRows : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        m_studio = std::make_unique<RecordingStudio>();
        m_dir = std::make_unique<QTemporaryDir>();
        m_tags = m_dir->filePath(u"a.tags"_s);
        TestFiles::writeFile(m_tags, tagText);
        m_tree = std::make_unique<QAStRootFolder>(u"files"_s);
        m_tree->setDirectory(m_dir->path());
        QAStData::preferences()->setEncodingName(u"ISO-8859-1"_s);
    }

    void cleanup()
    {
        m_tree.reset();
        m_dir.reset();
        m_studio.reset();
        QAStData::preferences()->setEncodingName(QString());
    }

    // The rows become items on the first walk, in file order, with the
    // quids they took when read: before any item made after the reading.
    void aWalkMakesTheTagsInFileOrder()
    {
        QAStFile* file = readFile(u"a.h"_s);
        QVERIFY(file->hasDeferredChildren());
        QCOMPARE(m_studio->messages(QAStData::MessageConsole),
                 QStringList{m_tags + ":6: expecting a tab"});
        const auto* later = new QAStFolder(u"later"_s, QPixmap(), m_tree.get(), m_tree->last());

        QCOMPARE(TagFixtures::dump(file), tagTree);
        QVERIFY(!file->hasDeferredChildren());
        QList<QAStATag*> tags = file->descendants();
        std::sort(tags.begin(), tags.end(),
                  [](const QAStATag* a, const QAStATag* b) { return a->quid() < b->quid(); });
        QList<int> lines;
        for (const QAStATag* tag : tags) {
            lines.append(tag->line());
            QVERIFY(tag->quid() > file->quid());
            QVERIFY(tag->quid() < later->quid());
        }
        QCOMPARE(lines, (QList<int>{1, 2, 3, 4, 6, 8, 9}));
        QCOMPARE(qobject_cast<QAStAClassTag*>(tags.at(1))->inherits(), (QStringList{"Base", "Other"}));

        // Read again: the former rows go unmade, the new ones follow.
        QAStFile* again = readFile(u"b.h"_s);
        TestFiles::writeFile(m_tags, "only\tb.h\t1;\"\tfunction\n");
        QVERIFY(again->readTagFile(m_tags));
        QCOMPARE(TagFixtures::dump(again), QStringList{"function only"});
        // Text added behind tags already made goes behind them.
        QAStTagFileReader(again).readText("next\tb.h\t2;\"\tfunction\n", u"more"_s);
        QCOMPARE(TagFixtures::dump(again), (QStringList{"function only", "function next"}));

        // A scope made again between two records of the same scope: the
        // second goes below the newer one.
        auto* reopened = new QAStFile(m_dir->filePath(u"c.h"_s), m_tree.get(), m_tree->last());
        QAStTagFileReader(reopened).readText("ns\tc.h\t1;\"\tnamespace\n"
                                             "f\tc.h\t2;\"\tfunction\tnamespace:ns\n"
                                             "ns\tc.h\t3;\"\tnamespace\n"
                                             "g\tc.h\t4;\"\tfunction\tnamespace:ns\n",
                                             u"reopened"_s);
        QCOMPARE(TagFixtures::dump(reopened), (QStringList{"package ns", "  function f",
                                                           "package ns", "  function g"}));
    }

    // A listener to childAdded hears every tag as it is read, as before.
    void listenersHearTheTagsAtOnce()
    {
        auto* file = new QAStFile(m_dir->filePath(u"a.h"_s), m_tree.get(), m_tree->last());
        QSignalSpy added(file, &QAStData::childAdded);
        QVERIFY(file->readTagFile(m_tags));
        QVERIFY(!file->hasDeferredChildren());
        QCOMPARE(added.count(), 3);
    }

    // A file renamed, given another path and moved after its reading keeps
    // the tags as read: the path, scopes and language of that time.
    void tagsMadeAfterTheFileChangedAreTheTagsRead()
    {
        QAStFile* walked = readFile(u"a.h"_s);
        const QStringList expected = summary(walked);
        QVERIFY(expected.first().endsWith(m_dir->filePath(u"a.h"_s) + " 1 0 0"));

        QAStFile* kept = readFile(u"a.h"_s);
        kept->setName(u"renamed.c"_s);
        kept->setFilePath(m_dir->filePath(u"elsewhere/renamed.c"_s));
        auto* folder = new QAStFolder(u"moved"_s, QPixmap(), m_tree.get(), m_tree->last());
        folder->addChild(kept, nullptr);
        QVERIFY(kept->hasDeferredChildren());
        QCOMPARE(summary(kept), expected);
    }

    // The object information file of a project whose file was never
    // walked: the save walks it, gives what a walked file gives, and reads
    // back byte for byte.
    void theSaveOfAFileNeverWalkedIsTheSaveOfAWalkedOne()
    {
        const QString kept = savedProject(u"kept.rtp"_s, false);
        const QString walked = savedProject(u"walked.rtp"_s, true);
        QVERIFY2(QFileInfo::exists(kept) && QFileInfo::exists(walked), qPrintable(kept + walked));
        const QByteArray information = TestFiles::readFile(kept);
        QVERIFY(information.contains("<name>move</name>"));
        QCOMPARE(filesWithoutQuids(information), filesWithoutQuids(TestFiles::readFile(walked)));

        QAStProject read(u"other"_s, QPixmap());
        QVERIFY(read.open(m_dir->filePath(u"kept.rtp"_s)));
        QCOMPARE(read.files().size(), 1);
        QCOMPARE(TagFixtures::dump(read.files().value(0)), tagTree);
        QVERIFY(read.save());
        QCOMPARE(TestFiles::readFile(kept), information);
    }

    // The tag filters' layouts over a file never walked show what they
    // show over a walked one; searches for classes no tag is leave the
    // rows unmade.
    void filtersOverAFileNeverWalked()
    {
        QATagFiltersMgr filters;
        filters.addFilter(TagFilters::filter(u"functions"_s, QATagFilterExpr::Kind, u"function"_s, true));
        QAStFile* walked = readFile(u"a.h"_s);
        walked->descendants();
        QAStFile* kept = readFile(u"a.h"_s);

        QVERIFY(m_tree->childrenOfClass("QAStFolder", true).isEmpty());
        QVERIFY(!m_tree->searchChildOfClass(u"move"_s, "QAStNode", true));
        QVERIFY(kept->hasDeferredChildren());
        for (int mode : {QAStTagLayout::SortByFile, QAStTagLayout::SortByType, QAStTagLayout::SortAlpha}) {
            const QStringList shown = entryTexts(QAStTagLayout::layout({kept}, mode, {}, &filters));
            QCOMPARE(shown, entryTexts(QAStTagLayout::layout({walked}, mode, {}, &filters)));
            QVERIFY(shown.join(u'\n').contains(u"strlen"_s));
            QVERIFY(!shown.join(u'\n').contains(u"Point"_s));
        }
        QVERIFY(!kept->hasDeferredChildren());
    }

private:
    // Saves a project of one file read from the tag file, walked or not;
    // the path of its object information file, empty when it failed.
    QString savedProject(const QString& name, bool walk)
    {
        QAStProject project(u"tags"_s, QPixmap());
        if (!project.create(m_dir->filePath(name)))
            return QString();
        QAStFile* file = project.addFile(m_dir->filePath(u"a.h"_s));
        if (!file || !file->readTagFile(m_tags))
            return u"no file"_s;
        if (!file->hasDeferredChildren())
            return u"made"_s;
        if (walk)
            file->descendants();
        return project.save() ? project.browseInformationFilePath() : QString();
    }

    QAStFile* readFile(const QString& name)
    {
        auto* file = new QAStFile(m_dir->filePath(name), m_tree.get(), m_tree->last());
        if (!file->readTagFile(m_tags))
            return nullptr;
        return file;
    }

    std::unique_ptr<RecordingStudio> m_studio;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QAStRootFolder> m_tree;
    QString m_tags;
};

QTEST_GUILESS_MAIN(TestTagRows)
#include "tst_tag_rows.moc"
