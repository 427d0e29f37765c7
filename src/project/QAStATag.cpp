#include "QAStATag.h"

#include "QAFileUtil.h"
#include "QARes.h"
#include "QAStAFunctionTag.h"
#include "QAStDataFactory.h"
#include "QAStFile.h"
#include "QAStFolder.h"
#include "QAStMenus.h"
#include "QAStNode.h"
#include "QAStNodeFileRef.h"
#include "QAStProjectPref.h"

#include <QCoreApplication>
#include <QDomElement>
#include <QFileInfo>
#include <QTextStream>

namespace {
const QAStDataFactory::Registration<QAStATag> tagRow("tag");

QDomElement childElement(const QDomElement& e, const char* tag)
{
    return e.firstChildElement(QLatin1String(tag));
}

// The name made unique among the nodes of the tree below top.
QString uniqueNodeName(const QAStData* top, const QString& name)
{
    QString unique = name;
    for (int n = 2; top->findNode(unique); ++n)
        unique = name + QLatin1Char(' ') + QString::number(n);
    return unique;
}
}

QAStATag::QAStATag(const QString& name, const QPixmap& icon, const QString& filePath, int line,
                   QAStData* parent, QAStData* after)
    : QAStData(name, icon, parent, after), m_line(line)
{
    setFilePath(filePath);
}

QAStATag::QAStATag(const QDomElement& e, int version, QAStData* parent, QAStData* after)
    : QAStData(parent, after)
{
    init(e, version);
}

QAStATag::QAStATag(QARes* res, QAStData* parent, QAStData* after) : QAStData(res, parent, after)
{
    if (!res)
        return;
    if (const QARes* path = res->find(QStringLiteral("filepath")); path && path->isString())
        setFilePath(path->toText());
    if (const QARes* line = res->find(QStringLiteral("line")); line && line->isInt())
        m_line = line->toText().toInt();
    if (const QARes* qualifier = res->find(QStringLiteral("qualifier")); qualifier && qualifier->isInt())
        m_qualifier = qualifier->toText().toInt();
    if (const QARes* signature = res->find(QStringLiteral("signature")); signature && signature->isString())
        m_signature = signature->toText();
}

QAStATag::QAStATag(QAStData* parent, QAStData* after) : QAStData(parent, after) {}

QString QAStATag::filePath() const
{
    return QAFileUtil::relativePathToAbs(directory(), m_filePath);
}

void QAStATag::setFilePath(const QString& path)
{
    // Tags below a file mostly share its path: keep one copy of the text.
    if (const auto* above = qobject_cast<const QAStATag*>(parent());
        above && above->m_filePath == path) {
        m_filePath = above->m_filePath;
        return;
    }
    m_filePath = QAFileUtil::relativePathToAbs(directory(), path);
}

void QAStATag::setQualifier(int qualifier)
{
    m_qualifier = qualifier;
}

int QAStATag::qualifierWordValue(QByteArrayView word)
{
    if (word == "public")
        return Public;
    if (word == "protected")
        return Protected;
    if (word == "private")
        return Private;
    if (word == "pure virtual" || word == "abstract")
        return PureVirtual;
    if (word == "virtual")
        return Virtual;
    return 0;
}

QAStFile* QAStATag::file() const
{
    for (QAStData* item = const_cast<QAStATag*>(this); item; item = item->parent()) {
        if (auto* f = qobject_cast<QAStFile*>(item))
            return f;
        if (!qobject_cast<QAStATag*>(item))
            return nullptr;
    }
    return nullptr;
}

int QAStATag::language() const
{
    // The file item keeps its language: ask it when the tag shares its path.
    if (const QAStFile* f = file(); f && f != this && f->storedFilePath() == m_filePath)
        return f->language();
    return QAStFile::languageType(filePath());
}

QString QAStATag::displayName() const
{
    return m_signature.isEmpty() ? name() : name() + m_signature;
}

QString QAStATag::qualifiedName() const
{
    return name();
}

QString QAStATag::scopeSeparator() const
{
    const int lang = language();
    return lang == QAStFile::LanguageJava || lang == QAStFile::LanguageAda
        ? QStringLiteral(".")
        : QStringLiteral("::");
}

QList<QAStATag*> QAStATag::children() const
{
    QList<QAStATag*> tags;
    for (QAStData* c = child(); c; c = c->next()) {
        if (auto* tag = qobject_cast<QAStATag*>(c))
            tags.append(tag);
    }
    return tags;
}

QList<QAStATag*> QAStATag::descendants() const
{
    QList<QAStATag*> found;
    for (QAStATag* c : children()) {
        found.append(c);
        found.append(c->descendants());
    }
    return found;
}

QString QAStATag::fileKey() const
{
    return fileKeyOf(filePath());
}

QString QAStATag::fileKeyOf(const QString& path)
{
    return QAFileUtil::cleanDirPath(path);
}

void QAStATag::edit()
{
    editFile(filePath(), m_line > 0 ? m_line : 0);
}

void QAStATag::doubleClickAction()
{
    edit();
}

QMenu* QAStATag::popupMenu(QWidget* parent, QAStNode* testParent)
{
    return QAStMenus::tagMenu(this, parent, testParent);
}

