#include "QAStTargetPackage.h"

#include "QARes.h"
#include "QAStTargetPackageList.h"
#include "QATr.h"

#include <QCoreApplication>
#include <QDir>

namespace {

const char* const j2meRestrictionKey = "J2ME_RESTRICTION";
const char* const furtherDefaultPrefix = "DEFAULT_";

// The mode keys, in the order of QAStTargetPackage::Feature.
const char* const featureModeKeys[] = {"ATC_MODE", "ATT_MODE", "ATP_MODE", "ATQ_MODE"};

bool isScalar(const QARes* res)
{
    return !res->isGroup() && !res->isList();
}

// A fault of the ini goes where the reader's own faults go, so that a scan
// counts and shows both alike.
bool reportWrongType(const QARes* res, const QString& expected)
{
    QARes::errorHandler()->error(res->fileName(), res->line(),
                                 QATr::settings("the value of %1 must be %2").arg(res->name(), expected));
    return false;
}

// A list of scalars gives their texts; a single scalar is a one-item list
// (none when it is empty).
bool toStringList(const QARes* res, QStringList& value)
{
    if (isScalar(res)) {
        const QString text = res->toText();
        value = text.isEmpty() ? QStringList() : QStringList{text};
        return true;
    }
    if (!res->isList())
        return false;
    for (const QARes* item : res->toResList()->items()) {
        if (!isScalar(item))
            return false;
    }
    value = res->toResList()->strings();
    return true;
}

// A mode is 0 or 1, written as an integer, a Boolean or a string of either.
bool toFeatureMode(const QARes* res, int& mode)
{
    if (!isScalar(res))
        return false;
    const QString text = res->toText();
    if (text == QLatin1String("1") || text == QLatin1String("true"))
        mode = 1;
    else if (text == QLatin1String("0") || text == QLatin1String("false"))
        mode = 0;
    else
        return false;
    return true;
}

// A further default keeps the type it was written in.
bool toFurtherDefault(const QARes* res, QVariant& value)
{
    switch (res->type()) {
    case QARes::String: value = res->toResString()->value(); return true;
    case QARes::Int: value = qlonglong(res->toResInt()->value()); return true;
    case QARes::Boolean: value = res->toResBoolean()->value(); return true;
    case QARes::List: {
        QStringList items;
        if (!toStringList(res, items))
            return false;
        value = items;
        return true;
    }
    case QARes::Group:
        break;
    }
    return false;
}

}

const QAStTargetPackage::TextKey QAStTargetPackage::s_textKeys[] = {
    {"NAME", &QAStTargetPackage::m_name},
    {"LANGUAGE", &QAStTargetPackage::m_language},
    {"OBJEXT", &QAStTargetPackage::m_objExtension},
    {"LIBEXT", &QAStTargetPackage::m_libExtension},
    {"DLLEXT", &QAStTargetPackage::m_dllExtension},
    {"SRCEXT", &QAStTargetPackage::m_srcExtension},
    {"EXEEXT", &QAStTargetPackage::m_exeExtension},
    {"DEFAULT_CPPFLAGS", &QAStTargetPackage::m_cppFlags},
    {"DEFAULT_CFLAGS", &QAStTargetPackage::m_cFlags},
    {"DEFAULT_LDFLAGS", &QAStTargetPackage::m_ldFlags},
    {"DEFAULT_LIBS", &QAStTargetPackage::m_libs},
    {"DEFAULT_DEFINES", &QAStTargetPackage::m_defines},
};

const QAStTargetPackage::ListKey QAStTargetPackage::s_listKeys[] = {
    {"DEFAULT_INCLUDE_PATHS", &QAStTargetPackage::m_includePaths},
    {"DEFAULT_LIBRARY_PATHS", &QAStTargetPackage::m_libraryPaths},
    {"DEFAULT_BOOTCLASSPATH", &QAStTargetPackage::m_bootClassPath},
};

QAStTargetPackage::QAStTargetPackage() = default;

