#pragma once

#include "QALogging.h"
#include "sdk110_export.h"

#include <QLoggingCategory>

// The library's logging categories, one per area, each defined once in
// QALogging.cpp. Rules in QT_LOGGING_RULES turn them on and off, e.g.
// "sdk110.tagging.info=true".
//
// Where a category's default threshold is above debug, it says so.
SDK110_EXPORT const QLoggingCategory& lcSupport();   // sdk110.support
SDK110_EXPORT const QLoggingCategory& lcSettings();  // sdk110.settings
// sdk110.targetpackage: the scan of target package directories, info and up.
SDK110_EXPORT const QLoggingCategory& lcTargetPackage();
SDK110_EXPORT const QLoggingCategory& lcEngine();    // sdk110.engine
SDK110_EXPORT const QLoggingCategory& lcProject();   // sdk110.project
// sdk110.tagging: the tag reader and the tag kinds, warnings and up.
SDK110_EXPORT const QLoggingCategory& lcTagging();
SDK110_EXPORT const QLoggingCategory& lcFilters();   // sdk110.filters
SDK110_EXPORT const QLoggingCategory& lcAnalysis();  // sdk110.analysis
SDK110_EXPORT const QLoggingCategory& lcWidgets();   // sdk110.widgets
// sdk110.invariant: broken invariants of the library's own structures.
SDK110_EXPORT const QLoggingCategory& lcInvariant();

namespace QALogging {
// Reports a broken invariant: "FILE:LINE: broken invariant: CONDITION" as
// a critical message of sdk110.invariant. A library built with assertions
// (no NDEBUG) stops there; a release build goes on. Returns false.
SDK110_EXPORT bool brokenInvariant(const char* condition, const char* file, int line);
}

// A soft assertion for an invariant of the library's own structures (the
// tree's sibling links and ownership, the walk's current child): true when
// it holds; otherwise reported (QALogging::brokenInvariant) and false, so
// that the caller takes its safe way out instead of crashing:
//
//     if (!SDK110_CHECK(child->parent() == this))
//         return;
#define SDK110_CHECK(condition)                                                                    \
    (Q_LIKELY(condition) || QALogging::brokenInvariant(#condition, __FILE__, __LINE__))
