#include "QAStNodeKinds.h"

#include "QAStDataFactory.h"
#include "QAStNodeApplication.h"
#include "QAStNodeGroup.h"
#include "QAStNodeJavaTesting.h"
#include "QAStNodeJavaTestingScript.h"
#include "QAStNodeLibrary.h"
#include "QAStNodeLink.h"
#include "QAStNodeObjectTesting.h"
#include "QAStNodeSource.h"
#include "QAStNodeSystemTesting.h"
#include "QAStNodeSystemTestingScript.h"
#include "QAStNodeUnitTesting.h"
#include "QAStNodeUnitTestingScript.h"
#include "QAStNodeUser.h"
#include "QAStNodeVirtualTester.h"
#include "QAStPropertyFilters.h"
#include "QAStSubProject.h"
#include "QATr.h"

#include <QHash>
#include <QPixmap>

namespace {

template <class T>
QAStNode* make(const QString& name, QAStData* parent, QAStData* after)
{
    return new T(name, QPixmap(), parent, after);
}

template <class T>
constexpr auto read = &QAStDataFactory::construct<T>;

namespace F = QAStPropertyFilters;

#define TR(text) QT_TRANSLATE_NOOP(QATR_PROJECT, text)

// What groups, projects and sub-projects take.
#define CONTAINER_CHILDREN                                                                         \
    "group application library unit_testing object_testing system_testing java_testing test user " \
    "link"

// name, class, label, block, children, driver, property kind, read, make
const QAStNodeKind table[] = {
    {"container", &QAStNodeContainer::staticMetaObject, nullptr, nullptr, CONTAINER_CHILDREN,
     nullptr, 0, nullptr, nullptr},
    {"test", &QAStNodeTest::staticMetaObject, nullptr, nullptr, "test_script source", nullptr,
     F::Test, nullptr, nullptr},
    {"project", &QAStProject::staticMetaObject, nullptr, nullptr, CONTAINER_CHILDREN " sub_project",
     nullptr, F::Project, nullptr, nullptr},
    {"sub_project", &QAStSubProject::staticMetaObject, nullptr, nullptr,
     CONTAINER_CHILDREN " sub_project", nullptr, F::Project, read<QAStSubProject>, nullptr},
    {"group", &QAStNodeGroup::staticMetaObject, TR("Group"), "group", CONTAINER_CHILDREN, nullptr,
     F::Group, read<QAStNodeGroup>, make<QAStNodeGroup>},
    {"application", &QAStNodeApplication::staticMetaObject, TR("Application"), "test",
     "source library test_script user link", "application", F::Application,
     read<QAStNodeApplication>, make<QAStNodeApplication>},
    {"library", &QAStNodeLibrary::staticMetaObject, TR("Library"), "group", "source link",
     "library", F::Library, read<QAStNodeLibrary>, make<QAStNodeLibrary>},
    {"unit_testing", &QAStNodeUnitTesting::staticMetaObject, TR("Unit Testing"), "test",
     "unittesting_script source", "unit_testing", F::UnitTesting, read<QAStNodeUnitTesting>,
     make<QAStNodeUnitTesting>},
    {"object_testing", &QAStNodeObjectTesting::staticMetaObject, TR("Object Testing"), "test",
     "test_script source", "object_testing", F::ObjectTesting, read<QAStNodeObjectTesting>,
     make<QAStNodeObjectTesting>},
    {"system_testing", &QAStNodeSystemTesting::staticMetaObject, TR("System Testing"), "test",
     "systemtesting_script source", "system_testing", F::SystemTesting,
     read<QAStNodeSystemTesting>, make<QAStNodeSystemTesting>},
    {"java_testing", &QAStNodeJavaTesting::staticMetaObject, TR("Java Testing"), "test",
     "javatesting_script source", "java_testing", F::JavaTesting, read<QAStNodeJavaTesting>,
     make<QAStNodeJavaTesting>},
    {"source", &QAStNodeSource::staticMetaObject, TR("Source"), "nodefile_ref", "user", "source",
     F::Source, read<QAStNodeSource>, make<QAStNodeSource>},
    {"test_script", &QAStNodeTestScript::staticMetaObject, TR("Test Script"), "nodefile_ref", "",
     nullptr, F::TestScript, read<QAStNodeTestScript>, make<QAStNodeTestScript>},
    {"unittesting_script", &QAStNodeUnitTestingScript::staticMetaObject,
     TR("Unit Testing Script"), "test_script", "", nullptr, F::UnitTestScript,
     read<QAStNodeUnitTestingScript>, make<QAStNodeUnitTestingScript>},
    {"javatesting_script", &QAStNodeJavaTestingScript::staticMetaObject,
     TR("Java Testing Script"), "test_script", "", nullptr, F::TestScript,
     read<QAStNodeJavaTestingScript>, make<QAStNodeJavaTestingScript>},
    {"systemtesting_script", &QAStNodeSystemTestingScript::staticMetaObject,
     TR("System Testing Script"), "test_script", "virtual_tester", nullptr, F::SystemTestScript,
     read<QAStNodeSystemTestingScript>, make<QAStNodeSystemTestingScript>},
    {"virtual_tester", &QAStNodeVirtualTester::staticMetaObject, TR("Virtual Tester"),
     "test_script", "source", nullptr, F::VirtualTester, read<QAStNodeVirtualTester>,
     make<QAStNodeVirtualTester>},
    {"user", &QAStNodeUser::staticMetaObject, TR("User"), "node", "source user link", nullptr,
     F::User, read<QAStNodeUser>, make<QAStNodeUser>},
    {"link", &QAStNodeLink::staticMetaObject, TR("Link"), "node", "", nullptr, 0,
     read<QAStNodeLink>, make<QAStNodeLink>},
};

#undef CONTAINER_CHILDREN
#undef TR

// The factory builds every kind that has an element of its own.
const bool registered = [] {
    for (const QAStNodeKind& kind : table) {
        if (kind.read)
            QAStDataFactory::registerClass(QString::fromLatin1(kind.name), kind.read);
    }
    return true;
}();

struct Index {
    QHash<QString, const QAStNodeKind*> byName;
    QHash<const QMetaObject*, const QAStNodeKind*> byMeta;
    QList<const QAStNodeKind*> all;
    QHash<const QAStNodeKind*, QStringList> childClasses;
    QHash<const QAStNodeKind*, QStringList> addable;
};

const Index& index()
{
    static const Index built = [] {
        Index i;
        for (const QAStNodeKind& kind : table) {
            i.byName.insert(QString::fromLatin1(kind.name), &kind);
            i.byMeta.insert(kind.meta, &kind);
            i.all << &kind;
        }
        for (const QAStNodeKind& kind : table) {
            const QStringList names =
                QString::fromLatin1(kind.children).split(QLatin1Char(' '), Qt::SkipEmptyParts);
            for (const QString& name : names) {
                const QAStNodeKind* child = i.byName.value(name);
                Q_ASSERT_X(child, "QAStNodeKind", "a child kind the table does not hold");
                if (!child)
                    continue;
                i.childClasses[&kind] << QString::fromLatin1(child->meta->className());
                if (child->label && child->make)
                    i.addable[&kind] << name;
            }
        }
        return i;
    }();
    return built;
}

}

const QAStNodeKind* QAStNodeKind::byName(const QString& name)
{
    return index().byName.value(name);
}

const QAStNodeKind* QAStNodeKind::of(const QMetaObject* meta)
{
    const Index& i = index();
    for (; meta; meta = meta->superClass()) {
        if (const QAStNodeKind* kind = i.byMeta.value(meta))
            return kind;
    }
    return nullptr;
}

const QList<const QAStNodeKind*>& QAStNodeKind::all()
{
    return index().all;
}

QStringList QAStNodeKind::childClasses() const
{
    return index().childClasses.value(this);
}

QStringList QAStNodeKind::addableChildren() const
{
    return index().addable.value(this);
}
