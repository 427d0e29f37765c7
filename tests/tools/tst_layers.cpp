// The folders of src/ are layers: every include points to a header of its
// own folder or of a folder below, and the core library's folders include
// no header of Qt Widgets. The layers are those of the table in
// docs/ARCHITECTURE.md ("Layers"), which this test reads.
#include "TestFiles.h"
#include "TestPaths.h"

#include <QDir>
#include <QDirIterator>
#include <QRegularExpression>
#include <QtTest>

namespace {

struct Layer {
    int rank = 0;
    QString library;
};

// The rows "| <rank> | `src/<folder>` | <library> | ..." of the table.
QHash<QString, Layer> layerTable(const QString& architecture)
{
    static const QRegularExpression row(
        QStringLiteral(R"(^\| (\d+) \| `src/(\w+)` \| (\w+) \|)"), QRegularExpression::MultilineOption);
    QHash<QString, Layer> layers;
    for (const QRegularExpressionMatch& m : row.globalMatch(architecture))
        layers.insert(m.captured(2), Layer{m.captured(1).toInt(), m.captured(3)});
    return layers;
}

} // namespace

class TestLayers : public QObject {
    Q_OBJECT
private slots:
    void includesPointDown();
};

void TestLayers::includesPointDown()
{
    const QString src = TestPaths::sourceDir() + QStringLiteral("/src");
    const QHash<QString, Layer> layers =
        layerTable(QString::fromUtf8(TestFiles::readFile(TestPaths::sourceDir() + "/docs/ARCHITECTURE.md")));
    QVERIFY2(layers.size() >= 8, "docs/ARCHITECTURE.md holds no table of layers");

    // Every header of src/ by name (includes are by name), with its folder.
    QHash<QString, QString> folderOf;
    QStringList files;
    QDirIterator it(src, {QStringLiteral("*.h"), QStringLiteral("*.cpp")}, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QString folder = QDir(src).relativeFilePath(path).section(u'/', 0, 0);
        QVERIFY2(layers.contains(folder), qPrintable(folder + " is a folder of src/ the table lacks"));
        folderOf.insert(QFileInfo(path).fileName(), folder);
        files << path;
    }
    const QSet<QString> widgetHeaders = [] {
        const QStringList names = QDir(QStringLiteral(QT_WIDGETS_INCLUDE_DIR)).entryList(QDir::Files);
        return QSet<QString>(names.cbegin(), names.cend());
    }();
    QVERIFY(widgetHeaders.contains(QStringLiteral("QWidget")));

    static const QRegularExpression include(QStringLiteral(R"(^\s*#\s*include\s*([<"])([^>"]+)[>"])"),
                                            QRegularExpression::MultilineOption);
    QStringList upward;
    for (const QString& path : files) {
        const QString folder = QDir(src).relativeFilePath(path).section(u'/', 0, 0);
        const Layer& from = layers[folder];
        const QString text = QString::fromUtf8(TestFiles::readFile(path));
        for (const QRegularExpressionMatch& m : include.globalMatch(text)) {
            const QString name = QFileInfo(m.captured(2)).fileName();
            const QString where = QDir(src).relativeFilePath(path) + QLatin1String(" includes ") + m.captured(2);
            if (m.captured(1) == QLatin1String("<")) {
                if (from.library == QLatin1String("sdk110") && widgetHeaders.contains(name))
                    upward << where + QLatin1String(" (Qt Widgets)");
                continue;
            }
            const auto target = folderOf.constFind(name);
            if (target != folderOf.cend() && layers[*target].rank > from.rank)
                upward << where + QLatin1String(" (") + *target + QLatin1Char(')');
        }
    }
    QVERIFY2(upward.isEmpty(), qPrintable(QLatin1Char('\n') + upward.join(QLatin1Char('\n'))));
}

QTEST_GUILESS_MAIN(TestLayers)
#include "tst_layers.moc"
