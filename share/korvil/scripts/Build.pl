#!/usr/bin/perl
# Build driver: makes what a node's kind needs, step by step as $STAGE
# asks (c: test harness, p: source preparation, t: translation, l: link).
# A node that links (library, application, unit testing) compiles the
# sources it holds in parallel, then links them; a product that is up to
# date with its inputs and the command that makes it is not made again.
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
use Korvil::Env;
use Korvil::Gcov;
use Korvil::Make;
use Korvil::Package;
use Korvil::Run;

my $d = Korvil::Driver->start('Build', @ARGV);
my $kind = $d->kind;
my %LINKERS = (library => 1, application => 1, unit_testing => 1);

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

# What the build checked and what it had to make.
my ($checked, $made) = (0, 0);

harness() if $d->stage('c');
prepare() if $d->stage('p');
translate() if $d->stage('t');
link_step() if $d->stage('l');
$d->info($d->name . ': is up-to-date') if $checked && !$made;
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
    my @asked = map { $ANALYSES{$_}{name} } analyses($d->env);
    push(@asked, 'line and branch coverage') if Korvil::Gcov::wanted($d->env);
    if (!@asked) {
        $d->verbose_info($d->name . ': source preparation skipped: no runtime analysis asked');
        return;
    }
    $d->verbose_info($d->name . ': instrumented for ' . join(', ', @asked));
}

# t: a source node alone compiles its file; a node that links compiles the
# sources it holds, each with the environment of its own node, and a unit
# test its script with its own.
sub translate {
    my @units;
    if ($kind eq 'source') {
        my $file = $d->get('FILENAME');
        $d->fail('no source file') if $file eq '';
        push(@units, unit($d->env, $file, $d->get('OBJECT_FILE')));
    } elsif ($LINKERS{$kind}) {
        for my $file ($d->list('SOURCE_ENVIRONMENTS')) {
            my $env = eval { Korvil::Env->load($file) };
            if (!$env) {
                print STDERR $@;
                $d->fail("cannot load the environment file $file");
            }
            push(@units, unit($env, $env->get('FILENAME'), $env->get('OBJECT_FILE')));
        }
        if ($kind eq 'unit_testing') {
            my $script = $d->get('UNITTESTING_TESTSCRIPTNAME');
            $d->fail('no unit-testing script selected') if $script eq '';
            push(@units, unit($d->env, $script, $d->get('UNITTESTING_TESTSCRIPT_OBJECT')));
        }
    }
    compile_all(@units);
}

sub link_step {
    if ($kind eq 'library') {
        make_library();
    } elsif ($kind eq 'application') {
        link_program('application', $d->list('OBJECTS'));
    } elsif ($kind eq 'unit_testing') {
        $d->package;
        my $script = $d->get('UNITTESTING_TESTSCRIPT_OBJECT');
        $script = $d->object_of($d->get('UNITTESTING_TESTSCRIPTNAME')) if $script eq '';
        link_program('unit test', $script, $d->list('OBJECTS'));
    }
}

# --- options

