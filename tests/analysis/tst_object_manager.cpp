// The tag browser: over the example project, analysed through the real
// tagging driver, in its three layouts; following the user's tag filters
// over tags the real driver wrote for the sources of tests/data/tags.

#include "QAFiltersMgrEditor.h"
#include "QAStAClassTag.h"
#include "QAStAFunctionTag.h"
#include "QAStAMethodTag.h"
#include "QAStAPackageTag.h"
#include "QAStAStructTag.h"
#include "QAStConfiguration.h"
#include "QAStFile.h"
#include "QAStFileAnalyse.h"
#include "QAStObjectManager.h"
#include "QAStProject.h"
#include "QATagFiltersMgr.h"
#include "RecordingStudio.h"
#include "TagFilters.h"
#include "TagFixtures.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QApplication>
#include <QListWidget>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

QStringList texts(const QTreeWidgetItem* parent)
{
    QStringList found;
    for (int i = 0; i < parent->childCount(); ++i)
        found.append(parent->child(i)->text(0));
    return found;
}

QStringList topTexts(const QTreeWidget& tree)
{
    return texts(tree.invisibleRootItem());
}

QTreeWidgetItem* topItem(const QTreeWidget& tree, const QString& text)
{
    const QList<QTreeWidgetItem*> found = tree.findItems(text, Qt::MatchExactly);
    return found.isEmpty() ? nullptr : found.first();
}

// Every file's tag tree, headed by the file's name.
QStringList dumpAll(const QList<QAStFile*>& files)
{
    QStringList lines;
    for (const QAStFile* f : files)
        lines << f->name() << TagFixtures::dump(f);
    return lines;
}

const QString calcSignature = u"(long a,long b,long * result)"_s;


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

class TestObjectManager : public QObject {
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

