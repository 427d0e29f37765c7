#pragma once

#include "sdk110_export.h"

#include <QString>
#include <QStringList>

class QTextStream;

// Values written into Perl source, read back exactly: the one escaping rule
// of every Perl line the library writes (the environment script, the
// wizards' and the metrics' scripts), and the three line forms.
//
// Between single quotes Perl reads \\ as one backslash and \' as a quote,
// nothing else: so every backslash is doubled and every quote escaped. A
// run of control characters leaves the quotes as a double-quoted escape
// joined to the quoted parts ('a'."\r\n".'b'), since perl's source reader
// drops a carriage return before a line feed even inside a string, and a
// raw line break would split the statement's line.
class SDK110_EXPORT QAPerlValues {
public:
    // text as it stands between the single quotes of a Perl string.
    static QString quoted(const QString& text);

    // The three line forms, each ended by "\n": $var='text'; (S),
    // $var=number; (N), @var=('a', 'b'); (L, @var=(); when empty).
    static void writeText(QTextStream& out, const QString& var, const QString& text);
    static void writeNumber(QTextStream& out, const QString& var, qlonglong number);
    static void writeList(QTextStream& out, const QString& var, const QStringList& items);
};
