#pragma once

#include "QAFiltersMgr.h"
#include "sdk110_export.h"

struct QATagFilterSubject;

// The filters of the tag browser: its filters are QATagFilter, and it
// imports any export file whose filter elements are tag filters. The
// browser asks match(tag) for each tag it would show, once filterActive().
class SDK110_EXPORT QATagFiltersMgr : public QAFiltersMgr {
    Q_OBJECT
public:
    explicit QATagFiltersMgr(QObject* parent = nullptr);
    ~QATagFiltersMgr() override;

    using QAFiltersMgr::match;
    // Whether tag passes an enabled filter.
    bool match(const QATagFilterSubject& tag);

    QAFilter* createFilter() override;
    // The root of a tag filters file carries nothing of its own: accepted.
    bool xmlLoad(QDomDocument& doc, QDomElement& root) override;
};
