#include "QARes.h"

#include "QALogging.h"
#include "QATr.h"

#include <QCoreApplication>
#include <QFile>
#include <QStringTokenizer>

#include <cstring>
#include <limits>
#include <utility>
#include <vector>

namespace {

// Groups and lists may nest this deep below the root; deeper ones are
// skipped with an error so that a hostile file cannot exhaust the stack of
// whoever walks the tree.
constexpr int MaxDepth = 200;
// Long words are cut in messages.
constexpr int MaxQuotedLength = 40;

// The default handler: "file:line: message" on the Qt warning channel.
class WarningErrorHandler : public QAResErrorHandler {
public:
    void error(const QString& file, int line, const QString& message) override
    {
        if (line > 0)
            qCWarning(lcSupport, "%s:%d: %s", qUtf8Printable(file), line, qUtf8Printable(message));
        else
            qCWarning(lcSupport, "%s: %s", qUtf8Printable(file), qUtf8Printable(message));
    }
};

WarningErrorHandler& warningHandler()
{
    static WarningErrorHandler handler;
    return handler;
}

QAResErrorHandler* s_handler = nullptr;  // null: the warning handler
int s_errorCount = 0;

enum class Tok { End, Word, String, Equals, OpenBrace, CloseBrace, OpenParen, CloseParen, Comma, Semicolon };

struct Token {
    Tok kind = Tok::End;
    int line = 1;
    QStringView text;      // a word, or a string without escapes
    QString unescaped;     // a string that held escapes
    bool escaped = false;
};

bool isCloser(Tok kind)
{
    return kind == Tok::CloseBrace || kind == Tok::CloseParen;
}

bool isOpener(Tok kind)
{
    return kind == Tok::OpenBrace || kind == Tok::OpenParen;
}

bool isBlank(char16_t c)
{
    return c == u' ' || c == u'\t' || c == u'\r' || c == u'\f' || c == u'\v';
}

bool isControl(char16_t c)
{
    return c < 0x20 || c == 0x7f;
}

bool isWordChar(char16_t c)
{
    switch (c) {
    case u'=': case u'{': case u'}': case u'(': case u')':
    case u',': case u';': case u'"': case u'#':
        return false;
    default:
        return c > 0x20 && c != 0x7f;
    }
}

// [+-]?[0-9]+
bool looksLikeInteger(QStringView w)
{
    qsizetype i = (w.startsWith(u'+') || w.startsWith(u'-')) ? 1 : 0;
    if (i == w.size())
        return false;
    for (; i < w.size(); ++i) {
        if (w[i] < u'0' || w[i] > u'9')
            return false;
    }
    return true;
}

// Converts a word that looks like an integer; false when out of range.
bool toInteger(QStringView w, qint64& value)
{
    const bool negative = w.startsWith(u'-');
    const quint64 limit = negative ? quint64(std::numeric_limits<qint64>::max()) + 1
                                   : quint64(std::numeric_limits<qint64>::max());
    quint64 magnitude = 0;
    for (qsizetype i = (negative || w.startsWith(u'+')) ? 1 : 0; i < w.size(); ++i) {
        const unsigned digit = w[i].unicode() - u'0';
        if (magnitude > (limit - digit) / 10)
            return false;
        magnitude = magnitude * 10 + digit;
    }
    value = negative ? qint64(0 - magnitude) : qint64(magnitude);
    return true;
}

int hexValue(char16_t c)
{
    if (c >= u'0' && c <= u'9') return c - u'0';
    if (c >= u'a' && c <= u'f') return c - u'a' + 10;
    if (c >= u'A' && c <= u'F') return c - u'A' + 10;
    return -1;
}

QString quoted(QStringView text)
{
    if (text.size() > MaxQuotedLength)
        return QLatin1Char('\'') + text.left(MaxQuotedLength).toString() + QStringLiteral("...'");
    return QLatin1Char('\'') + text.toString() + QLatin1Char('\'');
}

QString describe(const Token& t)
{
    switch (t.kind) {
    case Tok::End: return QATr::support("end of file");
    case Tok::Word: return quoted(t.text);
    case Tok::String: return QATr::support("a string");
    case Tok::Equals: return QStringLiteral("'='");
    case Tok::OpenBrace: return QStringLiteral("'{'");
    case Tok::CloseBrace: return QStringLiteral("'}'");
    case Tok::OpenParen: return QStringLiteral("'('");
    case Tok::CloseParen: return QStringLiteral("')'");
    case Tok::Comma: return QStringLiteral("','");
    case Tok::Semicolon: return QStringLiteral("';'");
    }
    return QString();
}

// Shares one string among the equal short texts of a read (names, and
// values such as "Directory" or "C++" that recur in every entry), sparing
// an allocation each. Direct-mapped: a collision only costs a copy.
class TextCache {
public:
    QString get(QStringView text)
    {
        const qsizetype n = text.size();
        if (n < 2 || n > MaxCachedLength)
            return text.toString();
        // A few characters tell most texts apart.
        const size_t hash = (((size_t(n) * 31 + text[0].unicode()) * 31 + text[n / 2].unicode()) * 31
                             + text[n - 2].unicode()) * 31 + text[n - 1].unicode();
        QString& slot = m_slots[hash % SlotCount];
        if (slot.size() != n || std::memcmp(slot.constData(), text.data(), size_t(n) * sizeof(QChar)) != 0)
            slot = text.toString();
        return slot;
    }

private:
    static constexpr qsizetype MaxCachedLength = 32;
    static constexpr size_t SlotCount = 1021;
    QString m_slots[SlotCount];
};

// One read of resource text: a hand-written scanner with one token of
// look-ahead feeding a parser that keeps its open groups and lists on an
// explicit stack (no recursion). Every step consumes a token or closes a
// container, so any input ends.
class Reader {
public:
    Reader(QStringView text, const QString& file, bool reportErrors)
        : m_pos(text.utf16()), m_end(text.utf16() + text.size()), m_file(file), m_report(reportErrors)
    {
        if (m_pos != m_end && *m_pos == 0xFEFF)
            ++m_pos;
        scan(m_tok);
    }

