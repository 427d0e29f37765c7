#include "QAStNodeLibrary.h"

#include "QAStNodeSource.h"

#include "QAFileUtil.h"
#include "QAStAnalyseMacro.h"
#include "QAStConfiguration.h"
#include "QAStPerlGen.h"
#include "QAStProject.h"

#include <QDir>
#include <QDomElement>
#include <QTextStream>

QAStNodeLibrary::QAStNodeLibrary(const QDomElement& e, int version, QAStData* parent,
                                 QAStData* after)
    : QAStNodeContainer(parent, after)
{
    init(e, version);
}

void QAStNodeLibrary::write(QTextStream& s, int indent) const
{
    openElement(s, indent, "library");
    QAStNodeContainer::write(s, indent + 1);
    closeElement(s, indent, "library");
}

bool QAStNodeLibrary::init(const QDomElement& e, int version)
{
    return checkElement(e, "library") && QAStNodeContainer::init(innerBlock(e, "group"), version);
}

QString QAStNodeLibrary::libraryFileAbsolute() const
{
    const QAStConfiguration* c = currentConfiguration();
    if (!c)
        return QString();
    const auto setting = [c](const char* key) {
        return QAStPerlGen::settingValue(c, QLatin1String(key)).toString();
    };
    auto* self = const_cast<QAStNodeLibrary*>(this);
    QString library = QAStAnalyseMacro::analyse(setting("testProgram"), self,
                                                QStringLiteral("Prompt Dialog"));
    if (library == QLatin1String("<default>")) {
        const QString format = setting("generationFormat").toUpper();
        const char* extension = format == QLatin1String("DLL")   ? "libraryDynamicExt"
                                : format == QLatin1String("EXE") ? "binaryExt"
                                                                 : "libraryStaticExt";
        library = QAStPerlGen::joinPath(QAStPerlGen::settingPath(c, QStringLiteral("intdir")),
                                        name() + setting(extension));
    }
    return library.isEmpty()
               ? QString()
               : QAFileUtil::cleanDirPath(determineAbsolutePathFile(directory(), library));
}

QString QAStNodeLibrary::libraryFile() const
{
    return QAStPerlGen::relativeToProject(this, {libraryFileAbsolute()}).value(0);
}

void QAStNodeLibrary::generateEnv(QTextStream& out)
{
    QAStNodeContainer::generateEnv(out);
    if (!currentConfiguration())
        return;
    QAStPerlGen::writeApplicationFiles(out, this);
    const QString absolute = libraryFileAbsolute();
    QAStPerlGen::writePath(out, QStringLiteral("LIBRARY_FILE"),
                           QAStPerlGen::relativeToProject(this, {absolute}).value(0));
    QAStPerlGen::writePath(out, QStringLiteral("LIBRARY_FILE_ABS"), QDir::toNativeSeparators(absolute));
    QAStNodeSource::writeLinkLines(out, this);
}

QStringList QAStNodeLibrary::libraryOutputs() const
{
    const QString library = libraryFile();
    return library.isEmpty() ? QStringList() : QStringList{library};
}

void QAStNodeLibrary::buildFirstChild()
{
    QAStNodeSource::prepareLinkStep(this);
    removeOutputFiles(QStringLiteral("LIB"));
    const QString library = libraryFile();
    if (!library.isEmpty())
        addOutputFile(QStringLiteral("LIB"), {library});
    QAStNodeContainer::buildFirstChild();
}

bool QAStNodeLibrary::linksObjects() const
{
    return true;
}

