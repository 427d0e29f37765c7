package Korvil::Run;

# Running the tools and the programs under test.
#
#   shell_words($text)       the words of an option string, shell-like
#   command_text(@command)   one printable line for a command
#   run_command(@command)    prints the command line, runs it with the
#                            driver's own output channels, returns its status
#   run_streamed(\@command, $on_line)
#                            runs it with its standard input empty, copies
#                            its output to the driver's channels as it comes
#                            and calls $on_line->($channel, $line) for each
#                            line ($channel 'out' or 'err', no newline)
#
#   run_jobs($max, @jobs)    runs commands up to $max at once; each job
#                            is { command => [...] }; its command line and
#                            output are printed as one block when it ends,
#                            so that the output of two jobs never
#                            interleaves; returns the statuses in job order
#   processor_count()        the processors of the machine (1 when unknown)
#
# A status is a hash: { exit => N } for a process that ended, { signal => N }
# for one a signal killed, { error => text } for one that could not start.
# status_code gives its exit status (128 + signal, 127 when not started),
# status_text a short text ("status 2", "signal 11", the error).

use strict;
use warnings;

use Errno qw(EINTR);
use IO::Select;
use POSIX ();
use Text::ParseWords ();

# Words of an option string, as a POSIX shell would split them: blanks
# separate words, quotes and backslashes are honoured and removed. Dies on
# an unbalanced quote.
sub shell_words {
    my ($text) = @_;
    return () unless defined $text;
    $text =~ s/^\s+|\s+$//g;
    return () if $text eq '';
    my @words = Text::ParseWords::parse_line('\s+', 0, $text);
    die "unbalanced quotes in \"$text\"\n" if !@words || grep { !defined } @words;
    return @words;
}

# A command as one line a shell would read back the same: words holding
# blanks or shell characters are put in single quotes.
sub command_text {
    return join(' ', map { _quote_word($_) } @_);
}

sub _quote_word {
    my ($word) = @_;
    return "''" if $word eq '';
    return $word if $word =~ m{^[\w@%+=:,./-]+$};
    $word =~ s/'/'\\''/g;
    return "'$word'";
}

sub _status_of_wait {
    my ($wait, $error) = @_;
    return { error => $error } if $wait == -1;
    return { signal => $wait & 127 } if $wait & 127;
    return { exit => $wait >> 8 };
}

sub status_code {
    my ($s) = @_;
    return 127 if defined $s->{error};
    return 128 + $s->{signal} if defined $s->{signal};
    return $s->{exit};
}

sub status_text {
    my ($s) = @_;
    return $s->{error} if defined $s->{error};
    return "signal $s->{signal}" if defined $s->{signal};
    return "status $s->{exit}";
}

sub succeeded { my ($s) = @_; return !defined $s->{error} && !defined $s->{signal} && $s->{exit} == 0; }

# Prints the command line on the standard output, then runs the command
# (no shell) on the driver's standard output and error.
sub run_command {
    my (@command) = @_;
    print command_text(@command), "\n";
    STDOUT->flush();
    STDERR->flush();
    my $wait = system { $command[0] } @command;
    return _status_of_wait($wait, "cannot run $command[0]: $!");
}

sub processor_count {
    return $ENV{NUMBER_OF_PROCESSORS} if $^O eq 'MSWin32' && $ENV{NUMBER_OF_PROCESSORS};
    if (open(my $fh, '<', '/proc/cpuinfo')) {
        my $count = grep { /^processor\s*:/ } <$fh>;
        close($fh);
        return $count if $count;
    }
    my $count = `getconf _NPROCESSORS_ONLN 2>/dev/null`;
    return ($count && $count =~ /^(\d+)/ && $1 > 0) ? $1 : 1;
}

# Starts one job: its standard input empty, its standard output and error
# on pipes. Returns { pid, out, err } or a status when it cannot start.
sub _start_job {
    my ($command) = @_;
    pipe(my $out_r, my $out_w) or return { error => "cannot make a pipe: $!" };
    pipe(my $err_r, my $err_w) or return { error => "cannot make a pipe: $!" };
    pipe(my $exec_r, my $exec_w) or return { error => "cannot make a pipe: $!" };
    my $pid = fork();
    return { error => "cannot start $command->[0]: $!" } unless defined $pid;
    if ($pid == 0) {
        close($out_r);
        close($err_r);
        close($exec_r);
        open(STDIN, '<', '/dev/null');
        open(STDOUT, '>&', $out_w);
        open(STDERR, '>&', $err_w);
        { no warnings 'exec'; exec { $command->[0] } @$command; }
        syswrite($exec_w, "cannot run $command->[0]: $!");
        POSIX::_exit(127);
    }
    close($out_w);
    close($err_w);
    close($exec_w);
    my $exec_error = '';
    1 while sysread($exec_r, $exec_error, 4096, length($exec_error));
    close($exec_r);
    return { pid => $pid, out => $out_r, err => $err_r, exec_error => $exec_error,
             text => { out => '', err => '' } };
}

# Prints a finished job: its command line, then what it wrote on each
# channel, on the driver's channel of the same name.
sub _print_job {
    my ($command, $job) = @_;
    print command_text(@$command), "\n";
    print $job->{text}{out};
    STDOUT->flush();
    print STDERR $job->{text}{err};
    STDERR->flush();
}

