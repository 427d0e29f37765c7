#!/usr/bin/perl
# Metrics driver: computes the metrics of C and C++ sources and writes one
# metrics file for each.
#
#   perl -I<install>/lib/perl Metrics.pl <assignment file>
#
# The assignment file, loaded with "do", sets:
#   $METDIR        the directory the metrics files go to
#   $FILENAME      the absolute path of the source
#   @FILENAMES     for a batch: the sources, in order ($FILENAME is then
#                  the first of them)
#   $LOGFILENAME2  the log file, appended to (none when empty)
#
# A metrics file is "<file name>.<first 8 hexadecimal digits of the MD5
# of the source's path>.met" in $METDIR, written whole or not at all. The
# sources are measured one after the other, in one run; once a source's
# metrics file is written the driver prints "Metrics.pl: file <n> done:
# <source>" on the standard output (n counting from 1), or "Metrics.pl:
# file <n> failed: <source>" after the reason on the standard error, and
# goes on with the next. The exit status is 0 when every source was
# measured, 1 when one cannot be read or its metrics file cannot be
# written, 2 for a missing or bad assignment file. See
# docs/formats/metrics.md.

use strict;
use warnings;

# The modules beside the scripts, also when -I was not given.
use FindBin;
use lib "$FindBin::RealBin/../lib/perl";
use Digest::MD5 qw(md5_hex);
use File::Basename qw(basename dirname);
use File::Path qw(make_path);
use File::Spec;
use IO::Handle;
use Korvil::Env;
use Korvil::Metrics;

STDOUT->autoflush(1);
STDERR->autoflush(1);

my $log;

sub note {
    my ($text) = @_;
    print $log "Metrics.pl: $text\n" if $log;
}

sub problem {
    my ($text) = @_;
    print STDERR "Metrics.pl: $text\n";
    note($text);
    return 0;
}

sub fail {
    my ($text, $code) = @_;
    problem($text);
    exit($code);
}

if (!@ARGV) {
    print STDERR "usage: Metrics.pl <assignment file>\n";
    exit(2);
}
my $env = eval { Korvil::Env->load($ARGV[0]) };
if (!$env) {
    print STDERR $@;
    fail("cannot load the assignment file $ARGV[0]", 2);
}
my $metdir = $env->get('METDIR');
my $source = $env->get('FILENAME');
my $logfile = $env->get('LOGFILENAME2');

if ($logfile ne '') {
    make_path(dirname($logfile)) unless -d dirname($logfile);
    if (open(my $handle, '>>', $logfile)) {
        $handle->autoflush(1);
        $log = $handle;
    } else {
        print STDERR "Metrics.pl: cannot open the log file $logfile: $!\n";
    }
}
my @sources = $env->list('FILENAMES');
@sources = ($source) if !@sources && $source ne '';
fail("no \$FILENAME in $ARGV[0]", 2) unless @sources;
fail("no \$METDIR in $ARGV[0]", 2) if $metdir eq '';

my $failures = 0;
for my $n (1 .. @sources) {
    my $file = $sources[$n - 1];
    if (measure($file)) {
        print STDOUT "Metrics.pl: file $n done: $file\n";
    } else {
        ++$failures;
        print STDOUT "Metrics.pl: file $n failed: $file\n";
    }
}
exit($failures ? 1 : 0);

# Writes the metrics file of one source; false, with the reason told, when
# it cannot.
sub measure {
    my ($source) = @_;
    note("begin $source");
    my $in;
    return problem("cannot read $source: $!") unless open($in, '<:raw', $source);
    my $text = do { local $/; <$in> };
    close($in);

    my $file = Korvil::Metrics::analyse($text);
    my $name = basename($source);
    my $xml = Korvil::Metrics::to_xml($file, $name, dirname($source));

    make_path($metdir) unless -d $metdir;
    my $target = File::Spec->catfile($metdir, $name . '.' . substr(md5_hex($source), 0, 8) . '.met');
    my $partial = "$target.$$.tmp";
    my $out;
    return problem("cannot write $partial: $!") unless open($out, '>:raw', $partial);
    print $out $xml;
    if (!close($out) || !rename($partial, $target)) {
        my $reason = $!;
        unlink($partial);
        return problem("cannot write $target: $reason");
    }
    my $functions = grep { $_->{type} ne 'CLASS' } map { ($_, @{ $_->{items} }) } @{ $file->{items} };
    my $classes = grep { $_->{type} eq 'CLASS' } @{ $file->{items} };
    note("end $source: $target, $classes classes, $functions functions and methods");
    return 1;
}
