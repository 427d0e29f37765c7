#pragma once

#include "sdk110_export.h"

#include <QMap>
#include <QString>
#include <QStringList>

class QDomDocument;
class QDomElement;
class QIODevice;
class QTextStream;

// Helpers shared by every writer and reader of the project's XML files:
// the value encoding of strings, lists, maps, Booleans and numbers, and the
// indentation of written lines.
//
// A string is written so that it reads back equal, whatever it holds
// (docs/formats/project-file.md, "Values"):
//   "&", "<", ">"            the entities "&amp;", "&lt;", "&gt;"
//   ","                      "#comma#"
//   carriage return          "&#13;" (a parser turns a bare one into a
//                            line feed)
//   a character XML 1.0 cannot hold (C0 controls but tab, line feed and
//   carriage return; U+FFFE, U+FFFF; a lone surrogate), and the first
//   character of a text of blanks only (which a parser drops as spacing)
//                            "#x" + its hexadecimal code + "#", e.g. "#x1B#"
//   a "#" that would start one of these escapes
//                            "#x23#"
// Decoding reads the escapes left to right in one pass. A text written
// before "#x…#" escapes existed reads back unchanged unless it held such a
// sequence literally.
//
// An XML parser has already resolved the entities of the text it hands out,
// so readers of a DOM element use the dom* forms, which only read the "#"
// escapes: decoding the entities a second time would change a text that
// held "&lt;" literally.
class SDK110_EXPORT QAXML {
public:
    // The deepest nesting of elements that setContent accepts: far beyond
    // any file the library writes, and short of where QDomDocument's parse,
    // which slows down with the square of the depth, takes seconds.
    static constexpr int maxDepth = 1000;
    // QDomDocument::setContent for the files the library reads, refusing a
    // text nested deeper than maxDepth; on false, message, line and column
    // say what is wrong and where.
    static bool setContent(QDomDocument& document, QIODevice* device, QString* message = nullptr,
                           int* line = nullptr, int* column = nullptr);
    static bool setContent(QDomDocument& document, const QByteArray& text,
                           QString* message = nullptr, int* line = nullptr, int* column = nullptr);

    static QString stringToXMLValue(const QString& s);
    // The same for an attribute's value in double quotes: quotes, tabs and
    // line feeds are written as references too.
    static QString attributeToXMLValue(const QString& s);
    static QString xmlValueToString(const QString& s);
    static QString stringListToXMLValue(const QStringList& l);
    static QStringList xmlValueToStringList(const QString& s);
    static QString stringMapToXMLValue(const QMap<QString, QString>& m);
    static QMap<QString, QString> xmlValueToStringMap(const QString& s);
    static QString boolToXMLValue(bool b);

    // The text an XML parser read, written again as it stood in the file:
    // the entities put back, the "#" escapes left as they are.
    static QString parsedTextToXMLValue(const QString& parsedText);

    // The decoded text of an element read by an XML parser, and its list and
    // map forms.
    static QString domValue(const QDomElement& e);
    // The element's text, as QDomElement::text() gives it; an element of
    // one text node gives that node's string itself, without a copy.
    static QString domText(const QDomElement& e);
    static QStringList domValueList(const QDomElement& e);
    static QMap<QString, QString> domValueMap(const QDomElement& e);
    static QString commaToString(const QString& parsedText);
    static QStringList commaToStringList(const QString& parsedText);
    static QMap<QString, QString> commaToStringMap(const QString& parsedText);

    static QString fromInt(int i);
    static QString fromUInt(uint u);
    // Parse failures give 0 (false for toBool); ok tells them apart.
    static int toInt(const QString& s, bool* ok = nullptr);
    static uint toUInt(const QString& s, bool* ok = nullptr);
    static bool toBool(const QString& s, bool* ok = nullptr);

    // Writes the indentation of a line at the given depth (two blanks a level).
    static void indent(QTextStream& s, int depth);
    // Writes one element line: indentation, <tag>value</tag>, new line. The
    // value is written as given (encode it first).
    static void toStream(QTextStream& s, const char* tag, const QString& value, int depth);
};
