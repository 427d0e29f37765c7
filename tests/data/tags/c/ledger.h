/* A ledger of integer amounts, for the tagging tests. */
#ifndef LEDGER_H
#define LEDGER_H

struct ledger {
    long total;
    int entries;
};

void ledger_init(struct ledger *l);
int ledger_add(struct ledger *l, long amount);
long ledger_total(const struct ledger *l);

#endif
