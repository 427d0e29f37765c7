#pragma once

#include <QStringList>

class CommandLineStudio;

// The commands of the command-line tool. Exit status: 0 success, 1 a failed
// job (a project that does not load, a walk that fails, a file that cannot
// be written), 2 bad usage.
namespace Commands {

// Runs the command named by arguments (the program's arguments, program
// name first) and returns the exit status.
int run(const QStringList& arguments, CommandLineStudio& studio);

}
