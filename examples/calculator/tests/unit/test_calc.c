/* Unit test of the calculator library: every operation, its limits and the
   expression reader. Prints one line per failure and a summary.

   test_calc [--rounds N] [--pause MS] [--wait-for FILE]

   runs the checks N times (1 by default), MS milliseconds apart, so that a
   run lasts long enough to watch its results arrive; with --wait-for, the
   second round waits for FILE to exist (60 seconds at most). */
#include "calc.h"

#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

static int failures = 0;
static int checks = 0;

static void check_evaluate(const char *expression, int status, long value)
{
    long result = 0;
    /* The library reads a copy: it must not depend on the caller's buffer. */
    const size_t size = strlen(expression) + 1;
    char *copy = malloc(size);
    if (!copy) {
        printf("FAILED: out of memory\n");
        exit(2);
    }
    memcpy(copy, expression, size);
    const int got = calc_evaluate(copy, &result);
    memset(copy, '#', size - 1);
    free(copy);
    ++checks;
    if (got != status || (status == CALC_OK && result != value)) {
        ++failures;
        printf("FAILED: \"%s\" gave %s %ld, expected %s %ld\n", expression, calc_status_text(got),
               result, calc_status_text(status), value);
    }
}

static void pause_ms(long ms)
{
    struct timespec delay = {ms / 1000, (ms % 1000) * 1000000L};
    while (nanosleep(&delay, &delay) != 0)
        ;
}

/* Waits for the file to exist, 60 seconds at most; 0 when it did not. */
static int wait_for(const char *file)
{
    for (int tries = 0; tries < 3000; ++tries) {
        FILE *f = fopen(file, "r");
        if (f) {
            fclose(f);
            return 1;
        }
        pause_ms(20);
    }
    printf("FAILED: %s did not appear\n", file);
    return 0;
}

static void check_all(void)
{
    failures = 0;
    checks = 0;
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
}

int main(int argc, char **argv)
{
    long rounds = 1, pause = 0;
    const char *gate = NULL;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (strcmp(argv[i], "--rounds") == 0) {
            rounds = strtol(argv[i + 1], NULL, 10);
        } else if (strcmp(argv[i], "--pause") == 0) {
            pause = strtol(argv[i + 1], NULL, 10);
        } else if (strcmp(argv[i], "--wait-for") == 0) {
            gate = argv[i + 1];
        } else {
            fprintf(stderr, "test_calc: unknown option %s\n", argv[i]);
            return 2;
        }
    }
    /* Each line reaches the results as it is written. */
    setvbuf(stdout, NULL, _IOLBF, 0);
    int failed = 0;
    for (long round = 1; round <= rounds || (round == 2 && gate); ++round) {
        if (round > 1 && pause > 0)
            pause_ms(pause);
        if (round == 2 && gate && !wait_for(gate))
            ++failed;
        check_all();
        printf("%d checks, %d failed\n", checks, failures);
        failed += failures;
    }
    return failed == 0 ? 0 : 1;
}
