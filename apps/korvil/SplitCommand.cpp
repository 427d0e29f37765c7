// The split command: a runtime output split into its result files, at
// once or following the file as it grows until the tool is interrupted.
#include "CommandLineStudio.h"
#include "Commands.h"

#include "QAFileSurvey.h"
#include "QASTSplitSurvey.h"

#include <QCommandLineParser>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QTimer>

#include <csignal>

namespace Commands {
namespace {

const QCommandLineOption outOption({QStringLiteral("o"), QStringLiteral("out")},
                                   QStringLiteral("Write the result files into DIR (made when missing) "
                                                  "instead of the directory of FILE."),
                                   QStringLiteral("DIR"));
const QCommandLineOption followOption(
    {QStringLiteral("f"), QStringLiteral("follow")},
    QStringLiteral("Follow FILE as it grows until interrupted, then split what remains."));

// The signal that ends a follow; 0 while none came.
volatile std::sig_atomic_t interruption = 0;

void interrupted(int signal)
{
    interruption = signal;
}

QStringList resultFiles(const QString& directory)
{
    QStringList files;
    for (int index = 0; index < QASTSplitSurvey::OutputCount; ++index)
        files.append(QDir(directory).filePath(QASTSplitSurvey::defaultOutputName(index)));
    return files;
}

// Each result file the split wrote, with its line count.
void printCounts(const QString& directory)
{
    bool any = false;
    for (const QString& file : resultFiles(directory)) {
        const qint64 lines = lineCount(file);
        if (lines < 0)
            continue;
        out(QStringLiteral("%1  %2\n").arg(linesText(lines), QDir::cleanPath(file)));
        any = true;
    }
    if (!any)
        out(QStringLiteral("no result file: the input holds no line\n"));
}

// Follows input until SIGINT or SIGTERM, splitting each whole line as it
// comes into the result files of directory; then a final pass splits what
// remains, a last line without "\n" included.
bool follow(const QString& input, const QString& directory)
{
    for (const QString& file : resultFiles(directory)) {
        if (QFileInfo(file) == QFileInfo(input)) {
            err(QStringLiteral("%1: the input is one of the result files").arg(input));
            return false;
        }
        QFile::remove(file);
    }
    // The split writes beside the name it is given: a name in the output
    // directory; the lines come from the survey of the real input.
    QASTSplitSurvey split(QDir(directory).filePath(QFileInfo(input).fileName()));
    QAFileSurvey survey(input, 200);
    QObject::connect(&survey, &QAFileSurvey::hasNewLine, &split, &QASTSplitSurvey::splitOneLine);
    QObject::connect(&survey, &QAFileSurvey::surveyDone, &split, &QASTSplitSurvey::closeOutputFile);

    interruption = 0;
    const auto previousInt = std::signal(SIGINT, interrupted);
    const auto previousTerm = std::signal(SIGTERM, interrupted);
    QEventLoop loop;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, &loop, [&] {
        if (interruption != 0)
            loop.quit();
    });
    watch.start(50);
    err(QStringLiteral("following %1; interrupt (Ctrl-C) to end").arg(input));
    survey.start();
    survey.survey();
    loop.exec();
    std::signal(SIGINT, previousInt);
    std::signal(SIGTERM, previousTerm);
    survey.finish();
    split.closeOutputFile();
    const QStringList losses = split.losses();
    for (const QString& loss : losses)
        err(loss);
    return losses.isEmpty();
}

} // namespace

void splitOptions(QCommandLineParser& parser)
{
    parser.addOption(outOption);
    parser.addOption(followOption);
}

int split(QCommandLineParser& parser, CommandLineStudio& studio)
{
    Q_UNUSED(studio);
    const QString input = parser.positionalArguments().value(0);
    const QString directory = QDir::cleanPath(
        parser.isSet(outOption) ? parser.value(outOption) : QFileInfo(input).absolutePath());
    if (parser.isSet(followOption)) {
        if (!QDir().mkpath(directory)) {
            err(QStringLiteral("%1: the directory cannot be made").arg(directory));
            return Failure;
        }
        if (!follow(input, directory))
            return Failure;
    } else {
        if (!QFileInfo(input).isFile()) {
            err(QStringLiteral("%1: no such file").arg(input));
            return Failure;
        }
        QString error;
        if (!QASTSplitSurvey::splitFile(input, directory, &error)) {
            for (const QString& line : error.split(u'\n'))
                err(QStringLiteral("%1: %2").arg(input, line));
            return Failure;
        }
    }
    printCounts(directory);
    return Success;
}

}
