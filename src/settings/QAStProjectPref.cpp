#include "QAStProjectPref.h"

#include "QAHost.h"
#include "QAInstall.h"
#include "QARes.h"
#include "QAXML.h"

#include <QCoreApplication>
#include <QSettings>

namespace {

const char* const autoTagKey = "autoTag";
const char* const calcMetKey = "calcMet";
const char* const verboseKey = "verbose";
const char* const isTestNodeKey = "isTestNode";
const char* const useRelativePathKey = "useRelativePath";
const char* const keepLastExecResultsKey = "keepLastExecResults";
const char* const useDefaultTdpDirKey = "useDefaultTdpDir";
const char* const tdpDirListKey = "tdpDirList";
const char* const fileTypesKey = "fileTypes";
const char* const encodingNameKey = "encodingName";
// Entry fields of the fileTypes array.
const char* const typeNameKey = "type";
const char* const patternsKey = "patterns";

void loadBool(QSettings& settings, const char* key, bool& value)
{
    value = settings.value(QLatin1String(key), value).toBool();
}

void loadBool(const QARes* res, const char* key, bool& value)
{
    const QARes* r = res->find(QLatin1String(key));
    if (!r)
        return;
    if (r->isBoolean())
        value = r->toResBoolean()->value();
    else if (r->isString())
        value = QAXML::toBool(r->toResString()->value());
}

// A resource list of "type=patterns" strings.
QMap<QString, QString> fileTypesFromStrings(const QStringList& entries)
{
    QMap<QString, QString> types;
    for (const QString& entry : entries) {
        const int eq = entry.indexOf(QLatin1Char('='));
        types.insert(entry.left(eq), eq < 0 ? QString() : entry.mid(eq + 1));
    }
    return types;
}

}

QAStProjectPref::QAStProjectPref()
{
    resetToDefaults();
}

void QAStProjectPref::resetToDefaults()
{
    m_autoTag = true;
    m_calcMet = false;
    m_verbose = false;
    m_isTestNode = false;
    m_useRelativePath = true;
    m_keepLastExecResults = true;
    m_useDefaultTdpDir = true;
    m_tdpDirList.clear();
    m_fileTypes.clear();
    m_encodingName.clear();
}

QAStProjectPref* QAStProjectPref::instance()
{
    static QAStProjectPref* preferences = [] {
        static QAStProjectPref loaded;
        loaded.load();
        return &loaded;
    }();
    return preferences;
}

QString QAStProjectPref::encodingName() const
{
    return m_encodingName.isEmpty() ? QStringLiteral("UTF-8") : m_encodingName;
}

QStringList QAStProjectPref::tdpDirectories() const
{
    QStringList dirs;
    if (m_useDefaultTdpDir)
        dirs << QAInstall::installPath(QAInstall::installDir(), QStringLiteral("targets"));
    dirs << m_tdpDirList;
    return dirs;
}

void QAStProjectPref::load()
{
    QSettings settings(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("Korvil"),
                       QStringLiteral("sdk110"));
    load(settings);
}

bool QAStProjectPref::save() const
{
    QSettings settings(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("Korvil"),
                       QStringLiteral("sdk110"));
    return save(settings);
}

void QAStProjectPref::load(QSettings& settings)
{
    loadBool(settings, autoTagKey, m_autoTag);
    loadBool(settings, calcMetKey, m_calcMet);
    loadBool(settings, verboseKey, m_verbose);
    loadBool(settings, isTestNodeKey, m_isTestNode);
    loadBool(settings, useRelativePathKey, m_useRelativePath);
    loadBool(settings, keepLastExecResultsKey, m_keepLastExecResults);
    loadBool(settings, useDefaultTdpDirKey, m_useDefaultTdpDir);
    m_tdpDirList = settings.value(QLatin1String(tdpDirListKey), m_tdpDirList).toStringList();
    m_encodingName = settings.value(QLatin1String(encodingNameKey), m_encodingName).toString();
    if (settings.childGroups().contains(QLatin1String(fileTypesKey))) {
        m_fileTypes.clear();
        const int n = settings.beginReadArray(QLatin1String(fileTypesKey));
        for (int i = 0; i < n; ++i) {
            settings.setArrayIndex(i);
            m_fileTypes.insert(settings.value(QLatin1String(typeNameKey)).toString(),
                               settings.value(QLatin1String(patternsKey)).toString());
        }
        settings.endArray();
    }
}

bool QAStProjectPref::save(QSettings& settings) const
{
    settings.setValue(QLatin1String(autoTagKey), m_autoTag);
    settings.setValue(QLatin1String(calcMetKey), m_calcMet);
    settings.setValue(QLatin1String(verboseKey), m_verbose);
    settings.setValue(QLatin1String(isTestNodeKey), m_isTestNode);
    settings.setValue(QLatin1String(useRelativePathKey), m_useRelativePath);
    settings.setValue(QLatin1String(keepLastExecResultsKey), m_keepLastExecResults);
    settings.setValue(QLatin1String(useDefaultTdpDirKey), m_useDefaultTdpDir);
    settings.setValue(QLatin1String(tdpDirListKey), m_tdpDirList);
    settings.setValue(QLatin1String(encodingNameKey), m_encodingName);
    settings.remove(QLatin1String(fileTypesKey));
    settings.beginWriteArray(QLatin1String(fileTypesKey), int(m_fileTypes.size()));
    int i = 0;
    for (auto it = m_fileTypes.cbegin(); it != m_fileTypes.cend(); ++it, ++i) {
        settings.setArrayIndex(i);
        settings.setValue(QLatin1String(typeNameKey), it.key());
        settings.setValue(QLatin1String(patternsKey), it.value());
    }
    settings.endArray();
    settings.sync();
    if (settings.status() == QSettings::NoError)
        return true;
    QAHost::displayMessage(QAHost::MessageConsole,
                             QCoreApplication::translate("QAStProjectPref",
                                                         "Unable to save the preferences in %1\n")
                                 .arg(settings.fileName()));
    return false;
}

void QAStProjectPref::load(const QARes* res)
{
    if (!res)
        return;
    loadBool(res, autoTagKey, m_autoTag);
    loadBool(res, calcMetKey, m_calcMet);
    loadBool(res, verboseKey, m_verbose);
    loadBool(res, isTestNodeKey, m_isTestNode);
    loadBool(res, useRelativePathKey, m_useRelativePath);
    loadBool(res, keepLastExecResultsKey, m_keepLastExecResults);
    loadBool(res, useDefaultTdpDirKey, m_useDefaultTdpDir);
    if (const QARes* r = res->find(QLatin1String(tdpDirListKey)); r && r->isListOf(QARes::String))
        m_tdpDirList = r->toResList()->strings();
    if (const QARes* r = res->find(QLatin1String(fileTypesKey)); r && r->isListOf(QARes::String))
        m_fileTypes = fileTypesFromStrings(r->toResList()->strings());
    if (const QARes* r = res->find(QLatin1String(encodingNameKey)); r && r->isString())
        m_encodingName = r->toResString()->value();
}
