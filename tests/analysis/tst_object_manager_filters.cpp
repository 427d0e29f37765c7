// The tag browser following the user's tag filters, over tags the real
// tagging driver wrote for the sources of tests/data/tags.
#include "QAFiltersMgrEditor.h"
#include "QAStAClassTag.h"
#include "QAStAMethodTag.h"
#include "QAStAPackageTag.h"
#include "QAStAStructTag.h"
#include "QAStFile.h"
#include "QAStObjectManager.h"
#include "QAStProject.h"
#include "QATagFiltersMgr.h"
#include "RecordingStudio.h"
#include "TagFilters.h"
#include "TagFixtures.h"
#include "TestFiles.h"

#include <QApplication>
#include <QListWidget>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QString contextMark = u"  (context)"_s;

// The items below parent, one line each, indented two blanks per level; a
// context item is marked at its end.
void dumpInto(const QAStObjectManager& browser, const QTreeWidgetItem* parent, int depth,
              QStringList& lines)
{
    for (int i = 0; i < parent->childCount(); ++i) {
        const QTreeWidgetItem* item = parent->child(i);
        lines << QString(2 * depth, QLatin1Char(' ')) + item->text(0) +
                (browser.isContextItem(item) ? contextMark : QString());
        dumpInto(browser, item, depth + 1, lines);
    }
}

QStringList dump(const QAStObjectManager& browser)
{
    QStringList lines;
    dumpInto(browser, browser.invisibleRootItem(), 0, lines);
    return lines;
}

// Whether every line of part, context marks left out, stands in whole in
// the same order: the filtered layout is the full one with items taken out.
bool isSublayout(QStringList part, const QStringList& whole)
{
    qsizetype at = 0;
    for (QString& line : part) {
        line.remove(contextMark);
        while (at < whole.size() && whole.at(at) != line)
            ++at;
        if (at == whole.size())
            return false;
        ++at;
    }
    return true;
}

QList<const QTreeWidgetItem*> allItems(const QTreeWidgetItem* parent)
{
    QList<const QTreeWidgetItem*> found;
    for (int i = 0; i < parent->childCount(); ++i) {
        found << parent->child(i);
        found << allItems(parent->child(i));
    }
    return found;
}

// Lets the browser take the changes it was told of: its rebuild waits for
// the event loop.
void settle()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
}

using Wanted = std::function<bool(const QAStATag*)>;

bool isMethod(const QAStATag* tag)
{
    return qobject_cast<const QAStAMethodTag*>(tag);
}

bool isLedgerCall(const QAStATag* tag)
{
    return tag->name().startsWith(QLatin1String("ledger_"));
}

// The tags the by-type layout lists.
bool listedByType(const QAStATag* tag)
{
    return qobject_cast<const QAStAClassTag*>(tag) || qobject_cast<const QAStAFunctionTag*>(tag) ||
        qobject_cast<const QAStAPackageTag*>(tag);
}

}

