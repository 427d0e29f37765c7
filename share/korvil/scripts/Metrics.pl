#!/usr/bin/perl
# Metrics driver: computes the metrics of one C or C++ source and writes
# its metrics file.
#
#   perl -I<install>/lib/perl Metrics.pl <assignment file>
#
# The assignment file, loaded with "do", sets three variables:
#   $METDIR        the directory the metrics file goes to
#   $FILENAME      the absolute path of the source
#   $LOGFILENAME2  the log file, appended to (none when empty)
#
# The metrics file is "<file name>.<first 8 hexadecimal digits of the MD5
# of $FILENAME>.met" in $METDIR, written whole or not at all. The exit
# status is 0 on success, 1 when the source cannot be read or the metrics
# file cannot be written, 2 for a missing or bad assignment file. See
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

sub fail {
    my ($text, $code) = @_;
    print STDERR "Metrics.pl: $text\n";
    note($text);
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
fail("no \$FILENAME in $ARGV[0]", 2) if $source eq '';
fail("no \$METDIR in $ARGV[0]", 2) if $metdir eq '';

note("begin $source");
open(my $in, '<:raw', $source) or fail("cannot read $source: $!", 1);
my $text = do { local $/; <$in> };
close($in);

my $file = Korvil::Metrics::analyse($text);
my $name = basename($source);
my $xml = Korvil::Metrics::to_xml($file, $name, dirname($source));

make_path($metdir) unless -d $metdir;
my $target = File::Spec->catfile($metdir, $name . '.' . substr(md5_hex($source), 0, 8) . '.met');
my $partial = "$target.$$.tmp";
open(my $out, '>:raw', $partial) or fail("cannot write $partial: $!", 1);
print $out $xml;
if (!close($out) || !rename($partial, $target)) {
    my $reason = $!;
    unlink($partial);
    fail("cannot write $target: $reason", 1);
}
my $functions = grep { $_->{type} ne 'CLASS' } map { ($_, @{ $_->{items} }) } @{ $file->{items} };
my $classes = grep { $_->{type} eq 'CLASS' } @{ $file->{items} };
note("end $source: $target, $classes classes, $functions functions and methods");
exit(0);
