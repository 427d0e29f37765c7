package Korvil::Gcov;

# Line, branch and function coverage with the compiler's own
# instrumentation: when a configuration asks for the coverage of statement
# blocks or conditions, Build compiles and links the node with --coverage;
# Execute removes the counters of the last run before the program runs and,
# after it, turns the counters into coverage records that go with the
# runtime's own into the combined output file:
#
#   NT "<program>" <pid>                  the run the records belong to
#   DC "<file>"                           a source file; what follows is its
#   TP "<function>" <start> <end> <calls> a function, its first and last line
#   TA <line> <count>                     a line with code, run count times
#   TB <line> <branch> <taken>            a branch of a line, "-" when the
#                                         line never ran
#   EI <files> <lines> <hit> <branches> <taken> <functions> <called>
#                                         the end, with the totals
#
# The counters are read with "gcov --json-format --stdout" (gcc 12's
# format 1), never from gcov's text. Paths are absolute, symbolic links
# resolved; sources outside the project directory (the compiler's headers)
# are left out. See docs/formats/runtime-output.md.

use strict;
use warnings;

use Cwd qw(realpath);
use File::Spec;
use JSON::PP;
use POSIX ();

# Whether an environment asks for gcc's coverage: code coverage on, with
# statement blocks ($ATC_INSTR_BLOCKS) or conditions ($ATC_INSTR_CONDITIONS)
# covered.
sub wanted {
    my ($env) = @_;
    return 0 unless $env->get('ATCMODE');
    return lines_wanted($env) || branches_wanted($env);
}

sub lines_wanted    { return _number($_[0]->get('ATC_INSTR_BLOCKS')) > 0; }
sub branches_wanted { return _number($_[0]->get('ATC_INSTR_CONDITIONS')) > 0; }

sub _number {
    my ($value) = @_;
    return defined $value && $value =~ /^\s*(\d+)/ ? $1 : 0;
}

# The options of the compiler and of the linker.
sub options { return ('--coverage'); }

# The counter file (.gcda) and the notes file (.gcno) of an object: its
# path without the extension, as gcc names them.
sub counter_file { return _base($_[0]) . '.gcda'; }
sub notes_file   { return _base($_[0]) . '.gcno'; }

sub _base {
    my ($object) = @_;
    (my $base = $object) =~ s/\.[^.\/]*$//;
    return $base;
}

# Removes the counters of the objects' last run; the ones that could not
# be removed, each "<file>: <why>".
sub remove_counters {
    my (@objects) = @_;
    my @errors;
    for my $file (map { counter_file($_) } @objects) {
        next unless -e $file;
        push(@errors, "$file: $!") unless unlink($file);
    }
    return @errors;
}

# The coverage records of the objects' counters. Options: objects => [...],
# root => the project directory, lines => 0|1, branches => 0|1, program,
# pid, gcov => the tool ("gcov"). Returns (\@records, undef), each record
# [code, fields...] with text fields quoted by quote, or (undef, why).
sub records {
    my (%o) = @_;
    my @objects = grep { -f notes_file($_) } @{ $o{objects} || [] };
    return ([], undef) unless @objects;
    # A program killed by a signal writes no counters: its coverage is
    # unknown, not nothing.
    return (undef, 'the program wrote no counters (it did not end normally)')
        unless grep { -f counter_file($_) } @objects;
    my ($documents, $error) = _run_gcov($o{gcov} || 'gcov', @objects);
    return (undef, $error) unless $documents;
    my $root = realpath($o{root} || '.');
    my %files;
    for my $document (@$documents) {
        my $cwd = defined $document->{current_working_directory} ? $document->{current_working_directory} : '.';
        for my $file (@{ $document->{files} || [] }) {
            my $path = _absolute($file->{file}, $cwd);
            next unless defined $path && index($path, "$root/") == 0;
            _merge($files{$path} ||= { lines => {}, branches => {}, functions => {} }, $file);
        }
    }
    return (_records_of(\%files, \%o), undef);
}

