#include "QAInstall.h"
#include "QARes.h"
#include "QAStData.h"
#include "QAStProjectPref.h"
#include "RecordingStudio.h"
#include "TestItems.h"

#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

// Sets (or, with a null value, unsets) an environment variable for the
// scope of the object.
class EnvironmentVariable {
public:
    EnvironmentVariable(const char* name, const QByteArray& value)
        : m_name(name), m_wasSet(qEnvironmentVariableIsSet(name)), m_old(qgetenv(name))
    {
        set(value);
    }
    ~EnvironmentVariable() { set(m_wasSet ? m_old : QByteArray()); }

private:
    void set(const QByteArray& value)
    {
        if (value.isNull())
            qunsetenv(m_name);
        else
            qputenv(m_name, value);
    }

    const char* m_name;
    bool m_wasSet;
    QByteArray m_old;
};

}

class TestServices : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();

    void consolesThroughTheHost();
    void messagesWithoutHostGoToWarnings();
    void recordingStudioAnswersFromItsQueues();

    void installDirFromEnvironment();
    void installationDirectories();
    void platformLayouts_data();
    void platformLayouts();
    void userNameFromEnvironment();
    void relativePaths_data();
    void relativePaths();
    void absolutePaths_data();
    void absolutePaths();

    void preferencesRoundTrip();
    void preferencesInTheUserConfig();
    void failedSaveIsReported();
    void tdpDirectories();
    void preferencesFromResources();

    void clipboardRoundTrip();
    void pasteNeedsAcceptance();
    void deleteHonoursTheFlag();
    void iconsByFileName();

private:
    QTemporaryDir m_configHome;
};

void TestServices::initTestCase()
{
    // Before any QSettings use, which keeps the path it first finds.
    QVERIFY(m_configHome.isValid());
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_configHome.path()));
}

void TestServices::consolesThroughTheHost()
{
    RecordingStudio studio;
    QAStData::displayMessage(QAStData::OutputConsole, QStringLiteral("out"));
    QAStData::displayMessage(QAStData::MessageConsole, QStringLiteral("msg"));
    QAStData::displayMessage(static_cast<QAStData::Console>(5), QStringLiteral("other"));
    QCOMPARE(studio.messages(0), QStringList{"out"});
    QCOMPARE(studio.messages(1), (QStringList{"msg", "other"}));

    QAStData::clearMessage(QAStData::MessageConsole);
    QVERIFY(studio.messages(1).isEmpty());
    QCOMPARE(studio.clearCount(1), 1);
    QCOMPARE(studio.clearCount(0), 0);
}

void TestServices::messagesWithoutHostGoToWarnings()
{
    {
        RecordingStudio studio;
        QCOMPARE(QAStData::studioIFace(), &studio);
    }
    QVERIFY(!QAStData::studioIFace()); // the studio uninstalled itself
    QVERIFY(!QAStData::mainWindow());
    QTest::ignoreMessage(QtWarningMsg, "100% done, %s kept");
    QAStData::displayMessage(QAStData::OutputConsole, QStringLiteral("100% done, %s kept"));
    QAStData::clearMessage(QAStData::OutputConsole);
    QCOMPARE(QAStData::port(), 0);
    QCOMPARE(QAStData::getViewerIdByName(QStringLiteral("x")), -1);
}

void TestServices::recordingStudioAnswersFromItsQueues()
{
    RecordingStudio studio;
    studio.answer(QMessageBox::No);
    const auto ask = [&studio](const QString& text) {
        return studio.question(nullptr, QStringLiteral("c"), text,
                               StudioInterface::Yes | StudioInterface::No, StudioInterface::Yes,
                               StudioInterface::Question);
    };
    QCOMPARE(ask(QStringLiteral("first?")), StudioInterface::No);
    QCOMPARE(ask(QStringLiteral("second?")), StudioInterface::Yes); // queue empty: the default
    QCOMPARE(studio.requestTexts(RecordingStudio::Request::Question), (QStringList{"first?", "second?"}));
    QCOMPARE(studio.requests().at(1).answer, QMessageBox::Yes);

    studio.cancelProgressAt(3);
    studio.startProgress(QStringLiteral("Tagging"), QStringLiteral("Abort"), 10);
    studio.setProgressValue(2);
    QVERIFY(!studio.progressWasCanceled());
    studio.setProgressValue(3);
    QVERIFY(studio.progressWasCanceled());
}

