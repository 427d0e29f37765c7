// What a user wrote survives a load and a save: order, names, values and
// settings, byte for byte, whatever characters they hold and whether or
// not the settings descriptor can be loaded.
#include "QAStAFunctionTag.h"
#include "QAStConfiguration.h"
#include "QAStFile.h"
#include "QAStFolder.h"
#include "QAStNodeGroup.h"
#include "QAStNodeSystemTesting.h"
#include "QAStNodeUser.h"
#include "QAStProject.h"
#include "QAStRootFolder.h"
#include "RecordingStudio.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QDir>
#include <QDirIterator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

using TestFiles::readFile;

// Texts a user can type that the XML form must carry: blanks only, line
// ends of every kind, control characters, the encoding's own escapes.
const QStringList hostileTexts = {
    QStringLiteral("   "),
    QStringLiteral("a\r\nb\rc"),
    QStringLiteral("bell\x07 esc\x1b[0m"),
    QStringLiteral("#comma# #x41# a,b <c> & \"d\" 'e'"),
    QStringLiteral("\t"),
    QString::fromUtf8("Gr\xC3\xB6\xC3\x9F" "e \xF0\x9F\x98\x80"),
};

// Every file below dir with its bytes, by relative path.
QMap<QString, QByteArray> snapshot(const QString& dir)
{
    QMap<QString, QByteArray> files;
    QDirIterator it(dir, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        files.insert(QDir(dir).relativeFilePath(path), readFile(path));
    }
    return files;
}

// Children by name, nested ones in brackets.
QString shape(const QAStData* item)
{
    QStringList parts;
    for (const QAStData* c = item->child(); c; c = c->next())
        parts << c->name() + (c->child() ? QLatin1Char('[') + shape(c) + QLatin1Char(']') : QString());
    return parts.join(QLatin1Char('|'));
}

// Points the installation at dir while it lives.
class InstallDirScope {
public:
    explicit InstallDirScope(const QString& dir) : m_saved(qgetenv("ZELTAHOME"))
    {
        qputenv("ZELTAHOME", dir.toLocal8Bit());
    }
    ~InstallDirScope() { qputenv("ZELTAHOME", m_saved); }

private:
    QByteArray m_saved;
};

}

class TestRoundTrips : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void exampleIsByteStable();
    void sortedAndHostileProjectIsByteStable();
    void settingsSurviveAMissingDescriptor();
    void undescribedSettingsAreKept();

private:
    // Opens file, checks its load report is empty, saves it.
    static void openAndSave(const QString& file);

    std::unique_ptr<RecordingStudio> m_studio;
    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestRoundTrips::init()
{
    QAStConfiguration::initialize(nullptr, nullptr);
    QVERIFY(QAStConfiguration::propertyDescriptor());
    m_studio = std::make_unique<RecordingStudio>();
    m_dir = std::make_unique<QTemporaryDir>();
    QAStProject::setModeBatch(false);
}

void TestRoundTrips::cleanup()
{
    m_studio.reset();
}

void TestRoundTrips::openAndSave(const QString& file)
{
    QAStProject project(QStringLiteral("p"), QPixmap());
    QVERIFY(project.open(file));
    QCOMPARE(QAStData::loadReport(), QString());
    QVERIFY(project.save());
}

// The example, its sub-project and both file trees, as they are shipped
// but for the DOCTYPE line, which names the installation in use.
void TestRoundTrips::exampleIsByteStable()
{
    TestFiles::copyTree(TestPaths::sourceDir() + QStringLiteral("/examples/calculator"), m_dir->path());
    const QString file = m_dir->filePath(QStringLiteral("calculator.rtp"));
    const auto withoutDoctype = [](QMap<QString, QByteArray> files) {
        static const QRegularExpression doctype(QStringLiteral("<!DOCTYPE [^\n]*\n"));
        for (QByteArray& bytes : files)
            bytes = QString::fromUtf8(bytes).remove(doctype).toUtf8();
        return files;
    };
    const auto shipped = snapshot(m_dir->path());
    openAndSave(file);
    const auto saved = snapshot(m_dir->path());
    QCOMPARE(withoutDoctype(saved), withoutDoctype(shipped));
    openAndSave(file);
    QCOMPARE(snapshot(m_dir->path()), saved);
}

