// An existing code base made a project and run for real: a generated tree
// of C sources, configured by the real cmake, imported from its
// compilation database, then built and executed by the drivers with no
// hand edit.
#include "QAProcess.h"
#include "QAStConfiguration.h"
#include "QAStNode.h"
#include "QAStNodeLink.h"
#include "QAStProject.h"
#include "QAStProjectImport.h"
#include "RecordingStudio.h"
#include "TestFiles.h"
#include "TestWalk.h"

#include <QDirIterator>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

constexpr int filesPerLibrary = 100;

// One library of functions spread over nested directories, each
// returning its number (scaled by SCALE, a macro the build defines, when
// scaled), and a sum of them all.
void writeLibrary(const QString& root, const QString& name, bool scaled)
{
    QByteArray header = "#pragma once\n";
    QByteArray sum = "#include <" + name.toUtf8() + "/" + name.toUtf8() + ".h>\nint " + name.toUtf8() +
                     "_sum(void)\n{\n    return 0";
    for (int i = 0; i < filesPerLibrary; ++i) {
        const QByteArray function = name.toUtf8() + "_f" + QByteArray::number(i);
        header += "int " + function + "(void);\n";
        sum += "\n        + " + function + "()";
        const QString file = QStringLiteral("%1/src/d%2/e%3/%4.c")
                                 .arg(root)
                                 .arg(i % 4)
                                 .arg(i % 3)
                                 .arg(QString::fromUtf8(function));
        TestFiles::writeFile(file, "#include <" + name.toUtf8() + "/" + name.toUtf8() + ".h>\nint " +
                                       function + "(void) { return " + QByteArray::number(i) +
                                       (scaled ? " * SCALE" : "") + "; }\n");
    }
    header += "int " + name.toUtf8() + "_sum(void);\n";
    TestFiles::writeFile(root + QStringLiteral("/include/%1/%1.h").arg(name), header);
    TestFiles::writeFile(root + QStringLiteral("/src/sum.c"), sum + ";\n}\n");
}

} // namespace

class TestImportRun : public QObject {
    Q_OBJECT

    QString path(const QString& relative) const { return m_dir->filePath(relative); }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<RecordingStudio> m_studio;

private slots:
    void initTestCase()
    {
        for (const char* tool : {"cmake", "make", "gcc", "perl"}) {
            if (QStandardPaths::findExecutable(QLatin1String(tool)).isEmpty())
                QSKIP("cmake, make, gcc or perl is not installed");
        }
        m_studio = std::make_unique<RecordingStudio>();
        QAStProject::setModeBatch(true);
        QVERIFY(QAStConfiguration::initialize(m_studio.get(), nullptr));
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }

    void cleanupTestCase() { QAStProject::setModeBatch(false); }

    // Two libraries of a hundred sources each in nested directories and a
    // program calling both, which returns 0 only when every function is
    // linked in and the macro of one library's build is applied.
    void importsCMakeProjectAndRuns()
    {
        const QString tree = path("tree");
        writeLibrary(tree + QStringLiteral("/alpha"), QStringLiteral("alpha"), false);
        writeLibrary(tree + QStringLiteral("/beta"), QStringLiteral("beta"), true);
        const int sum = filesPerLibrary * (filesPerLibrary - 1) / 2;
        TestFiles::writeFile(tree + QStringLiteral("/app/util/check.h"),
                             "int check(int value, int expected);\n");
        TestFiles::writeFile(
            tree + QStringLiteral("/app/util/check.c"),
            "#include \"check.h\"\nint check(int value, int expected) { return value != expected; }\n");
        TestFiles::writeFile(
            tree + QStringLiteral("/app/main.c"),
            "#include <alpha/alpha.h>\n#include <beta/beta.h>\n#include \"util/check.h\"\n"
            "int main(void)\n{\n    return check(alpha_sum(), " +
                QByteArray::number(sum) + ") + check(beta_sum(), 3 * " + QByteArray::number(sum) +
                ");\n}\n");
        TestFiles::writeFile(tree + QStringLiteral("/CMakeLists.txt"),
                             "cmake_minimum_required(VERSION 3.16)\n"
                             "project(generated C)\n"
                             "file(GLOB_RECURSE alpha_sources alpha/src/*.c)\n"
                             "add_library(alpha STATIC ${alpha_sources})\n"
                             "target_include_directories(alpha PUBLIC alpha/include)\n"
                             "file(GLOB_RECURSE beta_sources beta/src/*.c)\n"
                             "add_library(beta STATIC ${beta_sources})\n"
                             "target_include_directories(beta PUBLIC beta/include)\n"
                             "target_compile_definitions(beta PRIVATE SCALE=3)\n"
                             "add_executable(app app/main.c app/util/check.c)\n"
                             "target_link_libraries(app PRIVATE alpha beta)\n");
        int sources = 0;
        for (QDirIterator it(tree, {QStringLiteral("*.c")}, QDir::Files, QDirIterator::Subdirectories);
             it.hasNext(); it.next())
            ++sources;
        QVERIFY(sources >= 200);

        QProcess cmake;
        cmake.start(QStringLiteral("cmake"),
                    {QStringLiteral("-G"), QStringLiteral("Unix Makefiles"),
                     QStringLiteral("-DCMAKE_EXPORT_COMPILE_COMMANDS=ON"), QStringLiteral("-S"), tree,
                     QStringLiteral("-B"), tree + QStringLiteral("/build")});
        QVERIFY(cmake.waitForFinished(180000));
        QVERIFY2(cmake.exitCode() == 0, cmake.readAllStandardError().constData());
        QVERIFY(QFileInfo::exists(tree + QStringLiteral("/build/CMakeFiles/app.dir/link.txt")));

        QAStProject imported{QString(), QPixmap()};
        QString error;
        QVERIFY2(QAStProjectImport::importSource(imported,
                                                 tree + QStringLiteral("/build/compile_commands.json"),
                                                 QString(), QString(), &error),
                 qPrintable(error));
        QCOMPARE(imported.path(), tree + QStringLiteral("/tree.rtp"));

        // Read back from the files, as a user opening it would.
        QAStProject project{QString(), QPixmap()};
        QVERIFY(project.open(imported.path()));
        const QList<QAStData*> nodes = project.childrenOfClass("QAStNode");
        QCOMPARE(nodes.size(), 3);
        QCOMPARE(nodes.at(0)->name(), QStringLiteral("alpha"));
        QCOMPARE(nodes.at(1)->name(), QStringLiteral("beta"));
        QCOMPARE(nodes.at(2)->name(), QStringLiteral("app"));
        QCOMPARE(project.childrenOfClass("QAStNodeSource", true).size(), sources);
        QCOMPARE(nodes.at(2)->childrenOfClass("QAStNodeLink").size(), 2);

        QVERIFY2(walk(&project, &QAStNode::build),
                 qPrintable(m_studio->consoleText(QAStData::OutputConsole)));
        QVERIFY(QFileInfo::exists(tree + QStringLiteral("/build/korvil/app")));
        m_studio->reset();
        QVERIFY2(walk(&project, &QAStNode::execute),
                 qPrintable(m_studio->consoleText(QAStData::OutputConsole)));
        QVERIFY(m_studio->consoleText(QAStData::OutputConsole).contains(QLatin1String("app: passed")));
        QVERIFY(QAProcess::listOfProcess().isEmpty());
    }
};

QTEST_MAIN(TestImportRun)
#include "tst_import_run.moc"
