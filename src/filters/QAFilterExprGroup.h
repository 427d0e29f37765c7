#pragma once

#include "sdk110_export.h"

#include <QList>
#include <QObject>
#include <QString>

class QAFilterExpr;

// Expressions of a group, in order; the group owns them.
using QAFilterExprList = QList<QAFilterExpr*>;

// Expressions combined by "all" (matchAll true) or "any" (false), the
// result optionally inverted. The group also names the expression types of
// its family (typeName, toType, exprCount) and makes new expressions of
// that family (createExpr): a viewer derives both the group and the
// expression.
//
// The enabled flag is kept for the viewer and the editor; evaluation does
// not consult it (QAFilter::match).
class SDK110_EXPORT QAFilterExprGroup : public QObject {
    Q_OBJECT
public:
    // matchAll true, enabled true, invertFilter false, no expression.
    QAFilterExprGroup();
    // Deletes the expressions.
    ~QAFilterExprGroup() override;

    bool matchAll() const { return m_matchAll; }
    void setMatchAll(bool matchAll) { m_matchAll = matchAll; }
    bool enabled() const { return m_enabled; }
    void setEnabled(bool enabled) { m_enabled = enabled; }
    bool invertFilter() const { return m_invertFilter; }
    void setInvertFilter(bool invertFilter) { m_invertFilter = invertFilter; }

    const QAFilterExprList& exprList() const { return m_exprs; }
    // Appends expr and takes ownership of it.
    void addExpr(QAFilterExpr* expr);
    // Removes and deletes the expression at index; false (nothing changed)
    // for an index out of range.
    bool removeExpr(int index);
    // Deletes every expression.
    void clearExprs();

    // Element name of a group in the viewer's XML ("group" in the base).
    virtual QString groupTag() const;
    // Display name of an expression type ("<unknown>" in the base).
    virtual QString typeName(quint32 type) const;
    // Inverse of typeName; the base knows no name: 0 with *ok false.
    virtual quint32 toType(const QString& name, bool* ok = nullptr) const;
    // A new default expression of the family (a plain QAFilterExpr in the
    // base); the caller owns it.
    virtual QAFilterExpr* createExpr();
    // The expressions in order: the first that matches ends an "any" group
    // with !invertFilter, the first that fails ends an "all" group with
    // invertFilter; after the last, "all" gives !invertFilter and "any"
    // gives invertFilter. So an empty "all" group matches and an empty
    // "any" group fails, before inversion.
    virtual bool match(void* item, void* context, bool useWildcard);
    // Number of expression types of the family: the types are 0 to
    // exprCount() - 1, the choices the editor offers (0 in the base). The
    // number of expressions held is exprList().size().
    virtual int exprCount() const;

private:
    bool m_matchAll = true;
    bool m_enabled = true;
    bool m_invertFilter = false;
    QAFilterExprList m_exprs;
};
