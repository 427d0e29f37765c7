#!/usr/bin/perl
# Tagging driver: runs Universal Ctags on source files and writes the tag
# file the library reads into tags (docs/formats/tags.md).
#
#   perl -I<install>/lib/perl Tagging.pl <tag file> <source>...
#   perl -I<install>/lib/perl Tagging.pl --batch <directory>
#
# The first form writes the tags of every source into the tag file; a
# source may be a directory, whose files are tagged recursively. The
# second tags the files listed in <directory>/sources, one path a line,
# with one run of the tag program, into the tag file <directory>/tags:
# the records of each file, then the line "!_KORVIL_END<tab><n><tab>//"
# (n counting the list's files from 1). Once a file's records and end line
# are written out it prints "Tagging.pl: file <n> done: <source>" on the
# standard output, or "Tagging.pl: file <n> failed: <source>" (and no
# records) when the file cannot be tagged, in the order of the list, so
# that the caller reads each file as soon as it is done.
#
# The tag program is $KORVIL_CTAGS when set, else "ctags" from the PATH;
# it must be Universal Ctags 5.9 or later. The tag file of the first form
# is written beside its final name and renamed at the end, so that it
# exists only after a run that succeeded. Exit status: 0 on success, the
# tag program's status when it failed, 127 when it could not be started,
# 1 for a missing source, 2 for a wrong command line.

use strict;
use warnings;

use File::Basename qw(dirname);
use File::Path qw(make_path);
use IO::Handle;

STDOUT->autoflush(1);
STDERR->autoflush(1);

