#!/usr/bin/perl
# Clean driver: removes what the Build and Execute drivers made for a
# node's kind, and nothing else. It has no step letter: $STAGE does not
# limit it.
#
#   perl -I<install>/lib/perl Clean.pl <environment file> <kind>
#
# Run in the project directory. See docs/formats/driver-scripts.md.

use strict;
use warnings;

# The modules beside the scripts, also when -I was not given.
use FindBin;
use lib "$FindBin::RealBin/../lib/perl";
use File::Basename qw(dirname);
use File::Path qw(remove_tree);
use File::Spec;
use Korvil::Driver;
use Korvil::Gcov;
use Korvil::Make;

my $d = Korvil::Driver->start('Clean', @ARGV);
my $kind = $d->kind;

# Result files of a test node, all named after the test.
my @RESULTS = qw(ATL_OUT_FILE ATC_TIO_NAME ATT_TDF_NAME TDFFILE ATP_TPF_NAME ATQ_TQF_NAME LOGFILENAME);
my %LINKERS = (library => 1, application => 1, unit_testing => 1);

my (@files, @dirs);
# A product and what the build kept beside it: its stamp, and an object's
# dependency file.
sub product {
    my ($file) = @_;
    return if !defined $file || $file eq '';
    push(@files, $file, Korvil::Make::stamp_file($file));
}

if ($kind eq 'source') {
    my $object = $d->get('OBJECT_FILE');
    # A script written without the object's name: the driver's own rule.
    $object = $d->object_of($d->get('FILENAME')) if $object eq '' && $d->get('FILENAME') ne '';
    if ($object ne '') {
        product($object);
        push(@files, "$object.d", Korvil::Gcov::notes_file($object), Korvil::Gcov::counter_file($object));
    }
}
# A node that links keeps every object it compiled (and its runtime
# object) in its own object directory.
push(@dirs, $d->get('OBJECT_DIR')) if $LINKERS{$kind} && $d->get('OBJECT_DIR') ne '';
product($d->get('LIBRARY_FILE_ABS')) if $kind eq 'library';
product($d->get('TESTPROGRAM_ABS')) if $kind eq 'application' || $kind eq 'unit_testing';
if ($kind eq 'application' || $kind eq 'unit_testing' || $kind eq 'system_testing') {
    push(@files, (map { $d->get($_) } @RESULTS), $d->list('RESULT_FILES'));
}

# Each path once, whether written relative or absolute.
my (%seen, @errors);
my $once = sub { my ($path) = @_; return $path ne '' && !$seen{ File::Spec->rel2abs($path) }++; };
for my $dir (grep { $once->($_) } @dirs) {
    next unless -d $dir;
    remove_tree($dir, { error => \my $problems });
    if (@$problems) {
        push(@errors, map { my ($f, $m) = %$_; "cannot remove " . ($f eq '' ? $dir : $f) . ": $m" } @$problems);
    } else {
        $d->info("removed $dir");
    }
}
for my $file (grep { $once->($_) } @files) {
    next unless -f $file || -l $file;
    if (unlink($file)) {
        $d->info("removed $file") unless $file =~ /\.(?:stamp|d)$/;
    } else {
        push(@errors, "cannot remove $file: $!");
    }
}
prune(@dirs, @files);
$d->defer_failure($_) for @errors;
$d->finish;

# Directories the build made that the clean left empty are removed too,
# up to the project directory: the tree is as it was before the build.
sub prune {
    my $top = File::Spec->rel2abs('.');
    my %candidates;
    for my $path (grep { $_ ne '' } @_) {
        for (my $dir = dirname(File::Spec->rel2abs($path)); index($dir, "$top/") == 0; $dir = dirname($dir)) {
            $candidates{$dir} = 1;
        }
    }
    # The deepest first, so that a directory is empty once its own are gone.
    rmdir($_) for sort { length($b) <=> length($a) } keys %candidates;
}
