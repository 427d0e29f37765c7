#pragma once

#include "sdk110_export.h"

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

class QAILogMonitor;
class QARes;

// One target deployment package (TDP): a directory of the installation that
// describes one compiler and target, read from its ini file (resource
// grammar, docs/formats/target-package.md).
//
// Every key has a default that it keeps when the ini lacks it or gives it a
// value of the wrong type (reported, with file and line, to the installed
// resource error handler): empty texts and lists, no J2ME restriction, and
// every feature supported. Keys the package does not know are harmless and
// ignored, except those beginning with "DEFAULT_", which are kept as
// further default values.
//
// The process-wide list of installed packages (QAStTargetPackageList::
// installTargetPackages) is built by initialize() and released by
// terminate().
class SDK110_EXPORT QAStTargetPackage {
public:
    // The runtime-analysis features a target may support, each with its
    // mode key in the ini (featureModeKey).
    enum Feature { CodeCoverage, RuntimeTracing, MemoryProfiling, PerformanceProfiling };

    // The language bits of LanguageType.
    enum Language { LanguageC = 1, LanguageCpp = 2, LanguageAda = 4, LanguageJava = 8 };

    QAStTargetPackage();

    // Resets every key to its default, then reads the top-level entries of
    // res. directoryName is the package's directory (its path), iniName
    // the file name of its ini. Returns false when a value had the wrong
    // type.
    bool read(QARes* res, const QString& directoryName, const QString& iniName);

    QString name() const { return m_name; }
    QString language() const { return m_language; }
    // The language bit of language() (languageTypeOf).
    int languageType() const { return languageTypeOf(m_language); }

    QString objExtension() const { return m_objExtension; }
    QString libExtension() const { return m_libExtension; }
    QString dllExtension() const { return m_dllExtension; }
    QString srcExtension() const { return m_srcExtension; }
    QString exeExtension() const { return m_exeExtension; }

    QString cppFlags() const { return m_cppFlags; }
    QString cFlags() const { return m_cFlags; }
    QString ldFlags() const { return m_ldFlags; }
    QString libs() const { return m_libs; }
    QString defines() const { return m_defines; }

    QStringList includePaths() const { return m_includePaths; }
    QStringList libraryPaths() const { return m_libraryPaths; }
    QStringList bootClassPath() const { return m_bootClassPath; }

    bool j2meRestriction() const { return m_j2meRestriction; }

    // 1 when the target supports the feature, 0 when it does not.
    int featureMode(Feature feature) const;
    // "ATC_MODE" (coverage), "ATT_MODE" (tracing), "ATP_MODE" (memory
    // profiling), "ATQ_MODE" (performance profiling).
    static QString featureModeKey(Feature feature);

    // The package's directory and the file name of its ini.
    QString directory() const { return m_directory; }
    QString iniName() const { return m_iniName; }

    // The further "DEFAULT_" keys, by their full name: a string, an integer
    // (qlonglong), a Boolean or a list of strings (QStringList) as written.
    QVariant defaultValue(const QString& key) const { return m_defaultValues.value(key); }
    QMap<QString, QVariant> defaultValues() const { return m_defaultValues; }

    // Maps a language text to its bit, as configurations do: upper-cased,
    // "C" 1, "CPP" or "C++" 2, "ADA", "ADA83" or "ADA95" 4, "JAVA" 8, any
    // other text (or none) 1.
    static int languageTypeOf(const QString& language);

    // Builds the process-wide list of installed packages from the project
    // preferences' TDP directories, unless it is built already (then true at
    // once). Faults of the scan are reported on the message console and to
    // monitor, followed by "Error when initializing Target Package List, see
    // the reason above". When no package at all is found, the host shows a
    // warning box. Returns false after either.
    static bool initialize(QAILogMonitor* monitor = nullptr);
    // Releases the process-wide list; the next use builds it again.
    static void terminate();

private:
    struct TextKey {
        const char* key;
        QString QAStTargetPackage::*field;
    };
    struct ListKey {
        const char* key;
        QStringList QAStTargetPackage::*field;
    };
    static const TextKey s_textKeys[];
    static const ListKey s_listKeys[];

    void reset();
    bool readTexts(const QARes* res);
    bool readLists(const QARes* res);
    bool readJ2meRestriction(const QARes* res);
    bool readFeatureModes(const QARes* res);
    bool readFurtherDefaults(const QARes* res);
    static bool isTableKey(const QString& key);

    QString m_name;
    QString m_language;
    QString m_objExtension;
    QString m_libExtension;
    QString m_dllExtension;
    QString m_srcExtension;
    QString m_exeExtension;
    QString m_cppFlags;
    QString m_cFlags;
    QString m_ldFlags;
    QString m_libs;
    QString m_defines;
    QStringList m_includePaths;
    QStringList m_libraryPaths;
    QStringList m_bootClassPath;
    bool m_j2meRestriction = false;
    int m_featureModes[4] = {1, 1, 1, 1};
    QMap<QString, QVariant> m_defaultValues;
    QString m_directory;
    QString m_iniName;
};
