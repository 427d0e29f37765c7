/* The calculator library: integer arithmetic on expressions "a op b". */
#ifndef CALC_H
#define CALC_H

#ifdef __cplusplus
extern "C" {
#endif

/* Results of calc_evaluate. */
enum calc_status {
    CALC_OK = 0,
    CALC_SYNTAX_ERROR = 1,     /* not "integer operator integer" */
    CALC_DIVISION_BY_ZERO = 2,
    CALC_OVERFLOW = 3          /* the result does not fit a long */
};

/* The four operations; each returns CALC_OK or CALC_OVERFLOW /
   CALC_DIVISION_BY_ZERO, and leaves the result in *result. */
int calc_add(long a, long b, long *result);
int calc_subtract(long a, long b, long *result);
int calc_multiply(long a, long b, long *result);
int calc_divide(long a, long b, long *result);

/* Evaluates "a op b" (op one of + - * /, blanks allowed around it). */
int calc_evaluate(const char *expression, long *result);

/* A text for a status. */
const char *calc_status_text(int status);

#ifdef __cplusplus
}
#endif

#endif
