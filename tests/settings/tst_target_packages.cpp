#include "QARes.h"
#include "QAStData.h"
#include "QAStProjectPref.h"
#include "QAStTargetPackage.h"
#include "QAStTargetPackageList.h"
#include "Recorders.h"
#include "RecordingStudio.h"
#include "TestFiles.h"
#include "TestPaths.h"

#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <memory>
#include <utility>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

using Package = QAStTargetPackage;

using TestFiles::writeFile;

// <tdp>/<dir>/<ini> (<dir>.ini unless told otherwise) naming one package.
void addPackage(const QString& tdp, const QString& dir, const QString& name, const QString& language,
                const QString& ini = QString())
{
    writeFile(tdp + '/' + dir + '/' + (ini.isEmpty() ? dir + ".ini" : ini),
              u"NAME = \"%1\"\nLANGUAGE = %2\nOBJEXT = .o\n"_s.arg(name, language).toUtf8());
}

QString dirName(const Package* package)
{
    return package ? QFileInfo(package->directory()).fileName() : QString();
}

QStringList namesOf(const QAStTargetPackageList& list)
{
    QStringList names;
    for (const Package* package : list.packages())
        names.append(package->name());
    return names;
}

bool readText(Package& package, const QString& text)
{
    const std::unique_ptr<QARes> res(QARes::readText(text, "pkg.ini"));
    return package.read(res.get(), "/tdp/pkg", "pkg.ini");
}

// A key of the ini as the package holds it.
QVariant held(const Package& p, const QString& key)
{
    static const QMap<QString, std::function<QVariant(const Package&)>> accessors{
        {"SRCEXT", [](const Package& p) { return QVariant(p.srcExtension()); }},
        {"DEFAULT_CFLAGS", [](const Package& p) { return QVariant(p.cFlags()); }},
        {"DEFAULT_INCLUDE_PATHS", [](const Package& p) { return QVariant(p.includePaths()); }},
        {"DEFAULT_LIBRARY_PATHS", [](const Package& p) { return QVariant(p.libraryPaths()); }},
        {"J2ME_RESTRICTION", [](const Package& p) { return QVariant(p.j2meRestriction()); }},
        {"ATC_MODE", [](const Package& p) { return QVariant(p.featureMode(Package::CodeCoverage)); }},
        {"ATT_MODE", [](const Package& p) { return QVariant(p.featureMode(Package::RuntimeTracing)); }},
        {"ATP_MODE", [](const Package& p) { return QVariant(p.featureMode(Package::MemoryProfiling)); }},
        {"ATQ_MODE", [](const Package& p) { return QVariant(p.featureMode(Package::PerformanceProfiling)); }},
    };
    const auto accessor = accessors.find(key);
    return accessor == accessors.end() ? p.defaultValue(key) : (*accessor)(p);
}

QString notReadable(const QString& dir)
{
    return u"The Target Package %1 directory doesn't exist or it is not readable"_s.arg(dir);
}

QString shippedTargets()
{
    return TestPaths::installTree() + "/targets";
}

}

class TestTargetPackages : public QObject {
    Q_OBJECT

    std::unique_ptr<RecordingStudio> m_studio;
    std::unique_ptr<QTemporaryDir> m_tmp;

private slots:
    void init()
    {
        m_studio = std::make_unique<RecordingStudio>();
        m_tmp = std::make_unique<QTemporaryDir>();
    }

    // The process-wide list and the preferences go back to their defaults.
    void cleanup()
    {
        Package::terminate();
        QAStData::preferences()->resetToDefaults();
    }