void QAStATag::localActionMenuItems(QMenu*) {}

bool QAStATag::canBeTested() const
{
    return false;
}

QAStATag* QAStATag::directlyTestableParent() const
{
    for (auto* tag = qobject_cast<QAStATag*>(parent()); tag && !qobject_cast<QAStFile*>(tag);
         tag = qobject_cast<QAStATag*>(tag->parent())) {
        if (tag->canBeTested())
            return tag;
    }
    return nullptr;
}

bool QAStATag::isARootItem() const
{
    const QAStData* above = parent();
    return !qobject_cast<const QAStATag*>(above) || qobject_cast<const QAStFile*>(above);
}

QString QAStATag::testNodeKind() const
{
    return testNodeKindOf(language());
}

QString QAStATag::testNodeKindOf(int language)
{
    switch (language) {
    case QAStFile::LanguageJava:
        return QStringLiteral("java_testing");
    case QAStFile::LanguageCpp:
        return QStringLiteral("object_testing");
    default:
        return QStringLiteral("unit_testing");
    }
}

QString QAStATag::testedSourceFile() const
{
    return filePath();
}

QAStNode* QAStATag::test(QAStNode* parent)
{
    const QString kind = testNodeKind();
    if (!parent || !canBeTested() || !parent->addableChildKinds().contains(kind))
        return nullptr;
    QAStNode* node = parent->addNewChild(kind);
    if (!node)
        return nullptr;
    node->setName(uniqueNodeName(node->root(), tr("Test %1").arg(qualifiedName())));

    const QString source = testedSourceFile();
    if (QAStAFunctionTag::isDeclarationFile(source))
        return node;
    if (auto* ref = qobject_cast<QAStNodeFileRef*>(node->addNewChild(QStringLiteral("source")))) {
        ref->setName(QFileInfo(source).fileName());
        ref->setFileKey(preferences()->useRelativePath()
                            ? QAFileUtil::absPathToRelative(node->directory(), source)
                            : source);
    }
    return node;
}

QStringList QAStATag::stubbableFiles() const
{
    QStringList stubbable;
    const auto* tree = qobject_cast<const QAStFolder*>(root());
    if (!tree)
        return stubbable;
    const QString own = fileKey();
    constexpr int bodies = QAStFile::LanguageC | QAStFile::LanguageCpp | QAStFile::LanguageAda;
    for (const QAStFile* f : tree->files()) {
        if ((f->language() & bodies) && f->fileKey() != own)
            stubbable.append(f->filePath());
    }
    return stubbable;
}

QString QAStATag::scopedName() const
{
    const auto* enclosing = qobject_cast<const QAStATag*>(parent());
    if (!enclosing || qobject_cast<const QAStFile*>(enclosing))
        return name();
    return enclosing->qualifiedName() + scopeSeparator() + name();
}

QList<QAStATag*> QAStATag::treeTags() const
{
    QAStData* top = root();
    if (const auto* tree = qobject_cast<const QAStFolder*>(top)) {
        QList<QAStATag*> tags;
        for (QAStFile* f : tree->files())
            tags.append(f->descendants());
        return tags;
    }
    auto* topTag = qobject_cast<QAStATag*>(top);
    return topTag ? topTag->descendants() : QList<QAStATag*>();
}

void QAStATag::useIcon(const QString& fileName)
{
    if (iconFileName() != fileName)
        setIconByFileName(fileName);
}

void QAStATag::write(QTextStream& s, int indent) const
{
    QAXML::indent(s, indent);
    s << "<tag>\n";
    const int inner = indent + 1;
    QAStData::write(s, inner);
    const QString path = preferences()->useRelativePath()
        ? QAFileUtil::absPathToRelative(directory(), filePath())
        : filePath();
    QAXML::toStream(s, "filepath", QAXML::stringToXMLValue(path), inner);
    QAXML::toStream(s, "line", QAXML::fromInt(m_line), inner);
    QAXML::toStream(s, "qualifier", QAXML::fromInt(m_qualifier), inner);
    QAXML::toStream(s, "signature", QAXML::stringToXMLValue(m_signature), inner);
    QAXML::indent(s, inner);
    s << "<tag_child>\n";
    for (QAStData* c = child(); c; c = c->next())
        c->write(s, inner + 1);
    QAXML::indent(s, inner);
    s << "</tag_child>\n";
    QAXML::indent(s, indent);
    s << "</tag>\n";
}

bool QAStATag::init(const QDomElement& e, int version)
{
    if (!checkTag(e, "tag") || !QAStData::init(childElement(e, "data"), version)) {
        setValid(false);
        return false;
    }
    setFilePath(QAXML::domValue(childElement(e, "filepath")));
    bool ok = false;
    const int line = QAXML::toInt(QAXML::domText(childElement(e, "line")), &ok);
    m_line = ok ? line : -1;
    m_qualifier = QAXML::toInt(QAXML::domText(childElement(e, "qualifier")));
    m_signature = QAXML::domValue(childElement(e, "signature"));
    initChildren(childElement(e, "tag_child"), version, QStringList{QStringLiteral("QAStATag")});
    return true;
}
