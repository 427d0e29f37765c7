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

# The runtime analyses: the environment's switch, the runtime's macro and
# the letter of the runtime object built for them.
my %ANALYSES = (
    coverage    => { mode => 'ATCMODE', macro => 'KRT_COVERAGE',    letter => 'c', name => 'code coverage' },
    trace       => { mode => 'ATTMODE', macro => 'KRT_TRACE',       letter => 't', name => 'runtime tracing' },
    performance => { mode => 'ATQMODE', macro => 'KRT_PERFORMANCE', letter => 'q', name => 'performance profiling' },
    memory      => { mode => 'ATPMODE', macro => 'KRT_MEMORY',      letter => 'p', name => 'memory profiling' },
);
# The functions the memory profile follows (ld --wrap).
my @WRAPPED = qw(malloc free calloc realloc);

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

# p: the sources are instrumented by the compiler itself (t) and the
# runtime joins the program at the link (l); this step tells what is asked.
sub prepare {
    my @asked = analyses();
    if (!@asked) {
        $d->verbose_info($d->name . ': source preparation skipped: no runtime analysis asked');
        return;
    }
    $d->verbose_info($d->name . ': instrumented for ' . join(', ', map { $ANALYSES{$_}{name} } @asked));
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
                                          @defines, @includes, instrumentation_options(), '-fPIC', '-c',
                                          $source, '-o', $object);
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
    my @runtime = runtime_object();
    my $status = Korvil::Run::run_command(@linker, option_words('LDFLAGS'), runtime_link_options(), '-o',
                                          $program, @objects, @runtime, $d->list('ADDITIONAL_LIBRARIES'),
                                          library_dir_options(), option_words('LIBRARIES'),
                                          package_words('DEFAULT_LIBS'));
    return if Korvil::Run::succeeded($status);
    $d->fail("link of the $what $program failed (" . Korvil::Run::status_text($status) . ')');
}

# --- runtime analysis

# The analyses the configuration asks for, in name order.
sub analyses {
    return grep { $d->get($ANALYSES{$_}{mode}) } sort keys %ANALYSES;
}

# Compiler options of an instrumented source: the entry and exit hooks of
# every function feed coverage, trace and performance profile. Functions
# of the compiler's own headers (the package's DEFAULT_INCLUDE_PATHS:
# inline library code such as C++ templates) are left alone.
sub instrumentation_options {
    return () unless grep { $_ ne 'memory' } analyses();
    my @options = ('-finstrument-functions');
    my @system = grep { $_ ne '' && !/,/ } $d->package->list('DEFAULT_INCLUDE_PATHS');
    push(@options, '-finstrument-functions-exclude-file-list=' . join(',', @system)) if @system;
    return @options;
}

# Linker options: the memory profile sees the program's allocations
# through the wrapped functions.
sub runtime_link_options {
    return () unless grep { $_ eq 'memory' } analyses();
    return ('-Wl,' . join(',', map { "--wrap=$_" } @WRAPPED));
}

# The runtime of the installation (Common/runtime/korvilrt.c), compiled
# for the analyses asked into $INTDIR/korvilrt-<letters>$OBJEXT; nothing
# when none is asked.
sub runtime_object {
    my @asked = analyses();
    return () unless @asked;
    my $home = $d->get('ZELTAHOME');
    my $source = File::Spec->catfile($home, 'Common', 'runtime', 'korvilrt.c');
    $d->fail("the instrumentation runtime $source is missing from the installation") unless -f $source;
    my $object = File::Spec->catfile($d->intdir,
                                     'korvilrt-' . join('', map { $ANALYSES{$_}{letter} } @asked) . $d->objext);
    my @compiler;
    $d->guard(sub { @compiler = $d->package->compiler_for($source) });
    $d->make_dir($d->intdir);
    my @macros = map { "-D$ANALYSES{$_}{macro}=1" } @asked;
    my $status = Korvil::Run::run_command(@compiler, '-g', '-O2', @macros, '-fPIC', '-c', $source, '-o', $object);
    return ($object) if Korvil::Run::succeeded($status);
    $d->fail("compilation of the instrumentation runtime $source failed (" . Korvil::Run::status_text($status) . ')');
}
