#!/usr/bin/perl
# Build driver: makes what a node's kind needs, step by step as $STAGE
# asks (c: test harness, p: source preparation, t: translation, l: link).
#
#   perl -I<install>/lib/perl Build.pl <environment file> <kind> [files...]
#
# Run in the project directory. See docs/formats/driver-scripts.md.

use strict;
use warnings;

# The modules beside the scripts, also when -I was not given.
use FindBin;
use lib "$FindBin::RealBin/../lib/perl";
use File::Spec;
use Korvil::Driver;
use Korvil::Run;

my $d = Korvil::Driver->start('Build', @ARGV);
my $kind = $d->kind;

harness() if $d->stage('c');
prepare() if $d->stage('p');
translate() if $d->stage('t');
link_step() if $d->stage('l');
$d->finish;

# c: the test scripts must be there; a plain C unit test or a shell script
# needs no generated harness.
sub harness {
    my @scripts;
    if ($kind eq 'unit_testing') {
        my $script = $d->get('UNITTESTING_TESTSCRIPTNAME');
        $d->fail('no unit-testing script selected') if $script eq '';
        @scripts = ($script);
    } elsif ($kind eq 'system_testing') {
        @scripts = $d->files;
        $d->fail('no system-testing script selected') unless @scripts;
    } else {
        return;
    }
    my @missing = grep { !-f $_ } @scripts;
    $d->problem($_, 1, 'no such file') for @missing;
    $d->fail(@missing == 1 ? "test script $missing[0] not found"
                           : scalar(@missing) . ' test scripts not found') if @missing;
    $d->verbose_info($d->name . ": no test harness to generate for $_") for @scripts;
}

# p: no instrumentation on these targets.
sub prepare {
    $d->verbose_info($d->name . ': source preparation skipped: no instrumentation on this target');
}

sub translate {
    if ($kind eq 'source') {
        my $file = $d->get('FILENAME');
        $d->fail('no source file') if $file eq '';
        compile($file);
    } elsif ($kind eq 'unit_testing') {
        my $script = $d->get('UNITTESTING_TESTSCRIPTNAME');
        $d->fail('no unit-testing script selected') if $script eq '';
        compile($script);
    }
}

sub link_step {
    if ($kind eq 'library') {
        make_library();
    } elsif ($kind eq 'application') {
        link_program('application', $d->list('OBJECTS'));
    } elsif ($kind eq 'unit_testing') {
        my $script = $d->get('UNITTESTING_TESTSCRIPTNAME');
        $d->fail('no unit-testing script selected') if $script eq '';
        $d->package;
        link_program('unit test', $d->object_of($script), $d->list('OBJECTS'));
    }
}

# The words of an option variable of the environment; a string with an
# unbalanced quote ends the run.
sub option_words {
    my ($variable) = @_;
    my @words = eval { Korvil::Run::shell_words($d->get($variable)) };
    $d->fail("\$$variable: $@" =~ s/\s+$//r) if $@;
    return @words;
}

sub package_words {
    my ($key) = @_;
    my @words = eval { Korvil::Run::shell_words($d->package->string($key)) };
    $d->fail("$key of the target package: $@" =~ s/\s+$//r) if $@;
    return @words;
}

sub compile {
    my ($source) = @_;
    my $package = $d->package;
    if (!-f $source) {
        $d->problem($source, 1, 'no such file');
        $d->fail("source $source not found");
    }
    my @compiler;
    $d->guard(sub { @compiler = $package->compiler_for($source) });
    my @defines;
    $d->guard(sub { @defines = $package->define_options });
    my @includes = map { '-I' . File::Spec->rel2abs($_) } grep { $_ ne '' } $d->list('INCLUDE_DIR_LIST');
    my $object = $d->object_of($source);
    $d->make_dir($d->intdir);
    my $status = Korvil::Run::run_command(@compiler, option_words('CPPFLAGS'), option_words('CFLAGS'),
                                          @defines, @includes, '-fPIC', '-c', $source, '-o', $object);
    return if Korvil::Run::succeeded($status);
    $d->fail("compilation of $source failed (" . Korvil::Run::status_text($status) . ')');
}

sub make_library {
    my $library = $d->get('LIBRARY_FILE_ABS');
    $d->fail('no library file name') if $library eq '';
    my @objects = $d->list('OBJECTS');
    $d->fail("no object files to put into $library") unless @objects;
    my $package = $d->package;
    $d->make_dir_of($library);
    my $dllext = $package->string('DLLEXT');
    my @command;
    if ($dllext ne '' && substr($library, -length($dllext)) eq $dllext) {
        $d->guard(sub { @command = $package->linker });
        push(@command, package_words('DLLFLAGS'), option_words('LDFLAGS'), '-o', $library, @objects,
             $d->list('ADDITIONAL_LIBRARIES'), library_dir_options(), option_words('LIBRARIES'),
             package_words('DEFAULT_LIBS'));
    } else {
        $d->guard(sub { @command = $package->archiver });
        # A new archive each time: members of objects gone since stay out.
        if (-e $library && !unlink($library)) {
            $d->fail("cannot replace $library: $!");
        }
        push(@command, $library, @objects);
    }
    my $status = Korvil::Run::run_command(@command);
    return if Korvil::Run::succeeded($status);
    $d->fail("making the library $library failed (" . Korvil::Run::status_text($status) . ')');
}

sub library_dir_options {
    return map { '-L' . File::Spec->rel2abs($_) } grep { $_ ne '' } $d->list('LIBRARY_DIR_LIST');
}

sub link_program {
    my ($what, @objects) = @_;
    my $program = $d->get('TESTPROGRAM_ABS');
    $d->fail('no program file name') if $program eq '';
    $d->fail("no object files to link into $program") unless @objects;
    my $package = $d->package;
    my @linker;
    $d->guard(sub { @linker = $package->linker });
    $d->make_dir_of($program);
    my $status = Korvil::Run::run_command(@linker, option_words('LDFLAGS'), '-o', $program, @objects,
                                          $d->list('ADDITIONAL_LIBRARIES'), library_dir_options(),
                                          option_words('LIBRARIES'), package_words('DEFAULT_LIBS'));
    return if Korvil::Run::succeeded($status);
    $d->fail("link of the $what $program failed (" . Korvil::Run::status_text($status) . ')');
}
