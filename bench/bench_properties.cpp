#include "Harness.h"

#include "QAStConfiguration.h"
#include "QAStNode.h"

#include <QHash>
#include <QPixmap>
#include <QStringList>

#include <memory>

namespace {

constexpr int keysPerStore = 300;
constexpr int chainLength = 5;
constexpr int rounds = 200;

// Keys shaped like a configuration's settings.
QString settingKey(int store, int i)
{
    return QStringLiteral("compiler.settings.level%1.option%2").arg(store).arg(i);
}

}

SDK110_BENCHMARK(benchInheritedLookup, "properties: inherited look-up through five stores against one QHash look-up (goal 4x)")
{
    // Five nodes, each below the one before, each with its "Debug"
    // configuration inheriting from the one above: the top one holds the
    // values looked up, each one below as many keys of its own, which the
    // look-ups pass by. The look-ups start at the lowest configuration.
    auto top = std::make_shared<QAStNode>(QStringLiteral("n0"), QPixmap());
    QAStNode* node = top.get();
    QStringList keys;
    auto baseline = std::make_shared<QHash<QString, QVariant>>();
    QAStConfiguration* bottom = nullptr;
    for (int s = 0; s < chainLength; ++s) {
        if (s > 0)
            node = new QAStNode(QStringLiteral("n%1").arg(s), QPixmap(), node);
        bottom = node->addConfiguration(QStringLiteral("Debug"));
        for (int i = 0; i < keysPerStore; ++i) {
            const QString key = settingKey(s, i);
            bottom->setProperty(key, QStringLiteral("value %1").arg(i));
            if (s == 0) {
                keys << key;
                baseline->insert(key, QStringLiteral("value %1").arg(i));
            }
        }
    }

    Bench::Measure m;
    m.subject = QStringLiteral("QAStConfiguration::property from the fifth node's configuration");
    m.baseline = QStringLiteral("one QHash<QString,QVariant> look-up");
    m.target = 4;
    m.runSubject = [top, bottom, keys] {
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
