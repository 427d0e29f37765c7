#!/usr/bin/perl
# Execute driver: runs a node's test program or system-testing scripts
# (stage e), writing the combined output file $ATL_OUT_FILE as they run,
# and reports what that file holds (stage r).
#
#   perl -I<install>/lib/perl Execute.pl <environment file> <kind> [scripts...]
#
# Run in the project directory. See docs/formats/driver-scripts.md.

use strict;
use warnings;

# The modules beside the scripts, also when -I was not given.
use FindBin;
use lib "$FindBin::RealBin/../lib/perl";
use Cwd qw(realpath);
use File::Basename qw(basename);
use File::Spec;
use Korvil::Driver;
use Korvil::Gcov;
use Korvil::Records;
use Korvil::Run;

my $d = Korvil::Driver->start('Execute', @ARGV);
my $kind = $d->kind;
my %RUNS = (application => 1, unit_testing => 1, system_testing => 1);

if (!$RUNS{$kind}) {
    $d->verbose_info($d->name . ": nothing to execute for a $kind") if $d->stage('e') || $d->stage('r');
    $d->finish;
}
execute() if $d->stage('e');
report() if $d->stage('r');
$d->finish;

sub out_file {
    my $file = $d->get('ATL_OUT_FILE');
    $d->fail('no result file ($ATL_OUT_FILE is empty)') if $file eq '';
    return $file;
}

sub arguments {
    my @words = eval { Korvil::Run::shell_words($d->get('ARGUMENTS')) };
    $d->fail("\$ARGUMENTS: $@" =~ s/\s+$//r) if $@;
    return @words;
}

sub execute {
    my @runs;    # [ test name, file run, command ]
    my @arguments = arguments();
    if ($kind eq 'system_testing') {
        my @scripts = $d->files;
        $d->fail('no system-testing script selected') unless @scripts;
        @runs = map { [basename($_), $_, ['sh', $_, @arguments]] } @scripts;
    } else {
        my $program = $d->get('TESTPROGRAM_ABS');
        $d->fail('no test program ($TESTPROGRAM_ABS is empty)') if $program eq '';
        my $test = $d->get('TEST_NAME') ne '' ? $d->get('TEST_NAME') : $d->name;
        @runs = ([$test, $program, [$program, @arguments]]);
    }

    my $file = out_file();
    my $records = eval {
        Korvil::Records->create($file, failure => [$d->list('TEST_FAILURE_PATTERNS')],
                                pass => [$d->list('TEST_PASS_PATTERNS')]);
    };
    $d->fail($@ =~ s/\s+$//r) unless $records;
    # The instrumentation runtime of the program appends its records there.
    local $ENV{ATL_OUT_FILE} = File::Spec->rel2abs($file);
    my @counted = counted_objects();
    print STDERR $d->name . ": cannot remove the counters of the last run: $_\n"
        for Korvil::Gcov::remove_counters(@counted);
    my @failures;
    my $first_code = 0;
    my $pid;
    for my $run (@runs) {
        my ($test, $path, $command) = @$run;
        $records->begin_test($test, $path);
        my $status;
        if (!-f $path) {
            $d->problem($path, 1, 'no such file') if $kind eq 'system_testing';
            $status = { error => "$path not found" };
        } else {
            $d->info(Korvil::Run::command_text(@$command));
            $status = Korvil::Run::run_streamed($command, sub { $records->line(@_) });
        }
        $pid = $status->{pid};
        my $code = Korvil::Run::status_code($status);
        $records->end_test($code);
        next if $code == 0;
        $first_code ||= $code;
        my $what = $kind eq 'system_testing' ? "system-testing script $path" : 'test program';
        my $how = defined $status->{signal} ? "was killed by signal $status->{signal}"
                : defined $status->{error}  ? "could not run: $status->{error}"
                :                             "failed with status $status->{exit}";
        push(@failures, "$what $how");
    }
    record_counters($records, $runs[0][1], $pid, @counted) if @counted;
    $records->end_run($d->name, $first_code);
    return unless @failures;
    # The failure ends the run, after the report: one failure is told as it
    # is, several each now and then counted.
    if (@failures == 1) {
        $d->defer_failure($failures[0], $first_code);
    } else {
        print STDERR $d->name . ": $_\n" for @failures;
        $d->defer_failure(scalar(@failures) . ' of ' . scalar(@runs) . ' system-testing scripts failed',
                          $first_code);
    }
}

# The objects of a program built with the compiler's coverage counters:
# its sources' and its test script's.
sub counted_objects {
    return () if $kind eq 'system_testing' || !Korvil::Gcov::wanted($d->env);
    my @objects = $d->list('OBJECTS');
    if ($kind eq 'unit_testing') {
        my $script = $d->get('UNITTESTING_TESTSCRIPT_OBJECT');
        $script = $d->object_of($d->get('UNITTESTING_TESTSCRIPTNAME'))
            if $script eq '' && $d->get('UNITTESTING_TESTSCRIPTNAME') ne '';
        unshift(@objects, $script) if $script ne '';
    }
    return grep { defined && $_ ne '' } @objects;
}

# Appends the line, branch and function coverage of the counters the
# program left, after the run's records; without gcov the run goes on.
sub record_counters {
    my ($records, $program, $pid, @objects) = @_;
    my $path = realpath($program);
    my ($lines, $error) = Korvil::Gcov::records(
        objects => \@objects, root => '.', program => defined $path ? $path : $program, pid => $pid,
        lines => Korvil::Gcov::lines_wanted($d->env), branches => Korvil::Gcov::branches_wanted($d->env),
        gcov => $ENV{GCOV});
    if (!$lines) {
        $d->info($d->name . ": no line coverage: $error");
        return;
    }
    $records->record(@$_) for @$lines;
    my $files = @$lines ? $lines->[-1][1] : 0;
    $d->verbose_info($d->name . ": line coverage of $files file(s) recorded");
}

sub report {
    my $file = out_file();
    if (!-f $file) {
        $d->defer_failure("no results to report: $file not found");
        return;
    }
    my $results = eval { Korvil::Records->read_back($file) };
    $d->fail($@ =~ s/\s+$//r) unless $results;
    my @tests = @{ $results->{tests} };
    my $failed = 0;
    $d->info($d->name . ": results in $file");
    for my $t (@tests) {
        my $status = defined $t->{status} ? $t->{status} : 'unknown';
        my $bad = $status ne '0';
        ++$failed if $bad;
        $d->info(sprintf('  %s: %s, %d line(s), %d failure(s), %s', $t->{name}, $bad ? 'FAILED' : 'passed',
                         $t->{lines}, $t->{failures},
                         defined $t->{status} ? "status $status" : 'did not end'));
    }
    $d->info(sprintf('%s: %d test(s) run, %d passed, %d failed, %d failure line(s)', $d->name, scalar(@tests),
                     @tests - $failed, $failed, $results->{failures}));
    $d->info($d->name . ': the run did not end: no end-of-test record') unless $results->{ended};
    # Without execution in this run, the results read decide the status.
    $d->defer_failure("$failed of " . scalar(@tests) . ' test(s) failed') if $failed && !$d->stage('e');
}
