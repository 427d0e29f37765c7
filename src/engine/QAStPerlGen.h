#pragma once

#include "sdk110_export.h"

#include <QString>

class QAStNode;

// Writer of the Perl environment script that the driver scripts load. Values
// go between single quotes ('...'), where Perl reads \\ as one backslash and
// \' as a quote and keeps every other backslash.
class SDK110_EXPORT QAStPerlGen {
public:
    // A path as Perl reads it back exactly: backslashes doubled, quotes
    // escaped. With a node the value is first expanded by the macro
    // interpreter in the node's context. Empty gives empty.
    static QString safePath(const QString& value, QAStNode* node = nullptr);
    // Free text: quotes escaped and backslashes left to Perl, except a run
    // of backslashes before a quote or at the very end, which is doubled so
    // that it cannot end the string early. Node and empty value as safePath.
    static QString safeStr(const QString& value, QAStNode* node = nullptr);
};
