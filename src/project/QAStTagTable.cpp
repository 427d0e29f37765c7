#include "QAStTagTable.h"

#include "QAStAClassTag.h"
#include "QAStAFunctionTag.h"
#include "QAStAMethodTag.h"
#include "QAStAPackageTag.h"
#include "QAStAStructTag.h"
#include "QAStFile.h"

#include <cstring>

#ifdef Q_OS_LINUX
#include <sys/mman.h>
#endif

namespace {

// The kind words of the tag classes.
struct KindRow {
    QByteArrayView word;
    QAStTagTable::Class kind;
};

const KindRow kindRows[] = {
    {"function", QAStTagTable::Function},   {"prototype", QAStTagTable::Function},
    {"method", QAStTagTable::Method},       {"class", QAStTagTable::ClassTag},
    {"struct", QAStTagTable::Struct},       {"namespace", QAStTagTable::Package},
    {"package", QAStTagTable::Package},     {"packspec", QAStTagTable::Package},
    {"subprogram", QAStTagTable::Function}, {"subprogspec", QAStTagTable::Function},
    {"interface", QAStTagTable::ClassTag},  {"separate", QAStTagTable::Package},
};

QAStTagTable::Class withParent(QAStTagTable::Class kind, bool parentIsClass)
{
    return kind == QAStTagTable::Function && parentIsClass ? QAStTagTable::Method : kind;
}

}

void qastAdviseHugePages(void* block, size_t bytes)
{
#if defined(Q_OS_LINUX) && defined(MADV_HUGEPAGE)
    constexpr quintptr huge = 2 << 20;
    const auto start = (quintptr(block) + huge - 1) & ~(huge - 1);
    const auto end = (quintptr(block) + bytes) & ~(huge - 1);
    if (end > start)
        ::madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE);
#else
    Q_UNUSED(block);
    Q_UNUSED(bytes);
#endif
}

QAStTagTable::Class QAStTagTable::classify(QByteArrayView kind, bool parentIsClass)
{
    // The two kinds of nearly every record first.
    if (kind == QByteArrayView("prototype") || kind == QByteArrayView("function"))
        return withParent(Function, parentIsClass);
    for (const KindRow& row : kindRows) {
        if (kind == row.word)
            return withParent(row.kind, parentIsClass);
    }
    return NoClass;
}

QAStTagTable::Class QAStTagTable::classify(const QString& kind, const QString& parentKind)
{
    const bool parentIsClass =
        parentKind == QLatin1String("class") || parentKind == QLatin1String("interface");
    for (const KindRow& row : kindRows) {
        if (kind == QLatin1String(row.word.data(), row.word.size()))
            return withParent(row.kind, parentIsClass);
    }
    return NoClass;
}

QAStATag* QAStTagTable::makeTag(Class kind, const QString& name, const QString& path, int line,
                                int qualifier, const QString& signature,
                                const QString& completeName, const QStringList& inherits,
                                QAStData* under)
{
    QAStATag* tag = nullptr;
    switch (kind) {
    case Package: {
        auto* package = new QAStAPackageTag(name, path, line, under, under->last());
        package->setCompleteName(completeName);
        tag = package;
        break;
    }
    case ClassTag: {
        auto* c = new QAStAClassTag(name, path, line, under, under->last());
        c->setInherits(inherits);
        tag = c;
        break;
    }
    case Struct:
        tag = new QAStAStructTag(name, path, line, under, under->last());
        break;
    case Function:
        tag = new QAStAFunctionTag(name, path, line, under, under->last());
        break;
    case Method: {
        auto* method = new QAStAMethodTag(name, path, line, under, under->last());
        method->setCompleteName(completeName);
        tag = method;
        break;
    }
    case NoClass:
        return nullptr;
    }
    tag->setQualifier(qualifier);
    tag->setSignature(signature);
    return tag;
}

QAStTagTable::QAStTagTable(const QString& path, const QString& separator)
    : m_path(path), m_separator(separator)
{
}

int QAStTagTable::scopeIndex(const QString& scope)
{
    // Records in a row mostly share their scope.
    if (!m_scopes.isEmpty() && m_scopes.constLast() == scope)
        return int(m_scopes.size()) - 1;
    const auto found = m_scopeIndex.constFind(scope);
    if (found != m_scopeIndex.cend())
        return found.value();
    m_scopes.append(scope);
    m_scopeIndex.insert(scope, int(m_scopes.size()) - 1);
    return int(m_scopes.size()) - 1;
}

QString QAStTagTable::decoded(qsizetype at, int size, bool utf8) const
{
    if (size == 0)
        return QString();
    const QByteArrayView bytes(m_text.data() + at, size);
    return utf8 ? QString::fromUtf8(bytes) : QString::fromLatin1(bytes);
}

QString QAStTagTable::name(int row) const
{
    const Row& r = m_rows.at(row);
    return decoded(r.text, r.nameSize, r.utf8);
}

void QAStTagTable::make(QAStData* owner)
{
    QList<QAStATag*> made(m_rows.size(), nullptr);
    for (qsizetype i = 0; i < m_rows.size(); ++i) {
        const Row& row = m_rows.at(i);
        QAStData* under = row.parent >= 0 ? made.at(row.parent) : nullptr;
        if (!under)
            under = owner;
        const QString name = decoded(row.text, row.nameSize, row.utf8);
        const QString completeName =
            row.scope >= 0 ? m_scopes.at(row.scope) + m_separator + name : name;
        made[i] = makeTag(row.kind, name, m_path, row.line, row.qualifier,
                          decoded(row.text + row.nameSize, row.signatureSize, row.utf8),
                          completeName, row.inherits >= 0 ? m_inherits.at(row.inherits) : QStringList(),
                          under);
    }
}

bool QAStTagTable::mayHold(const char* className) const
{
    // Rows only ever become items of these classes.
    static const QMetaObject* const kinds[] = {
        &QAStAPackageTag::staticMetaObject, &QAStAClassTag::staticMetaObject,
        &QAStAStructTag::staticMetaObject, &QAStAMethodTag::staticMetaObject,
    };
    for (const QMetaObject* kind : kinds) {
        for (const QMetaObject* m = kind; m; m = m->superClass()) {
            if (std::strcmp(m->className(), className) == 0)
                return true;
        }
    }
    return false;
}
