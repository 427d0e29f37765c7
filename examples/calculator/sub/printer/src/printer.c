#include "printer.h"

void printer_print(FILE *out, const char *expression, long value)
{
    fprintf(out, "%s = %ld\n", expression, value);
}
