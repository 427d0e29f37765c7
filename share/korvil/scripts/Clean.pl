#!/usr/bin/perl
# Clean driver: removes what the Build and Execute drivers made for a
# node's kind. It has no step letter: $STAGE does not limit it.
#
#   perl -I<install>/lib/perl Clean.pl <environment file> <kind>
#
# Run in the project directory. See docs/formats/driver-scripts.md.

use strict;
use warnings;

# The modules beside the scripts, also when -I was not given.
use FindBin;
use lib "$FindBin::RealBin/../lib/perl";
use Korvil::Driver;

my $d = Korvil::Driver->start('Clean', @ARGV);
my $kind = $d->kind;

# Result files of a test node, all named after the test.
my @RESULTS = qw(ATL_OUT_FILE ATC_TIO_NAME ATT_TDF_NAME TDFFILE ATP_TPF_NAME ATQ_TQF_NAME LOGFILENAME);

my @files;
if ($kind eq 'source') {
    push(@files, $d->object_of($d->get('FILENAME'))) if $d->get('FILENAME') ne '';
} elsif ($kind eq 'library') {
    push(@files, $d->get('LIBRARY_FILE_ABS'));
} elsif ($kind eq 'application') {
    push(@files, $d->get('TESTPROGRAM_ABS'), map { $d->get($_) } @RESULTS);
} elsif ($kind eq 'unit_testing') {
    my $script = $d->get('UNITTESTING_TESTSCRIPTNAME');
    push(@files, $d->object_of($script)) if $script ne '';
    push(@files, $d->get('TESTPROGRAM_ABS'), map { $d->get($_) } @RESULTS);
} elsif ($kind eq 'system_testing') {
    push(@files, map { $d->get($_) } @RESULTS);
}

my (%seen, @errors);
for my $file (grep { $_ ne '' && !$seen{$_}++ } @files) {
    next unless -f $file || -l $file;
    if (unlink($file)) {
        $d->info("removed $file");
    } else {
        push(@errors, "cannot remove $file: $!");
    }
}
$d->defer_failure($_) for @errors;
$d->finish;
