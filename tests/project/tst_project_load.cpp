#include "QAStConfiguration.h"
#include "QAStDataUndoActionManager.h"
#include "QAStFile.h"
#include "QAStNodeApplication.h"
#include "QAStNodeSource.h"
#include "QAStProject.h"
#include "QAStRootFolder.h"
#include "QAStSubProject.h"
#include "RecordingStudio.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QDir>
#include <QDirIterator>
#include <QDomDocument>
#include <QFile>
#include <QProcess>
#include <QSet>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

#include <unistd.h>

namespace {

using TestFiles::readFile;
using TestFiles::writeFile;

const QByteArray header = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                          "<!DOCTYPE project SYSTEM \"project.dtd\">\n";

// Copies a directory tree.
// The class names of every item below root, sub-projects' items included.
QSet<QString> classesBelow(const QAStData* root)
{
    QSet<QString> classes;
    for (const QAStData* c = root->child(); c; c = c->next()) {
        classes.insert(QLatin1String(c->metaObject()->className()));
        classes.unite(classesBelow(c));
    }
    return classes;
}

// The lines of a file but its DOCTYPE, which names the installation.
QByteArrayList withoutDoctype(const QByteArray& bytes)
{
    QByteArrayList lines = bytes.split('\n');
    lines.removeIf([](const QByteArray& line) { return line.startsWith("<!DOCTYPE"); });
    return lines;
}

}

class TestProjectLoad : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void loadMessages_data();
    void loadMessages();
    void unreadableFile();
    void malformedXmlGivesTheParserPlace();
    void batchModeShowsNoBox();

    void missingObjectInformationFile_data();
    void missingObjectInformationFile();
    void loadedSignalAndQuietLoad();
    void reloadReadsTheFileAgain();

    void exampleProjectLoadsClean();
    void exampleProjectBuilds();

private:
    std::unique_ptr<RecordingStudio> m_studio;
    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestProjectLoad::initTestCase()
{
    QVERIFY(QAStConfiguration::initialize(nullptr, nullptr));
}

void TestProjectLoad::init()
{
    m_studio = std::make_unique<RecordingStudio>();
    m_dir = std::make_unique<QTemporaryDir>();
    QAStProject::setModeBatch(false);
}

void TestProjectLoad::cleanup()
{
    QAStProject::setModeBatch(false);
    m_studio.reset();
}

void TestProjectLoad::loadMessages_data()
{
    QTest::addColumn<bool>("exists");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("message");

    QTest::newRow("missing file") << false << QByteArray()
                                  << QStringLiteral("%1\n\nThe project file don't exist.");
    QTest::newRow("no marker line") << true << QByteArray("<project>\n</project>\nPROJECT =\n")
                                    << QStringLiteral("%1\n\nThis file content is not a valid project file");
    QTest::newRow("empty file") << true << QByteArray()
                                << QStringLiteral("%1\n\nThis file content is not a valid project file");
    QTest::newRow("no group")
        << true << header + "<project>\n  <version_file>1</version_file>\n</project>\n"
        << QStringLiteral("%1\n\nIt is a bad project file.\nThe reason is:\nUnable to find tag group\n");
    QTest::newRow("other root")
        << true << header + "<objects/>\n"
        << QStringLiteral("%1\n\nIt is a bad project file.\nThe reason is:\nWait for tag project and read objects\n");
    QTest::newRow("older format, not a group")
        << true << QByteArray("PROJECT = \"calc\"\n")
        << QStringLiteral("%1\n\nIt is a bad project file\n%1:1: PROJECT is not a group\n");
}

void TestProjectLoad::loadMessages()
{
    QFETCH(bool, exists);
    QFETCH(QByteArray, content);
    QFETCH(QString, message);
    const QString file = m_dir->filePath(QStringLiteral("p.rtp"));
    if (exists)
        writeFile(file, content);

    QAStProject p(QStringLiteral("p"), QPixmap());
    QSignalSpy loaded(&p, &QAStProject::loaded);
    QVERIFY(!p.open(file));
    QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Warning), QStringList{message.arg(file)});
    QVERIFY(!p.isOpen());
    QCOMPARE(p.childCount(), 0);
    QCOMPARE(loaded.count(), 0);
    QVERIFY(!p.signalsBlocked());
}

