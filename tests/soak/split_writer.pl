#!/usr/bin/perl
# The writer of the split soak test: appends numbered records to a runtime
# result file in pieces of random size (cut anywhere, inside a record too),
# in several runs. Between two runs the file is truncated in place,
# replaced by a new file or removed, in turn. At the end of a run and after
# each truncation, replacement or removal it prints "sync" and waits for a
# line on its standard input: the reader answers once it has looked at the
# file, as a runtime that starts a new run waits for the studio.
#
#   perl split_writer.pl FILE RECORDS RUNS SEED
#
# Record n is "<code> <n> <filler>\n"; the code cycles through one code of
# each output of the split (xx, PU, QU, NT, SF, tb), so record n goes to
# output n % 6.
use strict;
use warnings;

my ($file, $records, $runs, $seed) = @ARGV;
die "usage: split_writer.pl FILE RECORDS RUNS SEED\n" unless defined $seed;
srand($seed);
$| = 1;

my @codes = ('xx', 'PU', 'QU', 'NT', 'SF', 'tb');
my $perRun = int(($records + $runs - 1) / $runs);
my $seq = 0;

sub sync {
    print "sync\n";
    defined(<STDIN>) or exit 1;
}

for my $run (0 .. $runs - 1) {
    if ($run > 0) {
        my $how = $run % 3;
        if ($how == 1) {
            truncate($file, 0) or die "truncate $file: $!\n";
        } elsif ($how == 2) {
            open(my $new, '>', "$file.new") or die "$file.new: $!\n";
            close $new;
            rename("$file.new", $file) or die "rename $file: $!\n";
        } else {
            unlink($file) or die "unlink $file: $!\n";
        }
        sync();
    }
    open(my $out, '>>', $file) or die "$file: $!\n";
    binmode $out;
    my $end = $seq + $perRun;
    $end = $records if $end > $records;
    my $pending = '';
    while ($seq < $end || length $pending) {
        while ($seq < $end && length($pending) < 65536) {
            $pending .= "$codes[$seq % @codes] $seq " . ('r' x int(rand(40))) . "\n";
            $seq++;
        }
        my $max = length($pending) < 8192 ? length($pending) : 8192;
        my $piece = substr($pending, 0, 1 + int(rand($max)), '');
        my $written = syswrite($out, $piece);
        die "write $file: $!\n" unless defined $written && $written == length $piece;
        select(undef, undef, undef, 0.0005) if rand() < 0.05;
    }
    close $out;
    sync();
}
