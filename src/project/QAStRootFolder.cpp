#include "QAStRootFolder.h"

#include "QAFileUtil.h"
#include "QAInstall.h"
#include "QAStATag.h"
#include "QAStFile.h"
#include "QAXML.h"

#include <QDomDocument>
#include <QDomElement>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QTextStream>

#include <algorithm>

namespace {

// Folders before files, then by name, case ignored, ties by case.
bool tidyLess(const QAStData* a, const QAStData* b)
{
    const bool aFolder = qobject_cast<const QAStFolder*>(a) != nullptr;
    const bool bFolder = qobject_cast<const QAStFolder*>(b) != nullptr;
    if (aFolder != bFolder)
        return aFolder;
    const int folded = a->name().compare(b->name(), Qt::CaseInsensitive);
    return folded != 0 ? folded < 0 : a->name() < b->name();
}

QList<QAStFolder*> foldersDepthFirst(QAStFolder* top)
{
    QList<QAStFolder*> all{top};
    for (int i = 0; i < all.size(); ++i) {
        const QList<QAStFolder*> below = all.at(i)->folders();
        for (int j = 0; j < below.size(); ++j)
            all.insert(i + 1 + j, below.at(j));
    }
    return all;
}

}

QAStRootFolder::QAStRootFolder(const QString& name, QAStData* parent, QAStData* after)
    : QAStFolder(name, QPixmap(), parent, after)
{
    setDeletable(false);
    setDuplicable(false);
}

QString QAStRootFolder::directory() const
{
    return m_directory.isEmpty() ? QAStFolder::directory() : m_directory;
}

void QAStRootFolder::setDirectory(const QString& directory)
{
    m_directory = directory;
}

// --- the object information file

bool QAStRootFolder::open(const QString& file)
{
    deleteChildren();
    setDirectory(QFileInfo(file).absolutePath());
    QFile in(file);
    if (!in.open(QIODevice::ReadOnly)) {
        appendLoadReport(tr("Unable to open the object information file %1: %2\n")
                             .arg(file, in.errorString()));
        return false;
    }
    QDomDocument document;
    QString message;
    int line = 0;
    int column = 0;
    if (!QAXML::setContent(document, &in, &message, &line, &column)) {
        appendLoadReport(tr("Unable to read the object information file %1 :%2 at line #%3 "
                            "column #%4\n")
                             .arg(file, message)
                             .arg(line)
                             .arg(column));
        return false;
    }
    return readObjects(document.documentElement());
}

bool QAStRootFolder::readObjects(const QDomElement& objects)
{
    if (!checkTag(objects, "objects"))
        return false;
    bool ok = false;
    const int version =
        QAXML::toInt(objects.firstChildElement(QStringLiteral("version_file")).text(), &ok);
    const bool read = init(objects.firstChildElement(QStringLiteral("folder")),
                           ok ? version : versionFile);
    setDeletable(false);
    setDuplicable(false);
    return read;
}

bool QAStRootFolder::write(const QString& file)
{
    const QString formerDirectory = m_directory;
    setDirectory(QFileInfo(file).absolutePath());
    QByteArray bytes;
    QTextStream s(&bytes, QIODevice::WriteOnly);
    writeDocument(s);
    s.flush();
    QString reason;
    if (QAFileUtil::replaceFile(file, bytes, &reason))
        return true;
    setDirectory(formerDirectory);
    return reportSaveFailure(file, reason);
}

bool QAStRootFolder::reportSaveFailure(const QString& file, const QString& reason)
{
    displayMessage(MessageConsole,
                   tr("%1\n\nUnable to save the object information file: %2").arg(file, reason));
    return false;
}

void QAStRootFolder::writeDocument(QTextStream& s) const
{
    s << "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
    s << "<!DOCTYPE objects SYSTEM \""
      << QAInstall::installPath(installDir(), QStringLiteral("lib/project.dtd")) << "\">\n";
    s << "<objects>\n";
    QAStFolder::write(s, 1);
    QAXML::toStream(s, "version_file", QAXML::fromInt(versionFile), 1);
    s << "</objects>\n";
}

// --- files

QList<QAStFile*> QAStRootFolder::addFiles(const QStringList& paths)
{
    QSet<QString> known;
    for (const QAStFile* f : files())
        known.insert(f->fileKey());
    QList<QAStFile*> added;
    // Files make no folders: the folders are listed once.
    const QList<QAStFolder*> folders = foldersDepthFirst(this);
    for (const QString& path : paths) {
        const QString absolute = QAFileUtil::relativePathToAbs(directory(), path);
        const QString key = QAStATag::fileKeyOf(absolute);
        if (key.isEmpty() || known.contains(key))
            continue;
        known.insert(key);
        QAStFolder* folder = folderFor(folders, absolute);
        added.append(new QAStFile(absolute, folder, folder->last()));
    }
    return added;
}

QAStFolder* QAStRootFolder::folderFor(const QList<QAStFolder*>& folders, const QString& path)
{
    for (QAStFolder* folder : folders) {
        if (folder->hasFilters() && folder->matches(path))
            return folder;
    }
    return this;
}

void QAStRootFolder::normalize()
{
    removeDuplicateFiles();
    placeMisfiledFiles();
    for (QAStFolder* folder : foldersDepthFirst(this))
        orderChildren(folder);
}

void QAStRootFolder::removeDuplicateFiles()
{
    QSet<QString> seen;
    for (QAStFile* f : files()) {
        if (seen.contains(f->fileKey())) {
            f->remove();
            delete f;
        } else {
            seen.insert(f->fileKey());
        }
    }
}

void QAStRootFolder::placeMisfiledFiles()
{
    const QList<QAStFolder*> folders = foldersDepthFirst(this);
    for (QAStFile* f : files()) {
        const auto* folder = qobject_cast<const QAStFolder*>(f->parent());
        if (folder->matches(f->filePath()))
            continue;
        QAStFolder* target = folderFor(folders, f->filePath());
        if (target != folder)
            target->addChild(f, target->last());
    }
}

void QAStRootFolder::orderChildren(QAStFolder* folder)
{
    if (folder->isAlphabeticallySorted())
        return;
    QList<QAStData*> items = folder->childItems();
    std::stable_sort(items.begin(), items.end(), tidyLess);
    QAStData* previous = nullptr;
    for (QAStData* item : items) {
        if (item->previous() != previous)
            folder->addChild(item, previous);
        previous = item;
    }
}
