#include "Harness.h"

#include "QAPropertyMapGroup.h"
#include "QAPropertyMapLoader.h"
#include "QAStPropertyFilters.h"

#include <QFile>

#include <memory>

// Loading the installation's settings descriptor into its property tree,
// against reading the file's bytes alone.
SDK110_BENCHMARK(descriptorLoad, "settings descriptor: load the installation's descriptor against reading the file (no goal)")
{
    const QString file = QStringLiteral(SDK110_INSTALL_TREE "/korvilprojectsettings.properties");
    const QMap<QString, int> filters = QAStPropertyFilters::table();
    const QList<unsigned int> masks = QAStPropertyFilters::masks();
    Bench::Measure m;
    m.subject = QStringLiteral("QAPropertyMapLoader::load of korvilprojectsettings.properties");
    m.baseline = QStringLiteral("QFile::readAll of the same file");
    m.runSubject = [=] {
        QAPropertyMapLoader loader;
        std::unique_ptr<QAPropertyMapGroup> root(loader.load(file, filters, masks, nullptr));
        Bench::keep(root.get());
    };
    m.runBaseline = [=] {
        QFile f(file);
        f.open(QIODevice::ReadOnly);
        const QByteArray bytes = f.readAll();
        Bench::keep(bytes.constData());
    };
    m.repetitions = 31;
    return m;
}
