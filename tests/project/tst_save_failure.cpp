// Saving a project into a full disk, a read-only directory or a directory
// that is gone: the files already there stay byte for byte as they were,
// and the message names the file and the system's reason.
#include "FailingStorage.h"
#include "QAStConfiguration.h"
#include "QAStProject.h"
#include "QAStRootFolder.h"
#include "RecordingStudio.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QDir>
#include <QFile>
#include <QPixmap>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using FailingStorage::FileSizeLimit;
using FailingStorage::PermissionsEnforced;
using TestFiles::readFile;

class TestSaveFailure : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void fullDiskKeepsBothFiles_data();
    void fullDiskKeepsBothFiles();
    void objectInformationFileFailsAfterTheProject();
    void readOnlyDirectory();
    void vanishedDirectory_data();
    void vanishedDirectory();
    void saveAsIntoReadOnlyDirectoryKeepsThePlace();

private:
    // The example project copied into the scratch directory, open.
    std::unique_ptr<QAStProject> openExample();
    // Every file of the project's directory with its bytes.
    QMap<QString, QByteArray> snapshot() const;
    QString projectFile() const { return m_dir->filePath(QStringLiteral("calculator.rtp")); }
    QString infFile() const { return m_dir->filePath(QStringLiteral("calculator.inf")); }
    // The warnings and console messages the save gave, joined.
    QString reported() const;

    std::unique_ptr<RecordingStudio> m_studio;
    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestSaveFailure::initTestCase()
{
    QVERIFY(QAStConfiguration::initialize(nullptr, nullptr));
}

void TestSaveFailure::init()
{
    m_studio = std::make_unique<RecordingStudio>();
    m_dir = std::make_unique<QTemporaryDir>();
    QAStProject::setModeBatch(false);
}

void TestSaveFailure::cleanup()
{
    QFile::setPermissions(m_dir->path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner
                                             | QFileDevice::ExeOwner);
    m_studio.reset();
}

std::unique_ptr<QAStProject> TestSaveFailure::openExample()
{
    TestFiles::copyTree(TestPaths::sourceDir() + QStringLiteral("/examples/calculator"), m_dir->path());
    auto project = std::make_unique<QAStProject>(QStringLiteral("calculator"), QPixmap());
    if (!project->open(projectFile()))
        return nullptr;
    // A change, so that a save that went through would show.
    project->setName(QStringLiteral("renamed before the save"));
    m_studio->reset();
    return project;
}

QMap<QString, QByteArray> TestSaveFailure::snapshot() const
{
    QMap<QString, QByteArray> files;
    const QDir dir(m_dir->path());
    for (const QString& name : dir.entryList(QDir::Files | QDir::Hidden))
        files.insert(name, readFile(dir.filePath(name)));
    return files;
}

QString TestSaveFailure::reported() const
{
    return (m_studio->requestTexts(RecordingStudio::Request::Warning)
            + m_studio->messages(QAStData::MessageConsole))
        .join(QLatin1Char('\n'));
}

// The file grows past the limit while it is written: for a project file
// shorter than the write buffers the failure only shows when they are
// flushed, which must still stop the commit.
void TestSaveFailure::fullDiskKeepsBothFiles_data()
{
    QTest::addColumn<int>("limit");
    QTest::newRow("fails at once") << 0;
    QTest::newRow("fails on the last flush") << 200;
    QTest::newRow("fails after the first buffer") << 17000;
}

void TestSaveFailure::fullDiskKeepsBothFiles()
{
    QFETCH(int, limit);
    auto project = openExample();
    QVERIFY(project);
    const auto before = snapshot();
    bool saved = true;
    {
        FileSizeLimit full(limit);
        QVERIFY(full.active());
        saved = project->save();
    }
    QVERIFY(!saved);
    QCOMPARE(snapshot(), before);
    const QString text = reported();
    QVERIFY2(text.contains(projectFile()), qPrintable(text));
    QVERIFY2(text.contains(FailingStorage::reason(EFBIG)), qPrintable(text));
    QVERIFY(project->save());
    QVERIFY(readFile(projectFile()) != before.value(QStringLiteral("calculator.rtp")));
}

