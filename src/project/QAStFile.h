#pragma once

#include "QAStTestedTag.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QVariant>

#include <memory>

struct QAStTagRecord;
class QAStTagTable;
class QAStDriverBatch;
class QAStFile;

// Tells, for every file of every project, when its tagging starts and
// ends, so that a tag browser hears the project and all its sub-projects
// through one connection (QAStFile::taggingNotifier()); and when a run of
// the tagging driver, over one file or a batch, has ended.
class SDK110_EXPORT QAStFileTaggingNotifier : public QObject {
    Q_OBJECT
signals:
    void taggingStarted(QAStFile* file);
    void taggingTerminated(QAStFile* file);
    // The driver run has ended: no tagging runs any more. The files of
    // its batch that neither started nor ended were not tagged.
    void taggingRunTerminated();
};

// The item for one file on disk, in a folder of the project's file tree.
// Its path is the tag's file path (absolute in memory, see QAStATag) and
// its name the path's file name. Nodes refer to it by fileKey().
//
// Element "file" wrapping the "tested_tag" element; the tags found in the
// file are the children inside its "tag_child".
//
// Files are classified by name (fileType, languageType). Source files are
// analysed into tags by the tagging driver script (taggingInformation),
// one file or a batch of files in one run: the driver writes one tag file
// per file (docs/formats/tags.md) into a directory of the run, and reports
// each file as soon as its tag file is complete; the file then reads it
// into tags below itself, replacing the former ones. The tags read are
// kept as compact rows (QAStTagTable) and made items only when something
// first walks the file's children (see QAStData::setDeferredChildren).
// One tagging runs at a time, whatever the files: the run belongs to the
// class (isFileInformationProcessing, stopFileInformationProcess).
class SDK110_EXPORT QAStFile : public QAStTestedTag {
    Q_OBJECT
public:
    // The class of a file name (fileType). 11 and 13 only serve as
    // filters (fileTypeFilter).
    enum FileType {
        Project = 0,
        VisualStudioProject = 1,
        Workspace = 2,
        AllTestScripts = 3,
        TestReports = 4,
        CAndAdaTestScripts = 5,
        SystemTestingScripts = 6,
        SystemTestingSupervisionScripts = 7,
        CppTestScripts = 8,
        HeaderFiles = 9,
        CFiles = 10,
        CAndHeaderFiles = 11,
        CppFiles = 12,
        CppAndHeaderFiles = 13,
        AdaFiles = 14,
        JavaFiles = 15,
        MatlabFiles = 16,
        Makefile = 17,
        SupervisionScripts = 18,
        RuntimeTracingResults = 19,
        CodeCoverageResults = 20,
        MemoryProfilingResults = 21,
        PerformanceProfilingResults = 22,
        GraphicFiles = 23,
        RuntimeAnalysisResults = 24,
        DataFiles = 25,
        UserFile = 26,
        UnknownFile = 27
    };
    Q_ENUM(FileType)

    // One bit per language.
    enum LanguageType { NoLanguage = 0, LanguageC = 1, LanguageCpp = 2, LanguageAda = 4,
                        LanguageJava = 8 };
    Q_ENUM(LanguageType)

    // The tagging driver script, under the installation's scripts.
    static constexpr const char* taggingScript = "Tagging.pl";

    // A new file item named after the path's file name, inserted into
    // parent behind after; a relative path is taken against the parent's
    // directory().
    explicit QAStFile(const QString& path, QAStData* parent = nullptr, QAStData* after = nullptr);
    // A file read from a "file" element.
    QAStFile(const QDomElement& e, int version, QAStData* parent = nullptr,
             QAStData* after = nullptr);

    void write(QTextStream& s, int indent) const override;

    // --- file types

    // The type of a file name (a path's directories are not looked at):
    // the first row of the table in docs/formats/tags.md whose wildcard
    // patterns match the whole name, case ignored; then the user's types
    // of the preferences (UserFile); else UnknownFile. The table's
    // patterns are compiled once; the user's when the preferences change.
    static FileType fileType(const QString& fileName);
    // The language bit of a file: C files 1, C++ files 2, Ada files 4,
    // Java files 8, any other 0.
    static int languageType(const QString& path);
    // A file-dialog filter: the label, " (", the patterns separated by
    // blanks, ")". CAndHeaderFiles and CppAndHeaderFiles join their two
    // rows; UnknownFile gives "All Files (*)"; UserFile one filter per
    // user type, joined by ";;". Empty for a value out of the table.
    static QString fileTypeFilter(int type);
    // The filters of several types joined by ";;".
    static QString fileTypeFilter(const QList<int>& types);
    // The types of the table, each once, in the order of the first row
    // that gives it: ... C files, C++, Java, Matlab, Ada, header files ...
    // (the order in which a directory's files are taken).
    static QList<FileType> fileTypesInTableOrder();
    // Whether the file is analysed into tags: a header, C, C++, Ada or
    // Java file.
    bool isSourceFile() const;
    // languageType of the file's path, kept until the path changes.
    int language() const override;

