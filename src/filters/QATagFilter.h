#pragma once

#include "QAFilter.h"
#include "sdk110_export.h"

struct QATagFilterSubject;

// A filter of the tag browser: its groups are QATagFilterExprGroup.
//
// Element "tag_filter", attributes "name", "enabled" and "wildcard", holding
// one "tag_group" per group (attributes "all", "enabled", "invert"), each
// holding one "expr" per expression (attributes "type": "name", "kind",
// "file", "qualifier" or the number of a type outside the family, "case",
// "text"). Flags are "1" or "0"; a missing attribute takes the default of
// its field (docs/formats/filters.md).
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
    // filter as it was, when e is another element or a flag of its own is
    // neither "0" nor "1". A bad group (another element, a bad flag) or a
    // bad expression (another element, an unknown type, a bad flag) is left
    // out alone; loadFaults() tells each.
    bool xmlLoad(QDomDocument& doc, QDomElement& e) override;
};