    QAResGroup* parse();
    int errors() const { return m_errors; }

private:
    struct Frame {
        QARes* container;   // a QAResGroup or a QAResList
        int openLine;       // line of the opening bracket
        bool expectItem;    // list: the next item needs no comma before it
    };

    // Scanner
    void scan(Token& t);
    void scanWord(Token& t);
    void scanString(Token& t);
    void scanEscape(QString& out, int line);
    const char16_t* stringEnd(const char16_t* from) const;
    void skipComment();
    const Token& peek();
    void advance();

    // Parser
    void stepGroup();
    void stepList();
    void parseEntry();
    void parseValue(const QString& name, int line);
    void addWord(const QString& name, int line);
    void openContainer(const QString& name, int line);
    QString readStrings();
    bool closeUpTo(bool list);
    void closeLists();
    void reportUnclosed(const Frame& frame);
    void skipRestOfLine(int line);
    void skipBlock();
    void push(QARes* container, int openLine);
    void pop();
    void add(QARes* res);
    QString stringValue(const Token& t) { return t.escaped ? t.unescaped : m_texts.get(t.text); }
    bool topIsList() const { return m_stack.back().container->isList(); }

    void error(int line, const QString& message);

    const char16_t* m_pos;
    const char16_t* m_end;
    int m_line = 1;
    Token m_tok;
    Token m_next;
    bool m_hasNext = false;

