#!/usr/bin/perl
# Tagging driver: runs Universal Ctags on source files and writes the tag
# file the library reads into tags (docs/formats/tags.md).
#
#   perl -I<install>/lib/perl Tagging.pl <tag file> <source>...
#
# A source may be a directory, whose files are tagged recursively. The tag
# program is $KORVIL_CTAGS when set, else "ctags" from the PATH; it must
# be Universal Ctags 5.9 or later.
#
# The tag file is written beside its final name and renamed at the end, so
# that it exists only after a run that succeeded. Exit status: 0 on
# success, the tag program's status when it failed, 127 when it could not
# be started, 1 for a missing source, 2 for a wrong command line.

use strict;
use warnings;

use File::Basename qw(dirname);
use File::Path qw(make_path);
use IO::Handle;

STDOUT->autoflush(1);
STDERR->autoflush(1);

if (@ARGV < 2) {
    print STDERR "usage: Tagging.pl <tag file> <source>...\n";
    exit(2);
}
my ($tagfile, @sources) = @ARGV;

for my $source (@sources) {
    next if -e $source;
    print STDERR "$source:1: no such file\n";
    fail("source $source not found", 1);
}

# The tag program's command line: records in source order with line
# numbers, and only the kinds the library makes tags of (kind letters by
# language).
my @CTAGS = (
    $ENV{KORVIL_CTAGS} || 'ctags',
    '-f', '-',
    '--recurse=yes',
    '--excmd=number',
    '--sort=no',
    '--extras=-q',
    '--fields=+nKaiSm',
    '--fields-C++=+{properties}',
    '--languages=C,C++,Java,Ada',
    '--kinds-C=fps',
    '--kinds-C++=cfnps',
    '--kinds-Java=cimp',
    '--kinds-Ada=PRSpr',
);

# Scope keys of ctags and the parent key written for each.
my %PARENT = (
    namespace   => 'namespace',
    class       => 'class',
    struct      => 'class',
    union       => 'class',
    enum        => 'class',
    interface   => 'interface',
    separate    => 'separate',
    map { $_ => 'outer' }
        qw(package packspec subprogram subprogspec task taskspec protected protectspec entry),
);

my $dir = dirname($tagfile);
make_path($dir) unless -d $dir;
my $partial = "$tagfile.part";
open(my $out, '>', $partial) or fail("cannot write $partial: $!", 1);
binmode($out);
print $out "!_TAG_FILE_FORMAT\t2\t/extended format/\n";
print $out "!_TAG_FILE_SORTED\t0\t/0=unsorted, in source order/\n";
print $out "!_TAG_PROGRAM_NAME\tTagging.pl\t//\n";

my $pid = open(my $in, '-|');
fail("cannot start $CTAGS[0]: $!", 127) unless defined $pid;
if ($pid == 0) {
    no warnings 'exec';
    exec { $CTAGS[0] } @CTAGS, map { /^-/ ? "./$_" : $_ } @sources
        or print STDERR "Tagging.pl: cannot run $CTAGS[0]: $!\n";
    exit(127);
}
binmode($in);
while (my $line = <$in>) {
    $line =~ s/\r?\n\z//;
    next if $line eq '' || $line =~ /^!_/;
    my $converted = convert($line);
    print $out $converted, "\n" if defined $converted;
}
close($in);
my $status = $?;
close($out) or fail("cannot write $partial: $!", 1);
if ($status != 0) {
    unlink($partial);
    my $code = $status & 127 ? 128 + ($status & 127) : $status >> 8;
    fail("$CTAGS[0] could not run", 127) if $code == 127;
    fail("$CTAGS[0] failed (status $code)", $code);
}
rename($partial, $tagfile) or fail("cannot rename $partial to $tagfile: $!", 1);
exit(0);

# One ctags line in the library's layout: identifier, file, line;", kind,
# then the implementation, parent, access, signature and inherits fields.
# Values keep ctags' escapes (\t, \\, \r, \n), which the reader undoes.
# The made-up names of anonymous scopes (__anon<hex>) become "(anonymous)",
# the same whatever the file's path.
sub convert {
    my ($line) = @_;
    $line =~ s/\b__anon[0-9a-f]+\b/(anonymous)/g;
    my ($name, $file, $address, $kind, @fields) = split(/\t/, $line, -1);
    return undef unless defined $kind && $address =~ /^(\d+);"\z/;
    my $number = $1;
    $kind =~ s/^kind://;
    my (@implementation, @parent, @rest);
    for my $field (@fields) {
        my ($key, $value) = split(/:/, $field, 2);
        next unless defined $value;
        if ($key eq 'line') {
            $number = $value;
        } elsif (exists $PARENT{$key}) {
            push(@parent, "$PARENT{$key}:$value");
        } elsif ($key eq 'implementation') {
            push(@implementation, "implementation:$value") if $value ne '';
        } elsif ($key eq 'properties') {
            my %has = map { $_ => 1 } split(/,/, $value);
            push(@implementation, 'implementation:pure virtual') if $has{pure};
            push(@implementation, 'implementation:virtual') if $has{virtual} && !$has{pure};
        } elsif ($key eq 'access' || $key eq 'signature' || $key eq 'inherits') {
            push(@rest, "$key:$value") if $value ne '';
        }
    }
    return join("\t", $name, $file, "$number;\"", $kind, @implementation, @parent, @rest);
}

sub fail {
    my ($text, $code) = @_;
    print STDERR "Tagging.pl: $text\n";
    exit(defined $code ? $code : 1);
}
