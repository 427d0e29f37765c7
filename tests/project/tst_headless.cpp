#include "QAPropertyGroup.h"
#include "QAStData.h"
#include "TestItems.h"

#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

// A command-line host runs a QCoreApplication: items, icons by file name,
// the pixmaps of property groups and the clipboard operations must work
// without making a pixmap.
class TestHeadless : public QObject {
    Q_OBJECT
private slots:
    void itemsWithoutADisplay()
    {
        QVERIFY(!qobject_cast<QGuiApplication*>(QCoreApplication::instance()));
        TestItem item(u"cli"_s);
        QSignalSpy iconChanged(&item, &QAStData::iconChanged);
        QSignalSpy fileNameChanged(&item, &QAStData::iconFileNameChanged);
        item.setIconByFileName(u"folder.png"_s);
        QCOMPARE(fileNameChanged.count(), 1);
        QCOMPARE(iconChanged.count(), 0);
        QVERIFY(item.icon().isNull());
        QVERIFY(QAStData::pixmap(u"folder.png"_s).isNull());
        QVERIFY(item.toString().contains(u"<icon>folder.png</icon>"_s));
        QAPropertyGroup group;
        group.setOpenedPix("opened.png");
        group.setClosedPix("closed.png");
        QCOMPARE(group.openedPixName(), u"opened.png"_s);
        QVERIFY(group.openedPix().isNull() && group.closedPix().isNull());

        item.copy();
        QVERIFY(!QAStData::clipboardContentToData());
        QVERIFY(!item.paste());
        std::unique_ptr<QAStData> rebuilt(QAStData::stringContentToData(item.toString()));
        QVERIFY(rebuilt);
        QCOMPARE(rebuilt->iconFileName(), u"folder.png"_s);
    }
};

QTEST_GUILESS_MAIN(TestHeadless)
#include "tst_headless.moc"
