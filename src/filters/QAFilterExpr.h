#pragma once

#include "sdk110_export.h"

#include <QObject>
#include <QString>

// One condition of a filter: a type (what is tested, its meaning given by
// the group that holds the expression, see QAFilterExprGroup::typeName), an
// operand text and a case-sensitivity flag.
//
// The base tests nothing: match() is false. A viewer derives its own
// expression and implements match() on the items it passes. Derived
// expressions that prepare something from the fields (a compiled pattern)
// do it in exprChanged(), which every setter and the assignment call after
// a change, so that match() itself never prepares anything.
class SDK110_EXPORT QAFilterExpr : public QObject {
    Q_OBJECT
public:
    // Type 0, empty text, not case-sensitive.
    QAFilterExpr();
    QAFilterExpr(quint32 type, const QString& text, bool caseSensitive);
    // Copies the fields; the copy has no QObject parent.
    QAFilterExpr(const QAFilterExpr& other);
    QAFilterExpr& operator=(const QAFilterExpr& other);
    ~QAFilterExpr() override;

    quint32 type() const { return m_type; }
    void setType(quint32 type);
    QString text() const { return m_text; }
    void setText(const QString& text);
    bool caseSensitive() const { return m_caseSensitive; }
    void setCaseSensitive(bool caseSensitive);

    // Whether item holds the condition. item and context are the viewer's,
    // never looked into by the framework; useWildcard is the filter's choice
    // between wildcard and regular-expression text. The base returns false.
    virtual bool match(void* item, void* context, bool useWildcard);

protected:
    // Called after type, text or case sensitivity changed (not from the
    // constructors: a derived constructor prepares itself).
    virtual void exprChanged();

private:
    quint32 m_type = 0;
    QString m_text;
    bool m_caseSensitive = false;
};
