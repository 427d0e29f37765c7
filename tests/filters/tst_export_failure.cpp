// Exporting filters into a full disk or a read-only directory: an older
// export file is left byte for byte, and the reason is given.
#include "FailingStorage.h"
#include "QATagFilter.h"
#include "QATagFiltersMgr.h"
#include "TestFiles.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <optional>

using FailingStorage::FileSizeLimit;
using FailingStorage::PermissionsEnforced;

class TestExportFailure : public QObject {
    Q_OBJECT
private slots:
    void olderExportStaysWhole_data();
    void olderExportStaysWhole();
};

void TestExportFailure::olderExportStaysWhole_data()
{
    QTest::addColumn<QString>("mechanism");
    QTest::addColumn<int>("error");
    QTest::newRow("full disk at once") << QStringLiteral("limit:0") << EFBIG;
    QTest::newRow("full disk half-way") << QStringLiteral("limit:2000") << EFBIG;
    QTest::newRow("read-only directory") << QStringLiteral("read-only") << EACCES;
}

void TestExportFailure::olderExportStaysWhole()
{
    QFETCH(QString, mechanism);
    QFETCH(int, error);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("filters.xfl"));
    const QByteArray old = "<!DOCTYPE Korvil-Filters>\n<filters/>\n";
    TestFiles::writeFile(path, old);

    QATagFiltersMgr manager;
    for (int i = 0; i < 100; ++i) {
        auto* filter = static_cast<QATagFilter*>(manager.createFilter());
        filter->setFilterName(QStringLiteral("filter number %1").arg(i));
        manager.addFilter(filter);
    }

    std::optional<FileSizeLimit> limit;
    std::optional<PermissionsEnforced> enforced;
    if (mechanism.startsWith(QLatin1String("limit:"))) {
        limit.emplace(mechanism.mid(6).toInt());
        QVERIFY(limit->active());
    } else {
        QVERIFY(QFile::setPermissions(dir.path(), QFileDevice::ReadOwner | QFileDevice::ExeOwner));
        enforced.emplace();
        if (!enforced->active())
            QSKIP("running as root without the right to drop capabilities: permission bits bind nothing");
    }
    QString reason;
    const bool exported = manager.exportFile(path, manager.filters(), &reason);
    limit.reset();
    enforced.reset();
    QFile::setPermissions(dir.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);

    QVERIFY(!exported);
    QCOMPARE(reason, FailingStorage::reason(error));
    QCOMPARE(TestFiles::readFile(path), old);
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("filters.xfl")});
    QVERIFY(manager.exportFile(path, manager.filters()));
}

QTEST_MAIN(TestExportFailure)
#include "tst_export_failure.moc"