    // --- tagging

    // Runs the tagging driver on this file (asynchronously or not): a
    // batch of one. False, and nothing run, when the file is no source
    // file or a tagging already runs.
    bool taggingInformation(bool asynchronous);
    // Runs the tagging driver once over the source files among files, in
    // their order (files that are no source files, and repeats, are left
    // out). Each file emits taggingStarted when the driver comes to it and
    // taggingTerminated once its tags are read; the last one ends with the
    // run. A run that ends early (stopped, or the driver died) ends the
    // file it was at as failed; the files after it neither start nor end.
    // Then the notifier emits taggingRunTerminated. The driver works in a
    // fresh temporary directory of the run, removed at its end. False, and
    // nothing run, when no file is a source file, a tagging already runs
    // or the run's directory cannot be made.
    static bool taggingInformation(const QList<QAStFile*>& files, bool asynchronous);
    // A tagging runs (of any file).
    static bool isFileInformationProcessing();
    // Stops the running tagging, if any, at once: the driver is killed,
    // the file it is at ends as failed, without reading its tags, and the
    // run ends (taggingRunTerminated); the files done keep their tags.
    static void stopFileInformationProcess();
    // The file the running tagging is at; null when none.
    static QAStFile* fileInformationProcessed();
    // The object that tells of every file's tagging.
    static QAStFileTaggingNotifier* taggingNotifier();
    // The last tagging of this file ran well and its tag file was read
    // (malformed lines are reported one by one, not as a failure).
    bool lastTaggingSucceeded() const { return m_taggingSucceeded; }
    // The last tagging of this file failed because the driver run ended
    // (died) while at this file, before reporting it; not when stopped.
    // With a batch, the cause may be a file after it whose output was lost
    // with the tag program.
    bool lastTaggingInterrupted() const { return m_taggingInterrupted; }

    // Reads a tag file into tags below this file, replacing the former
    // ones. False, with "Can't open tag file." on the message console,
    // when it cannot be opened; every malformed line is reported there
    // too and costs only its own tag.
    bool readTagFile(const QString& path);
    // Reads tag-file text into tags below this file, replacing the former
    // ones; name stands for the text in the messages.
    void readTags(QByteArrayView text, const QString& name);

    // Makes the tag of one record below parent (this file's path, the
    // record's line, qualifier and signature; the complete name for
    // packages and methods): the class by the kind (docs/formats/tags.md);
    // null, with the trace line "[info] TAGGING: <kind> is a kind of token
    // not yet implemented", for a kind it does not know. Parent null puts
    // the tag below file.
    static QAStATag* createTag(const QMap<QString, QVariant>& record, QAStFile* file,
                               QAStATag* parent);
    static QAStATag* createTag(const QAStTagRecord& record, QAStFile* file, QAStATag* parent);

public slots:
    // The end of this file's tagging, when the driver has reported it or
    // the run has ended: emits taggingTerminated, then the notifier's.
    void taggingInformationTerminated();

signals:
    void taggingStarted();
    void taggingTerminated();

protected:
    // Reads a "file" element; false (item not valid) when it is bad.
    bool init(const QDomElement& e, int version);

private:
    friend class QAStTagFileReader;
    // Keeps the tags a reader made as compact rows, made items when the
    // children are first walked (at once while childAdded has a listener).
    void keepTags(std::unique_ptr<QAStTagTable> tags);
    // The driver reported the file of its batch at index.
    static void taggingFileReported(const QAStDriverBatch* driver, int index, bool succeeded);
    // The driver's run has ended, or is stopped.
    static void taggingRunEnded(const QAStDriverBatch* driver);
    void startTagging();

    mutable QString m_languagePath;
    mutable int m_language = NoLanguage;
    bool m_taggingSucceeded = false;
    bool m_taggingInterrupted = false;
};
