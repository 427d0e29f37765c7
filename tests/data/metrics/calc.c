/* A small calculator: C functions for the metrics tests. */
#include <stdio.h>
#define MAX(a, b) ((a) > (b) ? (a) : (b)) /* not counted */

int one(void) { return 1; }

/* Sign of a number:
   -1, 0 or 1. */
int sign(int x)
{
    if (x > 0 && x != 0)   // two decision points
        return 1;
    else if (x < 0)
        return -1;
    return 0;
}

static int sum_to(int n)
{
    int total = 0;
    for (int i = 0; i < n; ++i) {
        while (total > 100) {
            total -= 100;
        }
        total += i;
    }
    do {
        total--;
    } while (total > 50);
    return total;
}

const char* describe(int kind)
{
    const char* text = "if (a && b) { while }";  /* braces in a string */
    switch (kind) {
    case 0:
        text = kind ? "zero" : "none";
        break;
    case 1:
        text = "one";
        break;
    default:
        break;
    }
    return text;
}