    void readsEveryKey()
    {
        RecordingResErrors handler;
        const std::unique_ptr<QARes> res(QARes::read(TestPaths::data("targets/full/full.ini")));
        QVERIFY(res);
        Package package;
        QVERIFY(package.read(res.get(), TestPaths::data("targets/./full/"), "full.ini"));
        QCOMPARE(handler.texts(), QStringList());

        QCOMPARE(package.name(), "Cross C++ for ARM");
        QCOMPARE(package.language(), "cpp");
        QCOMPARE(package.languageType(), int(Package::LanguageCpp));
        const QStringList extensions{package.objExtension(), package.libExtension(), package.dllExtension(),
                                     package.srcExtension(), package.exeExtension()};
        QCOMPARE(extensions, (QStringList{".obj", ".lib", ".dll", ".cxx", ".elf"}));
        const QStringList flags{package.cppFlags(), package.cFlags(), package.ldFlags(), package.libs(),
                                package.defines()};
        QCOMPARE(flags, (QStringList{"-E -P", "-g -O0 -mcpu=cortex-m4", "-Wl,--gc-sections", "-lc -lm",
                                     "-DTARGET=ARM -DNDEBUG"}));
        QCOMPARE(package.includePaths(), (QStringList{"/opt/arm/include", "$ZELTAHOME/targets/arm/lib"}));
        QCOMPARE(package.libraryPaths(), QStringList{"/opt/arm/lib"});
        QCOMPARE(package.bootClassPath(), QStringList{"/opt/arm/java/classes.zip"});
        QVERIFY(package.j2meRestriction());
        const QList<int> modes{package.featureMode(Package::CodeCoverage), package.featureMode(Package::RuntimeTracing),
                               package.featureMode(Package::MemoryProfiling),
                               package.featureMode(Package::PerformanceProfiling)};
        QCOMPARE(modes, (QList<int>{1, 0, 0, 1}));
        QCOMPARE(package.directory(), TestPaths::data("targets/full"));
        QCOMPARE(package.iniName(), "full.ini");

        // Only the DEFAULT_ keys outside the table stay, each with its type.
        QCOMPARE(package.defaultValues().keys(),
                 (QStringList{"DEFAULT_OPTIMISATION", "DEFAULT_STACK_SIZE", "DEFAULT_THUMB", "DEFAULT_WARNINGS"}));
        QCOMPARE(package.defaultValue("DEFAULT_OPTIMISATION"), QVariant("-O2"));
        QCOMPARE(package.defaultValue("DEFAULT_STACK_SIZE"), QVariant(qlonglong(4096)));
        QCOMPARE(package.defaultValue("DEFAULT_THUMB"), QVariant(true));
        QCOMPARE(package.defaultValue("DEFAULT_WARNINGS"), QVariant(QStringList{"-Wall", "-Wextra"}));
    }

    void readAgainStartsFromDefaults()
    {
        Package package;
        QVERIFY(readText(package, "NAME = first\nDEFAULT_INCLUDE_PATHS = ( /a )\nATC_MODE = 0\n"
                                  "J2ME_RESTRICTION = true\nDEFAULT_X = 1\n"));
        QVERIFY(readText(package, QString()));
        QVERIFY(package.name().isEmpty());
        QVERIFY(package.includePaths().isEmpty());
        QVERIFY(!package.j2meRestriction());
        QVERIFY(package.defaultValues().isEmpty());
        for (const char* mode : {"ATC_MODE", "ATT_MODE", "ATP_MODE", "ATQ_MODE"})
            QCOMPARE(held(package, mode), QVariant(1));
        QCOMPARE(package.languageType(), int(Package::LanguageC));
        QCOMPARE(package.directory(), "/tdp/pkg");
    }

