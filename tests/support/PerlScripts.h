#pragma once

#include <QByteArray>
#include <QProcess>
#include <QRandomGenerator>
#include <QStringConverter>
#include <QStringList>
#include <QTemporaryDir>
#include <QtTest>

// Generated Perl scripts as the real interpreter ("perl" on the PATH)
// compiles and reads them.
namespace PerlScripts {

inline bool perlPresent()
{
    QProcess perl;
    perl.start(QStringLiteral("perl"), {QStringLiteral("-v")});
    return perl.waitForFinished(30000) && perl.exitCode() == 0;
}

// perl with args, "<script>" among them standing for a file holding
// script; false with perl's errors shown when it fails.
inline bool runPerl(QStringList args, const QByteArray& script, QByteArray* output = nullptr)
{
    QTemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("env.pl")));
    if (!file.open(QIODevice::WriteOnly) || file.write(script) != script.size())
        return false;
    file.close();
    args.replaceInStrings(QStringLiteral("<script>"), file.fileName());
    QProcess perl;
    perl.start(QStringLiteral("perl"), args);
    if (!perl.waitForFinished(30000) || perl.exitStatus() != QProcess::NormalExit
        || perl.exitCode() != 0) {
        qWarning().noquote() << perl.readAllStandardError();
        return false;
    }
    if (output)
        *output = perl.readAllStandardOutput();
    return true;
}

inline bool perlCompiles(const QByteArray& script)
{
    return runPerl({QStringLiteral("-c"), QStringLiteral("<script>")}, script);
}

// Loads the script with do, then evaluates each Perl expression in list
// context: the values of each, their bytes as perl holds them decoded from
// encoding. Values travel in hex, so that any byte comes back.
inline bool evaluate(const QByteArray& script, const QStringList& expressions,
                     QList<QStringList>* values,
                     QStringConverter::Encoding encoding = QStringConverter::Utf8)
{
    static const QString program = QStringLiteral(
        "my $file = shift @ARGV; defined(do $file) or die($@ || $!);"
        "for my $e (@ARGV) { my @v = eval $e; die $@ if $@;"
        " print scalar(@v), \"\\n\", map({ unpack('H*', $_) . \"\\n\" } @v); }");
    QByteArray output;
    if (!runPerl(QStringList{QStringLiteral("-e"), program, QStringLiteral("<script>")} + expressions,
                 script, &output))
        return false;
    const QList<QByteArray> lines = output.split('\n');
    for (qsizetype i = 0; i + 1 < lines.size();) {
        const int count = lines.at(i++).toInt();
        QStringList decoded;
        for (int k = 0; k < count && i < lines.size(); ++k) {
            QStringDecoder decoder(encoding);
            decoded.append(decoder(QByteArray::fromHex(lines.at(i++))));
        }
        values->append(decoded);
    }
    return values->size() == expressions.size();
}

// count values of up to 12 pieces drawn from what the escaping of a Perl
// string must survive: quotes, backslashes, sigils, line ends and other
// control characters, Latin-1 and wider characters (one beyond 16 bits),
// and texts that mean something to Perl's reader.
inline QStringList randomValues(quint32 seed, int count)
{
    static const QStringList pieces{
        QStringLiteral("\\"), QStringLiteral("\\\\"), QStringLiteral("'"), QStringLiteral("\""),
        QStringLiteral("$"), QStringLiteral("@"), QStringLiteral("${x}"), QStringLiteral("%"),
        QStringLiteral("#"), QStringLiteral(";"), QStringLiteral("="), QStringLiteral(" "),
        QStringLiteral("a"), QStringLiteral("Z9"), QStringLiteral("\r"), QStringLiteral("\n"),
        QStringLiteral("\r\n"), QStringLiteral("\t"), QString(QChar(0)), QStringLiteral("\x1b"),
        QStringLiteral("\x04"), QStringLiteral("\x1a"), QStringLiteral("\x7f"), QStringLiteral("é"),
        QStringLiteral("ÿ"), QStringLiteral("€"), QStringLiteral("Ω"), QStringLiteral("日本"),
        QStringLiteral("😀"), QStringLiteral("'.\""), QStringLiteral("\n__END__\n"),
        QStringLiteral("\n=pod\n")};
    QRandomGenerator random(seed);
    QStringList values;
    for (int i = 0; i < count; ++i) {
        QString value;
        for (int n = random.bounded(13); n > 0; --n)
            value += pieces.at(random.bounded(int(pieces.size())));
        values.append(value);
    }
    return values;
}

}
