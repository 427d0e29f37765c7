#pragma once

#include <QByteArray>
#include <QProcess>
#include <QRandomGenerator>
#include <QStringConverter>
#include <QStringList>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::StringLiterals;

// Generated Perl scripts as the real interpreter ("perl" on the PATH)
// compiles and reads them.
namespace PerlScripts {

inline bool perlPresent()
{
    QProcess perl;
    perl.start(u"perl"_s, {u"-v"_s});
    return perl.waitForFinished(30000) && perl.exitCode() == 0;
}

// perl with args, "<script>" among them standing for a file holding
// script; false with perl's errors shown when it fails.
inline bool runPerl(QStringList args, const QByteArray& script, QByteArray* output = nullptr)
{
    QTemporaryDir dir;
    QFile file(dir.filePath(u"env.pl"_s));
    if (!file.open(QIODevice::WriteOnly) || file.write(script) != script.size())
        return false;
    file.close();
    args.replaceInStrings(u"<script>"_s, file.fileName());
    QProcess perl;
    perl.start(u"perl"_s, args);
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
    return runPerl({u"-c"_s, u"<script>"_s}, script);
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
    if (!runPerl(QStringList{u"-e"_s, program, u"<script>"_s} + expressions,
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
        u"\\"_s, u"\\\\"_s, u"'"_s, u"\""_s,
        u"$"_s, u"@"_s, u"${x}"_s, u"%"_s,
        u"#"_s, u";"_s, u"="_s, u" "_s,
        u"a"_s, u"Z9"_s, u"\r"_s, u"\n"_s,
        u"\r\n"_s, u"\t"_s, QString(QChar(0)), u"\x1b"_s,
        u"\x04"_s, u"\x1a"_s, u"\x7f"_s, u"é"_s,
        u"ÿ"_s, u"€"_s, u"Ω"_s, u"日本"_s,
        u"😀"_s, u"'.\""_s, u"\n__END__\n"_s,
        u"\n=pod\n"_s};
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
