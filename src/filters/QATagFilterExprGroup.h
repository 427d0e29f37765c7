#pragma once

#include "QAFilterExprGroup.h"
#include "sdk110_export.h"

// A group of the tag browser's filters: its expressions are
// QATagFilterExpr, of the types "Name", "Kind", "File" and "Qualifier"
// (QATagFilterExpr::Type). Its XML element is "tag_group" (see QATagFilter).
class SDK110_EXPORT QATagFilterExprGroup : public QAFilterExprGroup {
    Q_OBJECT
public:
    QATagFilterExprGroup();
    ~QATagFilterExprGroup() override;

    QString groupTag() const override;
    // "Name", "Kind", "File", "Qualifier", translated; "<unknown>" for
    // another type.
    QString typeName(quint32 type) const override;
    quint32 toType(const QString& name, bool* ok = nullptr) const override;
    // A Name expression with empty text, not case-sensitive.
    QAFilterExpr* createExpr() override;
    int exprCount() const override;
};
