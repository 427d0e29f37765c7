#include "calc.h"

#include <ctype.h>
#include <errno.h>
#include <limits.h>
#include <stdlib.h>

int calc_add(long a, long b, long *result)
{
    if ((b > 0 && a > LONG_MAX - b) || (b < 0 && a < LONG_MIN - b))
        return CALC_OVERFLOW;
    *result = a + b;
    return CALC_OK;
}

int calc_subtract(long a, long b, long *result)
{
    if ((b < 0 && a > LONG_MAX + b) || (b > 0 && a < LONG_MIN + b))
        return CALC_OVERFLOW;
    *result = a - b;
    return CALC_OK;
}

int calc_multiply(long a, long b, long *result)
{
    if (__builtin_mul_overflow(a, b, result))
        return CALC_OVERFLOW;
    return CALC_OK;
}

int calc_divide(long a, long b, long *result)
{
    if (b == 0)
        return CALC_DIVISION_BY_ZERO;
    if (a == LONG_MIN && b == -1)
        return CALC_OVERFLOW;
    *result = a / b;
    return CALC_OK;
}

/* Reads a long at *text and moves past it and the blanks after it. */
static int read_number(const char **text, long *value)
{
    char *end = NULL;
    errno = 0;
    *value = strtol(*text, &end, 10);
    if (end == *text || errno == ERANGE)
        return 0;
    while (isspace((unsigned char)*end))
        ++end;
    *text = end;
    return 1;
}

int calc_evaluate(const char *expression, long *result)
{
    const char *text = expression;
    long a = 0;
    long b = 0;
    if (!read_number(&text, &a))
        return CALC_SYNTAX_ERROR;
    const char op = *text++;
    if (!read_number(&text, &b) || *text != '\0')
        return CALC_SYNTAX_ERROR;
    switch (op) {
    case '+': return calc_add(a, b, result);
    case '-': return calc_subtract(a, b, result);
    case '*': return calc_multiply(a, b, result);
    case '/': return calc_divide(a, b, result);
    default: return CALC_SYNTAX_ERROR;
    }
}

const char *calc_status_text(int status)
{
    switch (status) {
    case CALC_OK: return "ok";
    case CALC_SYNTAX_ERROR: return "syntax error";
    case CALC_DIVISION_BY_ZERO: return "division by zero";
    case CALC_OVERFLOW: return "overflow";
    default: return "unknown status";
    }
}
