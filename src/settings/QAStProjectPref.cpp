#include "QAStProjectPref.h"

#include "QAHost.h"
#include "QAInstall.h"
#include "QARes.h"
#include "QATr.h"
#include "QAXML.h"

#include <QSettings>
#include <QVariant>

#include <variant>

struct QAStProjectPref::Value {
    const char* key;
    std::variant<bool QAStProjectPref::*, QStringList QAStProjectPref::*, QString QAStProjectPref::*> member;
    QVariant initial;
};

namespace {

// fileTypes is an array of entries of two fields in QSettings, a list of
// "type=patterns" strings in the resource form.
const char* const fileTypesKey = "fileTypes";
const char* const typeNameKey = "type";
const char* const patternsKey = "patterns";

// A preference's value from a QVariant of any form QVariant converts.
template <typename T>
void assign(T& value, const QVariant& from)
{
    value = from.value<T>();
}

// A preference's value from a resource entry: a switch from a Boolean or
// a text, a list from a list of strings, a text from a string. An entry of
// another form leaves the value as it is.
void read(const QARes* r, bool& value)
{
    if (r->isBoolean())
        value = r->toResBoolean()->value();
    else if (r->isString())
        value = QAXML::toBool(r->toResString()->value());
}

void read(const QARes* r, QStringList& value)
{
    if (r->isListOf(QARes::String))
        value = r->toResList()->strings();
}

void read(const QARes* r, QString& value)
{
    if (r->isString())
        value = r->toResString()->value();
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

const QList<QAStProjectPref::Value>& QAStProjectPref::values()
{
    static const QList<Value> table{
        {"autoTag", &QAStProjectPref::m_autoTag, true},
        {"calcMet", &QAStProjectPref::m_calcMet, false},
        {"verbose", &QAStProjectPref::m_verbose, false},
        {"isTestNode", &QAStProjectPref::m_isTestNode, false},
        {"useRelativePath", &QAStProjectPref::m_useRelativePath, true},
        {"keepLastExecResults", &QAStProjectPref::m_keepLastExecResults, true},
        {"useDefaultTdpDir", &QAStProjectPref::m_useDefaultTdpDir, true},
        {"tdpDirList", &QAStProjectPref::m_tdpDirList, QStringList()},
        {"encodingName", &QAStProjectPref::m_encodingName, QString()},
    };
    return table;
}

QAStProjectPref::QAStProjectPref()
{
    resetToDefaults();
}

void QAStProjectPref::resetToDefaults()
{
    for (const Value& v : values()) {
        std::visit([&](auto member) { assign(this->*member, v.initial); }, v.member);
    }
    m_fileTypes.clear();
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
    for (const Value& v : values()) {
        std::visit([&](auto member) {
            assign(this->*member, settings.value(QLatin1String(v.key), QVariant::fromValue(this->*member)));
        }, v.member);
    }
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
    for (const Value& v : values()) {
        std::visit([&](auto member) {
            settings.setValue(QLatin1String(v.key), QVariant::fromValue(this->*member));
        }, v.member);
    }
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
                             QATr::settings("Unable to save the preferences in %1\n")
                                 .arg(settings.fileName()));
    return false;
}

void QAStProjectPref::load(const QARes* res)
{
    if (!res)
        return;
    for (const Value& v : values()) {
        if (const QARes* r = res->find(QLatin1String(v.key)))
            std::visit([&](auto member) { read(r, this->*member); }, v.member);
    }
    if (const QARes* r = res->find(QLatin1String(fileTypesKey)); r && r->isListOf(QARes::String))
        m_fileTypes = fileTypesFromStrings(r->toResList()->strings());
}