    QString m_file;
    bool m_report;
    int m_errors = 0;
    std::vector<Frame> m_stack;
    // The entries read so far into each open container, by depth; they
    // join their container in one go when it closes. The vectors are kept
    // from one container to the next to spare allocations.
    std::vector<std::vector<QARes*>> m_pending;
    TextCache m_texts;
};

void Reader::error(int line, const QString& message)
{
    ++m_errors;
    if (m_report)
        QARes::errorHandler()->error(m_file, line, message);
}

// ---- Scanner ------------------------------------------------------------

// Reads the next token into t, which is reused from token to token.
void Reader::scan(Token& t)
{
    t.escaped = false;
    while (m_pos != m_end) {
        const char16_t c = *m_pos;
        if (c == u'\n') {
            ++m_line;
            ++m_pos;
            continue;
        }
        if (isBlank(c)) {
            ++m_pos;
            continue;
        }
        if (c == u'#' || (c == u'/' && m_pos + 1 != m_end && m_pos[1] == u'/')) {
            skipComment();
            continue;
        }
        t.line = m_line;
        switch (c) {
        case u'=': t.kind = Tok::Equals; break;
        case u'{': t.kind = Tok::OpenBrace; break;
        case u'}': t.kind = Tok::CloseBrace; break;
        case u'(': t.kind = Tok::OpenParen; break;
        case u')': t.kind = Tok::CloseParen; break;
        case u',': t.kind = Tok::Comma; break;
        case u';': t.kind = Tok::Semicolon; break;
        case u'"':
            scanString(t);
            return;
        default:
            if (isControl(c)) {
                error(m_line, QATr::support("unexpected character U+%1").arg(int(c), 4, 16, QLatin1Char('0')));
                ++m_pos;
                continue;
            }
            scanWord(t);
            return;
        }
        ++m_pos;
        return;
    }
    t.kind = Tok::End;
    t.line = m_line;
}

void Reader::skipComment()
{
    while (m_pos != m_end && *m_pos != u'\n')
        ++m_pos;
}

void Reader::scanWord(Token& t)
{
    t.kind = Tok::Word;
    const char16_t* start = m_pos;
    while (m_pos != m_end && isWordChar(*m_pos))
        ++m_pos;
    t.text = QStringView(start, m_pos);
}

// A string runs from '"' to '"' on one line. Without escapes it is a view
// of the text; with them it is copied once.
void Reader::scanString(Token& t)
{
    t.kind = Tok::String;
    const char16_t* start = ++m_pos;
    while (m_pos != m_end && *m_pos != u'"' && *m_pos != u'\\' && *m_pos != u'\n')
        ++m_pos;
    if (m_pos != m_end && *m_pos == u'"') {
        t.text = QStringView(start, m_pos);
        ++m_pos;
        return;
    }
    t.escaped = true;
    t.unescaped = QString();  // the last one may be shared by a resource
    t.unescaped.reserve(stringEnd(m_pos) - start);  // the most it can hold
    t.unescaped.append(QStringView(start, m_pos));
    while (m_pos != m_end && *m_pos != u'"' && *m_pos != u'\n') {
        if (*m_pos == u'\\')
            scanEscape(t.unescaped, t.line);
        else
            t.unescaped += QChar(*m_pos++);
    }
    if (m_pos != m_end && *m_pos == u'"')
        ++m_pos;
    else
        error(t.line, QATr::support("unterminated string"));
}

// Where the string that goes on at from ends: its closing quote, or the
// end of the line or text.
const char16_t* Reader::stringEnd(const char16_t* from) const
{
    while (from != m_end && *from != u'"' && *from != u'\n')
        from += (*from == u'\\' && from + 1 != m_end && from[1] != u'\n') ? 2 : 1;
    return from;
}

// At a backslash inside a string: appends what the escape stands for. An
// unknown escape is kept as written.
void Reader::scanEscape(QString& out, int line)
{
    ++m_pos;
    if (m_pos == m_end || *m_pos == u'\n')
        return;  // the string is left unterminated
    const char16_t c = *m_pos++;
    switch (c) {
    case u'"': out += QLatin1Char('"'); return;
    case u'\\': out += QLatin1Char('\\'); return;
    case u'n': out += QLatin1Char('\n'); return;
    case u't': out += QLatin1Char('\t'); return;
    case u'r': out += QLatin1Char('\r'); return;
    case u'u':
        if (m_end - m_pos >= 4) {
            int code = 0;
            for (int i = 0; i < 4 && code >= 0; ++i) {
                const int digit = hexValue(m_pos[i]);
                code = digit < 0 ? -1 : code * 16 + digit;
            }
            if (code >= 0) {
                out += QChar(char16_t(code));
                m_pos += 4;
                return;
            }
        }
        break;
    default:
        break;
    }
    error(line, QATr::support("unknown escape sequence '\\%1'").arg(QChar(c)));
    out += QLatin1Char('\\');
    out += QChar(c);
}

const Token& Reader::peek()
{
    if (!m_hasNext) {
        scan(m_next);
        m_hasNext = true;
    }
    return m_next;
}

void Reader::advance()
{
    if (m_hasNext) {
        std::swap(m_tok, m_next);
        m_hasNext = false;
    } else {
        scan(m_tok);
    }
}

// ---- Parser -------------------------------------------------------------

QAResGroup* Reader::parse()
{
    auto* root = new QAResGroup(QString(), 0, m_file);
    push(root, 0);
    while (m_tok.kind != Tok::End) {
        if (topIsList())
            stepList();
        else
            stepGroup();
    }
    for (size_t i = 1; i < m_stack.size(); ++i)
        reportUnclosed(m_stack[i]);
    while (!m_stack.empty())
        pop();
    return root;
}

// In a group: an entry "name = value", an optional ';', or the closing '}'.
void Reader::stepGroup()
{
    switch (m_tok.kind) {
    case Tok::Word:
        parseEntry();
        return;
    case Tok::Semicolon:
        advance();
        return;
    case Tok::CloseBrace:
        if (m_stack.size() > 1) {
            advance();
            pop();
        } else {
            error(m_tok.line, QATr::support("unexpected '}'"));
            advance();
        }
        return;
    case Tok::CloseParen:
        if (!closeUpTo(true)) {
            error(m_tok.line, QATr::support("unexpected ')'"));
            advance();
        }
        return;
    default:
        error(m_tok.line, QATr::support("expected a name, found %1").arg(describe(m_tok)));
        skipRestOfLine(m_tok.line);
        return;
    }
}

// In a list: items separated by ',' (a trailing one is allowed) up to ')'.
void Reader::stepList()
{
    Frame& list = m_stack.back();
    switch (m_tok.kind) {
    case Tok::CloseParen:
        advance();
        pop();
        return;
    case Tok::Comma:
        if (list.expectItem)
            error(m_tok.line, QATr::support("missing list item before ','"));
        list.expectItem = true;
        advance();
        return;
    case Tok::CloseBrace:
        if (!closeUpTo(false)) {
            error(m_tok.line, QATr::support("unexpected '}'"));
            advance();
        }
        return;
    case Tok::Equals:
    case Tok::Semicolon:
        error(m_tok.line, QATr::support("unexpected %1 in a list").arg(describe(m_tok)));
        advance();
        return;
    case Tok::Word:
        if (peek().kind == Tok::Equals) {  // the next entry: the list was left open
            closeLists();
            return;
        }
        break;
    default:
        break;
    }
    if (!list.expectItem)
        error(m_tok.line, QATr::support("missing ',' between list items"));
    list.expectItem = false;
    parseValue(QString(), m_tok.line);
}

void Reader::parseEntry()
{
    const QStringView name = m_tok.text;
    const int line = m_tok.line;
    advance();
    if (m_tok.kind != Tok::Equals) {
        error(line, QATr::support("expected '=' after %1").arg(quoted(name)));
        skipRestOfLine(line);
        return;
    }
    advance();
    parseValue(m_texts.get(name), line);
}

void Reader::parseValue(const QString& name, int line)
{
    switch (m_tok.kind) {
    case Tok::String:
        add(new QAResString(name, readStrings(), line, m_file));
        return;
    case Tok::Word:
        if (peek().kind == Tok::Equals)  // the next entry's name
            break;
        addWord(name, line);
        advance();
        return;
    case Tok::OpenBrace:
    case Tok::OpenParen:
        openContainer(name, line);
        return;
    default:
        break;
    }
    error(line, name.isEmpty() ? QATr::support("missing value") : QATr::support("missing value for %1").arg(quoted(name)));
    if (m_tok.kind == Tok::Equals || m_tok.kind == Tok::Comma)
        skipRestOfLine(m_tok.line);
}

// A bare word is a Boolean, an integer or else a string.
void Reader::addWord(const QString& name, int line)
{
    const QStringView w = m_tok.text;
    if (w == u"true" || w == u"false") {
        add(new QAResBoolean(name, w == u"true", line, m_file));
    } else if (looksLikeInteger(w)) {
        qint64 value = 0;
        if (toInteger(w, value))
            add(new QAResInt(name, value, line, m_file));
        else
            error(m_tok.line, QATr::support("integer out of range: %1").arg(quoted(w)));
    } else {
        add(new QAResString(name, m_texts.get(w), line, m_file));
    }
}

void Reader::openContainer(const QString& name, int line)
{
    const bool isList = m_tok.kind == Tok::OpenParen;
    const int openLine = m_tok.line;
    if (int(m_stack.size()) > MaxDepth) {
        error(openLine, QATr::support("nesting deeper than %1 levels").arg(MaxDepth));
        skipBlock();
        return;
    }
    QARes* container = isList ? static_cast<QARes*>(new QAResList(name, line, m_file))
                              : static_cast<QARes*>(new QAResGroup(name, line, m_file));
    add(container);
    push(container, openLine);
    advance();
}

// Adjacent strings join into one, so long texts can run over several lines.
QString Reader::readStrings()
{
    QString value = stringValue(m_tok);
    advance();
    while (m_tok.kind == Tok::String) {
        value += stringValue(m_tok);
        advance();
    }
    return value;
}

// A closing bracket that does not match the innermost container closes
// the nearest enclosing one of its kind (a list for ')', a group other
// than the root for '}'); the containers left open inside it are errors.
bool Reader::closeUpTo(bool list)
{
    size_t target = m_stack.size();
    while (target-- > 1) {
        if (m_stack[target].container->isList() == list)
            break;
    }
    if (target == 0)
        return false;
    while (m_stack.size() > target + 1) {
        reportUnclosed(m_stack.back());
        pop();
    }
    advance();
    pop();
    return true;
}

// Closes the lists left open before the next entry of their group.
void Reader::closeLists()
{
    while (topIsList()) {
        reportUnclosed(m_stack.back());
        pop();
    }
}

void Reader::reportUnclosed(const Frame& frame)
{
    const QARes* c = frame.container;
    QString message;
    if (c->isList())
        message = c->name().isEmpty() ? QATr::support("unterminated list") : QATr::support("unterminated list %1").arg(quoted(c->name()));
    else
        message = c->name().isEmpty() ? QATr::support("unterminated group") : QATr::support("unterminated group %1").arg(quoted(c->name()));
    error(frame.openLine, message);
}

// Error recovery: drops the tokens up to the end of the given line, and
// every block opened there whole, but stops before a bracket that closes
// the current container.
void Reader::skipRestOfLine(int line)
{
    int depth = 0;
    while (m_tok.kind != Tok::End) {
        if (depth == 0 && (m_tok.line > line || isCloser(m_tok.kind)))
            return;
        if (isOpener(m_tok.kind))
            ++depth;
        else if (isCloser(m_tok.kind))
            --depth;
        advance();
    }
}

// Drops an opening bracket and everything up to its match.
void Reader::skipBlock()
{
    int depth = 0;
    do {
        if (isOpener(m_tok.kind))
            ++depth;
        else if (isCloser(m_tok.kind))
            --depth;
        advance();
    } while (depth > 0 && m_tok.kind != Tok::End);
}

void Reader::push(QARes* container, int openLine)
{
    m_stack.push_back({container, openLine, true});
    if (m_pending.size() < m_stack.size())
        m_pending.emplace_back();
}

// Closes the innermost container: its entries join it.
void Reader::pop()
{
    std::vector<QARes*>& entries = m_pending[m_stack.size() - 1];
    QARes* container = m_stack.back().container;
    if (QAResList* list = container->toResList()) {
        list->reserve(qsizetype(entries.size()));
        for (QARes* entry : entries)
            list->append(entry);
    } else {
        QAResGroup* group = container->toResGroup();
        group->reserve(qsizetype(entries.size()));
        for (QARes* entry : entries)
            group->append(entry);
    }
    entries.clear();
    m_stack.pop_back();
}

void Reader::add(QARes* res)
{
    m_pending[m_stack.size() - 1].push_back(res);
}

} // namespace

