// A separate program built against the installed library: it derives a
// store from the library's class and round-trips a value through the
// library's XML encoding.
#include <QAPropertyStore.h>
#include <QAXML.h>

#include <QCoreApplication>
#include <cstdio>

class ChildStore : public QAPropertyStore {
public:
    ChildStore(QAPropertyStore* parentStore)
        : QAPropertyStore(nullptr, "child"), m_parent(parentStore) {}
    QAPropertyStore* inheritOf() const override { return m_parent; }

private:
    QAPropertyStore* m_parent;
};

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QAPropertyStore top(nullptr, "top");
    top.setProperty(QStringLiteral("compiler"), QStringLiteral("g++, <12>"));
    ChildStore child(&top);
    const QString value = child.property(QStringLiteral("compiler")).toString();
    const QString encoded = QAXML::stringToXMLValue(value);
    if (QAXML::xmlValueToString(encoded) != value) {
        std::fprintf(stderr, "round trip failed\n");
        return 1;
    }
    std::printf("%s\n", qPrintable(encoded));
    return 0;
}
