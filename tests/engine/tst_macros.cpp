// Macros in setting values: references to a node's settings and to the
// environment, questions to the host, and the limits that keep the
// expansion of any text finite.
#include "QAStAnalyseMacro.h"
#include "QAStConfiguration.h"
#include "QAStProject.h"
#include "RecordingStudio.h"
#include "TestEnvironment.h"

#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QString title = u"Prompt Dialog"_s;

// Keeps the filter of the open-file chooser besides what RecordingStudio
// records.
class ChooserStudio : public RecordingStudio {
public:
    QString getOpenFileName(QWidget* parent, const QString& caption, const QString& dir,
                            const QString& filter) override
    {
        filters << filter;
        return RecordingStudio::getOpenFileName(parent, caption, dir, filter);
    }

    QStringList filters;
};

}

class TestMacros : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        QVERIFY(QAStConfiguration::initialize(nullptr, nullptr));
        qputenv("MACRO_VAR", "from-env");
        qputenv("cflags", "env-cflags");
        qputenv("VISUAL", "gvim");
        qputenv("EDITOR", "vi");
        qunsetenv("MACRO_UNSET");
    }

    // A project "p" and its node "n", both in "Debug": n has its own
    // configuration, everything else comes from p's or the built-in defaults.
    void init()
    {
        m_studio = std::make_unique<ChooserStudio>();
        m_project = std::make_unique<QAStProject>(u"p"_s, QPixmap());
        m_node = new QAStNode(u"n"_s, QPixmap(), m_project.get());
        QAStConfiguration* top = m_project->addConfiguration(u"Debug"_s);
        top->setProperty(u"cflags"_s, u"-O2"_s);
        top->setProperty(u"outdir"_s, u"p-out"_s);
        top->setProperty(u"bufferSize"_s, 3);
        top->setProperty(u"multiThreaded"_s, true);
        top->setProperty(u"sourceDirectories"_s, QStringList{u"src"_s, u"lib"_s});
        top->setProperty(u"ge_host_workdir"_s, u"${MACRO_VAR}/work"_s);
        m_project->setCurrentConfigurationName(u"Debug"_s);
        m_node->addConfiguration(u"Debug"_s)->setProperty(u"intdir"_s, u"obj"_s);
        m_node->setCurrentConfigurationName(u"Debug"_s);
        QAStProject::setModeBatch(false);
    }

    void cleanup()
    {
        QAStProject::setModeBatch(false);
        m_project.reset();
        m_studio.reset();
    }

    // Expansions without questions; messages: the message console after.
    void expansion_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<QStringList>("messages");
        const QStringList none;
        QTest::newRow("own setting") << "${intdir}" << "obj" << none;
        QTest::newRow("inherited, beats the environment") << "${cflags}" << "-O2" << none;
        QTest::newRow("built-in default Boolean") << "${debug}" << "0" << none;
        QTest::newRow("Boolean, number, list")
            << "${multiThreaded} ${bufferSize} ${sourceDirectories}" << "1 3 src lib" << none;
        QTest::newRow("value with a reference") << "${ge_host_workdir}" << "from-env/work" << none;
        QTest::newRow("environment, unknown") << "${MACRO_VAR}|${MACRO_UNSET}|" << "from-env||" << none;
        QTest::newRow("lone dollars, Perl") << "$5 $x = $$; @$r $h{k} $" << "$5 $x = $$; @$r $h{k} $" << none;
        QTest::newRow("escaped reference") << "$${cflags} $$${intdir}" << "${cflags} $${intdir}" << none;
        QTest::newRow("Windows path") << "C:\\$Recycle.Bin\\${intdir}\\a$"
                                      << "C:\\$Recycle.Bin\\obj\\a$" << none;
        QTest::newRow("not names") << "${c flags}${}" << "${c flags}${}" << none;
        QTest::newRow("unterminated") << "x ${cflags ${intdir} ${" << "x ${cflags obj ${" << none;
        QTest::newRow("nested is not a reference") << "${${MACRO_VAR}}" << "${from-env}" << none;
        QTest::newRow("at signs") << "user@host @@ a@@ @@@" << "user@host @@ a@@ @@@" << none;
        QTest::newRow("editor takes no arguments") << "@@EDITOR(a.c)" << "gvim(a.c)" << none;
        QTest::newRow("unknown macro") << "-D@@FOO ${intdir}" << "-D@@FOO obj"
                                       << QStringList{"n: Unknown macro @@FOO"};
        QTest::newRow("each fault once") << "@@FOO @@FOO @@BAR_2" << "@@FOO @@FOO @@BAR_2"
                                         << QStringList{"n: Unknown macro @@FOO", "n: Unknown macro @@BAR_2"};
        QTest::newRow("names are case-sensitive") << "@@prompt(x)" << "@@prompt(x)"
                                                  << QStringList{"n: Unknown macro @@prompt"};
        QTest::newRow("unterminated prompt") << "@@PROMPT(Flags ${intdir}" << "@@PROMPT(Flags obj"
                                             << QStringList{"n: Unterminated macro @@PROMPT"};
        QTest::newRow("many unterminated") << u"@@OPEN((x)"_s.repeated(4000) << u"@@OPEN((x)"_s.repeated(4000)
                                           << QStringList{"n: Unterminated macro @@OPEN"};
    }

    void expansion()
    {
        QFETCH(QString, text);
        QTEST(QAStAnalyseMacro::analyse(text, m_node, title), "expected");
        QTEST(m_studio->messages(QAStData::MessageConsole), "messages");
        QVERIFY(m_studio->requests().isEmpty());
    }

    // Without settings only the environment.
    void environment()
    {
        const QString text = u"${cflags}|${MACRO_VAR}|${intdir}"_s;
        const QString expected = u"env-cflags|from-env|"_s;
        QCOMPARE(QAStAnalyseMacro::analyse(text, nullptr, title), expected);
        m_node->setCurrentConfigurationName(u"Release"_s);
        QCOMPARE(QAStAnalyseMacro::analyse(text, m_node, title), expected);
        // Without a node a fault names the text.
        QAStAnalyseMacro::analyse(u"x %2 @@BAR"_s, nullptr, title);
        QCOMPARE(m_studio->messages(QAStData::MessageConsole),
                 QStringList{u"x %2 @@BAR: Unknown macro @@BAR"_s});
        // @@EDITOR falls back to $EDITOR, then to nothing.
        EnvironmentVariable visual("VISUAL", QByteArray());
        QCOMPARE(QAStAnalyseMacro::analyse(u"@@EDITOR a.c"_s, m_node, title), u"vi a.c"_s);
        EnvironmentVariable editor("EDITOR", QByteArray());
        QCOMPARE(QAStAnalyseMacro::analyse(u"@@EDITOR a.c"_s, m_node, title), u" a.c"_s);
    }

    void prompt_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("answer"); // text and "ok" or "cancel"; none: unscripted
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("expected");
        QTest::newRow("answered") << "-O@@PROMPT(Optimisation level) -g"
                                  << QStringList{"3", "ok"} << "Optimisation level" << "-O3 -g";
        QTest::newRow("cancelled") << "@@PROMPT(Flags, -g)" << QStringList{"x", "cancel"}
                                   << "Flags" << "-g";
        QTest::newRow("default proposed") << "@@PROMPT( Flags ,  -g )" << QStringList() << "Flags" << "-g";
        QTest::newRow("arguments expanded") << "@@PROMPT(Flags of ${intdir}, ${cflags} -g)"
                                            << QStringList() << "Flags of obj" << "-O2 -g";
        QTest::newRow("commas and parentheses")
            << "@@PROMPT(Linker (extra, rare), -Wl,-rpath,/opt)" << QStringList()
            << "Linker (extra, rare)" << "-Wl,-rpath,/opt";
        QTest::newRow("answer taken as typed") << "@@PROMPT(Flags)"
                                               << QStringList{"${cflags} @@FOO", "ok"} << "Flags"
                                               << "${cflags} @@FOO";
        QTest::newRow("no argument list") << "[@@PROMPT]" << QStringList() << "" << "[]";
    }

    void prompt()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, answer);
        if (!answer.isEmpty())
            m_studio->answerText(answer.at(0), answer.at(1) == QLatin1String("ok"));
        QTEST(QAStAnalyseMacro::analyse(text, m_node, title), "expected");
        QCOMPARE(m_studio->requests().size(), 1);
        QCOMPARE(m_studio->requests().first().kind, RecordingStudio::Request::TextInput);
        QCOMPARE(m_studio->requests().first().caption, title);
        QTEST(m_studio->requests().first().text, "label");
        QVERIFY(m_studio->messages(QAStData::MessageConsole).isEmpty());
    }

    void batchAndNoHostTakeTheDefault()
    {
        const QString text = u"@@PROMPT(Flags, -g)[@@OPEN(Source)]"_s;
        m_studio->answerText(u"typed"_s);
        m_studio->answerPath(u"/tmp/a.c"_s);
        QAStProject::setModeBatch(true);
        QCOMPARE(QAStAnalyseMacro::analyse(text, m_node, title), u"-g[]"_s);
        QVERIFY(m_studio->requests().isEmpty());
        QAStProject::setModeBatch(false);
        m_studio.reset();
        QCOMPARE(QAStAnalyseMacro::analyse(text, m_node, title), u"-g[]"_s);
    }

    void openFile()
    {
        m_studio->answerPath(u"/src/a.c"_s);
        QCOMPARE(QAStAnalyseMacro::analyse(u"@@OPEN(Pick a source, Sources (*.c *.h);;All (*)) -o x"_s,
                     m_node, title), u"/src/a.c -o x"_s);
        QCOMPARE(QAStAnalyseMacro::analyse(u"[@@OPEN]"_s, m_node, title), u"[]"_s);
        QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::OpenFile).size(), 2);
        QCOMPARE(m_studio->requests().at(0).caption, u"Pick a source"_s);
        QCOMPARE(m_studio->requests().at(1).caption, title);
        QCOMPARE(m_studio->filters, (QStringList{u"Sources (*.c *.h);;All (*)"_s, QString()}));
    }

    // A stopped expansion returns the text as written, with one message.
    void limits_data()
    {
        QTest::addColumn<QStringList>("settings"); // key, value, key, value...
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("message"); // empty: expands
        const auto chain = [](int length) { // v1 -> v2 -> ... -> "end"
            QStringList settings;
            for (int i = 1; i < length; ++i)
                settings << u"v%1"_s.arg(i) << u"${v%1}"_s.arg(i + 1);
            return settings << u"v%1"_s.arg(length) << u"end"_s;
        };
        QTest::newRow("chain at the limit") << chain(QAStAnalyseMacro::maxDepth) << "${v1}" << "";
        QTest::newRow("chain beyond") << chain(QAStAnalyseMacro::maxDepth + 1) << "${v1}"
                                      << "n: Recursion deeper than 16 levels in macro ${v17}";
        QTest::newRow("setting refers to itself")
            << QStringList{"cflags", "-I${cflags}"} << "cc ${intdir} ${cflags}"
            << "n: Recursion deeper than 16 levels in macro ${cflags}";
        QTest::newRow("settings refer to each other")
            << QStringList{"a", "${b}", "b", "x${a}${a}${a}${a}"} << "${a}"
            << "n: Recursion deeper than 16 levels in macro ${a}";
        QStringList fanOut;
        for (int i = 1; i <= 8; ++i)
            fanOut << u"w%1"_s.arg(i) << u"${w%1}"_s.arg(i + 1).repeated(10);
        QTest::newRow("fan-out") << fanOut << "${w1}" << "n: More than 10000 macros to expand";
        QTest::newRow("length") << QStringList{"big", QString(1 << 20, u'x')}
                                << u"${big}"_s.repeated(17)
                                << "n: Expansion longer than 16777216 characters";
        QTest::newRow("arguments nested in the text")
            << QStringList() << u"@@PROMPT("_s.repeated(20) + QString(20, u')')
            << "n: Recursion deeper than 16 levels in macro @@PROMPT";
    }

    void limits()
    {
        QFETCH(QStringList, settings);
        QFETCH(QString, text);
        QFETCH(QString, message);
        for (qsizetype i = 0; i + 1 < settings.size(); i += 2)
            m_node->currentConfiguration()->setProperty(settings.at(i), settings.at(i + 1));
        const bool expands = message.isEmpty();
        QCOMPARE(QAStAnalyseMacro::analyse(text, m_node, title), expands ? u"end"_s : text);
        QCOMPARE(m_studio->messages(QAStData::MessageConsole),
                 expands ? QStringList() : QStringList{message});
    }

private:
    std::unique_ptr<ChooserStudio> m_studio;
    std::unique_ptr<QAStProject> m_project;
    QAStNode* m_node = nullptr;
};

QTEST_GUILESS_MAIN(TestMacros)
#include "tst_macros.moc"
