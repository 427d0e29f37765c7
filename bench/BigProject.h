#pragma once

#include <QString>
#include <QTemporaryDir>

#include <memory>

// The benchmarks' large project, written once per run by
// bench/generate_project.pl (not by the library) in a
// temporary directory: 357 groups of three applications with seven sources
// each and a unit-testing node with its script and source (10,000 nodes,
// each owning its "Debug" and "Release" configurations), and 50,000 files
// in 100 folders. The project's configurations use the installation's
// gcc-c package and the full settings descriptor.
struct GeneratedProject {
    QTemporaryDir dir;
    QString path;         // big.rtp
    QString information;  // big.inf
};

std::shared_ptr<GeneratedProject> bigProject();
// The same shape with the given number of groups of 28 nodes (357 make
// the big project) and files in proportion.
std::shared_ptr<GeneratedProject> generatedProject(int groups);