void TestServices::installDirFromEnvironment()
{
    {
        EnvironmentVariable zelta("ZELTAHOME", "/opt/zelta");
        EnvironmentVariable korvil("KORVILDIR", "/opt/korvil");
        QCOMPARE(QAStData::installDir(), QStringLiteral("/opt/zelta"));
    }
    {
        EnvironmentVariable zelta("ZELTAHOME", QByteArray());
        EnvironmentVariable korvil("KORVILDIR", "/opt/korvil");
        QCOMPARE(QAStData::installDir(), QStringLiteral("/opt/korvil"));
    }
    {
        EnvironmentVariable zelta("ZELTAHOME", QByteArray());
        EnvironmentVariable korvil("KORVILDIR", QByteArray());
        const QString beside = QDir::cleanPath(QCoreApplication::applicationDirPath()
                                               + QStringLiteral("/../share/korvil"));
        QCOMPARE(QAStData::installDir(), QFileInfo(beside).isDir() ? beside : QString());
    }
}

void TestServices::installationDirectories()
{
    EnvironmentVariable zelta("ZELTAHOME", "/opt/zelta");
    const QString os = QAInstall::osName();
    const QString sep = QAInstall::separator();
    QCOMPARE(QAStData::binaryDir(), QAInstall::binaryDir(QStringLiteral("/opt/zelta")));
    QCOMPARE(QAStData::scriptsDir(), "/opt/zelta" + sep + "scripts");
    QCOMPARE(QAStData::helpDir(), "/opt/zelta" + sep + "doc");
    QCOMPARE(QAStData::targetDir(), "/opt/zelta" + sep + "targets");
#ifndef Q_OS_WIN
    QCOMPARE(QAStData::binaryDir(), QStringLiteral("/opt/zelta/bin/intel/linux"));
    QCOMPARE(os, QStringLiteral("linux"));
#endif
}

void TestServices::platformLayouts_data()
{
    QTest::addColumn<int>("platform");
    QTest::addColumn<QString>("install");
    QTest::addColumn<QString>("osName");
    QTest::addColumn<QString>("separator");
    QTest::addColumn<QString>("binaryDir");
    QTest::addColumn<QString>("perlLib");

    QTest::newRow("windows") << int(QAInstall::Windows) << "C:\\Korvil" << "win32" << "\\"
                             << "C:\\Korvil\\bin\\intel\\win32" << "C:\\Korvil\\lib\\perl";
    QTest::newRow("posix") << int(QAInstall::Posix) << "/opt/korvil" << "linux" << "/"
                           << "/opt/korvil/bin/intel/linux" << "/opt/korvil/lib/perl";
}

void TestServices::platformLayouts()
{
    QFETCH(int, platform);
    QFETCH(QString, install);
    const auto p = static_cast<QAInstall::Platform>(platform);
    QTEST(QAInstall::osName(p), "osName");
    QTEST(QString(QAInstall::separator(p)), "separator");
    QTEST(QAInstall::binaryDir(install, p), "binaryDir");
    QTEST(QAInstall::installPath(install, QStringLiteral("lib/perl"), p), "perlLib");
}

void TestServices::userNameFromEnvironment()
{
    {
        EnvironmentVariable user("USER", "alice");
        EnvironmentVariable userName("USERNAME", "bob");
        QCOMPARE(QAStData::userName(), QStringLiteral("alice"));
    }
    EnvironmentVariable user("USER", QByteArray());
    EnvironmentVariable userName("USERNAME", "bob");
    QCOMPARE(QAStData::userName(), QStringLiteral("bob"));
}

void TestServices::relativePaths_data()
{
    QTest::addColumn<QString>("dir");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("relative");

    QTest::newRow("below") << "/p/proj" << "/p/proj/src/a.c" << "src/a.c";
    QTest::newRow("beside") << "/p/proj" << "/p/other/b.c" << "../other/b.c";
    QTest::newRow("already relative") << "/p/proj" << "src/a.c" << "src/a.c";
    QTest::newRow("no dir") << "" << "/p/a.c" << "/p/a.c";
    QTest::newRow("empty") << "/p" << "" << "";
}

void TestServices::relativePaths()
{
    QFETCH(QString, dir);
    QFETCH(QString, file);
    QTEST(QAStData::determineRelativePathFile(dir, file), "relative");
}

void TestServices::absolutePaths_data()
{
    QTest::addColumn<QString>("dir");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("absolute");

    QTest::newRow("below") << "/p/proj" << "src/a.c" << "/p/proj/src/a.c";
    QTest::newRow("up") << "/p/proj" << "../other/./b.c" << "/p/other/b.c";
    QTest::newRow("absolute cleaned") << "/p/proj" << "/q//r/../s.c" << "/q/s.c";
    QTest::newRow("empty") << "/p" << "" << "";
}

