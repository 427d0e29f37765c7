package Korvil::Records;

# The runtime's combined output file ($ATL_OUT_FILE) of a plain test run,
# written line by line while the test runs: the studio reads it as it grows
# and sorts each line by its first two characters. One record a line, the
# code, a blank, then blank-separated fields; text fields are quoted
# (see quote):
#
#   BT "<test>" "<date>" "<file run>"   a test starts
#   RL "<line>"                          a line of its standard output
#   RE "<line>"                          a line of its standard error
#   FL "<line>"                          a line that tells a failed check
#                                        (either channel, a failure
#                                        pattern), in place of RL or RE
#   PL "<line>"                          a line that tells a passed check
#                                        (a pass pattern), in place of RL
#                                        or RE
#   SM "<test>" <status> <lines> <failures> <passes> <ms>
#                                        the test ended: exit status
#                                        (128 + signal when killed),
#                                        lines written, failure lines,
#                                        pass lines, milliseconds it ran
#   td "<run>" <status> <tests> <failed> the run ended: the first non-zero
#                                        status (0 when all passed), tests
#                                        run, tests that ended non-zero
#
# All but td go with the test results; td is the end-of-test line.
#
# The instrumentation runtime of the program run appends its own records
# to the same file meanwhile: the file is opened for appending and every
# record is written whole by one write, so that no line cuts another.

use strict;
use warnings;

use File::Basename qw(dirname);
use Fcntl qw(O_APPEND O_CREAT O_TRUNC O_WRONLY);
use File::Path qw(make_path);
use POSIX qw(strftime);
use Time::HiRes ();

our %CODE = (
    begin   => 'BT',
    out     => 'RL',
    err     => 'RE',
    failure => 'FL',
    pass    => 'PL',
    summary => 'SM',
    end     => 'td',
);

# A text field: in double quotes, with "\" written "\\", '"' written '\"',
# tab, carriage return and newline as "\t" "\r" "\n", and other control
# characters as "\xHH".
sub quote {
    my ($text) = @_;
    $text = '' unless defined $text;
    $text =~ s/\\/\\\\/g;
    $text =~ s/"/\\"/g;
    $text =~ s/\t/\\t/g;
    $text =~ s/\r/\\r/g;
    $text =~ s/\n/\\n/g;
    $text =~ s/([\x00-\x1f\x7f])/sprintf('\\x%02X', ord($1))/ge;
    return "\"$text\"";
}

# The fields of a record line: its code and the fields, quoted ones
# unquoted.
sub parse {
    my ($line) = @_;
    $line =~ s/\r?\n$//;
    my ($code, $rest) = $line =~ /^(\S\S)(?:\s+(.*))?$/ or return;
    my @fields;
    $rest = '' unless defined $rest;
    while ($rest =~ /\G\s*(?:"((?:[^"\\]|\\.)*)"|(\S+))/gc) {
        if (defined $1) {
            my $text = $1;
            my %esc = (t => "\t", r => "\r", n => "\n");
            $text =~ s/\\(x([0-9A-Fa-f]{2})|.)/defined $2 ? chr(hex($2)) : ($esc{$1} || $1)/ge;
            push(@fields, $text);
        } else {
            push(@fields, $2);
        }
    }
    return ($code, @fields);
}

# The lines of a test's output that tell a check's outcome, as Perl
# regular expressions: plain FAILED:/PASSED: lines (alone or after
# file:line:), Unity
# (file:line:test:FAIL/PASS), TAP (not ok/ok), GoogleTest, Check, CUnit
# and assert(). The settings give their own (@TEST_FAILURE_PATTERNS,
# @TEST_PASS_PATTERNS); these stand in when they give none.
our @FAILURE_PATTERNS = ('^FAILED:', '^[^:\s]+:\d+: FAILED:', '^[^:\s]+:\d+:[^:]+:FAIL\b', '^not ok\b', '^\[  FAILED  \] ',
                         '^[^:\s]+:\d+:[FE]:', '\.\.\.FAILED\b', 'Assertion .* failed');
our @PASS_PATTERNS = ('^PASSED:', '^[^:\s]+:\d+: PASSED:', '^[^:\s]+:\d+:[^:]+:PASS\b', '^ok\b', '^\[       OK \] ',
                      '\.\.\.passed\b');

