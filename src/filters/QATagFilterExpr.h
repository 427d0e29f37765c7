#pragma once

#include "QAFilterExpr.h"
#include "sdk110_export.h"

#include <QList>
#include <QPair>
#include <QRegularExpression>
#include <QString>
#include <QStringView>

// What the tag browser's filters test of one tag. The browser fills one
// from each tag it shows and passes its address as the item of
// QAFilter::match / QAFiltersMgr::match (the context is not used).
struct QATagFilterSubject {
    QString name;            // the tag's name
    QString kind;            // "class", "function", "method", "package", "struct", ...
    QString file;            // path of the tag's file, "/"-separated
    unsigned qualifiers = 0; // the tag's qualifier bits
};

// One condition of the tag browser's filters, by type:
// - Name, Kind: the text matches the whole name or kind;
// - File: the text matches the file name (the part after the last "/"),
//   or the whole path when the text itself holds a "/";
// - Qualifier: the text names qualifier words (qualifierWords()): the
//   expression holds when the tag has the bit of a word the text matches
//   ("private", "*virtual", "pub*"); a number (decimal, or hexadecimal
//   after "0x") holds when the tag has every one of its bits.
//
// The text is a wildcard or a regular expression, as the filter says, and
// must match the whole text tested. A wildcard's "*" and "?" do not match
// a "/" (QRegularExpression::wildcardToRegularExpression). A regular
// expression that does not compile matches nothing.
//
// Both forms of the text are compiled when type, text or case sensitivity
// change, never while matching. Plain texts and wildcards of the forms
// "abc", "abc*", "*abc", "*abc*" and "*" are tested by string comparison;
// other texts by the compiled regular expression.
class SDK110_EXPORT QATagFilterExpr : public QAFilterExpr {
    Q_OBJECT
public:
    enum Type : quint32 { Name, Kind, File, Qualifier };
    static constexpr int typeCount = 4;

    // A Name expression with empty text, not case-sensitive.
    QATagFilterExpr();
    QATagFilterExpr(quint32 type, const QString& text, bool caseSensitive);
    QATagFilterExpr(const QATagFilterExpr& other);
    ~QATagFilterExpr() override;

    // item is a QATagFilterSubject (null matches nothing); context unused.
    bool match(void* item, void* context, bool useWildcard) override;
    bool matches(const QATagFilterSubject& tag, bool useWildcard) const;

    // The name of a type in the XML of the tag filters ("name", "kind",
    // "file", "qualifier"); a type outside the family is written as its
    // decimal number, so that it reads back as it was.
    static QString typeKey(quint32 type);
    // The type of a key or of a decimal number; 0 with *ok false for
    // anything else.
    static quint32 typeFromKey(const QString& key, bool* ok = nullptr);
    // The qualifier words and their bits: "public" 1, "protected" 2,
    // "private" 4, "pure virtual" 32, "abstract" 32, "virtual" 64.
    static const QList<QPair<QString, unsigned>>& qualifierWords();

protected:
    void exprChanged() override;

private:
    // A text compiled for one choice of wildcard or regular expression.
    // The helpers are hidden, so that the library can inline them.
    struct Q_DECL_HIDDEN Pattern {
        enum Form { Never, Exact, Prefix, Suffix, Contains, AnyText, Regex };
        Form form = Never;
        QString literal;
        Qt::CaseSensitivity cs = Qt::CaseInsensitive;
        QRegularExpression regex;
        bool matches(QStringView text) const;
    };
    struct Q_DECL_HIDDEN Compiled {
        Pattern pattern;
        bool wholePath = false;  // File: test the whole path
        unsigned mask = 0;       // Qualifier: the bits tested
        bool allBits = false;    // Qualifier: every bit of mask (a number)
    };

    Q_DECL_HIDDEN bool holds(const QATagFilterSubject& tag, bool useWildcard) const;
    void compile();
    Compiled compiled(bool wildcard) const;
    static Pattern wildcardPattern(const QString& text, Qt::CaseSensitivity cs);
    static Pattern regExpPattern(const QString& text, Qt::CaseSensitivity cs);

    Compiled m_wildcard;
    Compiled m_regExp;
};