sub run_jobs {
    my ($max, @jobs) = @_;
    $max = 1 if !$max || $max < 1;
    STDOUT->flush();
    STDERR->flush();
    my @statuses;
    my %running;    # fileno -> [ job index, channel ]
    my %jobs;       # job index -> started job
    my $select = IO::Select->new();
    my $next = 0;
    my $finish = sub {
        my ($index) = @_;
        my $job = delete $jobs{$index};
        my $wait;
        do { $wait = waitpid($job->{pid}, 0) } while ($wait == -1 && $! == EINTR);
        _print_job($jobs[$index]{command}, $job);
        $statuses[$index] = $job->{exec_error} ne ''
            ? { error => $job->{exec_error} }
            : _status_of_wait($wait == -1 ? -1 : $?, "cannot wait for $jobs[$index]{command}[0]: $!");
    };
    while ($next < @jobs || %jobs) {
        while ($next < @jobs && keys(%jobs) < $max) {
            my $index = $next++;
            my $job = _start_job($jobs[$index]{command});
            if (!defined $job->{pid}) {
                print command_text(@{ $jobs[$index]{command} }), "\n";
                $statuses[$index] = $job;
                next;
            }
            $jobs{$index} = $job;
            $job->{open} = 2;
            for my $channel (qw(out err)) {
                $running{ fileno($job->{$channel}) } = [$index, $channel];
                $select->add($job->{$channel});
            }
        }
        last unless %jobs;
        my @ready = $select->can_read();
        if (!@ready) {
            next if $! == EINTR;
            last;
        }
        for my $fh (@ready) {
            my ($index, $channel) = @{ $running{ fileno($fh) } };
            my $job = $jobs{$index};
            my $n = sysread($fh, my $chunk, 65536);
            if (!defined $n) {
                next if $! == EINTR;
                $n = 0;
            }
            if ($n) {
                $job->{text}{$channel} .= $chunk;
                next;
            }
            delete $running{ fileno($fh) };
            $select->remove($fh);
            close($fh);
            $finish->($index) if --$job->{open} == 0;
        }
    }
    return @statuses;
}

# In a child about to run a program: on Linux, the program is killed when
# the driver dies, so that a driver stopped by the studio (killed) does not
# leave its test program running. Elsewhere, or when the system's call
# table cannot be read, nothing is done.
sub _end_with_parent {
    my ($parent) = @_;
    return unless $^O eq 'linux';
    my $prctl = eval { package Korvil::Run::Sys; require 'sys/syscall.ph'; SYS_prctl() };
    return unless defined $prctl;
    my $set_parent_death_signal = 1;
    syscall($prctl, $set_parent_death_signal, POSIX::SIGKILL());
    # The driver may have died before the call.
    POSIX::_exit(128 + POSIX::SIGKILL()) if getppid() != $parent;
}

# Runs the command (no shell) with its standard input on /dev/null, its
# standard output and error on pipes read as they fill: each piece goes at
# once to the driver's own channel of the same name, each complete line
# (and a last one without newline) to $on_line.
sub run_streamed {
    my ($command, $on_line) = @_;
    my @command = @$command;
    STDOUT->flush();
    STDERR->flush();
    pipe(my $out_r, my $out_w) or return { error => "cannot make a pipe: $!" };
    pipe(my $err_r, my $err_w) or return { error => "cannot make a pipe: $!" };
    # Closed on a successful exec (Perl marks new descriptors close-on-exec);
    # carries the reason when exec fails.
    pipe(my $exec_r, my $exec_w) or return { error => "cannot make a pipe: $!" };
    my $driver = $$;
    my $pid = fork();
    return { error => "cannot start $command[0]: $!" } unless defined $pid;
    if ($pid == 0) {
        _end_with_parent($driver);
        close($out_r);
        close($err_r);
        close($exec_r);
        open(STDIN, '<', '/dev/null');
        open(STDOUT, '>&', $out_w);
        open(STDERR, '>&', $err_w);
        { no warnings 'exec'; exec { $command[0] } @command; }
        syswrite($exec_w, "cannot run $command[0]: $!");
        POSIX::_exit(127);
    }
    close($out_w);
    close($err_w);
    close($exec_w);
    my $exec_error = '';
    1 while sysread($exec_r, $exec_error, 4096, length($exec_error));
    close($exec_r);

    my %channel = (fileno($out_r) => ['out', \*STDOUT, ''], fileno($err_r) => ['err', \*STDERR, '']);
    my $select = IO::Select->new($out_r, $err_r);
    while ($select->count()) {
        my @ready = $select->can_read();
        if (!@ready) {
            next if $! == EINTR;
            last;
        }
        for my $fh (@ready) {
            my $c = $channel{ fileno($fh) };
            my $n = sysread($fh, my $chunk, 65536);
            if (!defined $n) {
                next if $! == EINTR;
                $n = 0;
            }
            if ($n == 0) {
                $on_line->($c->[0], $c->[2]) if length($c->[2]);
                $c->[2] = '';
                $select->remove($fh);
                close($fh);
                next;
            }
            syswrite($c->[1], $chunk);
            $c->[2] .= $chunk;
            while ($c->[2] =~ s/^([^\n]*)\n//) {
                (my $line = $1) =~ s/\r$//;
                $on_line->($c->[0], $line);
            }
        }
    }
    my $wait;
    do { $wait = waitpid($pid, 0) } while ($wait == -1 && $! == EINTR);
    return { error => $exec_error } if $exec_error ne '';
    my $status = _status_of_wait($wait == -1 ? -1 : $?, "cannot wait for $command[0]: $!");
    $status->{pid} = $pid;
    return $status;
}

1;