sub _run_gcov {
    my ($gcov, @objects) = @_;
    my $pid = open(my $out, '-|');
    return (undef, "cannot run $gcov: $!") unless defined $pid;
    if ($pid == 0) {
        # Notes and counters missing for an object are told on the standard
        # error; what could be read still comes on the standard output.
        open(STDERR, '>', File::Spec->devnull);
        { no warnings 'exec'; exec { $gcov } $gcov, '-b', '--json-format', '--stdout', @objects; }
        POSIX::_exit(127);
    }
    binmode($out);
    my $json = JSON::PP->new->utf8;
    my @documents;
    while (my $line = <$out>) {
        next unless $line =~ /\S/;
        my $document = eval { $json->decode($line) };
        push(@documents, $document) if ref($document) eq 'HASH';
    }
    close($out);
    my $status = $?;
    return (undef, "$gcov could not be run") if ($status >> 8) == 127 && !@documents;
    return (undef, "$gcov failed (status " . ($status >> 8) . ')') if $status != 0 && !@documents;
    return (\@documents, undef);
}

sub _absolute {
    my ($file, $cwd) = @_;
    return undef unless defined $file && $file ne '';
    my $path = File::Spec->rel2abs($file, $cwd);
    my $real = realpath($path);
    return defined $real ? $real : File::Spec->canonpath($path);
}

# Adds one object's coverage of a file: the counts of a line summed, the
# branches of a line summed one by one, a function once per name and line.
sub _merge {
    my ($into, $file) = @_;
    for my $line (@{ $file->{lines} || [] }) {
        my $n = $line->{line_number};
        $into->{lines}{$n} += $line->{count};
        my $branches = $into->{branches}{$n} ||= [];
        my @counts = map { $_->{count} } @{ $line->{branches} || [] };
        $branches->[$_] += $counts[$_] for 0 .. $#counts;
    }
    for my $function (@{ $file->{functions} || [] }) {
        my $name = defined $function->{demangled_name} ? $function->{demangled_name} : $function->{name};
        my $key = "$function->{start_line}\0$name";
        my $f = $into->{functions}{$key} ||= { name => $name, start => $function->{start_line},
                                               end => $function->{end_line}, calls => 0 };
        $f->{calls} += $function->{execution_count};
    }
}

sub _records_of {
    my ($files, $o) = @_;
    require Korvil::Records;
    my $q = \&Korvil::Records::quote;
    my @records;
    push(@records, ['NT', $q->($o->{program}), $o->{pid}]) if defined $o->{program} && defined $o->{pid};
    my @total = (0) x 6;
    for my $path (sort keys %$files) {
        my $file = $files->{$path};
        push(@records, ['DC', $q->($path)]);
        for my $f (sort { $a->{start} <=> $b->{start} || $a->{name} cmp $b->{name} } values %{ $file->{functions} }) {
            push(@records, ['TP', $q->($f->{name}), $f->{start}, $f->{end}, $f->{calls}]);
            $total[4]++;
            $total[5]++ if $f->{calls} > 0;
        }
        my @lines = sort { $a <=> $b } keys %{ $file->{lines} };
        if ($o->{lines}) {
            for my $n (@lines) {
                push(@records, ['TA', $n, $file->{lines}{$n}]);
                $total[0]++;
                $total[1]++ if $file->{lines}{$n} > 0;
            }
        }
        next unless $o->{branches};
        for my $n (@lines) {
            my $ran = $file->{lines}{$n} > 0;
            my @branches = @{ $file->{branches}{$n} || [] };
            for my $i (0 .. $#branches) {
                my $taken = $branches[$i] || 0;
                push(@records, ['TB', $n, $i, $ran ? $taken : '-']);
                $total[2]++;
                $total[3]++ if $taken > 0;
            }
        }
    }
    push(@records, ['EI', scalar(keys %$files), @total]);
    return \@records;
}

1;
