#include "Harness.h"

#include "QARes.h"

#include <QFile>
#include <QTemporaryDir>

#include <memory>

namespace {

constexpr int PropertyCount = 20000;

// One descriptor entry of each common shape, cycled through.
QByteArray property(int i)
{
    const QByteArray n = QByteArray::number(i);
    QByteArray text = "    property = {\n"
                      "        path = \"Common/Build/Section" + QByteArray::number(i % 50) + "\"\n"
                      "        name = \"Setting number " + n + "\"\n"
                      "        whatThis = \"Help text of setting " + n + ": what it does, \"\n"
                      "                   \"and when to change it.\\n\"\n"
                      "        perlVarName = SETTING_" + n + "\n"
                      "        readonly = false\n"
                      "        apply = ( \"C++\", \"ADA\", UNIT_TESTING )\n";
    switch (i % 3) {
    case 0:
        text += "        type = Int\n"
                "        value = " + n + "\n"
                "        min = 0  max = 1000000  step = 1\n"
                "        suffix = \" ms\"\n";
        break;
    case 1:
        text += "        type = ComboInt\n"
                "        value = 1\n"
                "        content = ( ( \"None\", 0 ), ( \"Some\", 1 ), ( \"All\", 2 ) )   # levels\n";
        break;
    default:
        text += "        type = PathBox\n"
                "        mode = Directory\n"
                "        extension = ( \"*.h\", \"*.hpp\" )\n"
                "        button = MultiWithMoves\n"
                "        value = ( \"/usr/include\", \"$ZELTAHOME/include\" )\n";
        break;
    }
    return text + "    }\n";
}

QByteArray descriptor()
{
    QByteArray text = "# Generated settings descriptor\nproperties = {\n";
    for (int i = 0; i < PropertyCount; ++i)
        text += property(i);
    return text + "}\n";
}

QByteArray readAll(const QString& path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

}

// Baseline: the same file read from disk, decoded from UTF-8 and split into
// lines, the least any line-based reader of it must do.
SDK110_BENCHMARK(resourcesRead, "resources: read descriptor-sized file against reading and splitting its lines (goal 3x)")
{
    auto dir = std::make_shared<QTemporaryDir>();
    const QString path = dir->filePath(QStringLiteral("descriptor.properties"));
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(descriptor());
    file.close();

    Bench::Measure m;
    m.subject = QStringLiteral("QARes::read of %1 property groups").arg(PropertyCount);
    m.baseline = QStringLiteral("read + UTF-8 decode + split into lines");
    m.runSubject = [dir, path] {
        std::unique_ptr<QARes> root(QARes::read(path));
        Bench::keep(root.get());
    };
    m.runBaseline = [dir, path] {
        const QStringList lines = QString::fromUtf8(readAll(path)).split(QLatin1Char('\n'));
        Bench::keep(lines.constData());
    };
    m.target = 3;
    return m;
}