class TestObjectManagerFilters : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        m_studio = std::make_unique<RecordingStudio>();
        TagFixtures::copySources(m_dir.path());
        m_project = std::make_unique<QAStProject>(u"tags"_s, QPixmap());
        m_project->setPath(m_dir.filePath(u"tags.rtp"_s));
        m_project->addConfiguration(u"Debug"_s);
        m_project->setCurrentConfigurationName(u"Debug"_s);
        for (const char* source : {"cpp/shapes.h", "cpp/shapes.cpp", "c/ledger.h", "c/ledger.c"})
            QVERIFY(TagFixtures::tagged(*m_project->rootFolder(), m_dir.filePath(QLatin1String(source))));
        m_browser = std::make_unique<QAStObjectManager>(m_project.get());
        for (int mode = 0; mode < 3; ++mode) {
            m_browser->sortModified(mode);
            m_all[mode] = dump(*m_browser);
        }
        QCOMPARE(m_all[0].size(), 44);
    }

    void init()
    {
        m_studio->reset();
        m_browser->setTagFilters(nullptr);
        m_filters = std::make_unique<QATagFiltersMgr>();
        m_browser->setTagFilters(m_filters.get());
        m_browser->sortModified(QAStObjectManager::SortByFile);
    }

    void noEnabledFilterShowsEverything()
    {
        // A manager whose filters are all off would match nothing; the browser
        // then shows every tag rather than none.
        m_filters->addFilter(TagFilters::filter("Methods", QATagFilterExpr::Kind, "method", false));
        m_filters->addFilter(TagFilters::filter("Nothing", QATagFilterExpr::Name, "no such name", false));
        settle();
        QVERIFY(!m_filters->filterActive());
        for (int mode = 0; mode < 3; ++mode) {
            m_browser->sortModified(mode);
            QCOMPARE(dump(*m_browser), m_all[mode]);
        }
        // An enabled filter that nothing passes leaves the files out and the
        // frame of the by-type layout.
        m_filters->fromName("Nothing")->setEnabled(true);
        m_filters->updateEnabled(m_filters->fromName("Nothing"));
        settle();
        QCOMPARE(dump(*m_browser), QStringList());
        m_browser->sortByType();
        QCOMPARE(dump(*m_browser), (QStringList{"Test Items", "  Classes", "  Functions", "  Packages"}));
    }

    void filtersInEachLayout_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QStringList>("enabled");
        const QStringList names[] = {{"Methods"}, {"Ledger calls"}, {"Methods", "Ledger calls"}};
        const char* labels[] = {"kind", "name wildcard", "both"};
        for (int mode = 0; mode < 3; ++mode) {
            for (int f = 0; f < 3; ++f)
                QTest::addRow("%s, layout %d", labels[f], mode) << mode << names[f];
        }
    }
    void filtersInEachLayout()
    {
        QFETCH(int, mode);
        QFETCH(QStringList, enabled);
        const bool methods = enabled.contains("Methods");
        const bool ledger = enabled.contains("Ledger calls");
        m_filters->addFilter(TagFilters::filter("Methods", QATagFilterExpr::Kind, "METHOD", methods));
        m_filters->addFilter(TagFilters::filter("Ledger calls", QATagFilterExpr::Name, "ledger_*", ledger));
        settle();
        m_browser->sortModified(mode);
        // Filters are OR-ed: a tag shows when one enabled filter passes it.
        checkRestricted([=](const QAStATag* tag) {
            return (methods && isMethod(tag)) || (ledger && isLedgerCall(tag));
        });
    }

    void subjectOfATag()
    {
        QHash<QString, QATagFilterSubject> subjects;
        for (const QAStATag* tag : allTags()) {
            if (tag->file()->name() == QLatin1String("shapes.h"))
                subjects.insert(tag->name(), QAStObjectManager::filterSubject(tag));
        }
        QCOMPARE(subjects.value("geo").kind, u"package"_s);
        QCOMPARE(subjects.value("Point").kind, u"struct"_s);
        QCOMPARE(subjects.value("Visitor").kind, u"class"_s);
        QCOMPARE(subjects.value("counter").kind, u"function"_s);
        const QATagFilterSubject move = subjects.value("move");
        QCOMPARE(move.kind, u"method"_s);
        QCOMPARE(move.name, u"move"_s);
        QCOMPARE(move.file, QDir::fromNativeSeparators(m_dir.filePath("cpp/shapes.h")));
        QCOMPARE(move.qualifiers, unsigned(QAStATag::Public | QAStATag::Virtual));

        // So a filter on the file, or on a qualifier word, reaches the tags.
        m_filters->addFilter(TagFilters::filter("Virtual", QATagFilterExpr::Qualifier, "*virtual", true));
        m_filters->addFilter(TagFilters::filter("Ledger source", QATagFilterExpr::File, "*.c", true));
        settle();
        checkRestricted([](const QAStATag* tag) {
            return (tag->qualifier() & (QAStATag::Virtual | QAStATag::PureVirtual)) != 0 ||
                tag->filePath().endsWith(QLatin1String("/ledger.c"));
        });
    }

    void untickingShowsTheTagsAgain()
    {
        m_filters->addFilter(TagFilters::filter("Methods", QATagFilterExpr::Kind, "method", true));
        m_filters->addFilter(TagFilters::filter("Ledger calls", QATagFilterExpr::Name, "ledger_*", true));
        QAFiltersMgrEditor editor(m_filters.get());
        QListWidget* rows = editor.filterList();
        QCOMPARE(rows->count(), 2);
        settle();
        m_browser->sortAlpha();
        const QStringList both = dump(*m_browser);
        QVERIFY(both.size() < m_all[2].size());
        rows->item(0)->setCheckState(Qt::Unchecked);
        settle();
        checkRestricted(isLedgerCall);
        rows->item(1)->setCheckState(Qt::Unchecked);
        settle();
        QCOMPARE(dump(*m_browser), m_all[2]);
        rows->item(0)->setCheckState(Qt::Checked);
        rows->item(1)->setCheckState(Qt::Checked);
        settle();
        QCOMPARE(dump(*m_browser), both);

        // Removing a filter in the editor, and the manager going, count too.
        rows->item(1)->setSelected(true);
        editor.removeFilter();
        settle();
        checkRestricted(isMethod);
        m_filters.reset();
        settle();
        QVERIFY(!m_browser->tagFilters());
        QCOMPARE(dump(*m_browser), m_all[2]);
    }

    void importingAFiltersFileAppliesAtOnce()
    {
        QAFiltersMgrEditor editor(m_filters.get());
        const QString path = m_dir.filePath("structures.xfl");
        TestFiles::writeFile(path, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                   "<!DOCTYPE Korvil-Filters>\n"
                                   "<filters>\n"
                                   " <tag_filter name=\"Structures\" enabled=\"1\" wildcard=\"1\">\n"
                                   "  <tag_group all=\"1\" enabled=\"1\" invert=\"0\">\n"
                                   "   <expr type=\"kind\" case=\"0\" text=\"struct\"/>\n"
                                   "  </tag_group>\n"
                                   " </tag_filter>\n"
                                   "</filters>\n");
        m_studio->answerPath(path);
        editor.importFilters();
        settle();
        QCOMPARE(dump(*m_browser), (QStringList{"shapes.h", "  geo  (context)", "    Point", "ledger.h",
                                                "  ledger", "ledger.c", "  entry"}));
        // The by-type layout lists no structure.
        m_browser->sortByType();
        QCOMPARE(dump(*m_browser), (QStringList{"Test Items", "  Classes", "  Functions", "  Packages"}));
    }

    void changesAreTakenInOneRebuild()
    {
        QTreeWidgetItem* first = m_browser->topLevelItem(0);
        first->setData(0, Qt::UserRole, u"kept"_s);
        QSignalSpy resets(m_browser->model(), &QAbstractItemModel::modelReset);
        m_filters->addFilter(TagFilters::filter("Methods", QATagFilterExpr::Kind, "method", true));
        m_filters->addFilter(TagFilters::filter("Classes", QATagFilterExpr::Kind, "class", false));
        m_filters->fromName("Classes")->setEnabled(true);
        m_filters->updateEnabled(m_filters->fromName("Classes"));
        m_filters->setModified(true);
        // Nothing happens before the event loop runs...
        QCOMPARE(m_browser->topLevelItem(0)->data(0, Qt::UserRole).toString(), u"kept"_s);
        QCOMPARE(resets.count(), 0);
        settle();
        // ...and then one rebuild takes every change.
        QCOMPARE(resets.count(), 1);
        checkRestricted([](const QAStATag* tag) {
            return isMethod(tag) || qobject_cast<const QAStAClassTag*>(tag);
        });
        // A rebuild asked for directly meanwhile makes the waiting one needless.
        m_filters->remove(1);
        m_browser->rebuild();
        settle();
        QCOMPARE(resets.count(), 2);
        checkRestricted(isMethod);
    }

