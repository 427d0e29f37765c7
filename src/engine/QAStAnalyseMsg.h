#pragma once

#include "sdk110_export.h"

#include <QString>

class QRegularExpressionMatch;

// Finds the file name and the line number in one line of the text the
// tools print: compiler and linker messages, Perl's messages, the driver
// scripts' "file:line: text" faults. docs/formats/messages.md gives the
// forms with real examples.
//
//   QAStAnalyseMsg msg;
//   if (msg.analyze(QStringLiteral("main.c:12:5: error: ...")))
//       open(msg.fileName(), msg.lineNumber());   // "main.c", 12
//
// The file name starts where fileNameStart() says (after leading blanks,
// tool prefixes such as "/usr/bin/ld: " or "In file included from ", a
// severity word such as "Error: ", and the text of a Perl message before
// its " at "). Then the forms are tried
// in order, the first that matches giving the result; each is a separator
// that ends the file name, the decimal line number, and, for some, a text
// after the number:
//
//   1  ",line "                 ":"      x.c,line 12:
//   2  " at "                   ":"      x.c at 12:
//   3  ":"                      ":"      x.c:12: and x.c:12:5: (gcc)
//   4  "\", line "              "."      "x.c", line 12.
//   5  ",?[ \t]*line:?[ \t]*"   -        x.pl line 12
//   6  ","                      -        x.c,12
//   7  "\("                     "\)"     x.c(12)
//   8  "/Line "                 -        x.c/Line 12
//
// When none matches, the rest of the line is matched whole against
// "(.+)#(.+)": the two captures are the file and the position (the line is
// the position read as a number, 0 when it is none).
class SDK110_EXPORT QAStAnalyseMsg {
public:
    // The form number of the '#' fallback in form().
    static constexpr int hashForm = 0;

    // True when a file and a line were found; fileName(), lineNumber() and
    // form() tell them. On false the three are cleared.
    bool analyze(const QString& line);

    // One form: from the position from of line, a file name (one character
    // at least) ended by the regular expression before, the line number,
    // then the regular expression after (none when null or empty). The
    // first place where before, the number and after follow each other
    // ends the file name. True when the form matches and the file name is
    // not empty once cleaned of enclosing blanks, quotes and a final ':'.
    bool analyzeLineNumber(const QString& line, int from, const char* before, const char* after);

    QString fileName() const { return m_file; }
    int lineNumber() const { return m_line; }
    // The form that matched (1 to 8, hashForm); -1 after a failure or
    // after analyzeLineNumber alone.
    int form() const { return m_form; }

    // Where the file name of a message may start in line: after leading
    // blanks, tool prefixes and severity words; -1 for a line of gcc's
    // source excerpt ("   12 |   code"), which names no file.
    static int fileNameStart(const QString& line);

    // The path of a file named in a message: a relative name is taken from
    // baseDirectory (the directory the tools ran in; the current directory
    // when empty), and the path is cleaned.
    static QString resolvedFile(const QString& file, const QString& baseDirectory);

    // Opens the file a message names in the host's editor
    // (QAHost::editFile): analyzes line, resolves the file against
    // baseDirectory and asks the host when the file exists. True when the
    // host was asked.
    static bool editMessage(const QString& line, const QString& baseDirectory);

private:
    void clear();
    // Takes the file (capture 1) and the line (capture 2) of a match; false
    // when there is none or the file name is empty.
    bool take(const QRegularExpressionMatch& match);

    QString m_file;
    int m_line = 0;
    int m_form = -1;
};