// The project file fits, its object information file does not: neither is
// replaced, the message names the file that failed, and no temporary file
// is left beside them.
void TestSaveFailure::objectInformationFileFailsAfterTheProject()
{
    auto project = openExample();
    QVERIFY(project);
    QStringList files;
    for (int i = 0; i < 400; ++i)
        files << m_dir->filePath(QStringLiteral("src/generated/a-rather-long-file-name-%1.c").arg(i));
    project->rootFolder()->addFiles(files);
    const auto before = snapshot();
    bool saved = true;
    {
        FileSizeLimit full(readFile(projectFile()).size() + 4096);
        QVERIFY(full.active());
        saved = project->save();
    }
    QVERIFY(!saved);
    QCOMPARE(snapshot(), before);
    const QString text = reported();
    QVERIFY2(text.contains(infFile()), qPrintable(text));
    QVERIFY2(text.contains(FailingStorage::reason(EFBIG)), qPrintable(text));
    QVERIFY(project->save());
    QVERIFY(readFile(projectFile()).contains("renamed before the save"));
    QVERIFY(readFile(infFile()).contains("a-rather-long-file-name-399.c"));
}

void TestSaveFailure::readOnlyDirectory()
{
    auto project = openExample();
    QVERIFY(project);
    const auto before = snapshot();
    QVERIFY(QFile::setPermissions(m_dir->path(), QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    bool saved = true;
    {
        PermissionsEnforced enforced;
        if (!enforced.active())
            QSKIP("running as root without the right to drop capabilities: permission bits bind nothing");
        saved = project->save();
    }
    QVERIFY(!saved);
    QCOMPARE(snapshot(), before);
    const QString text = reported();
    QVERIFY2(text.contains(projectFile()), qPrintable(text));
    QVERIFY2(text.contains(FailingStorage::reason(EACCES)), qPrintable(text));
}

void TestSaveFailure::vanishedDirectory_data()
{
    QTest::addColumn<bool>("replacedByFile");
    QTest::newRow("removed") << false;
    QTest::newRow("replaced by a file") << true;
}

void TestSaveFailure::vanishedDirectory()
{
    QFETCH(bool, replacedByFile);
    auto project = openExample();
    QVERIFY(project);
    QVERIFY(QDir(m_dir->path()).removeRecursively());
    if (replacedByFile)
        TestFiles::writeFile(m_dir->path(), "a file where the project's directory was\n");
    QVERIFY(!project->save());
    const QString text = reported();
    QVERIFY2(text.contains(projectFile()), qPrintable(text));
    QVERIFY2(text.contains(FailingStorage::reason(replacedByFile ? ENOTDIR : ENOENT)), qPrintable(text));
    if (replacedByFile)
        QCOMPARE(readFile(m_dir->path()), QByteArray("a file where the project's directory was\n"));
    else
        QVERIFY(!QFileInfo::exists(m_dir->path()));
    QFile::remove(m_dir->path());
}

// A failed "save as" leaves the project where it was: its next save goes to
// its own file again.
void TestSaveFailure::saveAsIntoReadOnlyDirectoryKeepsThePlace()
{
    auto project = openExample();
    QVERIFY(project);
    QTemporaryDir other;
    const QString target = other.filePath(QStringLiteral("copy.rtp"));
    TestFiles::writeFile(target, "an older copy\n");
    QVERIFY(QFile::setPermissions(other.path(), QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    m_studio->answerPath(target);
    bool saved = true;
    {
        PermissionsEnforced enforced;
        if (!enforced.active())
            QSKIP("running as root without the right to drop capabilities: permission bits bind nothing");
        saved = project->saveAs();
    }
    QFile::setPermissions(other.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner
                                            | QFileDevice::ExeOwner);
    QVERIFY(!saved);
    QCOMPARE(readFile(target), QByteArray("an older copy\n"));
    QVERIFY(reported().contains(target));
    QCOMPARE(project->path(), projectFile());
    QVERIFY(project->save());
    QVERIFY(readFile(projectFile()).contains("renamed before the save"));
}

QTEST_MAIN(TestSaveFailure)
#include "tst_save_failure.moc"