void TestRoundTrips::sortedAndHostileProjectIsByteStable()
{
    const QString file = m_dir->filePath(QStringLiteral("hostile.rtp"));
    QString expectedShape;
    QString expectedFiles;
    {
        QAStProject project(QStringLiteral("hostile"), QPixmap());
        QVERIFY(project.create(file));
        QAStConfiguration* debug = project.addConfiguration(QStringLiteral("Debug"));
        debug->setProperty(QStringLiteral("cflags"), hostileTexts.join(QLatin1Char('\n')));
        debug->setProperty(QStringLiteral("ge_incdir"), hostileTexts);
        project.setCurrentConfigurationName(QStringLiteral("Debug"));

        auto* sorted = new QAStNodeGroup(QStringLiteral("sorted"), QPixmap(), &project, nullptr);
        for (const QString& name : QStringList{QStringLiteral("c"), QStringLiteral("a")} + hostileTexts)
            new QAStNodeUser(name, QPixmap(), sorted, sorted->last());
        sorted->setAlphabeticallySorted(true);
        auto* user = static_cast<QAStNodeUser*>(sorted->child());
        user->setPerlScriptAfterChild(hostileTexts.join(QLatin1Char(';')));

        auto* system = new QAStNodeSystemTesting(QStringLiteral("system"), QPixmap(), &project, sorted);
        QAStNodeSystemTesting::Deployment deployment;
        deployment.vtNodeName = hostileTexts.at(1);
        deployment.hostIp = hostileTexts.at(4) + QStringLiteral("\"\n");
        deployment.startRoutine = hostileTexts.at(3);
        system->setDeployments({deployment});
        system->setMachines(hostileTexts);

        auto* folder = new QAStFolder(QStringLiteral("folder"), QPixmap(), project.rootFolder(), nullptr);
        folder->setAlphabeticallySorted(true);
        for (const QString& name : {QStringLiteral("z.c"), QStringLiteral("b.c"), QStringLiteral("m.c")})
            new QAStFile(m_dir->filePath(QStringLiteral("src/") + name), folder, folder->last());
        auto* tag = new QAStAFunctionTag(hostileTexts.at(2),
                                         m_dir->filePath(QStringLiteral("src/m.c")), 3,
                                         folder->child(), nullptr);
        tag->setSignature(QStringLiteral("(int a,\x02 char* b)\r\n"));
        QVERIFY(project.save());
        expectedShape = shape(&project);
        expectedFiles = shape(project.rootFolder());
    }
    const QByteArray written = readFile(file);
    const QByteArray writtenTree = readFile(m_dir->filePath(QStringLiteral("hostile.inf")));
    for (int round = 0; round < 2; ++round) {
        QAStProject project(QStringLiteral("p"), QPixmap());
        QVERIFY(project.open(file));
        QCOMPARE(QAStData::loadReport(), QString());
        QCOMPARE(shape(&project), expectedShape);
        QCOMPARE(shape(project.rootFolder()), expectedFiles);
        const QAStConfiguration* debug = project.configuration(QStringLiteral("Debug"));
        QCOMPARE(debug->localProperty(QStringLiteral("cflags")).toString(),
                 hostileTexts.join(QLatin1Char('\n')));
        QCOMPARE(debug->localProperty(QStringLiteral("ge_incdir")).toStringList(), hostileTexts);
        const auto* system = qobject_cast<QAStNodeSystemTesting*>(project.findNode(QStringLiteral("system")));
        QVERIFY(system);
        QCOMPARE(system->deployments().value(0).hostIp, hostileTexts.at(4) + QStringLiteral("\"\n"));
        QCOMPARE(system->machines(), hostileTexts);
        const auto* tag = project.rootFolder()->findNode(hostileTexts.at(2));
        QVERIFY(tag);
        QCOMPARE(static_cast<const QAStATag*>(tag)->signature(),
                 QStringLiteral("(int a,\x02 char* b)\r\n"));
        QVERIFY(project.save());
        QCOMPARE(readFile(file), written);
        QCOMPARE(readFile(m_dir->filePath(QStringLiteral("hostile.inf"))), writtenTree);
    }
}

// Without its descriptor a project opens with a warning, and its save keeps
// every setting as it was read.
void TestRoundTrips::settingsSurviveAMissingDescriptor()
{
    QTemporaryDir install;
    TestFiles::copyTree(TestPaths::installTree(), install.path());
    InstallDirScope scope(install.path());
    const QString project = m_dir->filePath(QStringLiteral("calculator.rtp"));
    TestFiles::copyTree(TestPaths::sourceDir() + QStringLiteral("/examples/calculator"), m_dir->path());
    openAndSave(project);
    const auto reference = snapshot(m_dir->path());
    QVERIFY(reference.value(QStringLiteral("calculator.rtp")).contains("<cflags>"));

    QAStConfiguration::terminate(nullptr, nullptr);
    QVERIFY(QFile::remove(QAStConfiguration::propertyDescriptorFile()));
    {
        QAStProject p(QStringLiteral("p"), QPixmap());
        QVERIFY(p.open(project));
        const QStringList warnings = m_studio->requestTexts(RecordingStudio::Request::Warning);
        QCOMPARE(warnings.size(), 1);
        QVERIFY2(warnings.first().startsWith(QAStConfiguration::propertyDescriptorFile()
                                             + QStringLiteral("\n\n")),
                 qPrintable(warnings.first()));
        QVERIFY(p.save());
    }
    QCOMPARE(snapshot(m_dir->path()), reference);
    QAStConfiguration::terminate(nullptr, nullptr);
}

// A file written with a newer descriptor: the keys this one does not know
// are written back as they were read.
void TestRoundTrips::undescribedSettingsAreKept()
{
    const QString file = m_dir->filePath(QStringLiteral("newer.rtp"));
    {
        QAStProject project(QStringLiteral("newer"), QPixmap());
        QVERIFY(project.create(file));
        project.addConfiguration(QStringLiteral("Debug"))->setProperty(QStringLiteral("cflags"), "-g");
        QVERIFY(project.save());
    }
    QByteArray text = readFile(file);
    const QByteArray future = "      <futureSetting>a#comma#b &amp; &#13;#x1B#</futureSetting>\n"
                              "      <anotherOne>3</anotherOne>\n";
    const int at = text.indexOf("    </configuration>");
    QVERIFY(at > 0);
    text.insert(at, future);
    TestFiles::writeFile(file, text);
    openAndSave(file);
    QCOMPARE(readFile(file), text);
}

QTEST_MAIN(TestRoundTrips)
#include "tst_round_trips.moc"