# The tag program's command line: records in source order with line
# numbers, and only the kinds the library makes tags of (kind letters by
# language), with the typedefs and unions of C and C++ that name and hold
# them (read here, not written).
my @CTAGS = (
    $ENV{KORVIL_CTAGS} || 'ctags',
    '-f', '-',
    '--recurse=yes',
    '--excmd=number',
    '--sort=no',
    '--extras=-q',
    '--fields=+KaiSm-f',
    '--fields-C++=+{properties}',
    '--languages=C,C++,Java,Ada',
    '--kinds-C=fpstu',
    '--kinds-C++=cfnpstu',
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

# The scope keys of ctags, and those written under another name.
my $SCOPE = join('|', sort keys %PARENT);
my $RENAMED = join('|', grep { $PARENT{$_} ne $_ } sort keys %PARENT);

my $HEADER = "!_TAG_FILE_FORMAT\t2\t/extended format/\n"
    . "!_TAG_FILE_SORTED\t0\t/0=unsorted, in source order/\n"
    . "!_TAG_PROGRAM_NAME\tTagging.pl\t//\n";

usage() unless @ARGV >= 2;
if ($ARGV[0] eq '--batch') {
    usage() unless @ARGV == 2;
    exit(tag_batch($ARGV[1]));
}
exit(tag_into_one_file(@ARGV));

sub usage {
    print STDERR "usage: Tagging.pl <tag file> <source>...\n"
        . "       Tagging.pl --batch <directory>\n";
    exit(2);
}

# --- the two forms

sub tag_into_one_file {
    my ($tagfile, @sources) = @_;
    for my $source (@sources) {
        next if -e $source;
        print STDERR "$source:1: no such file\n";
        fail("source $source not found", 1);
    }
    my $dir = dirname($tagfile);
    make_path($dir) unless -d $dir;
    my $partial = "$tagfile.part";
    open(my $out, '>', $partial) or fail("cannot write $partial: $!", 1);
    binmode($out);
    print $out $HEADER;
    my $status = run_ctags([@sources], sub {
        my (undef, $lines) = @_;
        print $out map { "$_\n" } convert_file(@$lines);
    });
    close($out) or fail("cannot write $partial: $!", 1);
    if ($status != 0) {
        unlink($partial);
        ctags_failed($status);
    }
    rename($partial, $tagfile) or fail("cannot rename $partial to $tagfile: $!", 1);
    return 0;
}

# The files of the list into one tag file, each reported once its records
# are written, in the order of the list.
sub tag_batch {
    my ($dir) = @_;
    my $list = "$dir/sources";
    open(my $in, '<', $list) or fail("cannot read $list: $!", 2);
    binmode($in);
    my @sources = <$in>;
    close($in);
    s/\r?\n\z// for @sources;
    my $tagfile = "$dir/tags";
    open(my $out, '>', $tagfile) or fail("cannot write $tagfile: $!", 1);
    binmode($out);
    print $out $HEADER;

    # The files ctags runs on, by their index in the list; the others fail
    # when their turn comes.
    my (@tagged, @missing);
    for my $n (0 .. $#sources) {
        if (-f $sources[$n] && -r _) {
            push(@tagged, $n);
        } else {
            $missing[$n] = 1;
        }
    }
    my $next = 0;    # the first file not reported yet
    my $failures = 0;
    my $report_up_to = sub {
        my ($last, $lines) = @_;
        while ($next <= $last) {
            my $n = $next++;
            if ($missing[$n]) {
                print STDERR "$sources[$n]:1: no such file\n";
                print STDOUT "Tagging.pl: file ", $n + 1, " failed: $sources[$n]\n";
                ++$failures;
                next;
            }
            print $out map({ "$_\n" } convert_file($n == $last ? @$lines : ())),
                "!_KORVIL_END\t", $n + 1, "\t//\n";
            $out->flush() or fail("cannot write $tagfile: $!", 1);
            print STDOUT "Tagging.pl: file ", $n + 1, " done: $sources[$n]\n";
        }
    };
    if (@tagged) {
        # Records come file by file in the order of the command line: the
        # records of a file complete it and every file before it.
        my @queue = @tagged;
        my %argument = map { $_ => argument($sources[$_]) } @tagged;
        my $status = run_ctags([@sources[@tagged]], sub {
            my ($file, $lines) = @_;
            shift(@queue) while @queue && $argument{ $queue[0] } ne $file;
            my $n = shift(@queue);
            $report_up_to->($n, $lines) if defined $n;
        });
        ctags_failed($status) if $status != 0;
    }
    $report_up_to->($#sources, []);
    close($out) or fail("cannot write $tagfile: $!", 1);
    return $failures ? 1 : 0;
}

# --- the tag program

# A source as ctags is given it: one that starts like an option gets "./".
sub argument {
    my ($source) = @_;
    return $source =~ /^-/ ? "./$source" : $source;
}

# Runs ctags on the arguments and hands the records of each file, as
# ctags names it, to $file_done once the next file begins or the output
# ends. The status of ctags.
sub run_ctags {
    my ($arguments, $file_done) = @_;
    my $pid = open(my $in, '-|');
    fail("cannot start $CTAGS[0]: $!", 127) unless defined $pid;
    if ($pid == 0) {
        no warnings 'exec';
        exec { $CTAGS[0] } @CTAGS, map { argument($_) } @$arguments
            or print STDERR "Tagging.pl: cannot run $CTAGS[0]: $!\n";
        exit(127);
    }
    binmode($in);
    my ($file, $lines) = (undef, []);
    while (my $line = <$in>) {
        $line =~ s/\r?\n\z//;
        next if $line eq '' || ord($line) == 33 && $line =~ /^!_/;
        my $start = index($line, "\t") + 1;
        my $end = index($line, "\t", $start);
        next if $start == 0 || $end < 0;
        my $of = substr($line, $start, $end - $start);
        if (defined $file && $of ne $file) {
            $file_done->($file, $lines);
            $lines = [];
        }
        $file = $of;
        push(@$lines, $line);
    }
    close($in);
    my $status = $?;
    $file_done->($file, $lines) if defined $file && $status == 0;
    return $status;
}

sub ctags_failed {
    my ($status) = @_;
    my $code = $status & 127 ? 128 + ($status & 127) : $status >> 8;
    fail("$CTAGS[0] could not run", 127) if $code == 127;
    fail("$CTAGS[0] failed (status $code)", $code);
}

# --- from ctags' records to the library's layout

# The records of one file in the library's layout, in their order:
# identifier, file, line;", kind, then ctags' fields with the scope keys
# made parent keys, the C++ properties "pure" and "virtual" made the
# implementation words "pure virtual" and "virtual", and typeref and empty
# fields dropped. Values keep ctags' escapes (\t, \\, \r, \n), which the
# reader undoes.
#
# Read over the whole file, since a typedef follows the anonymous
# structure it names:
# - an anonymous structure, union or enum named by a typedef takes the
#   typedef's name ("typedef struct {...} point;" is the struct "point");
#   the other made-up names (__anon<hex>) become "(anonymous)", the same
#   whatever the file's path;
# - unions make no tag. What ctags puts in an anonymous union stands in
#   the union's own scope as ctags gives it (the file when none), and the
#   union is left out of the scope names that pass through it: its
#   made-up name would otherwise meet another anonymous scope's. A named
#   union stays in the names, as ctags gives them;
# - a function with a made-up name is a lambda, which is no function.
sub convert_file {
    my (@lines) = @_;
    my (@converted, @pending, %named, %unions);
    for my $line (@lines) {
        my ($kind) = $line =~ /^[^\t]*\t[^\t]*\t\d+;"\t(?:kind:)?([^\t]*)/ or next;
        if (index($line, '__anon') < 0) {
            # Nothing made up: the record alone tells all.
            push(@converted, plain($line)) unless $kind eq 'typedef' || $kind eq 'union';
            next;
        }
        my $name = substr($line, 0, index($line, "\t"));
        my $made_up = $name =~ /^__anon[0-9a-f]+\z/;
        if ($kind eq 'typedef') {
            $named{$1} //= $name
                if $line =~ /\ttyperef:(?:struct|union|enum|class):(?:[^\t]*::)?(__anon[0-9a-f]+)(?:\t|\z)/;
        } elsif ($kind eq 'union') {
            if ($made_up) {
                my $scope = $line =~ /\t($SCOPE):([^\t]*)/ ? [$1, $2] : undef;
                $unions{ $scope ? "$scope->[1]::$name" : $name } = $scope;
            }
        } elsif (!($made_up && ($kind eq 'function' || $kind eq 'prototype'))) {
            # Its names once the whole file is read.
            push(@pending, scalar(@converted));
            push(@converted, $line);
        }
    }
    for my $at (@pending) {
        my $line = $converted[$at];
        if (%unions && $line =~ /\t($SCOPE):([^\t]*)/) {
            my $scope = out_of_unions([$1, $2], \%unions);
            my $field = $scope ? "\t$scope->[0]:$scope->[1]" : '';
            substr($line, $-[0], $+[0] - $-[0]) = $field;
        }
        $converted[$at] = anonymous(plain($line), \%named);
    }
    return @converted;
}

# A record whose names need nothing more in the library's layout.
sub plain {
    my ($line) = @_;
    $line =~ s/\ttyperef:[^\t]*// if index($line, "\ttyperef:") >= 0;
    $line =~ s/\t($RENAMED):/\t$PARENT{$1}:/;
    $line =~ s/\tproperties:([^\t]*)/implementation_words($1)/e if index($line, "\tproperties:") >= 0;
    # Empty fields: a key and its colon at a field's end.
    $line =~ s/\t[a-z]+:(?=\t|\z)//g if index($line, ":\t") >= 0 || substr($line, -1) eq ':';
    return $line;
}

# The implementation words of C++ properties ("virtual,pure").
sub implementation_words {
    my %has = map { $_ => 1 } split(/,/, $_[0]);
    return "\timplementation:pure virtual" if $has{pure};
    return "\timplementation:virtual" if $has{virtual};
    return '';
}

# A scope [key, name] with the anonymous unions it passes through left
# out: a scope that is one becomes the union's own scope (none at the
# top), and one inside the name is dropped from it.
sub out_of_unions {
    my ($scope, $unions) = @_;
    return $scope unless $scope && %$unions;
    my ($key, $name) = @$scope;
    for (my $guard = 0; $guard < 100; ++$guard) {
        if ($key eq 'union' && exists $unions->{$name}) {
            my $owner = $unions->{$name};
            return undef unless $owner;
            ($key, $name) = @$owner;
            next;
        }
        my $union = longest_union_prefix($name, $unions);
        last unless defined $union;
        my $owner = $unions->{$union};
        $name = $owner ? $owner->[1] . substr($name, length($union)) : substr($name, length($union) + 2);
    }
    return [$key, $name];
}

sub longest_union_prefix {
    my ($name, $unions) = @_;
    my $found;
    for my $union (keys %$unions) {
        next unless length($name) > length($union) + 2 && substr($name, 0, length($union) + 2) eq "$union\::";
        $found = $union if !defined $found || length($union) > length($found);
    }
    return $found;
}

# The made-up names of anonymous scopes in a text: the typedef's name when
# a typedef names the scope, else "(anonymous)".
sub anonymous {
    my ($text, $named) = @_;
    return $text unless $named;
    $text =~ s/\b(__anon[0-9a-f]+)\b/$named->{$1} \/\/ '(anonymous)'/ge;
    return $text;
}

sub fail {
    my ($text, $code) = @_;
    print STDERR "Tagging.pl: $text\n";
    exit(defined $code ? $code : 1);
}
