#pragma once

#include "sdk110_export.h"

#include <QString>

class QAStNode;

// The macro interpreter: expands the references and macros a test engineer
// writes into a setting value, in the context of a node, before the value
// goes into the Perl environment script.
//
//   ${NAME}                      the node's setting NAME, else the
//                                environment variable NAME, else nothing
//   $${                          a literal "${"
//   @@PROMPT(question[, default]) a text the user types in
//   @@OPEN(caption[, filter])    a file the user picks
//   @@EDITOR                     the user's editor command
//
// Any other "$" is kept as written, so Perl texts and paths such as
// C:\$Recycle.Bin pass unchanged. docs/formats/macros.md gives the grammar.
//
// Questions and file choosers go to the host (QAStData::studioIFace()); in
// batch mode (QAStProject::modeBatch()) or without a host a prompt takes
// its default and a chooser gives nothing. Faults go to the message console, each "%1: ..." with %1
// the node's name (the text itself without a node): an unknown or
// unterminated macro is left as written; a recursion deeper than maxDepth
// or an expansion beyond maxExpansions or maxLength stops the whole
// expansion and the text is returned as written.
class SDK110_EXPORT QAStAnalyseMacro {
public:
    // How deep setting values and macro arguments may nest: the value of a
    // reference in the text is at depth 1.
    static constexpr int maxDepth = 16;
    // References and macros expanded in one call, counting nested ones.
    static constexpr int maxExpansions = 10000;
    // Characters of one expanded text.
    static constexpr int maxLength = 16 * 1024 * 1024;

    // The text with its references and macros expanded. node (may be
    // null: then ${NAME} reads only the environment) supplies the settings
    // of its current configuration, inherited ones included; promptTitle
    // is the caption of the questions asked.
    static QString analyse(const QString& text, QAStNode* node, const QString& promptTitle);
};
