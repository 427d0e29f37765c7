package bank.core;

public abstract class Account implements Comparable<Account> {
    protected long balance;

    public Account(long opening) {
        balance = opening;
    }

    public abstract long fee();

    public void deposit(long amount) {
        balance += amount;
    }

    public void deposit(int amount, String note) {
        balance += amount;
    }

    private void audit() {}

    public static class Statement {
        public String render() { return ""; }
    }

    public interface Listener {
        void changed(Account account);
    }

    public int compareTo(Account other) {
        return Long.compare(balance, other.balance);
    }
}