bool QAStTargetPackage::read(QARes* res, const QString& directoryName, const QString& iniName)
{
    reset();
    m_directory = QDir::cleanPath(directoryName);
    m_iniName = iniName;
    if (!res || !res->isGroup())
        return true;
    // Every reader runs, so that each fault is reported.
    bool ok = readTexts(res);
    ok = readLists(res) && ok;
    ok = readJ2meRestriction(res) && ok;
    ok = readFeatureModes(res) && ok;
    ok = readFurtherDefaults(res) && ok;
    return ok;
}

void QAStTargetPackage::reset()
{
    *this = QAStTargetPackage();
}

bool QAStTargetPackage::readTexts(const QARes* res)
{
    bool ok = true;
    for (const TextKey& key : s_textKeys) {
        const QARes* value = res->find(QLatin1String(key.key));
        if (!value)
            continue;
        if (isScalar(value))
            this->*key.field = value->toText();
        else
            ok = reportWrongType(value, QATr::settings("a string"));
    }
    return ok;
}

bool QAStTargetPackage::readLists(const QARes* res)
{
    bool ok = true;
    for (const ListKey& key : s_listKeys) {
        const QARes* value = res->find(QLatin1String(key.key));
        if (value && !toStringList(value, this->*key.field))
            ok = reportWrongType(value, QATr::settings("a list of strings"));
    }
    return ok;
}

bool QAStTargetPackage::readJ2meRestriction(const QARes* res)
{
    const QARes* value = res->find(QLatin1String(j2meRestrictionKey));
    if (!value)
        return true;
    if (!isScalar(value))
        return reportWrongType(value, QATr::settings("true or false"));
    m_j2meRestriction = value->toText() == QLatin1String("true");
    return true;
}

bool QAStTargetPackage::readFeatureModes(const QARes* res)
{
    bool ok = true;
    for (int feature = CodeCoverage; feature <= PerformanceProfiling; ++feature) {
        const QARes* value = res->find(QLatin1String(featureModeKeys[feature]));
        if (value && !toFeatureMode(value, m_featureModes[feature]))
            ok = reportWrongType(value, QATr::settings("0 or 1"));
    }
    return ok;
}

// The "DEFAULT_" keys outside the table; the first entry of a name counts,
// as for every other key.
bool QAStTargetPackage::readFurtherDefaults(const QARes* res)
{
    bool ok = true;
    for (const QARes* entry : res->toResGroup()->children()) {
        const QString& key = entry->name();
        if (!key.startsWith(QLatin1String(furtherDefaultPrefix)) || isTableKey(key)
            || m_defaultValues.contains(key))
            continue;
        QVariant value;
        if (toFurtherDefault(entry, value))
            m_defaultValues.insert(key, value);
        else
            ok = reportWrongType(entry, QATr::settings("a string or a list of strings"));
    }
    return ok;
}

bool QAStTargetPackage::isTableKey(const QString& key)
{
    for (const TextKey& k : s_textKeys) {
        if (key == QLatin1String(k.key))
            return true;
    }
    for (const ListKey& k : s_listKeys) {
        if (key == QLatin1String(k.key))
            return true;
    }
    return false;
}

int QAStTargetPackage::featureMode(Feature feature) const
{
    return m_featureModes[feature];
}

QString QAStTargetPackage::featureModeKey(Feature feature)
{
    return QLatin1String(featureModeKeys[feature]);
}

int QAStTargetPackage::languageTypeOf(const QString& language)
{
    const QString upper = language.toUpper();
    if (upper == QLatin1String("CPP") || upper == QLatin1String("C++"))
        return LanguageCpp;
    if (upper == QLatin1String("ADA") || upper == QLatin1String("ADA83") || upper == QLatin1String("ADA95"))
        return LanguageAda;
    if (upper == QLatin1String("JAVA"))
        return LanguageJava;
    return LanguageC;
}

bool QAStTargetPackage::initialize(QAILogMonitor* monitor)
{
    return QAStTargetPackageList::buildInstalled(monitor);
}

void QAStTargetPackage::terminate()
{
    QAStTargetPackageList::releaseInstalled();
}
