#pragma once

#include <QString>
#include <QStringList>

class QAStATag;
class QAStFile;
class QAStRootFolder;

// Shared helpers of the tag tests.
namespace TagFixtures {

// The tags below top, one line each, indented two blanks per level:
// "<kind> <name><signature>" then " q<qualifier>" when not 0, where kind is
// package, class, struct, function or method.
QStringList dump(const QAStATag* top);

// Copies the tagging sources of tests/data/tags into dir.
void copySources(const QString& dir);

// Adds the file at path to tree and tags it through the real driver,
// synchronously; null (and a test failure) when the tagging fails.
QAStFile* tagged(QAStRootFolder& tree, const QString& path);

}
