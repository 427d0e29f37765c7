#include "QALogging.h"

Q_LOGGING_CATEGORY(lcSupport, "sdk110.support")
Q_LOGGING_CATEGORY(lcSettings, "sdk110.settings")
Q_LOGGING_CATEGORY(lcTargetPackage, "sdk110.targetpackage", QtInfoMsg)
Q_LOGGING_CATEGORY(lcEngine, "sdk110.engine")
Q_LOGGING_CATEGORY(lcProject, "sdk110.project")
Q_LOGGING_CATEGORY(lcTagging, "sdk110.tagging", QtWarningMsg)
Q_LOGGING_CATEGORY(lcFilters, "sdk110.filters")
Q_LOGGING_CATEGORY(lcAnalysis, "sdk110.analysis")
Q_LOGGING_CATEGORY(lcWidgets, "sdk110.widgets")
Q_LOGGING_CATEGORY(lcInvariant, "sdk110.invariant")

bool QALogging::brokenInvariant(const char* condition, const char* file, int line)
{
    qCCritical(lcInvariant, "%s:%d: broken invariant: %s", file, line, condition);
#ifndef NDEBUG
    qFatal("%s:%d: broken invariant: %s", file, line, condition);
#endif
    return false;
}
