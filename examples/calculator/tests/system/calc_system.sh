#!/bin/sh
# System test of the calc program: runs it as a user would, on arguments and
# on standard input, and compares what it prints.
# Usage: calc_system.sh <path of calc>
calc=${1:-./build/calc}
failures=0

expect() {
    # expect <expected output> <calc arguments...>
    expected=$1
    shift
    got=$("$calc" "$@" 2>&1)
    if [ "$got" != "$expected" ]; then
        echo "FAILED: calc $*: got '$got', expected '$expected'"
        failures=$((failures + 1))
    fi
}

expect "2 + 3 = 5" 2 + 3
expect "6 * 7 = 42" "6 * 7"
expect "1 / 0: division by zero" 1 / 0
expect "two + 3: syntax error" two + 3

got=$(printf '10 - 4\n\n100 / 7\n' | "$calc")
if [ "$got" != "$(printf '10 - 4 = 6\n100 / 7 = 14')" ]; then
    echo "FAILED: standard input: got '$got'"
    failures=$((failures + 1))
fi

if "$calc" 1 / 0 >/dev/null 2>&1; then
    echo "FAILED: a failed evaluation must end with a non-zero status"
    failures=$((failures + 1))
fi

echo "system test: $failures failed"
[ "$failures" -eq 0 ]
