#pragma once

#include <QCoreApplication>

// Texts the library shows, translated in one context per area. A QObject
// uses its own tr(); code outside one (free functions, tables, classes
// that are not QObjects) uses the helper of its area, and marks the texts
// of its tables with the same context: QT_TRANSLATE_NOOP(QATR_PROJECT, "...").
// n chooses the plural form of a text with "%n".
#define QATR_SUPPORT "sdk110::support"
#define QATR_SETTINGS "sdk110::settings"
#define QATR_ENGINE "sdk110::engine"
#define QATR_PROJECT "sdk110::project"
#define QATR_FILTERS "sdk110::filters"
#define QATR_ANALYSIS "sdk110::analysis"
#define QATR_WIDGETS "sdk110::widgets"

namespace QATr {
inline QString support(const char* text, int n = -1)
{
    return QCoreApplication::translate(QATR_SUPPORT, text, nullptr, n);
}
inline QString settings(const char* text, int n = -1)
{
    return QCoreApplication::translate(QATR_SETTINGS, text, nullptr, n);
}
inline QString engine(const char* text, int n = -1)
{
    return QCoreApplication::translate(QATR_ENGINE, text, nullptr, n);
}
inline QString project(const char* text, int n = -1)
{
    return QCoreApplication::translate(QATR_PROJECT, text, nullptr, n);
}
inline QString filters(const char* text, int n = -1)
{
    return QCoreApplication::translate(QATR_FILTERS, text, nullptr, n);
}
inline QString analysis(const char* text, int n = -1)
{
    return QCoreApplication::translate(QATR_ANALYSIS, text, nullptr, n);
}
inline QString widgets(const char* text, int n = -1)
{
    return QCoreApplication::translate(QATR_WIDGETS, text, nullptr, n);
}
}
