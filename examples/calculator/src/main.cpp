// calc: evaluates the expression given as arguments ("calc 2 + 3") or, without
// arguments, each line of the standard input, and prints "expression = value".
#include "calc.h"
#include "printer.h"

#include <cstdio>
#include <iostream>
#include <string>

namespace {

int evaluate(const std::string& expression)
{
    long value = 0;
    const int status = calc_evaluate(expression.c_str(), &value);
    if (status != CALC_OK) {
        std::cerr << expression << ": " << calc_status_text(status) << '\n';
        return 1;
    }
    printer_print(stdout, expression.c_str(), value);
    return 0;
}

}

int main(int argc, char** argv)
{
    if (argc > 1) {
        std::string expression;
        for (int i = 1; i < argc; ++i)
            expression += (i > 1 ? " " : "") + std::string(argv[i]);
        return evaluate(expression);
    }
    int failures = 0;
    for (std::string line; std::getline(std::cin, line);) {
        if (!line.empty())
            failures += evaluate(line);
    }
    return failures == 0 ? 0 : 1;
}
