// A wizard's script written into a full disk, a read-only directory or a
// directory that is gone: the script already there is left byte for byte,
// and the error names the file and the system's reason.
#include "FailingStorage.h"
#include "QAStWizardScript.h"
#include "TestFiles.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <optional>

using FailingStorage::FileSizeLimit;
using FailingStorage::PermissionsEnforced;

class TestScriptSaveFailure : public QObject {
    Q_OBJECT
private slots:
    void oldScriptStaysWhole_data();
    void oldScriptStaysWhole();
};

void TestScriptSaveFailure::oldScriptStaysWhole_data()
{
    QTest::addColumn<QString>("mechanism");
    QTest::addColumn<int>("error");
    QTest::newRow("full disk at once") << QStringLiteral("limit:0") << EFBIG;
    QTest::newRow("full disk on the last bytes") << QStringLiteral("limit:300") << EFBIG;
    QTest::newRow("full disk past the first buffer") << QStringLiteral("limit:20000") << EFBIG;
    QTest::newRow("read-only directory") << QStringLiteral("read-only") << EACCES;
    QTest::newRow("directory removed") << QStringLiteral("removed") << ENOENT;
}

void TestScriptSaveFailure::oldScriptStaysWhole()
{
    QFETCH(QString, mechanism);
    QFETCH(int, error);
    QTemporaryDir root;
    const QString dir = root.filePath(QStringLiteral("wizard"));
    QVERIFY(QDir().mkpath(dir));
    const QString path = dir + QStringLiteral("/unit.pl");
    const QByteArray old = "$LOGFILENAME2 = 'old.log';\n1;\n";
    TestFiles::writeFile(path, old);

    QAStWizardScript::UnitTesting script;
    script.logFile = QStringLiteral("/logs/unit.log");
    // Longer than the write buffers, so that a failure can come in any of
    // the buffers written.
    for (int i = 0; i < 1500; ++i)
        script.integratedFiles << QStringLiteral("/src/module-%1.c").arg(i);

    std::optional<FileSizeLimit> limit;
    std::optional<PermissionsEnforced> enforced;
    if (mechanism.startsWith(QLatin1String("limit:"))) {
        limit.emplace(mechanism.mid(6).toInt());
        QVERIFY(limit->active());
    } else if (mechanism == QLatin1String("read-only")) {
        QVERIFY(QFile::setPermissions(dir, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
        enforced.emplace();
        if (!enforced->active())
            QSKIP("running as root without the right to drop capabilities: permission bits bind nothing");
    } else {
        QVERIFY(QDir(dir).removeRecursively());
    }
    QString message;
    const bool written = QAStWizardScript::writeFile(path, script, &message);
    limit.reset();
    enforced.reset();
    QFile::setPermissions(dir, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);

    QVERIFY(!written);
    QVERIFY2(message.contains(path), qPrintable(message));
    QVERIFY2(message.contains(FailingStorage::reason(error)), qPrintable(message));
    if (error == ENOENT) {
        QVERIFY(!QFileInfo::exists(dir));
        return;
    }
    QCOMPARE(TestFiles::readFile(path), old);
    QCOMPARE(QDir(dir).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("unit.pl")});
    // And the same script goes through once the disk has room again.
    QVERIFY(QAStWizardScript::writeFile(path, script, &message));
    QVERIFY(TestFiles::readFile(path).endsWith("1;\n"));
}

QTEST_MAIN(TestScriptSaveFailure)
#include "tst_script_save_failure.moc"