void TestServices::absolutePaths()
{
    QFETCH(QString, dir);
    QFETCH(QString, file);
    QTEST(QAStData::determineAbsolutePathFile(dir, file), "absolute");
}

void TestServices::preferencesRoundTrip()
{
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("prefs.conf"));
    QAStProjectPref written;
    written.setAutoTag(false);
    written.setCalcMet(true);
    written.setVerbose(true);
    written.setIsTestNode(true);
    written.setUseRelativePath(false);
    written.setKeepLastExecResults(false);
    written.setUseDefaultTdpDir(false);
    written.setTdpDirList({QStringLiteral("/t d p/one"), QStringLiteral("C:\\two,three")});
    written.setFileTypes({{QStringLiteral("Scripts/Perl"), QStringLiteral("*.pl;*.pm")},
                          {QStringLiteral("Data"), QStringLiteral("*.csv")}});
    written.setEncodingName(QStringLiteral("UTF-8"));
    {
        QSettings settings(file, QSettings::IniFormat);
        QVERIFY(written.save(settings));
    }

    QAStProjectPref read;
    QSettings settings(file, QSettings::IniFormat);
    read.load(settings);
    QCOMPARE(read.autoTag(), false);
    QCOMPARE(read.calcMet(), true);
    QCOMPARE(read.verbose(), true);
    QCOMPARE(read.isTestNode(), true);
    QCOMPARE(read.useRelativePath(), false);
    QCOMPARE(read.keepLastExecResults(), false);
    QCOMPARE(read.useDefaultTdpDir(), false);
    QCOMPARE(read.tdpDirList(), written.tdpDirList());
    QCOMPARE(read.fileTypes(), written.fileTypes());
    QCOMPARE(read.encodingName(), QStringLiteral("UTF-8"));

    // Saving fewer file types drops the others.
    written.setFileTypes({{QStringLiteral("Data"), QStringLiteral("*.csv")}});
    QVERIFY(written.save(settings));
    read.load(settings);
    QCOMPARE(read.fileTypes(), written.fileTypes());
}

void TestServices::preferencesInTheUserConfig()
{
    QAStProjectPref written;
    written.setCalcMet(true);
    written.setTdpDirList({QStringLiteral("/extra")});
    QVERIFY(written.save());
    QVERIFY(QFile::exists(m_configHome.filePath(QStringLiteral("Korvil/sdk110.conf"))));

    QAStProjectPref read;
    read.load();
    QVERIFY(read.calcMet());
    QCOMPARE(read.tdpDirList(), QStringList{"/extra"});
}

void TestServices::failedSaveIsReported()
{
    RecordingStudio studio;
    QTemporaryDir dir;
    QFile blocker(dir.filePath(QStringLiteral("not-a-dir")));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();

    QAStProjectPref prefs;
    prefs.setVerbose(true);
    QSettings settings(blocker.fileName() + QStringLiteral("/prefs.conf"), QSettings::IniFormat);
    QVERIFY(!prefs.save(settings));
    QVERIFY(prefs.verbose());
    QCOMPARE(studio.messages(QAStData::MessageConsole).size(), 1);
    QVERIFY(studio.messages(QAStData::MessageConsole).first().startsWith("Unable to save the preferences in "));
}

void TestServices::tdpDirectories()
{
    EnvironmentVariable zelta("ZELTAHOME", "/opt/zelta");
    QAStProjectPref p;
    p.setTdpDirList({QStringLiteral("/mine")});
    QCOMPARE(p.tdpDirectories(), (QStringList{QAStData::targetDir(), "/mine"}));
    p.setUseDefaultTdpDir(false);
    QCOMPARE(p.tdpDirectories(), QStringList{"/mine"});
}

