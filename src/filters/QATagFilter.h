#pragma once

#include "QAFilter.h"
#include "sdk110_export.h"

struct QATagFilterSubject;

// A filter of the tag browser: its groups are QATagFilterExprGroup.
//
// Element "tag_filter", attributes "name", "enabled" and "wildcard", holding
// one "tag_group" per group (attributes "all", "enabled", "invert"), each
// holding one "expr" per expression (attributes "type": "name", "kind",
// "file" or "qualifier", "case", "text"). Flags are "1" or "0"; a missing
// attribute takes the default of its field (docs/formats/filters.md).
class SDK110_EXPORT QATagFilter : public QAFilter {
    Q_OBJECT
public:
    QATagFilter();
    ~QATagFilter() override;

    using QAFilter::match;
    // Whether tag passes the filter (its enabled flag is not consulted).
    bool match(const QATagFilterSubject& tag);

    QAFilterExprGroup* createGroup() override;
    QString xmlTag() const override;
    void xmlSave(QDomDocument& doc, QDomElement& e) override;
    // Replaces name, flags and groups with those of e; false, leaving the
    // filter as it was, when e is not a well-formed tag filter: another
    // element name, a flag other than "0" or "1", an unknown expression
    // type, or an element other than "tag_group" or "expr" where one is
    // expected.
    bool xmlLoad(QDomDocument& doc, QDomElement& e) override;
};