void TestProjectLoad::unreadableFile()
{
    if (::geteuid() == 0)
        QSKIP("root reads any file");
    // Even without a marker line: the file cannot be read to look for one.
    const QString file = m_dir->filePath(QStringLiteral("locked.rtp"));
    writeFile(file, "no marker here\n");
    QFile::setPermissions(file, QFileDevice::WriteOwner);
    QAStProject p(QStringLiteral("p"), QPixmap());
    QVERIFY(!p.open(file));
    QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Warning),
             QStringList{file + QStringLiteral("\n\nYou don't have the read access right")});
}

void TestProjectLoad::malformedXmlGivesTheParserPlace()
{
    const QByteArray content = header + "<project>\n  <group>\n</project>\n";
    const QString file = m_dir->filePath(QStringLiteral("broken.rtp"));
    writeFile(file, content);
    QDomDocument document;
    QString parserMessage;
    int line = 0;
    int column = 0;
    QVERIFY(!document.setContent(content, &parserMessage, &line, &column));
    QCOMPARE(line, 5);

    QAStProject p(QStringLiteral("p"), QPixmap());
    QVERIFY(!p.open(file));
    QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Warning),
             QStringList{file + QStringLiteral("\n\nUnable to read the project :%1 at line #5 column #%2")
                                    .arg(parserMessage)
                                    .arg(column)});
}

void TestProjectLoad::batchModeShowsNoBox()
{
    QAStProject::setModeBatch(true);
    const QString file = m_dir->filePath(QStringLiteral("none.rtp"));
    QAStProject p(QStringLiteral("p"), QPixmap());
    QVERIFY(!p.open(file));
    QVERIFY(m_studio->requests().isEmpty());
    QCOMPARE(m_studio->messages(QAStData::MessageConsole),
             QStringList{file + QStringLiteral("\n\nThe project file don't exist.")});
}

void TestProjectLoad::missingObjectInformationFile_data()
{
    QTest::addColumn<bool>("batch");
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("rebuilt");
    QTest::newRow("no") << false << int(QMessageBox::No) << false;
    QTest::newRow("yes") << false << int(QMessageBox::Yes) << true;
    QTest::newRow("batch") << true << int(QMessageBox::No) << true;
}

void TestProjectLoad::missingObjectInformationFile()
{
    QFETCH(bool, batch);
    QFETCH(int, answer);
    QFETCH(bool, rebuilt);
    const QString file = m_dir->filePath(QStringLiteral("calc.rtp"));
    {
        QAStProject p(QStringLiteral("calc"), QPixmap());
        QVERIFY(p.create(file));
        auto* app = new QAStNodeApplication(QStringLiteral("calc"), QPixmap(), &p, nullptr);
        auto* main = new QAStNodeSource(QStringLiteral("main.c"), QPixmap(), app, nullptr);
        main->setFileKey(QStringLiteral("src/main.c"));
        QVERIFY(p.save());
    }
    const QString information = m_dir->filePath(QStringLiteral("calc.inf"));
    QVERIFY(QFile::remove(information));
    m_studio->answer(QMessageBox::StandardButton(answer));
    QAStProject::setModeBatch(batch);

    QAStProject p(QStringLiteral("x"), QPixmap());
    QVERIFY(p.open(file));
    const QString question = information + QStringLiteral(
        "\n\nUnable to open the project Object Information File\nDo you want to create it automatically?");
    if (batch) {
        QVERIFY(m_studio->requests().isEmpty());
        QVERIFY(m_studio->messages(QAStData::MessageConsole).contains(question));
    } else {
        QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Question), QStringList{question});
    }
    QCOMPARE(p.files().size(), rebuilt ? 1 : 0);
    if (rebuilt)
        QVERIFY(p.file(m_dir->filePath(QStringLiteral("src/main.c"))));
    QVERIFY(!QFile::exists(information)); // made when the project is saved
}

void TestProjectLoad::loadedSignalAndQuietLoad()
{
    const QString file = m_dir->filePath(QStringLiteral("calc.rtp"));
    {
        QAStProject p(QStringLiteral("calc"), QPixmap());
        QVERIFY(p.create(file));
        new QAStNodeApplication(QStringLiteral("calc"), QPixmap(), &p, nullptr);
        QVERIFY(p.save());
    }
    QAStData::undoManager()->clear();
    QAStData::appendLoadReport(QStringLiteral("left from before\n"));

    QAStProject p(QStringLiteral("x"), QPixmap());
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
}