void TestServices::preferencesFromResources()
{
    std::unique_ptr<QARes> res(QARes::readText(
        QStringLiteral("verbose = true\nautoTag = \"false\"\n"
                       "tdpDirList = ( \"/a\", \"/b\" )\nfileTypes = ( \"Perl=*.pl;*.pm\" )\n"),
        QStringLiteral("prefs.res")));
    QVERIFY(res);
    RecordingStudio studio(false);
    QAStProjectPref* prefs = QAStData::preferences();
    const bool calcMet = prefs->calcMet();
    QAStData::initialize(&studio, res.get());
    QCOMPARE(QAStData::preferenceResources(), res.get());
    QVERIFY(prefs->verbose());
    QVERIFY(!prefs->autoTag());
    QCOMPARE(prefs->calcMet(), calcMet); // absent: kept
    QCOMPARE(prefs->tdpDirList(), (QStringList{"/a", "/b"}));
    QCOMPARE(prefs->fileTypes().value(QStringLiteral("Perl")), QStringLiteral("*.pl;*.pm"));
    QAStData::initialize(nullptr);
    prefs->resetToDefaults();
}

void TestServices::clipboardRoundTrip()
{
    TestFolder original(QStringLiteral("a,<b>&c"));
    auto* leaf = new TestLeaf(QStringLiteral("leaf"), &original, nullptr);
    leaf->setExecutionResult(4);

    std::unique_ptr<QAStData> rebuilt(QAStData::stringContentToData(original.toString()));
    QVERIFY(rebuilt);
    QCOMPARE(rebuilt->metaObject()->className(), "TestFolder");
    QCOMPARE(rebuilt->name(), original.name());
    QVERIFY(!rebuilt->parent());
    QVERIFY(rebuilt->quid() != original.quid()); // a copy takes fresh numbers
    QCOMPARE(rebuilt->childCount(), 1);
    QCOMPARE(rebuilt->child()->name(), QStringLiteral("leaf"));
    QCOMPARE(rebuilt->child()->executionResult(), 4);
    QVERIFY(rebuilt->child()->quid() != leaf->quid());

    QVERIFY(!QAStData::stringContentToData(QStringLiteral("not xml <")));

    original.copy();
    QCOMPARE(QGuiApplication::clipboard()->text(), original.toString());
    std::unique_ptr<QAStData> fromClipboard(QAStData::clipboardContentToData());
    QVERIFY(fromClipboard);
    QCOMPARE(fromClipboard->name(), original.name());
}

void TestServices::pasteNeedsAcceptance()
{
    TestLeaf source(QStringLiteral("copied"));
    source.copy();

    TestItem target(QStringLiteral("target"));
    new TestItem(QStringLiteral("existing"), &target, nullptr);
    QAStData* pasted = target.paste();
    QVERIFY(pasted);
    QCOMPARE(target.last(), pasted);
    QCOMPARE(pasted->name(), QStringLiteral("copied"));

    QAStData refusing(QStringLiteral("base refuses"), QPixmap());
    QVERIFY(!refusing.paste());
    QCOMPARE(refusing.childCount(), 0);

    QGuiApplication::clipboard()->setText(QStringLiteral("plain text"));
    TestLeaf notCopyable(QStringLiteral("not copyable"));
    notCopyable.setDuplicable(false);
    notCopyable.copy();
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("plain text"));
}

void TestServices::deleteHonoursTheFlag()
{
    TestItem root(QStringLiteral("root"));
    auto* kept = new TestItem(QStringLiteral("kept"), &root, nullptr);
    auto* gone = new TestItem(QStringLiteral("gone"), &root, kept);
    kept->setDeletable(false);
    QSignalSpy destroyed(gone, &QObject::destroyed);

    QVERIFY(!kept->del());
    QVERIFY(gone->del());
    QCOMPARE(root.childCount(), 1);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(destroyed.count(), 1);
}

void TestServices::iconsByFileName()
{
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("icon.png"));
    QImage image(4, 4, QImage::Format_ARGB32);
    image.fill(Qt::red);
    QVERIFY(image.save(file));

    QAStData item(QStringLiteral("i"), QPixmap());
    QSignalSpy iconChanged(&item, &QAStData::iconChanged);
    QSignalSpy fileNameChanged(&item, &QAStData::iconFileNameChanged);
    item.setIconByFileName(file);
    QCOMPARE(fileNameChanged.count(), 1);
    QCOMPARE(iconChanged.count(), 1);
    QCOMPARE(item.icon().size(), QSize(4, 4));
    QCOMPARE(item.iconFileName(), file);
    QVERIFY(QAStData::pixmap(QStringLiteral("no such icon.png")).isNull());

    QPixmap replacement(2, 2);
    item.setIcon(replacement);
    QCOMPARE(iconChanged.count(), 2);
    QCOMPARE(item.icon().size(), QSize(2, 2));
    QCOMPARE(item.iconFileName(), file); // the file name written is unchanged
}

QTEST_MAIN(TestServices)
#include "tst_services.moc"