    // An entry amid others: the value held, or, for a value of the wrong
    // type, a fault with file and line through the installed handler, the
    // key keeping its default and the keys around it read.
    void valueForms_data()
    {
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<bool>("fault");
        QTest::newRow("J2ME word true") << "J2ME_RESTRICTION = true" << "J2ME_RESTRICTION" << QVariant(true) << false;
        QTest::newRow("J2ME quoted true") << "J2ME_RESTRICTION = \"true\""
                                          << "J2ME_RESTRICTION" << QVariant(true) << false;
        QTest::newRow("J2ME yes") << "J2ME_RESTRICTION = yes" << "J2ME_RESTRICTION" << QVariant(false) << false;
        QTest::newRow("mode 0") << "ATT_MODE = 0" << "ATT_MODE" << QVariant(0) << false;
        QTest::newRow("mode false") << "ATC_MODE = false" << "ATC_MODE" << QVariant(0) << false;
        QTest::newRow("mode quoted 0") << "ATP_MODE = \"0\"" << "ATP_MODE" << QVariant(0) << false;
        QTest::newRow("mode true") << "ATQ_MODE = true" << "ATQ_MODE" << QVariant(1) << false;
        QTest::newRow("one mode leaves the others") << "ATT_MODE = 0" << "ATQ_MODE" << QVariant(1) << false;
        QTest::newRow("word for a string") << "SRCEXT = .c" << "SRCEXT" << QVariant(".c") << false;
        QTest::newRow("integer for a string") << "DEFAULT_CFLAGS = 3" << "DEFAULT_CFLAGS" << QVariant("3") << false;
        QTest::newRow("string as a list") << "DEFAULT_INCLUDE_PATHS = \"/my include\"" << "DEFAULT_INCLUDE_PATHS"
                                          << QVariant(QStringList{"/my include"}) << false;
        QTest::newRow("word as a list") << "DEFAULT_LIBRARY_PATHS = /usr/lib" << "DEFAULT_LIBRARY_PATHS"
                                        << QVariant(QStringList{"/usr/lib"}) << false;
        QTest::newRow("empty string as a list") << "DEFAULT_INCLUDE_PATHS = \"\"" << "DEFAULT_INCLUDE_PATHS"
                                                << QVariant(QStringList()) << false;
        QTest::newRow("list of scalars") << "DEFAULT_INCLUDE_PATHS = ( /a, 2, true, )" << "DEFAULT_INCLUDE_PATHS"
                                         << QVariant(QStringList{"/a", "2", "true"}) << false;
        QTest::newRow("first entry counts") << "SRCEXT = .c\nSRCEXT = .cc" << "SRCEXT" << QVariant(".c") << false;
        QTest::newRow("first further default counts") << "DEFAULT_X = a\nDEFAULT_X = b"
                                                      << "DEFAULT_X" << QVariant("a") << false;
        QTest::newRow("not a further default") << "DEFAULTS_X = a" << "DEFAULTS_X" << QVariant() << false;
        QTest::newRow("group for a string") << "SRCEXT = { ext = .c }" << "SRCEXT" << QVariant(QString()) << true;
        QTest::newRow("list for a string") << "DEFAULT_CFLAGS = ( -g )"
                                           << "DEFAULT_CFLAGS" << QVariant(QString()) << true;
        QTest::newRow("group for a list") << "DEFAULT_INCLUDE_PATHS = { p = /usr }" << "DEFAULT_INCLUDE_PATHS"
                                          << QVariant(QStringList()) << true;
        QTest::newRow("list in a list") << "DEFAULT_LIBRARY_PATHS = ( /usr/lib, ( /lib ) )"
                                        << "DEFAULT_LIBRARY_PATHS" << QVariant(QStringList()) << true;
        QTest::newRow("group for J2ME") << "J2ME_RESTRICTION = { }" << "J2ME_RESTRICTION" << QVariant(false) << true;
        QTest::newRow("mode out of range") << "ATP_MODE = 2" << "ATP_MODE" << QVariant(1) << true;
        QTest::newRow("mode as a word") << "ATQ_MODE = off" << "ATQ_MODE" << QVariant(1) << true;
        QTest::newRow("group for a further default") << "DEFAULT_EXTRA = { a = 1 }"
                                                     << "DEFAULT_EXTRA" << QVariant() << true;
    }
    void valueForms()
    {
        QFETCH(QString, entry);
        QFETCH(QString, key);
        QFETCH(QVariant, value);
        QFETCH(bool, fault);
        RecordingResErrors handler;
        Package package;
        QCOMPARE(readText(package, u"NAME = before\nLANGUAGE = C\n%1\nOBJEXT = .o\n"_s.arg(entry)), !fault);
        QCOMPARE(held(package, key), value);
        QCOMPARE(package.name(), "before");
        QCOMPARE(package.objExtension(), ".o");
        if (!fault) {
            QCOMPARE(handler.texts(), QStringList());
            return;
        }
        QCOMPARE(handler.texts().size(), 1);
        QVERIFY2(handler.texts().first().startsWith("pkg.ini:3: "), qPrintable(handler.texts().first()));
        QVERIFY(handler.texts().first().contains(key));
    }

