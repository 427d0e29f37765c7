#include "ledger.h"

struct entry {
    long amount;
};

static int checked(long amount)
{
    return amount >= 0;
}

void ledger_init(struct ledger *l)
{
    l->total = 0;
    l->entries = 0;
}

int ledger_add(struct ledger *l, long amount)
{
    if (!checked(amount))
        return 0;
    l->total += amount;
    l->entries++;
    return 1;
}

long ledger_total(const struct ledger *ledger)
{
    return ledger->total;
}
