#include "Harness.h"

#include "QAPropertyStore.h"

#include <QHash>
#include <QStringList>

#include <memory>
#include <vector>

namespace {

// A store inheriting from the one above it, as a node's configuration
// inherits from its parent node's.
class InheritingStore : public QAPropertyStore {
public:
    explicit InheritingStore(QAPropertyStore* inherit)
        : m_inherit(inherit)
    {
    }
    QAPropertyStore* inheritOf() const override { return m_inherit; }

private:
    QAPropertyStore* m_inherit;
};

constexpr int keysPerStore = 300;
constexpr int chainLength = 5;
constexpr int rounds = 200;

// Keys shaped like a configuration's settings.
QString settingKey(int store, int i)
{
    return QStringLiteral("compiler.settings.level%1.option%2").arg(store).arg(i);
}

}

SDK110_BENCHMARK(benchInheritedLookup, "properties: inherited look-up through five stores")
{
    // The top store holds the values looked up; each store below holds as
    // many keys of its own, which the look-ups pass by.
    auto stores = std::make_shared<std::vector<std::unique_ptr<QAPropertyStore>>>();
    QStringList keys;
    auto baseline = std::make_shared<QHash<QString, QVariant>>();
    for (int s = 0; s < chainLength; ++s) {
        QAPropertyStore* above = stores->empty() ? nullptr : stores->back().get();
        stores->push_back(std::make_unique<InheritingStore>(above));
        for (int i = 0; i < keysPerStore; ++i) {
            const QString key = settingKey(s, i);
            stores->back()->setProperty(key, QStringLiteral("value %1").arg(i));
            if (s == 0) {
                keys << key;
                baseline->insert(key, QStringLiteral("value %1").arg(i));
            }
        }
    }
    const QAPropertyStore* bottom = stores->back().get();

    Bench::Measure m;
    m.subject = QStringLiteral("QAPropertyStore::property from the fifth store");
    m.baseline = QStringLiteral("one QHash<QString,QVariant> look-up");
    m.target = 6;
    m.runSubject = [stores, bottom, keys] {
        qsizetype found = 0;
        for (int r = 0; r < rounds; ++r) {
            for (const QString& key : keys)
                found += bottom->property(key).isValid();
        }
        Bench::keep(&found);
    };
    m.runBaseline = [baseline, keys] {
        qsizetype found = 0;
        for (int r = 0; r < rounds; ++r) {
            for (const QString& key : keys)
                found += baseline->value(key).isValid();
        }
        Bench::keep(&found);
    };
    return m;
}
