// The property sheet of a node shows the settings of the installation's
// descriptor that apply to its kind, its language and the host.
#include "QAProperty.h"
#include "QAPropertyMapGroup.h"
#include "QAStConfiguration.h"
#include "QAStPropertyFilters.h"
#include "QAStProject.h"
#include "RecordingStudio.h"

#include <QtTest>

namespace {

// Every setting tag and group name the sheet shows, walking visible groups.
void collect(const QAStNode& node, const QAPropertyGroup* group, QStringList& shown)
{
    for (QAProperty* p : node.visibleSettings(group)) {
        if (p->isGroup()) {
            shown << QStringLiteral("group:") + p->name();
            collect(node, static_cast<QAPropertyGroup*>(p), shown);
        } else {
            shown << p->tag();
        }
    }
}

QStringList sheetOf(const QAStNode& node)
{
    QStringList shown;
    collect(node, QAStConfiguration::propertyDescriptor(), shown);
    return shown;
}

// A node of no particular kind: only settings unrestricted by kind show.
class PlainNode : public QAStNode {
public:
    using QAStNode::QAStNode;
};

}

class TestPropertySheet : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        QVERIFY(QAStConfiguration::initialize(nullptr, nullptr));
    }

    void languageDecidesJavaSettings()
    {
        QAStProject project(QStringLiteral("p"), QPixmap());
        project.addConfiguration(QStringLiteral("Debug"))
            ->setProperty(QStringLiteral("sourceLanguage"), QStringLiteral("C"));
        project.setCurrentConfigurationName(QStringLiteral("Debug"));
        const QStringList c = sheetOf(project);
        QVERIFY(c.contains(QStringLiteral("cflags")));
        QVERIFY(c.contains(QStringLiteral("no_header_instr")));
        QVERIFY(!c.contains(QStringLiteral("atc_rungcatexit")));
        QVERIFY(!c.contains(QStringLiteral("virtualMachineArguments")));

        project.configuration(QStringLiteral("Debug"))
            ->setProperty(QStringLiteral("sourceLanguage"), QStringLiteral("JAVA"));
        const QStringList java = sheetOf(project);
        QVERIFY(java.contains(QStringLiteral("virtualMachineArguments")));
        QVERIFY(java.contains(QStringLiteral("atc_rungcatexit")));
        QVERIFY(!java.contains(QStringLiteral("no_header_instr")));
    }

    void kindDecidesTestSettings()
    {
        QAStProject project(QStringLiteral("p"), QPixmap());
        PlainNode node(QStringLiteral("n"), QPixmap(), &project);
        QVERIFY(sheetOf(project).contains(QStringLiteral("group:Unit testing")));
        const QStringList plain = sheetOf(node);
        QVERIFY(!plain.contains(QStringLiteral("group:Unit testing")));
        QVERIFY(!plain.contains(QStringLiteral("zeltaClassName")));
        QVERIFY(plain.contains(QStringLiteral("cflags")));
    }

    void hostIsPartOfTheContext()
    {
        QAStProject project(QStringLiteral("p"), QPixmap());
        QCOMPARE(project.propertyContext() & QAStPropertyFilters::HostMask,
                 unsigned(QAStPropertyFilters::Studio));
        QAStPropertyFilters::setHost(QAStPropertyFilters::EclipseRta);
        const unsigned context = project.propertyContext();
        QAStPropertyFilters::setHost(QAStPropertyFilters::Studio);
        QCOMPARE(context & QAStPropertyFilters::HostMask, unsigned(QAStPropertyFilters::EclipseRta));
        QCOMPARE(context & QAStPropertyFilters::KindMask, unsigned(QAStPropertyFilters::Project));
        QCOMPARE(context & QAStPropertyFilters::LanguageMask, unsigned(QAStPropertyFilters::LanguageC));
    }
};

QTEST_GUILESS_MAIN(TestPropertySheet)
#include "tst_property_sheet.moc"