// ---- QAResErrorHandler, QARes -------------------------------------------

QAResErrorHandler::~QAResErrorHandler() = default;

QARes::QARes(Type type, const QString& name, int line, const QString& file)
    : m_type(type), m_name(name), m_line(line), m_file(file)
{
}

QARes::~QARes() = default;

QARes* QARes::read(const char* fileName, bool reportErrors)
{
    return read(QFile::decodeName(fileName), reportErrors);
}

QARes* QARes::read(const QString& fileName, bool reportErrors)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        s_errorCount = 1;
        if (reportErrors)
            errorHandler()->error(fileName, 0, QATr::support("cannot open the file: %1").arg(file.errorString()));
        return nullptr;
    }
    return readText(QString::fromUtf8(file.readAll()), fileName, reportErrors);
}

QARes* QARes::readText(const QString& text, const QString& fileName, bool reportErrors)
{
    Reader reader(text, fileName, reportErrors);
    QAResGroup* root = reader.parse();
    s_errorCount = reader.errors();
    return root;
}

int QARes::errorCount()
{
    return s_errorCount;
}

QAResErrorHandler* QARes::setErrorHandler(QAResErrorHandler* handler)
{
    QAResErrorHandler* previous = errorHandler();
    s_handler = handler;
    return previous;
}