# One regular expression of the patterns; a pattern that does not compile
# dies with its text.
sub _matcher {
    my (@patterns) = @_;
    my @compiled;
    for my $pattern (@patterns) {
        my $re = eval { qr/$pattern/ };
        die "the test output pattern '$pattern' is no regular expression: " . ($@ =~ s/ at .*//sr) . "\n"
            unless $re;
        push(@compiled, $re);
    }
    return @compiled ? qr/(?:@{[join('|', @compiled)]})/ : qr/(?!)/;
}

# Opens the file for a new run, for appending: its directory made, its
# content dropped. Options: failure => [patterns], pass => [patterns].
sub create {
    my ($class, $file, %options) = @_;
    my $dir = dirname($file);
    make_path($dir) unless -d $dir;
    sysopen(my $fh, $file, O_WRONLY | O_CREAT | O_TRUNC | O_APPEND) or die "$file: cannot write: $!\n";
    binmode($fh);
    my @failure = @{ $options{failure} || [] };
    my @pass = @{ $options{pass} || [] };
    return bless({ fh => $fh, file => $file, tests => 0, failed => 0,
                   failure => _matcher(@failure ? @failure : @FAILURE_PATTERNS),
                   pass => _matcher(@pass ? @pass : @PASS_PATTERNS) }, $class);
}

# One record, written whole at once (a short write goes on with the rest).
sub _write {
    my ($self, $code, @fields) = @_;
    my $line = join(' ', $code, @fields) . "\n";
    utf8::encode($line) if utf8::is_utf8($line);
    while (length($line)) {
        my $written = syswrite($self->{fh}, $line);
        die "$self->{file}: cannot write: $!\n" unless defined $written;
        substr($line, 0, $written, '');
    }
}

# A record of another kind (the coverage of the compiler's counters):
# its code and fields, text fields already quoted.
sub record {
    my ($self, $code, @fields) = @_;
    $self->_write($code, @fields);
}

sub begin_test {
    my ($self, $test, $file) = @_;
    $self->{test} = $test;
    $self->{lines} = 0;
    $self->{failures} = 0;
    $self->{passes} = 0;
    $self->{started} = Time::HiRes::time();
    $self->_write($CODE{begin}, quote($test), quote(strftime('%Y-%m-%d %H:%M:%S', localtime)), quote($file));
}

# A line the test wrote on channel 'out' or 'err'.
sub line {
    my ($self, $channel, $text) = @_;
    ++$self->{lines};
    if ($text =~ $self->{failure}) {
        ++$self->{failures};
        $self->_write($CODE{failure}, quote($text));
    } elsif ($text =~ $self->{pass}) {
        ++$self->{passes};
        $self->_write($CODE{pass}, quote($text));
    } else {
        $self->_write($CODE{ $channel eq 'err' ? 'err' : 'out' }, quote($text));
    }
}

sub end_test {
    my ($self, $status) = @_;
    ++$self->{tests};
    ++$self->{failed} if $status != 0;
    my $length = int((Time::HiRes::time() - $self->{started}) * 1000);
    $self->_write($CODE{summary}, quote($self->{test}), $status, $self->{lines}, $self->{failures},
                  $self->{passes}, $length);
}

sub end_run {
    my ($self, $run, $status) = @_;
    $self->_write($CODE{end}, quote($run), $status, $self->{tests}, $self->{failed});
    close($self->{fh});
    delete $self->{fh};
}

# What a file tells: { tests => [ { name, file, status, lines, failures,
# passes } ], failures => total failure lines, passes => total pass lines,
# ended => the end record's fields or undef }.
sub read_back {
    my ($class, $file) = @_;
    open(my $fh, '<', $file) or die "$file: cannot read: $!\n";
    binmode($fh);
    my %result = (tests => [], failures => 0, passes => 0, ended => undef);
    my $current;
    while (my $line = <$fh>) {
        my ($code, @f) = parse($line) or next;
        if ($code eq $CODE{begin}) {
            $current = { name => $f[0], file => $f[2], status => undef, lines => 0, failures => 0,
                         passes => 0 };
            push(@{ $result{tests} }, $current);
        } elsif ($code eq $CODE{failure}) {
            ++$result{failures};
            ++$current->{failures} if $current;
        } elsif ($code eq $CODE{pass}) {
            ++$result{passes};
            ++$current->{passes} if $current;
        } elsif ($code eq $CODE{out} || $code eq $CODE{err}) {
            ++$current->{lines} if $current;
        } elsif ($code eq $CODE{summary} && $current) {
            $current->{status} = $f[1];
            $current->{lines} = $f[2];
        } elsif ($code eq $CODE{end}) {
            $result{ended} = { name => $f[0], status => $f[1], tests => $f[2], failed => $f[3] };
        }
    }
    close($fh);
    return \%result;
}

1;