# The words of an option variable of an environment; a string with an
# unbalanced quote ends the run.
sub option_words {
    my ($env, $variable) = @_;
    my @words = eval { Korvil::Run::shell_words($env->get($variable)) };
    $d->fail("\$$variable: $@" =~ s/\s+$//r) if $@;
    return @words;
}

sub package_words {
    my ($package, $key) = @_;
    my @words = eval { Korvil::Run::shell_words($package->string($key)) };
    $d->fail("$key of the target package: $@" =~ s/\s+$//r) if $@;
    return @words;
}

# The package of an environment, each directory read once.
my %packages;
sub package_of {
    my ($env) = @_;
    return $d->package if $env == $d->env;
    my $dir = $env->get('LP_TARGETDIR');
    return $packages{$dir} if $packages{$dir};
    my $package = eval { Korvil::Package->load($dir) };
    if (!$package) {
        (my $why = $@) =~ s/\s+$//;
        print STDERR "$why\n";
        $d->fail('no target package for ' . $env->get('NAME'));
    }
    print STDERR "$_\n" for $package->errors;
    return $packages{$dir} = $package;
}

# --- compiling

# One source to compile: the file, its object, the environment of the node
# it belongs to, and the command that compiles it.
sub unit {
    my ($env, $source, $object) = @_;
    # A script written without the object's name: the driver's own rule.
    $object = $d->object_of($source) if !defined $object || $object eq '';
    if (!-f $source) {
        $d->problem($source, 1, 'no such file');
        $d->fail("source $source not found");
    }
    my $package = package_of($env);
    my @compiler;
    $d->guard(sub { @compiler = $package->compiler_for($source) });
    my @defines;
    $d->guard(sub { @defines = $package->define_options });
    my @includes = map { '-I' . File::Spec->rel2abs($_) } grep { $_ ne '' } $env->list('INCLUDE_DIR_LIST');
    my @command = (@compiler, option_words($env, 'CPPFLAGS'), option_words($env, 'CFLAGS'), @defines,
                   @includes, instrumentation_options($env, $package), '-fPIC');
    return { source => $source, object => $object, package => $package,
             command => [@command, '-c', $source, '-o', $object] };
}

# The options by which the compiler writes the dependency file of an
# object; none when the package names none.
sub dependency_options {
    my ($unit) = @_;
    my @options = package_words($unit->{package}, 'DEPFILE_OPTIONS');
    return @options ? (@options, depfile($unit)) : ();
}

sub depfile { return "$_[0]{object}.d"; }

# What makes an object, as its stamp keeps it.
sub compile_stamp {
    my ($unit) = @_;
    return Korvil::Make::stamp_text(@{ $unit->{command} }, $unit->{package}->file);
}

# A unit whose object is newer than its source and every header it
# included, and was made by the same command, is not compiled again.
sub is_compiled {
    my ($unit) = @_;
    return 0 unless dependency_options($unit);
    my $inputs = Korvil::Make::dependencies(depfile($unit));
    return 0 unless $inputs;
    return Korvil::Make::up_to_date($unit->{object}, compile_stamp($unit), $unit->{source}, @$inputs);
}

# Compiles the units that are not up to date, as many at once as
# $BUILD_JOBS says (0: one per processor), each one's output printed whole
# when it ends.
sub compile_all {
    my (@units) = @_;
    return unless @units;
    ++$checked;
    my @todo = grep { !is_compiled($_) } @units;
    if (!@todo) {
        $d->verbose_info($d->name . ': ' . scalar(@units) . ' object(s) up to date');
        return;
    }
    ++$made;
    for my $unit (@todo) {
        $d->make_dir_of($unit->{object});
        Korvil::Make::forget($unit->{object});
    }
    my $jobs = $d->get('BUILD_JOBS');
    $jobs = Korvil::Run::processor_count() if $jobs eq '' || $jobs !~ /^\d+$/ || $jobs == 0;
    my @jobs = map {
        my $unit = $_;
        my @command = @{ $unit->{command} };
        splice(@command, -4, 0, dependency_options($unit));
        { command => \@command };
    } @todo;
    my @statuses = Korvil::Run::run_jobs($jobs, @jobs);
    my @failed;
    for my $i (0 .. $#todo) {
        if (Korvil::Run::succeeded($statuses[$i])) {
            Korvil::Make::record($todo[$i]{object}, compile_stamp($todo[$i]));
        } else {
            push(@failed, [$todo[$i], $statuses[$i]]);
        }
    }
    return unless @failed;
    if (@failed == 1) {
        $d->fail("compilation of $failed[0][0]{source} failed ("
                 . Korvil::Run::status_text($failed[0][1]) . ')');
    }
    $d->fail('compilation of ' . scalar(@failed) . ' of ' . scalar(@todo) . ' sources failed: '
             . join(', ', map { $_->[0]{source} } @failed));
}

# --- linking

# Makes a product with a command unless it is up to date with its inputs
# and the command: a link only when an input changed. $before runs first
# when the product is made.
sub make_product {
    my ($product, $what, $command, $inputs, $before) = @_;
    ++$checked;
    my $stamp = Korvil::Make::stamp_text(@$command);
    return if Korvil::Make::up_to_date($product, $stamp, @$inputs);
    ++$made;
    Korvil::Make::forget($product);
    $before->() if $before;
    my $status = Korvil::Run::run_command(@$command);
    if (Korvil::Run::succeeded($status)) {
        Korvil::Make::record($product, $stamp);
        return;
    }
    $d->fail("$what failed (" . Korvil::Run::status_text($status) . ')');
}

# The libraries a link takes that are files (another node's library).
sub library_inputs {
    return grep { -f $_ } $d->list('ADDITIONAL_LIBRARIES');
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
        push(@command, package_words($package, 'DLLFLAGS'), option_words($d->env, 'LDFLAGS'),
             (Korvil::Gcov::wanted($d->env) ? Korvil::Gcov::options() : ()), '-o', $library,
             @objects, $d->list('ADDITIONAL_LIBRARIES'), library_dir_options(),
             option_words($d->env, 'LIBRARIES'), package_words($package, 'DEFAULT_LIBS'));
        make_product($library, "making the library $library", \@command, [@objects, library_inputs()]);
        return;
    }
    $d->guard(sub { @command = $package->archiver });
    push(@command, $library, @objects);
    # A new archive each time: members of objects gone since stay out.
    make_product($library, "making the library $library", \@command, \@objects, sub {
        $d->fail("cannot replace $library: $!") if -e $library && !unlink($library);
    });
}

sub library_dir_options {
    return map { '-L' . File::Spec->rel2abs($_) } grep { $_ ne '' } $d->list('LIBRARY_DIR_LIST');
}

sub link_program {
    my ($what, @objects) = @_;
    my $program = $d->get('TESTPROGRAM_ABS');
    $d->fail('no program file name') if $program eq '';
    @objects = grep { defined && $_ ne '' } @objects;
    $d->fail("no object files to link into $program") unless @objects;
    my $package = $d->package;
    my @linker;
    $d->guard(sub { @linker = $package->linker });
    $d->make_dir_of($program);
    my @runtime = runtime_object();
    my @command = (@linker, option_words($d->env, 'LDFLAGS'), runtime_link_options(), '-o', $program,
                   @objects, @runtime, $d->list('ADDITIONAL_LIBRARIES'), library_dir_options(),
                   option_words($d->env, 'LIBRARIES'), package_words($package, 'DEFAULT_LIBS'));
    make_product($program, "link of the $what $program", \@command, [@objects, @runtime, library_inputs()]);
}

# --- runtime analysis

# The analyses an environment asks for, in name order.
sub analyses {
    my ($env) = @_;
    return grep { $env->get($ANALYSES{$_}{mode}) } sort keys %ANALYSES;
}

# Compiler options of an instrumented source: the entry and exit hooks of
# every function feed coverage, trace and performance profile. Functions
# of the compiler's own headers (the package's DEFAULT_INCLUDE_PATHS:
# inline library code such as C++ templates) are left alone. The coverage
# of blocks or conditions adds the compiler's own counters.
sub instrumentation_options {
    my ($env, $package) = @_;
    my @options;
    if (grep { $_ ne 'memory' } analyses($env)) {
        push(@options, '-finstrument-functions');
        my @system = grep { $_ ne '' && !/,/ } $package->list('DEFAULT_INCLUDE_PATHS');
        push(@options, '-finstrument-functions-exclude-file-list=' . join(',', @system)) if @system;
    }
    push(@options, Korvil::Gcov::options()) if Korvil::Gcov::wanted($env);
    return @options;
}

# Linker options: the memory profile sees the program's allocations
# through the wrapped functions; the compiler's counters need its library.
sub runtime_link_options {
    my @options;
    push(@options, '-Wl,' . join(',', map { "--wrap=$_" } @WRAPPED)) if grep { $_ eq 'memory' } analyses($d->env);
    push(@options, Korvil::Gcov::options()) if Korvil::Gcov::wanted($d->env);
    return @options;
}

# The runtime of the installation (Common/runtime/korvilrt.c), compiled
# for the analyses asked into the node's object directory as
# korvilrt-<letters>$OBJEXT; nothing when none is asked.
sub runtime_object {
    my @asked = analyses($d->env);
    return () unless @asked;
    my $home = $d->get('ZELTAHOME');
    my $source = File::Spec->catfile($home, 'Common', 'runtime', 'korvilrt.c');
    $d->fail("the instrumentation runtime $source is missing from the installation") unless -f $source;
    my $dir = $d->get('OBJECT_DIR') ne '' ? $d->get('OBJECT_DIR') : $d->intdir;
    my $object = File::Spec->catfile($dir, 'korvilrt-' . join('', map { $ANALYSES{$_}{letter} } @asked) . $d->objext);
    my @compiler;
    $d->guard(sub { @compiler = $d->package->compiler_for($source) });
    my @macros = map { "-D$ANALYSES{$_}{macro}=1" } @asked;
    my $unit = { source => $source, object => $object, package => $d->package,
                 command => [@compiler, '-g', '-O2', @macros, '-fPIC', '-c', $source, '-o', $object] };
    compile_all($unit);
    return ($object);
}
