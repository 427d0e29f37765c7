/* The printer library: writes the results of the calculator. */
#ifndef PRINTER_H
#define PRINTER_H

#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Writes "expression = value" and a new line. */
void printer_print(FILE *out, const char *expression, long value);

#ifdef __cplusplus
}
#endif

#endif
