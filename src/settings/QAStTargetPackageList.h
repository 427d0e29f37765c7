#pragma once

#include "sdk110_export.h"

#include <QList>
#include <QString>
#include <QStringList>

class QAILogMonitor;
class QAStTargetPackage;

// The target deployment packages found in a set of TDP directories, in
// scan order. The list owns its packages and deletes them with itself.
//
// A TDP directory holds one sub-directory per package; every "*.ini" file
// of such a sub-directory makes one package (docs/formats/target-package.md).
//
// Faults a scan finds are reported, each as one text, on the host's message
// console (QAStData::MessageConsole) and to the log monitor when one is
// given. The step-by-step trace ("scan <path>", "<dir> directory doesn't
// exists") goes to the debug output of the logging category
// "sdk110.targetpackage", which is off unless enabled
// (QT_LOGGING_RULES="sdk110.targetpackage.debug=true").
class SDK110_EXPORT QAStTargetPackageList {
public:
    QAStTargetPackageList();
    // Scans the directories at once.
    explicit QAStTargetPackageList(const QStringList& directories, QAILogMonitor* monitor = nullptr);
    ~QAStTargetPackageList();
    QAStTargetPackageList(const QAStTargetPackageList&) = delete;
    QAStTargetPackageList& operator=(const QAStTargetPackageList&) = delete;

    // Appends the packages of each directory, in the order given; within a
    // directory its sub-directories and their ini files go by name. A
    // directory that is missing, unreadable or empty is reported and
    // skipped; a sub-directory without ini files adds nothing and says
    // nothing. The ini files are read under a handler of the scan, which
    // reports their faults with file and line and counts them; a package is
    // still made of what could be read. Returns true when nothing was
    // reported.
    bool scan(const QStringList& directories, QAILogMonitor* monitor = nullptr);
    // Deletes every package.
    void clear();

    // The packages in scan order; the list keeps ownership.
    const QList<QAStTargetPackage*>& packages() const { return m_packages; }
    int count() const { return int(m_packages.size()); }
    bool isEmpty() const { return m_packages.isEmpty(); }

    // The package whose directory is path, both compared as cleaned
    // absolute paths; null when none.
    QAStTargetPackage* targetPackage(const QString& path) const;
    // The package of the directory path: the listed one, else the one read
    // from the directory's first ini file (in name order) and kept with
    // the list, out of packages(), so that a project may use a package
    // outside the scanned directories. Faults of the reading go to the
    // message console naming file and line. Null when the directory holds
    // no readable ini file.
    QAStTargetPackage* packageAt(const QString& path);
    // The first package whose NAME is name, else the first whose directory
    // is named name; null when none.
    QAStTargetPackage* find(const QString& name) const;
    // The package of the same family as the one find(name) gives, for
    // another language: that package itself when it already is of language
    // (compared as language bits, QAStTargetPackage::languageTypeOf), else
    // the first other package of its family and of that language. The
    // family of a package is the name of its directory up to its last "-"
    // or "_" (the whole name when it holds neither): "gcc-cpp" and "gcc-c"
    // are one family, "gcc". Null when name or the sibling is not found.
    QAStTargetPackage* findAssociated(const QString& name, const QString& language) const;

    // The process-wide list of installed packages, built on first use by
    // QAStTargetPackage::initialize from the project preferences' TDP
    // directories.
    static QAStTargetPackageList* installTargetPackages();
    // find and findAssociated over the installed packages.
    static QAStTargetPackage* search(const QString& name);
    static QAStTargetPackage* searchAssociated(const QString& name, const QString& language);

    // The family of a package directory name (see findAssociated).
    static QString familyOf(const QString& directoryName);

private:
    friend class QAStTargetPackage;
    static bool buildInstalled(QAILogMonitor* monitor);
    static void releaseInstalled();

    QList<QAStTargetPackage*> m_packages;
    // Packages read by packageAt from directories out of the scan.
    QList<QAStTargetPackage*> m_outside;
};
