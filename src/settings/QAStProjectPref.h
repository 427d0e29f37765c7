#pragma once

#include "sdk110_export.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

class QARes;
class QSettings;

// The user's project preferences (QAStData::preferences()).
//
// Stored with QSettings, organisation "Korvil", application "sdk110": on
// Linux $XDG_CONFIG_HOME/Korvil/sdk110.conf, on Windows the registry. The
// older resource form (QAStData::initialize) uses the same key names.
// The keys, their forms and defaults are one table in the source, which
// docs/ARCHITECTURE.md (Preferences) lists.
class SDK110_EXPORT QAStProjectPref {
public:
    QAStProjectPref();

    // The process-wide preferences, loaded from the user's settings on
    // first use (QAStData::preferences()).
    static QAStProjectPref* instance();

    bool autoTag() const { return m_autoTag; }
    void setAutoTag(bool on) { m_autoTag = on; }
    bool calcMet() const { return m_calcMet; }
    void setCalcMet(bool on) { m_calcMet = on; }
    bool verbose() const { return m_verbose; }
    void setVerbose(bool on) { m_verbose = on; }
    bool isTestNode() const { return m_isTestNode; }
    void setIsTestNode(bool on) { m_isTestNode = on; }
    bool useRelativePath() const { return m_useRelativePath; }
    void setUseRelativePath(bool on) { m_useRelativePath = on; }
    bool keepLastExecResults() const { return m_keepLastExecResults; }
    void setKeepLastExecResults(bool on) { m_keepLastExecResults = on; }
    bool useDefaultTdpDir() const { return m_useDefaultTdpDir; }
    void setUseDefaultTdpDir(bool on) { m_useDefaultTdpDir = on; }
    QStringList tdpDirList() const { return m_tdpDirList; }
    void setTdpDirList(const QStringList& dirs) { m_tdpDirList = dirs; }
    // User file types: type name -> wildcard patterns separated by ";".
    QMap<QString, QString> fileTypes() const { return m_fileTypes; }
    void setFileTypes(const QMap<QString, QString>& types) { m_fileTypes = types; }
    // The name set, "UTF-8" while none is.
    QString encodingName() const;
    // An empty name unsets the encoding.
    void setEncodingName(const QString& name) { m_encodingName = name; }

    // The target package directories to scan: the installation's targets
    // directory first when useDefaultTdpDir, then tdpDirList.
    QStringList tdpDirectories() const;

    void resetToDefaults();

    // The user's settings (see above). Keys absent from the store keep
    // their current values.
    void load();
    // Writes every preference and syncs. On failure the values stay here
    // and in the settings file as it was; the fault is reported on the
    // message console and false returned.
    bool save() const;
    void load(QSettings& settings);
    bool save(QSettings& settings) const;
    // The older resource form: the keys of a resource group.
    void load(const QARes* res);

private:
    // A preference of one value (every one but fileTypes): its key, the
    // member holding it, whose type is its form, and its default.
    struct Value;
    static const QList<Value>& values();

    bool m_autoTag;
    bool m_calcMet;
    bool m_verbose;
    bool m_isTestNode;
    bool m_useRelativePath;
    bool m_keepLastExecResults;
    bool m_useDefaultTdpDir;
    QStringList m_tdpDirList;
    QMap<QString, QString> m_fileTypes;
    QString m_encodingName;
};
