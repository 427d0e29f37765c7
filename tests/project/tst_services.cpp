#include "QARes.h"
#include "QAStData.h"
#include "QAStProjectPref.h"
#include "RecordingStudio.h"
#include "TestEnvironment.h"
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

using namespace Qt::StringLiterals;

namespace {

// A function of the library called with two environment variables set
// (or unset, for a null pointer).
template <class F>
QString with(const char* first, const char* firstValue, const char* second, const char* secondValue, F function)
{
    EnvironmentVariable a(first, QByteArray(firstValue));
    EnvironmentVariable b(second, QByteArray(secondValue));
    return function();
}

}

class TestServices : public QObject {
    Q_OBJECT

    QTemporaryDir m_configHome;

private slots:
    void initTestCase()
    {
        // Before any QSettings use, which keeps the path it first finds.
        QVERIFY(m_configHome.isValid());
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_configHome.path()));
    }

    void consolesThroughTheHost()
    {
        RecordingStudio studio;
        QAStData::displayMessage(QAStData::OutputConsole, u"out"_s);
        QAStData::displayMessage(QAStData::MessageConsole, u"msg"_s);
        QAStData::displayMessage(static_cast<QAStData::Console>(5), u"other"_s);
        QCOMPARE(studio.messages(0), QStringList{"out"});
        QCOMPARE(studio.messages(1), (QStringList{"msg", "other"}));

        QAStData::clearMessage(QAStData::MessageConsole);
        QVERIFY(studio.messages(1).isEmpty());
        QCOMPARE(studio.clearCount(1), 1);
    }

    void messagesWithoutHostGoToWarnings()
    {
        QAStData::initialize(nullptr);
        QVERIFY(!QAStData::mainWindow());
        QTest::ignoreMessage(QtWarningMsg, "100% done, %s kept");
        QAStData::displayMessage(QAStData::OutputConsole, u"100% done, %s kept"_s);
        QAStData::clearMessage(QAStData::OutputConsole);
        QCOMPARE(QAStData::port(), 0);
        QCOMPARE(QAStData::getViewerIdByName(u"x"_s), -1);
    }

    // The installation: ZELTAHOME, else KORVILDIR, else share/korvil beside
    // the program when it is there; the user: USER, else USERNAME.
    void installationAndUserFromEnvironment()
    {
        const auto installDir = [] { return QAStData::installDir(); };
        QCOMPARE(with("ZELTAHOME", "/opt/zelta", "KORVILDIR", "/opt/korvil", installDir), u"/opt/zelta"_s);
        QCOMPARE(with("ZELTAHOME", nullptr, "KORVILDIR", "/opt/korvil", installDir), u"/opt/korvil"_s);
        const QString beside = QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/../share/korvil"_s);
        QCOMPARE(with("ZELTAHOME", nullptr, "KORVILDIR", nullptr, installDir),
                 QFileInfo(beside).isDir() ? beside : QString());
        const auto userName = [] { return QAStData::userName(); };
        QCOMPARE(with("USER", "alice", "USERNAME", "bob", userName), u"alice"_s);
        QCOMPARE(with("USER", nullptr, "USERNAME", "bob", userName), u"bob"_s);
    }

    // A file against a directory, made relative and made absolute.
    void paths_data()
    {
        QTest::addColumn<QString>("dir");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("relative");
        QTest::addColumn<QString>("absolute");
        QTest::newRow("below") << "/p/proj" << "/p/proj/src/a.c" << "src/a.c" << "/p/proj/src/a.c";
        QTest::newRow("already relative") << "/p/proj" << "src/a.c" << "src/a.c" << "/p/proj/src/a.c";
        QTest::newRow("beside") << "/p/proj" << "/p/other/b.c" << "../other/b.c" << "/p/other/b.c";
        QTest::newRow("up") << "/p/proj" << "../other/./b.c" << "../other/./b.c" << "/p/other/b.c";
        QTest::newRow("absolute cleaned") << "/p/proj" << "/q//r/../s.c" << "../../q/s.c" << "/q/s.c";
        QTest::newRow("no dir") << "" << "/p/a.c" << "/p/a.c" << "/p/a.c";
        QTest::newRow("empty") << "/p" << "" << "" << "";
    }
    void paths()
    {
        QFETCH(QString, dir);
        QFETCH(QString, file);
        QTEST(QAStData::determineRelativePathFile(dir, file), "relative");
        QTEST(QAStData::determineAbsolutePathFile(dir, file), "absolute");
    }

    void preferencesRoundTrip()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(u"prefs.conf"_s);
        QAStProjectPref written;
        written.setAutoTag(false);
        written.setCalcMet(true);
        written.setVerbose(true);
        written.setIsTestNode(true);
        written.setUseRelativePath(false);
        written.setKeepLastExecResults(false);
        written.setUseDefaultTdpDir(false);
        written.setTdpDirList({u"/t d p/one"_s, u"C:\\two,three"_s});
        written.setFileTypes({{u"Scripts/Perl"_s, u"*.pl;*.pm"_s}, {u"Data"_s, u"*.csv"_s}});
        written.setEncodingName(u"UTF-8"_s);
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
        QCOMPARE(read.encodingName(), u"UTF-8"_s);

        // Saving fewer file types drops the others.
        written.setFileTypes({{u"Data"_s, u"*.csv"_s}});
        QVERIFY(written.save(settings));
        read.load(settings);
        QCOMPARE(read.fileTypes(), written.fileTypes());
    }

    void preferencesInTheUserConfig()
    {
        QAStProjectPref written;
        written.setCalcMet(true);
        written.setTdpDirList({u"/extra"_s});
        QVERIFY(written.save());
        QVERIFY(QFile::exists(m_configHome.filePath(u"Korvil/sdk110.conf"_s)));

        QAStProjectPref read;
        read.load();
        QVERIFY(read.calcMet());
        QCOMPARE(read.tdpDirList(), QStringList{"/extra"});
    }

    void failedSaveIsReported()
    {
        RecordingStudio studio;
        QTemporaryDir dir;
        QFile blocker(dir.filePath(u"not-a-dir"_s));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();

        QAStProjectPref prefs;
        prefs.setVerbose(true);
        QSettings settings(blocker.fileName() + u"/prefs.conf"_s, QSettings::IniFormat);
        QVERIFY(!prefs.save(settings));
        QVERIFY(prefs.verbose());
        QCOMPARE(studio.messages(QAStData::MessageConsole).size(), 1);
        QVERIFY(studio.messages(QAStData::MessageConsole).first().startsWith("Unable to save the preferences in "));
    }

    void tdpDirectories()
    {
        EnvironmentVariable zelta("ZELTAHOME", "/opt/zelta");
        QAStProjectPref p;
        p.setTdpDirList({u"/mine"_s});
        QCOMPARE(p.tdpDirectories(), (QStringList{QAStData::targetDir(), "/mine"}));
        p.setUseDefaultTdpDir(false);
        QCOMPARE(p.tdpDirectories(), QStringList{"/mine"});
    }

    void preferencesFromResources()
    {
        std::unique_ptr<QARes> res(QARes::readText(u"verbose = true\nautoTag = \"false\"\n"
                                                   "tdpDirList = ( \"/a\", \"/b\" )\nfileTypes = ( \"Perl=*.pl;*.pm\" )\n"_s,
                                                   u"prefs.res"_s));
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
        QCOMPARE(prefs->fileTypes().value(u"Perl"_s), u"*.pl;*.pm"_s);
        QAStData::initialize(nullptr);
        prefs->resetToDefaults();
    }

    void clipboardRoundTrip()
    {
        TestFolder original(u"a,<b>&c"_s);
        auto* leaf = new TestLeaf(u"leaf"_s, &original, nullptr);
        leaf->setExecutionResult(4);

        std::unique_ptr<QAStData> rebuilt(QAStData::stringContentToData(original.toString()));
        QVERIFY(rebuilt);
        QCOMPARE(rebuilt->metaObject()->className(), "TestFolder");
        QCOMPARE(rebuilt->name(), original.name());
        QVERIFY(!rebuilt->parent());
        QVERIFY(rebuilt->quid() != original.quid()); // a copy takes fresh numbers
        QCOMPARE(rebuilt->childCount(), 1);
        QCOMPARE(rebuilt->child()->name(), u"leaf"_s);
        QCOMPARE(rebuilt->child()->executionResult(), 4);
        QVERIFY(rebuilt->child()->quid() != leaf->quid());

        QVERIFY(!QAStData::stringContentToData(u"not xml <"_s));
    }

    // Pasted where the target accepts it, last; copied only when it may be;
    // deleted only when it may be.
    void pasteCopyAndDeleteHonourTheFlags()
    {
        TestLeaf source(u"copied"_s);
        source.copy();

        TestItem target(u"target"_s);
        auto* kept = new TestItem(u"existing"_s, &target, nullptr);
        QAStData* pasted = target.paste();
        QVERIFY(pasted);
        QCOMPARE(target.last(), pasted);
        QCOMPARE(pasted->name(), u"copied"_s);

        QAStData refusing(u"base refuses"_s, QPixmap());
        QVERIFY(!refusing.paste());
        QCOMPARE(refusing.childCount(), 0);

        QGuiApplication::clipboard()->setText(u"plain text"_s);
        TestLeaf notCopyable(u"not copyable"_s);
        notCopyable.setDuplicable(false);
        notCopyable.copy();
        QCOMPARE(QGuiApplication::clipboard()->text(), u"plain text"_s);

        kept->setDeletable(false);
        QSignalSpy destroyed(pasted, &QObject::destroyed);
        QVERIFY(!kept->del());
        QVERIFY(pasted->del());
        QCOMPARE(target.childCount(), 1);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(destroyed.count(), 1);
    }

    void iconsByFileName()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(u"icon.png"_s);
        QImage image(4, 4, QImage::Format_ARGB32);
        image.fill(Qt::red);
        QVERIFY(image.save(file));

        QAStData item(u"i"_s, QPixmap());
        QSignalSpy iconChanged(&item, &QAStData::iconChanged);
        QSignalSpy fileNameChanged(&item, &QAStData::iconFileNameChanged);
        item.setIconByFileName(file);
        QCOMPARE(fileNameChanged.count(), 1);
        QCOMPARE(iconChanged.count(), 1);
        QCOMPARE(item.icon().size(), QSize(4, 4));
        QCOMPARE(item.iconFileName(), file);
        QVERIFY(QAStData::pixmap(u"no such icon.png"_s).isNull());

        QPixmap replacement(2, 2);
        item.setIcon(replacement);
        QCOMPARE(iconChanged.count(), 2);
        QCOMPARE(item.icon().size(), QSize(2, 2));
        QCOMPARE(item.iconFileName(), file); // the file name written is unchanged
    }
};

QTEST_MAIN(TestServices)
#include "tst_services.moc"