        // The example, in the by-type layout.
        QAStProject::setModeBatch(true);
        QVERIFY(QAStConfiguration::initialize(m_studio.get(), nullptr));
        TestFiles::copyTree(TestPaths::sourceDir() + u"/examples/calculator"_s, m_exampleDir.path());
        m_example = std::make_unique<QAStProject>(u"calculator"_s, QPixmap());
        QVERIFY(m_example->open(examplePath(u"calculator.rtp"_s)));
        m_example->setSortMethod(QAStObjectManager::SortByType);
        m_exampleBrowser = std::make_unique<QAStObjectManager>(m_example.get());
    }

    void cleanupTestCase()
    {
        m_exampleBrowser.reset();
        m_example.reset();
        QAStProject::setModeBatch(false);
    }

    void init()
    {
        m_studio->reset();
        m_browser->setTagFilters(nullptr);
        m_filters = std::make_unique<QATagFiltersMgr>();
        m_browser->setTagFilters(m_filters.get());
        m_browser->sortModified(QAStObjectManager::SortByFile);
    }

    // --- the example

    void analysingTheExampleFillsTheBrowser()
    {
        QCOMPARE(m_exampleBrowser->sortMode(), int(QAStObjectManager::SortByType));
        const QList<QAStFile*> files = m_exampleBrowser->files();
        QCOMPARE(files.size(), 7);
        QCOMPARE(files.last()->name(), u"printer.c"_s);
        QAStFileAnalyse run(files);
        QSignalSpy finished(&run, &QAStFileAnalyse::finished);
        QVERIFY(run.start());
        QVERIFY(finished.wait(60000));
        QCOMPARE(run.analysedFiles().size(), 6);
        QVERIFY(run.failedFiles().isEmpty());
        QCOMPARE(topTexts(*m_exampleBrowser), QStringList{"Test Items"});
        const QTreeWidgetItem* top = m_exampleBrowser->topLevelItem(0);
        QCOMPARE(texts(top), (QStringList{"Classes", "Functions", "Packages"}));
        QCOMPARE(texts(top->child(0)), QStringList());
        QCOMPARE(texts(top->child(1)), (QStringList{"calc_add" + calcSignature, "calc_subtract" + calcSignature,
                              "calc_multiply" + calcSignature, "calc_divide" + calcSignature,
                              "calc_evaluate(const char * expression,long * result)",
                              "calc_status_text(int status)", "calc_add" + calcSignature,
                              "calc_subtract" + calcSignature, "calc_multiply" + calcSignature,
                              "calc_divide" + calcSignature, "read_number(const char ** text,long * value)",
                              "calc_evaluate(const char * expression,long * result)",
                              "calc_status_text(int status)",
                              "(anonymous)::evaluate(const std::string & expression)",
                              "main(int argc,char ** argv)",
                              "check_evaluate(const char * expression,int status,long value)",
                              "pause_ms(long ms)", "wait_for(const char * file)", "check_all(void)",
                              "main(int argc,char ** argv)",
                              "printer_print(FILE * out,const char * expression,long value)",
                              "printer_print(FILE * out,const char * expression,long value)"}));
        QCOMPARE(texts(top->child(2)), QStringList{"(anonymous)"});
    }

    void byFile()
    {
        m_exampleBrowser->sortModified(QAStObjectManager::SortByFile);
        QCOMPARE(topTexts(*m_exampleBrowser), (QStringList{"calc.h", "calc.c", "main.cpp", "test_calc.c",
                                                    "printer.h", "printer.c"}));
        const QTreeWidgetItem* main = topItem(*m_exampleBrowser, u"main.cpp"_s);
        QCOMPARE(texts(main), (QStringList{"(anonymous)", "main(int argc,char ** argv)"}));
        QCOMPARE(texts(main->child(0)), QStringList{"evaluate(const std::string & expression)"});
    }

    void alphabetical()
    {
        m_exampleBrowser->sortModified(QAStObjectManager::SortAlpha);
        QCOMPARE(topTexts(*m_exampleBrowser), (QStringList{"calc.c", "calc.h", "main.cpp", "printer.c",
                                                    "printer.h", "test_calc.c"}));
        QCOMPARE(texts(topItem(*m_exampleBrowser, u"calc.c"_s)),
                 (QStringList{"calc_add" + calcSignature, "calc_divide" + calcSignature,
                              "calc_evaluate(const char * expression,long * result)",
                              "calc_multiply" + calcSignature, "calc_status_text(int status)",
                              "calc_subtract" + calcSignature, "read_number(const char ** text,long * value)"}));
        QCOMPARE(texts(topItem(*m_exampleBrowser, u"main.cpp"_s)),
                 (QStringList{"(anonymous)", "main(int argc,char ** argv)"}));
    }

    void sortModeIsKeptInTheProject()
    {
        m_exampleBrowser->sortByType();
        QCOMPARE(m_example->sortMethod(), 1);
        m_exampleBrowser->sortModified(7);
        QCOMPARE(m_exampleBrowser->sortMode(), 1);
        QCOMPARE(topTexts(*m_exampleBrowser), QStringList{"Test Items"});
        m_exampleBrowser->sortAlpha();
        QCOMPARE(m_example->sortMethod(), 2);
        QAStObjectManager other(m_example.get());
        QCOMPARE(other.sortMode(), 2);
    }

    void filterKeepsTheAcceptedTags()
    {
        m_exampleBrowser->sortModified(QAStObjectManager::SortByFile);
        // A refused scope hands its accepted tags to the item above it.
        m_exampleBrowser->setItemFilter([](const QAStATag* tag) {
            return tag->name() == QLatin1String("evaluate") || tag->name() == QLatin1String("main");
        });
        QCOMPARE(topTexts(*m_exampleBrowser), (QStringList{"main.cpp", "test_calc.c"}));
        QCOMPARE(texts(topItem(*m_exampleBrowser, u"main.cpp"_s)),
                 (QStringList{"evaluate(const std::string & expression)", "main(int argc,char ** argv)"}));
        m_exampleBrowser->sortByType();
        const QTreeWidgetItem* top = m_exampleBrowser->topLevelItem(0);
        QCOMPARE(texts(top->child(1)), (QStringList{"(anonymous)::evaluate(const std::string & expression)",
                                                    "main(int argc,char ** argv)",
                                                    "main(int argc,char ** argv)"}));
        QCOMPARE(texts(top->child(2)), QStringList());
        m_exampleBrowser->setItemFilter(nullptr);
        QCOMPARE(texts(m_exampleBrowser->topLevelItem(0)->child(2)), QStringList{"(anonymous)"});
    }

    void itemsLeadToTheirTags()
    {
        m_exampleBrowser->sortModified(QAStObjectManager::SortByFile);
        QTreeWidgetItem* calcC = topItem(*m_exampleBrowser, u"calc.c"_s);
        QAStATag* file = m_exampleBrowser->tagOf(calcC);
        QVERIFY(qobject_cast<QAStFile*>(file));
        QTreeWidgetItem* first = calcC->child(0);
        QAStATag* add = m_exampleBrowser->tagOf(first);
        QCOMPARE(add->parent(), file);
        QCOMPARE(m_exampleBrowser->itemOf(add), first);
        emit m_exampleBrowser->itemDoubleClicked(first, 0);
        QCOMPARE(m_studio->editedFiles().last(), file->filePath() + u":8"_s);
        // A header item stands for no tag.
        m_exampleBrowser->sortByType();
        QVERIFY(!m_exampleBrowser->tagOf(m_exampleBrowser->topLevelItem(0)));
    }

    void rebuiltWhenATaggingEnds()
    {
        m_exampleBrowser->sortModified(QAStObjectManager::SortByFile);
        TestFiles::writeFile(examplePath(u"src/extra.c"_s), "int extra(int x) { return x; }\n");
        QAStFile* extra = m_example->addFile(examplePath(u"src/extra.c"_s));
        QVERIFY(!topItem(*m_exampleBrowser, u"extra.c"_s));
        QSignalSpy ended(extra, &QAStFile::taggingTerminated);
        QVERIFY(extra->taggingInformation(true));
        QVERIFY(ended.wait(20000));
        QTreeWidgetItem* item = topItem(*m_exampleBrowser, u"extra.c"_s);
        QVERIFY(item);
        QCOMPARE(texts(item), QStringList{"extra(int x)"});
        // A file of another tree does not disturb the browser.
        QAStProject stranger(u"stranger"_s, QPixmap());
        QAStFile* elsewhere = stranger.addFile(examplePath(u"src/extra.c"_s));
        item->setData(0, Qt::UserRole, u"kept"_s);
        QVERIFY(elsewhere->taggingInformation(false));
        QCOMPARE(topItem(*m_exampleBrowser, u"extra.c"_s)->data(0, Qt::UserRole).toString(), u"kept"_s);
    }

    void tagsSurviveSaveAndReload()
    {
        const QStringList before = dumpAll(m_exampleBrowser->files());
        QVERIFY(before.contains(u"  function evaluate(const std::string & expression)"_s));
        QVERIFY(m_example->save());
        QVERIFY(TestFiles::readFile(examplePath(u"sub/printer/printer.inf"_s)).contains("<function>"));
        QAStProject reloaded(u"calculator"_s, QPixmap());
        QVERIFY(reloaded.open(examplePath(u"calculator.rtp"_s)));
        QAStObjectManager browser(&reloaded);
        QCOMPARE(dumpAll(browser.files()), before);
        const auto* add = qobject_cast<QAStAFunctionTag*>(browser.files().first()->children().first());
        QVERIFY(add);
        QCOMPARE(add->line(), 19);
        QCOMPARE(add->implementation()->line(), 8);
        browser.sortByType();
        m_exampleBrowser->sortByType();
        QCOMPARE(texts(browser.topLevelItem(0)->child(1)), texts(m_exampleBrowser->topLevelItem(0)->child(1)));
    }

    // --- the tag filters

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
    QString examplePath(const QString& relative) const { return m_exampleDir.filePath(relative); }
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
    QTemporaryDir m_exampleDir;
    std::unique_ptr<QAStProject> m_example;
    std::unique_ptr<QAStObjectManager> m_exampleBrowser;
};

QTEST_MAIN(TestObjectManager)
#include "tst_object_manager.moc"
