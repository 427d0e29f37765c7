#pragma once

#include "sdk110_export.h"

#include <QList>
#include <QString>

class QAStTestResults;
class QIODevice;

// Writes test results as a JUnit XML file, the form that continuous
// integration servers read (docs/formats/reports.md):
//
//   testsuites             totals of every suite
//     testsuite            one per test node: its name, counts, time, the
//                          start of its first test
//       testcase           one per check where the output tells checks
//                          apart, else one per test; a test that ended
//                          non-zero without a failed check, or did not
//                          end, adds one for itself
//         failure          a failed check: the line as message, its
//                          "file:line" and the line as text
//         error            a test that did not end
//       system-out         the node's output and its check lines
//       system-err         its standard error
//
// Text the XML cannot hold (control bytes) is written "\xHH". The writing
// is linear in the records.
class SDK110_EXPORT QAStJUnitWriter {
public:
    struct Suite {
        QString name; // the test node
        const QAStTestResults* results = nullptr;
    };

    // False when the device fails.
    static bool write(QIODevice* device, const QList<Suite>& suites);
    // Writes path whole or not at all; false with the reason, naming the
    // file, in *error.
    static bool writeFile(const QString& path, const QList<Suite>& suites, QString* error);
};