private:
    // Checks the browser in its current layout against wanted: the layout
    // is the full one less some items; every tag wanted is shown; every tag
    // shown is wanted or the context of a wanted one below it; every file
    // shown holds a wanted tag.
    void checkRestricted(const Wanted& wanted)
    {
        const int mode = m_browser->sortMode();
        const QStringList shown = dump(*m_browser);
        QVERIFY2(isSublayout(shown, m_all[mode]), qPrintable(shown.join('\n')));
        for (const QAStATag* tag : allTags()) {
            if (mode == QAStObjectManager::SortByType && !listedByType(tag))
                continue;
            const QTreeWidgetItem* item = m_browser->itemOf(tag);
            if (wanted(tag))
                QVERIFY2(item && !m_browser->isContextItem(item), qPrintable(tag->qualifiedName()));
            else if (item)
                QVERIFY2(m_browser->isContextItem(item) && item->childCount() > 0,
                         qPrintable(tag->qualifiedName()));
        }
        // Every item leads to its tag (the frame of the by-type layout
        // aside), a context item too; a file is none.
        for (const QTreeWidgetItem* item : allItems(m_browser->invisibleRootItem())) {
            if (mode != QAStObjectManager::SortByType || (item->parent() && item->parent()->parent()))
                QVERIFY2(m_browser->tagOf(item), qPrintable(item->text(0)));
            const auto* file = qobject_cast<const QAStFile*>(m_browser->tagOf(item));
            if (!file)
                continue;
            QVERIFY(!m_browser->isContextItem(item));
            const QList<QAStATag*> inside = file->descendants();
            QVERIFY2(std::any_of(inside.begin(), inside.end(), wanted), qPrintable(file->name()));
        }
        // The by-type layout keeps its frame.
        if (mode == QAStObjectManager::SortByType)
            QCOMPARE(shown.mid(0, 2), (QStringList{"Test Items", "  Classes"}));
    }
    QList<QAStATag*> allTags() const
    {
        QList<QAStATag*> tags;
        for (QAStFile* file : m_browser->files())
            tags << file->descendants();
        return tags;
    }

    std::unique_ptr<RecordingStudio> m_studio;
    QTemporaryDir m_dir;
    std::unique_ptr<QAStProject> m_project;
    std::unique_ptr<QATagFiltersMgr> m_filters;
    std::unique_ptr<QAStObjectManager> m_browser;
    // The three layouts with no filter.
    QStringList m_all[3];
};

QTEST_MAIN(TestObjectManagerFilters)
#include "tst_object_manager_filters.moc"
