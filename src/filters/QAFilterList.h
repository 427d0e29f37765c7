#pragma once

#include "sdk110_export.h"

#include <QList>
#include <QString>

class QAFilter;

// A list of filters. The list itself owns nothing: the manager that holds
// it deletes its filters.
class SDK110_EXPORT QAFilterList : public QList<QAFilter*> {
public:
    // The first filter whose name equals name exactly; null when none does.
    QAFilter* fromName(const QString& name) const;
};
