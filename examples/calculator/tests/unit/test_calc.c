/* Unit test of the calculator library: every operation, its limits and the
   expression reader. Prints one line per failure and a summary. */
#include "calc.h"

#include <limits.h>
#include <stdio.h>

static int failures = 0;
static int checks = 0;

static void check_evaluate(const char *expression, int status, long value)
{
    long result = 0;
    const int got = calc_evaluate(expression, &result);
    ++checks;
    if (got != status || (status == CALC_OK && result != value)) {
        ++failures;
        printf("FAILED: \"%s\" gave %s %ld, expected %s %ld\n", expression, calc_status_text(got),
               result, calc_status_text(status), value);
    }
}

int main(void)
{
    check_evaluate("2 + 3", CALC_OK, 5);
    check_evaluate("2+3", CALC_OK, 5);
    check_evaluate("-7 - 5", CALC_OK, -12);
    check_evaluate("6 * -7", CALC_OK, -42);
    check_evaluate("17 / 5", CALC_OK, 3);
    check_evaluate("-17 / 5", CALC_OK, -3);
    check_evaluate("1 / 0", CALC_DIVISION_BY_ZERO, 0);
    check_evaluate("9223372036854775807 + 1", CALC_OVERFLOW, 0);
    check_evaluate("-9223372036854775808 - 1", CALC_OVERFLOW, 0);
    check_evaluate("-9223372036854775808 / -1", CALC_OVERFLOW, 0);
    check_evaluate("4611686018427387904 * 2", CALC_OVERFLOW, 0);
    check_evaluate("99999999999999999999 + 1", CALC_SYNTAX_ERROR, 0);
    check_evaluate("2 % 3", CALC_SYNTAX_ERROR, 0);
    check_evaluate("2 +", CALC_SYNTAX_ERROR, 0);
    check_evaluate("2 + 3 4", CALC_SYNTAX_ERROR, 0);
    check_evaluate("", CALC_SYNTAX_ERROR, 0);

    printf("%d checks, %d failed\n", checks, failures);
    return failures == 0 ? 0 : 1;
}