void TestProjectLoad::reloadReadsTheFileAgain()
{
    const QString file = m_dir->filePath(QStringLiteral("calc.rtp"));
    QAStProject p(QStringLiteral("calc"), QPixmap());
    QVERIFY(p.create(file));
    p.addConfiguration(QStringLiteral("Debug"));
    new QAStNodeApplication(QStringLiteral("saved"), QPixmap(), &p, nullptr);
    QVERIFY(p.save());
    new QAStNodeApplication(QStringLiteral("not saved"), QPixmap(), &p, p.last());

    QVERIFY(p.reload());
    QCOMPARE(p.childCount(), 1);
    QCOMPARE(p.child()->name(), QStringLiteral("saved"));
    QCOMPARE(p.configurations(), QStringList{QStringLiteral("Debug")});

    // Closed, the project keeps its path but never writes it empty.
    const QByteArray saved = readFile(file);
    p.close();
    QVERIFY(!p.isOpen());
    QCOMPARE(p.childCount(), 0);
    QCOMPARE(p.path(), file);
    QVERIFY(!p.save());
    QCOMPARE(readFile(file), saved);
}

void TestProjectLoad::exampleProjectLoadsClean()
{
    const QString example = TestPaths::sourceDir() + QStringLiteral("/examples/calculator");
    TestFiles::copyTree(example, m_dir->path());
    const QString file = m_dir->filePath(QStringLiteral("calculator.rtp"));

    QAStProject p(QStringLiteral("x"), QPixmap());
    QVERIFY(p.open(file));
    QCOMPARE(QAStData::loadReport(), QString());
    QVERIFY(m_studio->requests().isEmpty());
    QCOMPARE(p.configurations(), (QStringList{QStringLiteral("Debug"), QStringLiteral("Release")}));
    const QSet<QString> classes = classesBelow(&p);
    for (const char* kind : {"QAStNodeApplication", "QAStNodeLibrary", "QAStNodeSource",
                             "QAStNodeUnitTesting", "QAStNodeUnitTestingScript", "QAStNodeSystemTesting",
                             "QAStNodeSystemTestingScript", "QAStNodeVirtualTester", "QAStNodeGroup",
                             "QAStSubProject"})
        QVERIFY2(classes.contains(QLatin1String(kind)), kind);
    const QList<QAStData*> subs = p.childrenOfClass("QAStSubProject", true);
    QCOMPARE(subs.size(), 1);
    auto* sub = static_cast<QAStSubProject*>(subs.first());
    QVERIFY(sub->isOpen());
    QCOMPARE(sub->currentConfigurationName(), p.currentConfigurationName());
    QVERIFY(!p.rootFolder()->childItems().isEmpty());
    for (const QAStFile* f : p.files())
        QVERIFY2(QFile::exists(f->filePath()), qPrintable(f->filePath()));

    // Saved again, every file is what was shipped, but for the DOCTYPE
    // line that names this installation.
    QVERIFY(p.save());
    QDirIterator it(example, {QStringLiteral("*.rtp"), QStringLiteral("*.inf")}, QDir::Files,
                    QDirIterator::Subdirectories);
    int compared = 0;
    while (it.hasNext()) {
        const QString shipped = it.next();
        const QString saved = m_dir->filePath(QDir(example).relativeFilePath(shipped));
        QCOMPARE(withoutDoctype(readFile(saved)), withoutDoctype(readFile(shipped)));
        ++compared;
    }
    QCOMPARE(compared, 4);
}

void TestProjectLoad::exampleProjectBuilds()
{
    if (QStandardPaths::findExecutable(QStringLiteral("make")).isEmpty()
        || QStandardPaths::findExecutable(QStringLiteral("gcc")).isEmpty()
        || QStandardPaths::findExecutable(QStringLiteral("g++")).isEmpty())
        QSKIP("make, gcc and g++ are needed to build the example");
    TestFiles::copyTree(TestPaths::sourceDir() + QStringLiteral("/examples/calculator"), m_dir->path());
    QProcess make;
    make.setProcessChannelMode(QProcess::MergedChannels);
    make.start(QStringLiteral("make"), {QStringLiteral("-C"), m_dir->path(), QStringLiteral("check")});
    QVERIFY(make.waitForFinished(120000));
    QVERIFY2(make.exitStatus() == QProcess::NormalExit && make.exitCode() == 0,
             make.readAll().constData());
}

QTEST_MAIN(TestProjectLoad)
#include "tst_project_load.moc"
