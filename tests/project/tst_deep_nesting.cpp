// XML nested deeper than QAXML::maxDepth is refused by every reader of the
// library's XML files, quickly and with the place named, and a file just
// within the limit still reads. (QDomDocument's own parse takes time in
// the square of the depth: 20,000 levels took it seconds.)
#include "QAFiltersMgr.h"
#include "QAStConfiguration.h"
#include "QAStProject.h"
#include "QAStRootFolder.h"
#include "QATagFiltersMgr.h"
#include "QAXML.h"
#include "QMetReader.h"
#include "QMetTree.h"
#include "RecordingStudio.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QDomDocument>
#include <QPixmap>
#include <QtTest>

namespace {

QString regression(const char* name)
{
    return TestPaths::data(QStringLiteral("regressions/") + QLatin1String(name));
}

QByteArray nested(int depth)
{
    return QByteArray("<a>").repeated(depth) + QByteArray("</a>").repeated(depth);
}

}

class TestDeepNesting : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QVERIFY(QAStConfiguration::initialize(nullptr, nullptr)); }

    void limitOfTheParse();
    void everyReaderRefuses();
};

void TestDeepNesting::limitOfTheParse()
{
    QDomDocument document;
    QVERIFY(QAXML::setContent(document, nested(QAXML::maxDepth)));
    QCOMPARE(document.documentElement().tagName(), QStringLiteral("a"));

    QString message;
    int line = 0;
    int column = 0;
    QVERIFY(!QAXML::setContent(document, TestFiles::readFile(regression("deep-nesting.xml")),
                               &message, &line, &column));
    QCOMPARE(message, QStringLiteral("elements nested more than 1000 deep"));
    QCOMPARE(line, 2);
    QCOMPARE(column, 3 * (QAXML::maxDepth + 1));
    QVERIFY(document.isNull());

    // A malformed text is still the parser's to tell.
    QVERIFY(!QAXML::setContent(document, "<a><b></a>", &message, &line, &column));
    QVERIFY(!message.contains(QLatin1String("nested")));

    // Deep enough to take QDomDocument seconds: refused at once.
    QVERIFY(!QAXML::setContent(document, nested(200000)));
}

void TestDeepNesting::everyReaderRefuses()
{
    RecordingStudio studio;
    QAStProject::setModeBatch(true);

    QAStProject project(QStringLiteral("p"), QPixmap());
    QVERIFY(!project.open(regression("deep-groups.rtp")));
    QVERIFY(!project.isOpen());
    const QString projectMessage = studio.messages(QAStData::MessageConsole).join(QLatin1Char('\n'));
    QVERIFY2(projectMessage.contains(regression("deep-groups.rtp"))
                 && projectMessage.contains(QLatin1String("nested more than 1000 deep")),
             qPrintable(projectMessage));

    QAStRootFolder root(QStringLiteral("p"));
    QAStData::clearLoadReport();
    QVERIFY(!root.open(regression("deep-folders.inf")));
    QCOMPARE(root.childCount(), 0);
    QVERIFY2(QAStData::loadReport().contains(QLatin1String("nested more than 1000 deep")),
             qPrintable(QAStData::loadReport()));

    QMetTree tree{QStringList()};
    QMetReader reader(QStringList(), &tree);
    QVERIFY(!reader.addMetFile(regression("deep-items.met")));
    QVERIFY2(reader.errors().join(QLatin1Char('\n')).contains(QLatin1String("nested more than 1000 deep")),
             qPrintable(reader.errors().join(QLatin1Char('\n'))));

    QATagFiltersMgr filters;
    QCOMPARE(filters.importFile(regression("deep-filters.xfl")),
             QAFiltersMgr::ImportResult::NotWellFormed);
    QVERIFY(filters.filters().isEmpty());
    QAStProject::setModeBatch(false);
}

QTEST_MAIN(TestDeepNesting)
#include "tst_deep_nesting.moc"
