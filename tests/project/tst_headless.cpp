#include "QAStData.h"
#include "TestItems.h"

#include <QSignalSpy>
#include <QtTest>

#include <memory>

// A command-line host runs a QCoreApplication: items, icons by file name
// and the clipboard operations must work without making a pixmap.
class TestHeadless : public QObject {
    Q_OBJECT
private slots:
    void itemsWithoutADisplay();
};

void TestHeadless::itemsWithoutADisplay()
{
    QVERIFY(!qobject_cast<QGuiApplication*>(QCoreApplication::instance()));
    TestItem item(QStringLiteral("cli"));
    QSignalSpy iconChanged(&item, &QAStData::iconChanged);
    QSignalSpy fileNameChanged(&item, &QAStData::iconFileNameChanged);
    item.setIconByFileName(QStringLiteral("folder.png"));
    QCOMPARE(fileNameChanged.count(), 1);
    QCOMPARE(iconChanged.count(), 0);
    QVERIFY(item.icon().isNull());
    QVERIFY(QAStData::pixmap(QStringLiteral("folder.png")).isNull());
    QVERIFY(item.toString().contains(QStringLiteral("<icon>folder.png</icon>")));

    item.copy();
    QVERIFY(!QAStData::clipboardContentToData());
    QVERIFY(!item.paste());
    std::unique_ptr<QAStData> rebuilt(QAStData::stringContentToData(item.toString()));
    QVERIFY(rebuilt);
    QCOMPARE(rebuilt->iconFileName(), QStringLiteral("folder.png"));
}

QTEST_GUILESS_MAIN(TestHeadless)
#include "tst_headless.moc"
