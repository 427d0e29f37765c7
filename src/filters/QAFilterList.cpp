#include "QAFilterList.h"

#include "QAFilter.h"

QAFilter* QAFilterList::fromName(const QString& name) const
{
    for (QAFilter* filter : *this) {
        if (filter->filterName() == name)
            return filter;
    }
    return nullptr;
}