QAResErrorHandler* QARes::errorHandler()
{
    return s_handler ? s_handler : &warningHandler();
}

QAResGroup* QARes::toResGroup()
{
    return isGroup() ? static_cast<QAResGroup*>(this) : nullptr;
}

QAResString* QARes::toResString()
{
    return isString() ? static_cast<QAResString*>(this) : nullptr;
}

QAResInt* QARes::toResInt()
{
    return isInt() ? static_cast<QAResInt*>(this) : nullptr;
}

QAResBoolean* QARes::toResBoolean()
{
    return isBoolean() ? static_cast<QAResBoolean*>(this) : nullptr;
}

QAResList* QARes::toResList()
{
    return isList() ? static_cast<QAResList*>(this) : nullptr;
}

const QAResGroup* QARes::toResGroup() const
{
    return isGroup() ? static_cast<const QAResGroup*>(this) : nullptr;
}

const QAResString* QARes::toResString() const
{
    return isString() ? static_cast<const QAResString*>(this) : nullptr;
}

const QAResInt* QARes::toResInt() const
{
    return isInt() ? static_cast<const QAResInt*>(this) : nullptr;
}

const QAResBoolean* QARes::toResBoolean() const
{
    return isBoolean() ? static_cast<const QAResBoolean*>(this) : nullptr;
}

