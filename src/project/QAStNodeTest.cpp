#include "QAStNodeTest.h"

#include "QAFileSurvey.h"
#include "QAFileUtil.h"
#include "QAStConfiguration.h"
#include "QAStPerlGen.h"
#include "QASTSplitSurvey.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <utility>

namespace {

constexpr int executeStage = 0x10;

// A directory setting of the node's configuration with its macros expanded,
// as the environment script writes it.
QString directorySetting(const QAStNodeTest* node, const char* key)
{
    return QAStPerlGen::settingPath(node->currentConfiguration(), QLatin1String(key));
}

// dir/file as the drivers see it, made absolute against the node's
// directory.
QString runFile(const QAStNodeTest* node, const QString& dir, const QString& file)
{
    return QAFileUtil::cleanDirPath(
        QAStData::determineAbsolutePathFile(node->directory(), QAStPerlGen::joinPath(dir, file)));
}

} // namespace

QAStNodeTest::QAStNodeTest(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : QAStNodeContainer(parent, after)
{
    init(e, version);
}

QAStNodeTest::~QAStNodeTest()
{
    delete m_split;
}

void QAStNodeTest::write(QTextStream& s, int indent) const
{
    writeBlock(s, indent, "test", "test_child");
}

bool QAStNodeTest::init(const QDomElement& testElement, int version)
{
    return initBlock(testElement, version, "test", "test_child");
}

void QAStNodeTest::generateEnv(QTextStream& out)
{
    QAStNodeContainer::generateEnv(out);
    if (!currentConfiguration() || !splitsRuntimeOutput())
        return;
    QAStPerlGen::writePathList(out, QStringLiteral("RESULT_FILES"),
                               QStringList{runtimeOutputFile()} + runtimeResultFiles());
}

QString QAStNodeTest::runtimeOutputFile() const
{
    if (!currentConfiguration())
        return QString();
    return runFile(this, directorySetting(this, "intdir"),
                   QAStPerlGen::testName(this) + QLatin1String(".spt"));
}

QStringList QAStNodeTest::runtimeResultFiles() const
{
    if (!currentConfiguration())
        return {};
    const QString intdir = directorySetting(this, "intdir");
    const QString outdir = directorySetting(this, "outdir");
    const QString name = QAStPerlGen::testName(this);
    // Named after the test, so that the test nodes sharing a directory keep
    // their own results.
    const auto beside = [&](const char* extension) {
        return runFile(this, intdir, name + QLatin1String(extension));
    };
    const auto result = [&](const char* extension) {
        return runFile(this, outdir, name + QLatin1String(extension));
    };
    return {result(".rio"), result(".tpf"), result(".tqf"), result(".tio"),
            result(".tdf"), beside(".end"), beside(".rej")};
}

// --- the runtime split

bool QAStNodeTest::splitsRuntimeOutput() const
{
    return false;
}

void QAStNodeTest::executeAfterChildren(bool debug)
{
    startRuntimeSplit();
    if (m_split)
        connect(this, &QAStData::perlScriptTerminated, this, &QAStNodeTest::testerNodeTerminated,
                Qt::UniqueConnection);
    QAStNodeContainer::executeAfterChildren(debug);
}

void QAStNodeTest::executeFinishEvent()
{
    disconnect(this, &QAStData::perlScriptTerminated, this, &QAStNodeTest::testerNodeTerminated);
    endRuntimeSplit();
    QAStNodeContainer::executeFinishEvent();
}

void QAStNodeTest::testerNodeTerminated()
{
    disconnect(this, &QAStData::perlScriptTerminated, this, &QAStNodeTest::testerNodeTerminated);
    endRuntimeSplit();
}

void QAStNodeTest::stop()
{
    if (m_split)
        m_split->survey()->stop();
    QAStNodeContainer::stop();
}

void QAStNodeTest::startRuntimeSplit()
{
    endRuntimeSplit();
    const QAStConfiguration* c = currentConfiguration();
    if (!c || !splitsRuntimeOutput() ||
        !(QAStPerlGen::settingValue(c, QStringLiteral("executionFlag")).toInt() & executeStage))
        return;
    const QString input = runtimeOutputFile();
    const QStringList outputs = runtimeResultFiles();
    // The split reads the new run's output from its first byte.
    if (QFileInfo::exists(input) && !QFile::remove(input))
        displayMessage(OutputConsole, tr("%1: cannot remove the runtime output %2 of the last run\n")
                                          .arg(name(), QDir::toNativeSeparators(input)));
    emptyResultFiles(outputs);
    m_split = new QASTSplitSurvey(input, outputs.at(QASTSplitSurvey::Coverage),
                                  outputs.at(QASTSplitSurvey::Trace),
                                  outputs.at(QASTSplitSurvey::MemoryProfile),
                                  outputs.at(QASTSplitSurvey::PerformanceProfile), RuntimeSplitDelay,
                                  this, "runtime-split");
    for (int index : {QASTSplitSurvey::Results, QASTSplitSurvey::EndOfTest, QASTSplitSurvey::Rejected})
        m_split->setOutputFile(index, outputs.at(index));
    const bool onTheFly = QAStPerlGen::settingValue(c, QStringLiteral("atc_onthefly")).toBool() ||
                          QAStPerlGen::settingValue(c, QStringLiteral("att_on_fly")).toBool();
    if (onTheFly)
        m_split->survey()->start();
}

void QAStNodeTest::emptyResultFiles(const QStringList& files)
{
    for (const QString& path : files) {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            displayMessage(OutputConsole, tr("%1: cannot empty the result file %2: %3\n")
                                              .arg(name(), QDir::toNativeSeparators(path),
                                                   file.errorString()));
        }
    }
}

void QAStNodeTest::endRuntimeSplit()
{
    QASTSplitSurvey* split = std::exchange(m_split, nullptr);
    if (!split)
        return;
    split->survey()->finish();
    delete split;
}