    void languageType_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<int>("bit");
        const QList<std::pair<const char*, int>> table{
            {"C", 1}, {"c", 1}, {"CPP", 2}, {"cpp", 2}, {"C++", 2}, {"ADA", 4}, {"Ada83", 4}, {"ada95", 4},
            {"JAVA", 8}, {"java", 8}, {"", 1}, {"Fortran", 1}, {"ADA2012", 1}, {" CPP", 1}};
        for (const auto& [language, bit] : table)
            QTest::newRow(*language ? language : "none") << QString(language) << bit;
    }
    void languageType()
    {
        QFETCH(QString, language);
        QFETCH(int, bit);
        QCOMPARE(Package::languageTypeOf(language), bit);
        Package package;
        QVERIFY(readText(package, u"LANGUAGE = \"%1\""_s.arg(language)));
        QCOMPARE(package.languageType(), bit);
    }

    // A directory missing, a file or empty: reported to the console and the
    // monitor, logged, and passed over.
    void missingOrEmptyDirectory()
    {
        RecordingLog monitor;
        const QString missing = m_tmp->filePath("missing");
        const QString plainFile = m_tmp->filePath("file.txt");
        const QString empty = m_tmp->filePath("empty");
        writeFile(plainFile, "not a directory");
        QVERIFY(QDir().mkpath(empty));
        addPackage(m_tmp->filePath("good"), "gcc-c", "GNU C", "C");

        QLoggingCategory::setFilterRules("sdk110.targetpackage.debug=true");
        QTest::ignoreMessage(QtDebugMsg, qPrintable(missing + " directory doesn't exists"));
        QTest::ignoreMessage(QtDebugMsg, qPrintable(plainFile + " directory doesn't exists"));
        QTest::ignoreMessage(QtDebugMsg, qPrintable("scan " + m_tmp->filePath("good/gcc-c")));
        QAStTargetPackageList list;
        const bool clean = list.scan({missing, plainFile, empty, m_tmp->filePath("good")}, &monitor);
        QLoggingCategory::setFilterRules("sdk110.targetpackage.debug=false");

        QVERIFY(!clean);
        const QStringList expected{notReadable(missing), notReadable(plainFile),
                                   u"The Target Package %1 directory is empty"_s.arg(empty)};
        QCOMPARE(m_studio->messages(QAStData::MessageConsole), expected);
        QCOMPARE(monitor.messages, expected);
        QCOMPARE(namesOf(list), QStringList{"GNU C"});
    }

    void unreadableDirectory()
    {
        if (::geteuid() == 0)
            QSKIP("root reads any directory");
        const QString locked = m_tmp->filePath("locked");
        addPackage(locked, "gcc-c", "GNU C", "C");
        QVERIFY(QFile::setPermissions(locked, QFileDevice::Permissions()));
        QAStTargetPackageList list;
        const bool clean = list.scan({locked});
        QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        QVERIFY(!clean);
        QCOMPARE(m_studio->messages(QAStData::MessageConsole), QStringList{notReadable(locked)});
        QVERIFY(list.isEmpty());
    }

    void directoryWithoutIniSaysNothing()
    {
        writeFile(m_tmp->filePath("docs/readme.txt"), "no package here");
        QVERIFY(QDir().mkpath(m_tmp->filePath("bare")));
        writeFile(m_tmp->filePath("loose.ini"), "NAME = loose");  // not inside a package directory
        writeFile(m_tmp->filePath("old/old.ini.bak"), "NAME = backup");
        QVERIFY(QDir().mkpath(m_tmp->filePath("odd/dir.ini")));  // a directory, not a file
        addPackage(m_tmp->path(), "gcc-c", "GNU C", "C");

        QAStTargetPackageList list;
        QVERIFY(list.scan({m_tmp->path()}));
        QCOMPARE(m_studio->messages(QAStData::MessageConsole), QStringList());
        QCOMPARE(namesOf(list), QStringList{"GNU C"});
    }

    void iniWithErrors()
    {
        RecordingLog monitor;
        RecordingResErrors outer;
        const QString broken = m_tmp->filePath("a-broken/a-broken.ini");
        writeFile(broken, "LANGUAGE = CPP\nNAME \"no equals\"\nSRCEXT = { }\nOBJEXT = .o\n");
        addPackage(m_tmp->path(), "b-good", "Good", "C");

        QAStTargetPackageList list;
        QVERIFY(!list.scan({m_tmp->path()}, &monitor));

        // Reader faults and wrong types alike, naming file and line.
        const QStringList shown = m_studio->messages(QAStData::MessageConsole);
        QCOMPARE(shown.size(), 2);
        QVERIFY2(shown.at(0).startsWith(broken + ":2: "), qPrintable(shown.at(0)));
        QVERIFY2(shown.at(1).startsWith(broken + ":3: ") && shown.at(1).contains("SRCEXT"), qPrintable(shown.at(1)));
        QCOMPARE(monitor.messages, shown);

        // The faulty package keeps what could be read; the scan went on.
        QCOMPARE(list.count(), 2);
        QCOMPARE(list.packages().at(0)->language(), "CPP");
        QCOMPARE(list.packages().at(0)->objExtension(), ".o");
        QCOMPARE(list.packages().at(1)->name(), "Good");

        // The scan's handler was installed for the scan only.
        QCOMPARE(QARes::errorHandler(), &outer);
        QCOMPARE(outer.texts(), QStringList());
    }
    // Directories as listed; inside one, package directories and ini files by name.
    void scanOrder()
    {
        QTemporaryDir first, second;
        addPackage(first.path(), "zeta", "Z", "C");
        addPackage(first.path(), "alpha", "A2", "C", "second.ini");
        addPackage(first.path(), "alpha", "A1", "C");
        addPackage(second.path(), "beta", "B", "C");

        QAStTargetPackageList list({second.path(), first.path()});
        QCOMPARE(namesOf(list), (QStringList{"B", "A1", "A2", "Z"}));
        QCOMPARE(list.packages().at(2)->iniName(), "second.ini");
        QCOMPARE(list.packages().at(2)->directory(), first.filePath("alpha"));

        QVERIFY(list.scan({second.path()}));  // a further scan appends
        QCOMPARE(namesOf(list), (QStringList{"B", "A1", "A2", "Z", "B"}));
    }

    void targetPackageByPath()
    {
        addPackage(m_tmp->path(), "gcc-c", "GNU C", "C");
        addPackage(m_tmp->path(), "gcc-cpp", "GNU C++", "CPP");
        const QAStTargetPackageList list({m_tmp->path()});
        const QString cpp = m_tmp->filePath("gcc-cpp");

        QCOMPARE(dirName(list.targetPackage(cpp)), "gcc-cpp");
        QCOMPARE(dirName(list.targetPackage(m_tmp->path() + "/./gcc-c/../gcc-cpp/")), "gcc-cpp");
        QCOMPARE(dirName(list.targetPackage(QDir::current().relativeFilePath(cpp))), "gcc-cpp");
        QVERIFY(!list.targetPackage(m_tmp->filePath("gcc")));
        QVERIFY(!list.targetPackage(m_tmp->path()));
        QVERIFY(!list.targetPackage(QString()));
    }

    void findByName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("language");  // empty: find, else findAssociated
        QTest::addColumn<QString>("found");     // directory name; empty: none
        QTest::newRow("by NAME") << "GNU C++" << "" << "gcc-cpp";
        QTest::newRow("by directory") << "gcc-c" << "" << "gcc-c";
        QTest::newRow("NAME before directory") << "clang-cpp" << "" << "old-cpp";
        QTest::newRow("unknown") << "GNU Ada" << "" << "";
        QTest::newRow("C++ to C") << "GNU C++" << "C" << "gcc-c";
        QTest::newRow("C to C++ by directory") << "gcc-c" << "CPP" << "gcc-cpp";
        QTest::newRow("language as users write it") << "gcc-c" << "c++" << "gcc-cpp";
        QTest::newRow("same language: itself") << "gcc-cpp" << "cpp" << "gcc-cpp";
        QTest::newRow("no sibling") << "Clang C++" << "C" << "";
        QTest::newRow("gcc_12 is not gcc") << "GNU C 12" << "CPP" << "";
        QTest::newRow("associated to nothing") << "GNU Ada" << "C" << "";
    }
    void findByName()
    {
        QFETCH(QString, name);
        QFETCH(QString, language);
        QFETCH(QString, found);
        // gcc-c and gcc-cpp are one family; clang-cpp has no C sibling; the
        // NAME of old-cpp is the directory name of another package.
        addPackage(m_tmp->path(), "clang-cpp", "Clang C++", "CPP");
        addPackage(m_tmp->path(), "gcc-c", "GNU C", "C");
        addPackage(m_tmp->path(), "gcc-cpp", "GNU C++", "C++");
        addPackage(m_tmp->path(), "gcc_12-c", "GNU C 12", "C");
        addPackage(m_tmp->path(), "old-cpp", "clang-cpp", "CPP");
        const QAStTargetPackageList list({m_tmp->path()});
        QCOMPARE(dirName(language.isEmpty() ? list.find(name) : list.findAssociated(name, language)), found);
    }

    void installedListFromPreferences()
    {
        addPackage(m_tmp->path(), "gcc-c", "GNU C", "C");
        addPackage(m_tmp->path(), "gcc-cpp", "GNU C++", "CPP");
        QAStData::preferences()->setUseDefaultTdpDir(false);
        QAStData::preferences()->setTdpDirList({m_tmp->path()});

        QAStTargetPackageList* installed = QAStTargetPackageList::installTargetPackages();
        QCOMPARE(namesOf(*installed), (QStringList{"GNU C", "GNU C++"}));
        QCOMPARE(QAStTargetPackageList::installTargetPackages(), installed);
        QVERIFY(Package::initialize());  // built already
        QCOMPARE(dirName(QAStTargetPackageList::search("GNU C++")), "gcc-cpp");
        QCOMPARE(dirName(QAStTargetPackageList::searchAssociated("gcc-cpp", "C")), "gcc-c");
        QCOMPARE(m_studio->messages(QAStData::MessageConsole), QStringList());
        QVERIFY(m_studio->requests().isEmpty());

        // Released, the list is built again from the directories as they are now.
        addPackage(m_tmp->path(), "gcc-ada", "GNU Ada", "ADA");
        Package::terminate();
        QCOMPARE(QAStTargetPackageList::installTargetPackages()->count(), 3);
        QCOMPARE(dirName(QAStTargetPackageList::searchAssociated("GNU C", "Ada95")), "gcc-ada");
    }

    void noPackageWarns()
    {
        const QString warning = "Unable to find any Target Deployment port for your\nKorvil installation.\n"
                                "Please check your Project's Preferences > TDP Directories";
        RecordingLog monitor;
        const QString missing = m_tmp->filePath("missing");
        QAStData::preferences()->setUseDefaultTdpDir(false);
        QAStData::preferences()->setTdpDirList({missing});

        QVERIFY(!Package::initialize(&monitor));
        const QStringList expected{notReadable(missing),
                                   "Error when initializing Target Package List, see the reason above"};
        QCOMPARE(m_studio->messages(QAStData::MessageConsole), expected);
        QCOMPARE(monitor.messages, expected);
        QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Warning), QStringList{warning});
        QVERIFY(QAStTargetPackageList::installTargetPackages()->isEmpty());
        QVERIFY(!QAStTargetPackageList::search("GNU C"));

        // Directories read without fault but holding no package: the box alone.
        m_studio->reset();
        Package::terminate();
        QVERIFY(QDir().mkpath(m_tmp->filePath("tdp/bare")));
        QAStData::preferences()->setTdpDirList({m_tmp->filePath("tdp")});
        QVERIFY(!Package::initialize());
        QCOMPARE(m_studio->messages(QAStData::MessageConsole), QStringList());
        QCOMPARE(m_studio->requestTexts(RecordingStudio::Request::Warning), QStringList{warning});
    }

    void shippedPackagesLoad()
    {
        const QAStTargetPackageList list({shippedTargets()});
        QCOMPARE(m_studio->messages(QAStData::MessageConsole), QStringList());

        const Package* c = list.targetPackage(shippedTargets() + "/gcc-c");
        const Package* cpp = list.targetPackage(shippedTargets() + "/gcc-cpp");
        QVERIFY(c && cpp);
        QCOMPARE(c->languageType(), int(Package::LanguageC));
        QCOMPARE(cpp->languageType(), int(Package::LanguageCpp));
        QCOMPARE(list.findAssociated(c->name(), "CPP"), cpp);
        QCOMPARE(list.findAssociated(cpp->name(), "C"), c);
        // The directories the packages name are those of this machine.
        for (const Package* package : {c, cpp}) {
            QVERIFY(!package->includePaths().isEmpty() && !package->libraryPaths().isEmpty());
            for (const QString& path : package->includePaths() + package->libraryPaths())
                QVERIFY2(QFileInfo(path).isDir(), qPrintable(path));
        }
    }
};

QTEST_GUILESS_MAIN(TestTargetPackages)
#include "tst_target_packages.moc"
