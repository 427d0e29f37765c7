// The tag browser over the example project, analysed through the real
// tagging driver, in its three layouts.
#include "QAStAFunctionTag.h"
#include "QAStConfiguration.h"
#include "QAStFile.h"
#include "QAStFileAnalyse.h"
#include "QAStObjectManager.h"
#include "QAStProject.h"
#include "RecordingStudio.h"
#include "TagFixtures.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QApplication>
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

}

class TestObjectManager : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        m_studio = std::make_unique<RecordingStudio>();
        QAStProject::setModeBatch(true);
        QVERIFY(QAStConfiguration::initialize(m_studio.get(), nullptr));
        TestFiles::copyTree(TestPaths::sourceDir() + u"/examples/calculator"_s, m_dir.path());
        m_project = std::make_unique<QAStProject>(u"calculator"_s, QPixmap());
        QVERIFY(m_project->open(path(u"calculator.rtp"_s)));
        m_project->setSortMethod(QAStObjectManager::SortByType);
        m_browser = std::make_unique<QAStObjectManager>(m_project.get());
    }

    void cleanupTestCase()
    {
        m_browser.reset();
        m_project.reset();
        QAStProject::setModeBatch(false);
    }

    void analysingTheExampleFillsTheBrowser()
    {
        QCOMPARE(m_browser->sortMode(), int(QAStObjectManager::SortByType));
        const QList<QAStFile*> files = m_browser->files();
        QCOMPARE(files.size(), 7);
        QCOMPARE(files.last()->name(), u"printer.c"_s);
        QAStFileAnalyse run(files);
        QSignalSpy finished(&run, &QAStFileAnalyse::finished);
        QVERIFY(run.start());
        QVERIFY(finished.wait(60000));
        QCOMPARE(run.analysedFiles().size(), 6);
        QVERIFY(run.failedFiles().isEmpty());
        QCOMPARE(topTexts(*m_browser), QStringList{"Test Items"});
        const QTreeWidgetItem* top = m_browser->topLevelItem(0);
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
        m_browser->sortModified(QAStObjectManager::SortByFile);
        QCOMPARE(topTexts(*m_browser), (QStringList{"calc.h", "calc.c", "main.cpp", "test_calc.c",
                                                    "printer.h", "printer.c"}));
        const QTreeWidgetItem* main = topItem(*m_browser, u"main.cpp"_s);
        QCOMPARE(texts(main), (QStringList{"(anonymous)", "main(int argc,char ** argv)"}));
        QCOMPARE(texts(main->child(0)), QStringList{"evaluate(const std::string & expression)"});
    }

    void alphabetical()
    {
        m_browser->sortModified(QAStObjectManager::SortAlpha);
        QCOMPARE(topTexts(*m_browser), (QStringList{"calc.c", "calc.h", "main.cpp", "printer.c",
                                                    "printer.h", "test_calc.c"}));
        QCOMPARE(texts(topItem(*m_browser, u"calc.c"_s)),
                 (QStringList{"calc_add" + calcSignature, "calc_divide" + calcSignature,
                              "calc_evaluate(const char * expression,long * result)",
                              "calc_multiply" + calcSignature, "calc_status_text(int status)",
                              "calc_subtract" + calcSignature, "read_number(const char ** text,long * value)"}));
        QCOMPARE(texts(topItem(*m_browser, u"main.cpp"_s)),
                 (QStringList{"(anonymous)", "main(int argc,char ** argv)"}));
    }

    void sortModeIsKeptInTheProject()
    {
        m_browser->sortByType();
        QCOMPARE(m_project->sortMethod(), 1);
        m_browser->sortModified(7);
        QCOMPARE(m_browser->sortMode(), 1);
        QCOMPARE(topTexts(*m_browser), QStringList{"Test Items"});
        m_browser->sortAlpha();
        QCOMPARE(m_project->sortMethod(), 2);
        QAStObjectManager other(m_project.get());
        QCOMPARE(other.sortMode(), 2);
    }

    void filterKeepsTheAcceptedTags()
    {
        m_browser->sortModified(QAStObjectManager::SortByFile);
        // A refused scope hands its accepted tags to the item above it.
        m_browser->setItemFilter([](const QAStATag* tag) {
            return tag->name() == QLatin1String("evaluate") || tag->name() == QLatin1String("main");
        });
        QCOMPARE(topTexts(*m_browser), (QStringList{"main.cpp", "test_calc.c"}));
        QCOMPARE(texts(topItem(*m_browser, u"main.cpp"_s)),
                 (QStringList{"evaluate(const std::string & expression)", "main(int argc,char ** argv)"}));
        m_browser->sortByType();
        const QTreeWidgetItem* top = m_browser->topLevelItem(0);
        QCOMPARE(texts(top->child(1)), (QStringList{"(anonymous)::evaluate(const std::string & expression)",
                                                    "main(int argc,char ** argv)",
                                                    "main(int argc,char ** argv)"}));
        QCOMPARE(texts(top->child(2)), QStringList());
        m_browser->setItemFilter(nullptr);
        QCOMPARE(texts(m_browser->topLevelItem(0)->child(2)), QStringList{"(anonymous)"});
    }

    void itemsLeadToTheirTags()
    {
        m_browser->sortModified(QAStObjectManager::SortByFile);
        QTreeWidgetItem* calcC = topItem(*m_browser, u"calc.c"_s);
        QAStATag* file = m_browser->tagOf(calcC);
        QVERIFY(qobject_cast<QAStFile*>(file));
        QTreeWidgetItem* first = calcC->child(0);
        QAStATag* add = m_browser->tagOf(first);
        QCOMPARE(add->parent(), file);
        QCOMPARE(m_browser->itemOf(add), first);
        emit m_browser->itemDoubleClicked(first, 0);
        QCOMPARE(m_studio->editedFiles().last(), file->filePath() + u":8"_s);
        // A header item stands for no tag.
        m_browser->sortByType();
        QVERIFY(!m_browser->tagOf(m_browser->topLevelItem(0)));
    }

    void rebuiltWhenATaggingEnds()
    {
        m_browser->sortModified(QAStObjectManager::SortByFile);
        TestFiles::writeFile(path(u"src/extra.c"_s), "int extra(int x) { return x; }\n");
        QAStFile* extra = m_project->addFile(path(u"src/extra.c"_s));
        QVERIFY(!topItem(*m_browser, u"extra.c"_s));
        QSignalSpy ended(extra, &QAStFile::taggingTerminated);
        QVERIFY(extra->taggingInformation(true));
        QVERIFY(ended.wait(20000));
        QTreeWidgetItem* item = topItem(*m_browser, u"extra.c"_s);
        QVERIFY(item);
        QCOMPARE(texts(item), QStringList{"extra(int x)"});
        // A file of another tree does not disturb the browser.
        QAStProject stranger(u"stranger"_s, QPixmap());
        QAStFile* elsewhere = stranger.addFile(path(u"src/extra.c"_s));
        item->setData(0, Qt::UserRole, u"kept"_s);
        QVERIFY(elsewhere->taggingInformation(false));
        QCOMPARE(topItem(*m_browser, u"extra.c"_s)->data(0, Qt::UserRole).toString(), u"kept"_s);
    }

    void tagsSurviveSaveAndReload()
    {
        const QStringList before = dumpAll(m_browser->files());
        QVERIFY(before.contains(u"  function evaluate(const std::string & expression)"_s));
        QVERIFY(m_project->save());
        QVERIFY(TestFiles::readFile(path(u"sub/printer/printer.inf"_s)).contains("<function>"));
        QAStProject reloaded(u"calculator"_s, QPixmap());
        QVERIFY(reloaded.open(path(u"calculator.rtp"_s)));
        QAStObjectManager browser(&reloaded);
        QCOMPARE(dumpAll(browser.files()), before);
        const auto* add = qobject_cast<QAStAFunctionTag*>(browser.files().first()->children().first());
        QVERIFY(add);
        QCOMPARE(add->line(), 19);
        QCOMPARE(add->implementation()->line(), 8);
        browser.sortByType();
        m_browser->sortByType();
        QCOMPARE(texts(browser.topLevelItem(0)->child(1)), texts(m_browser->topLevelItem(0)->child(1)));
    }

private:
    QString path(const QString& relative) const { return m_dir.filePath(relative); }

    std::unique_ptr<RecordingStudio> m_studio;
    QTemporaryDir m_dir;
    std::unique_ptr<QAStProject> m_project;
    std::unique_ptr<QAStObjectManager> m_browser;
};

QTEST_MAIN(TestObjectManager)
#include "tst_object_manager.moc"
