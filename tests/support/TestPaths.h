#pragma once

#include <QString>

// Paths the tests find their fixtures and the default installation under.
namespace TestPaths {
inline QString sourceDir() { return QStringLiteral(SDK110_SOURCE_DIR); }
inline QString data(const QString& name = QString())
{
    return name.isEmpty() ? QStringLiteral(SDK110_TEST_DATA)
                          : QStringLiteral(SDK110_TEST_DATA) + QLatin1Char('/') + name;
}
inline QString installTree() { return QStringLiteral(SDK110_INSTALL_TREE); }
}
