#include "QMetQuery.h"

#include "QMetElement.h"

namespace {
// The keys whose class value is taken over the complete class.
bool isClassWideKey(const QString& key)
{
    return key == QLatin1String("VG") || key == QLatin1String("Statements") ||
        key == QLatin1String("NestedLevel");
}

// The value as its shortest decimal text; empty when the element lacks it.
QString valueText(const QMetElement* e, const QString& key)
{
    bool ok = false;
    const float value = e->metricValue(key, &ok);
    return ok ? QString::number(value) : QString();
}
}

QMetQuery::QMetQuery(const QString& file, QObject* parent)
    : QMetTree(file, parent)
{
}

QMetQuery::QMetQuery(const QStringList& files, QObject* parent)
    : QMetTree(files, parent)
{
}

void QMetQuery::stroudChange(float stroudNumber)
{
    if (!(stroudNumber > 0))
        return;
    QStroudNumber = stroudNumber;
    QMetTree::stroudChange(stroudNumber);
}

float QMetQuery::fileMetric(const QString& sourceFile, const QString& key, bool* ok) const
{
    if (const QMetElement* file = fileElement(sourceFile))
        return file->metricValue(key, ok);
    if (ok)
        *ok = false;
    return 0;
}

float QMetQuery::itemMetric(const QString& sourceFile, int line, const QString& key,
                            bool* ok) const
{
    const QMetElement* item = findLine(sourceFile, line);
    if (!item) {
        if (ok)
            *ok = false;
        return 0;
    }
    if (item->isClass() && isClassWideKey(key)) {
        bool found = false;
        const float value = item->metricValue(key + QLatin1String("_SUM2"), &found);
        if (found) {
            if (ok)
                *ok = true;
            return value;
        }
    }
    return item->metricValue(key, ok);
}

QMetElement* QMetQuery::findLine(const QString& sourceFile, int line) const
{
    QMetElement* file = fileElement(sourceFile);
    if (!file)
        return nullptr;
    for (QMetElement* child : file->children())
        if (QMetElement* found = findLine(child, line))
            return found;
    return nullptr;
}

QMetElement* QMetQuery::findLine(QMetElement* element, int line)
{
    if (element->lineNumber() == line)
        return element;
    for (QMetElement* child : element->children())
        if (QMetElement* found = findLine(child, line))
            return found;
    return nullptr;
}

QString QMetQuery::getSourceLinesValue(const QString& sourceFile) const
{
    const QMetElement* file = fileElement(sourceFile);
    if (!file)
        return QString();
    const QString code = valueText(file, QStringLiteral("Src1"));
    const QString comments = valueText(file, QStringLiteral("Src2"));
    if (code.isEmpty() && comments.isEmpty())
        return QString();
    return (code.isEmpty() ? QStringLiteral("-") : code) + QLatin1Char('/') +
        (comments.isEmpty() ? QStringLiteral("-") : comments);
}