const QAResList* QARes::toResList() const
{
    return isList() ? static_cast<const QAResList*>(this) : nullptr;
}

bool QARes::isListOf(Type type) const
{
    const QAResList* list = toResList();
    if (!list)
        return false;
    for (const QARes* item : list->items()) {
        if (item->type() != type)
            return false;
    }
    return true;
}

QARes* QARes::search(const QString& path, QChar separator) const
{
    const QARes* current = this;
    for (QStringView name : qTokenize(path, separator)) {
        const QAResGroup* group = current->toResGroup();
        current = nullptr;
        if (group) {
            for (const QARes* child : group->children()) {
                if (child->name() == name) {
                    current = child;
                    break;
                }
            }
        }
        if (!current)
            return nullptr;
    }
    return const_cast<QARes*>(current);
}

QARes* QARes::find(const QString& key) const
{
    const QAResGroup* group = toResGroup();
    if (!group)
        return nullptr;
    for (QARes* child : group->children()) {
        if (child->name() == key)
            return child;
    }
    return nullptr;
}

QString QARes::toText() const
{
    switch (m_type) {
    case String: return static_cast<const QAResString*>(this)->value();
    case Int: return QString::number(static_cast<const QAResInt*>(this)->value());
    case Boolean: return static_cast<const QAResBoolean*>(this)->value() ? QStringLiteral("true") : QStringLiteral("false");
    case Group:
    case List:
        break;
    }
    return QString();
}

// ---- Kinds ----------------------------------------------------------------

QAResGroup::QAResGroup(const QString& name, int line, const QString& file)
    : QARes(Group, name, line, file)
{
}

QAResGroup::~QAResGroup()
{
    qDeleteAll(m_children);
}

QList<QARes*> QAResGroup::findAll(const QString& key) const
{
    QList<QARes*> found;
    for (QARes* child : m_children) {
        if (child->name() == key)
            found.append(child);
    }
    return found;
}

void QAResGroup::reserve(qsizetype size)
{
    m_children.reserve(size);
}

void QAResGroup::append(QARes* child)
{
    child->m_parent = this;
    m_children.append(child);
}

QAResString::QAResString(const QString& name, const QString& value, int line, const QString& file)
    : QARes(String, name, line, file), m_value(value)
{
}

QAResInt::QAResInt(const QString& name, qint64 value, int line, const QString& file)
    : QARes(Int, name, line, file), m_value(value)
{
}

QAResBoolean::QAResBoolean(const QString& name, bool value, int line, const QString& file)
    : QARes(Boolean, name, line, file), m_value(value)
{
}

QAResList::QAResList(const QString& name, int line, const QString& file)
    : QARes(List, name, line, file)
{
}

QAResList::~QAResList()
{
    qDeleteAll(m_items);
}

QStringList QAResList::strings() const
{
    QStringList texts;
    texts.reserve(m_items.size());
    for (const QARes* item : m_items) {
        if (!item->isGroup() && !item->isList())
            texts.append(item->toText());
    }
    return texts;
}

void QAResList::reserve(qsizetype size)
{
    m_items.reserve(size);
}

void QAResList::append(QARes* item)
{
    item->m_parent = this;
    m_items.append(item);
}
