#include "QAStFile.h"
#include "QAStProjectPref.h"

#include <QtTest>

using namespace Qt::StringLiterals;

class TestFileTypes : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        QAStData::preferences()->setFileTypes({{u"Scripts"_s, u" *.sh ; *.bash;"_s}, {u"Docs"_s, u"*.md"_s}});
    }

    void cleanup()
    {
        QAStData::preferences()->setFileTypes({});
    }

    void typeOfAName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("type");
        // The cases beyond the table's own rows.
        const QList<QPair<const char*, int>> rows = {
            {"t.PTU", 5}, {"x.Stb", 8}, {"A.JAVA", 15}, {"a.H", 9}, {"x.MAK", 17}, {"data.CSV", 25},
            // the supervision scripts stop at the first of their two rows
            {"sup.spv", 7},
            // "*.tsf" always gives runtime tracing
            {"all.tsf", 19},
            // case is ignored: an upper-case C is a C file, before C++
            {"a.C", 10}, {"a.CC", 12},
            {"MAKEFILE.old", 17}, {"GNUmakefile", 27}, {"", 27}, {"c", 27},
            {"/src/x.c/readme", 27}, {"/src/x.adb", 14}, {"C:\\src\\main.cpp", 12},
            // the user's types come after the table
            {"run.sh", 26}, {"RUN.BASH", 26}, {"notes.md", 26}, {"make.sh.c", 10}, {"x.shell", 27},
        };
        for (const auto& row : rows)
            QTest::newRow(row.first[0] ? row.first : "empty") << QString::fromLatin1(row.first) << row.second;
    }
    void typeOfAName()
    {
        QFETCH(QString, name);
        QTEST(int(QAStFile::fileType(name)), "type");
    }

    void userPatternsFollowThePreferences()
    {
        QCOMPARE(QAStFile::fileType(u"a.sh"_s), QAStFile::UserFile);
        QAStData::preferences()->setFileTypes({{u"Logs"_s, u"*.log"_s}});
        QCOMPARE(QAStFile::fileType(u"a.sh"_s), QAStFile::UnknownFile);
        QCOMPARE(QAStFile::fileType(u"A.LOG"_s), QAStFile::UserFile);
        QAStData::preferences()->setFileTypes({});
        QCOMPARE(QAStFile::fileType(u"a.log"_s), QAStFile::UnknownFile);
    }

    void languageOfAFile_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("language");
        QTest::newRow("C") << "/p/a.c" << 1;
        QTest::newRow("upper-case C") << "/p/a.C" << 1;
        QTest::newRow("C++") << "/p/a.cxx" << 2;
        QTest::newRow("Ada") << "/p/a.ads" << 4;
        QTest::newRow("Java") << "/p/A.java" << 8;
        QTest::newRow("header") << "/p/a.h" << 0;
        QTest::newRow("test script") << "/p/a.ptu" << 0;
        QTest::newRow("user type") << "/p/a.sh" << 0;
    }
    void languageOfAFile()
    {
        QFETCH(QString, path);
        QFETCH(int, language);
        QCOMPARE(QAStFile::languageType(path), language);
        QAStFile file(path);
        QCOMPARE(file.language(), language);
        QAStATag tag(u"t"_s, QPixmap(), path, 1, &file);
        QCOMPARE(tag.language(), language);
    }

    void filters_data()
    {
        QTest::addColumn<QList<int>>("types");
        QTest::addColumn<QString>("filter");
        QTest::newRow("second supervision row") << QList<int>{18} << "System Testing Supervision Scripts (*.spv)";
        QTest::newRow("user types") << QList<int>{26} << "Docs (*.md);;Scripts (*.sh *.bash)";
        QTest::newRow("outside the table") << QList<int>{99} << "";
        QTest::newRow("several") << QList<int>{15, 99, 9, 27}
                                 << "All Java Files (*.java);;Header Files (*.h *.hh *.hpp *.hxx *.H);;"
                                    "All Files (*)";
    }
    void filters()
    {
        QFETCH(QList<int>, types);
        QFETCH(QString, filter);
        if (types.size() == 1)
            QCOMPARE(QAStFile::fileTypeFilter(types.first()), filter);
        QCOMPARE(QAStFile::fileTypeFilter(types), filter);
    }
};

QTEST_MAIN(TestFileTypes)
#include "tst_file_types.moc"
