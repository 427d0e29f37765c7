#pragma once

#include "QAStTestedTag.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QVariant>

struct QAStTagRecord;
class QAStFile;

// Tells, for every file of every project, when its tagging starts and
// ends, so that a tag browser hears the project and all its sub-projects
// through one connection (QAStFile::taggingNotifier()).
class SDK110_EXPORT QAStFileTaggingNotifier : public QObject {
    Q_OBJECT
signals:
    void taggingStarted(QAStFile* file);
    void taggingTerminated(QAStFile* file);
};

// The item for one file on disk, in a folder of the project's file tree.
// Its path is the tag's file path (absolute in memory, see QAStATag) and
// its name the path's file name. Nodes refer to it by fileKey().
//
// Element "file" wrapping the "tested_tag" element; the tags found in the
// file are the children inside its "tag_child".
//
// Files are classified by name (fileType, languageType). A source file is
// analysed into tags by the tagging driver script (taggingInformation):
// the script writes the tag file "tags" (docs/formats/tags.md), which
// taggingInformationTerminated reads into tags below the file, replacing
// the former ones. One tagging runs at a time, whatever the file: the
// process belongs to the class (isFileInformationProcessing,
// stopFileInformationProcess).
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
    // Whether the file is analysed into tags: a header, C, C++, Ada or
    // Java file.
    bool isSourceFile() const;
    // languageType of the file's path, kept until the path changes.
    int language() const override;

    // --- tagging

    // Runs the tagging driver on this file (asynchronously or not); the
    // end reaches taggingInformationTerminated. False, and nothing run,
    // when the file is no source file or a tagging already runs.
    bool taggingInformation(bool asynchronous);
    // A tagging runs (of any file).
    static bool isFileInformationProcessing();
    // Stops the running tagging, if any: it ends as failed, without
    // reading the tag file.
    static void stopFileInformationProcess();
    // The file being tagged; null when none.
    static QAStFile* fileInformationProcessed();
    // The object that tells of every file's tagging.
    static QAStFileTaggingNotifier* taggingNotifier();
    // The directory the driver writes into: ".korvil" in the tree's
    // directory, else one in the temporary directory.
    QString taggingDirectory() const;
    // The tag file of this file's tagging: "tags" in taggingDirectory().
    QString tagFilePath() const;
    // The last tagging of this file ran well and its tag file was read
    // (malformed lines are reported one by one, not as a failure).
    bool lastTaggingSucceeded() const { return m_taggingSucceeded; }

    // Reads a tag file into tags below this file, replacing the former
    // ones. False, with "Can't open tag file." on the message console,
    // when it cannot be opened; every malformed line is reported there
    // too and costs only its own tag.
    bool readTagFile(const QString& path);

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
    // The end of the driver run: reads the tag file, then emits
    // taggingTerminated.
    void taggingInformationTerminated();

signals:
    void taggingStarted();
    void taggingTerminated();

protected:
    // Reads a "file" element; false (item not valid) when it is bad.
    bool init(const QDomElement& e, int version);

private:
    void endTagging(bool succeeded);

    mutable QString m_languagePath;
    mutable int m_language = NoLanguage;
    bool m_taggingSucceeded = false;
    bool m_taggingStopped = false;
};
