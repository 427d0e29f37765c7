#include "QAFilterExpr.h"

QAFilterExpr::QAFilterExpr() = default;

QAFilterExpr::QAFilterExpr(quint32 type, const QString& text, bool caseSensitive)
    : m_type(type)
    , m_text(text)
    , m_caseSensitive(caseSensitive)
{
}

QAFilterExpr::QAFilterExpr(const QAFilterExpr& other)
    : QObject()
    , m_type(other.m_type)
    , m_text(other.m_text)
    , m_caseSensitive(other.m_caseSensitive)
{
}

QAFilterExpr& QAFilterExpr::operator=(const QAFilterExpr& other)
{
    if (this == &other)
        return *this;
    m_type = other.m_type;
    m_text = other.m_text;
    m_caseSensitive = other.m_caseSensitive;
    exprChanged();
    return *this;
}

QAFilterExpr::~QAFilterExpr() = default;

void QAFilterExpr::setType(quint32 type)
{
    if (type == m_type)
        return;
    m_type = type;
    exprChanged();
}

void QAFilterExpr::setText(const QString& text)
{
    if (text == m_text)
        return;
    m_text = text;
    exprChanged();
}

void QAFilterExpr::setCaseSensitive(bool caseSensitive)
{
    if (caseSensitive == m_caseSensitive)
        return;
    m_caseSensitive = caseSensitive;
    exprChanged();
}

bool QAFilterExpr::match(void*, void*, bool)
{
    return false;
}

void QAFilterExpr::exprChanged() {}
