package Korvil::Driver;

# What the three drivers share: the command line, the environment, the
# target package, the messages and the way a run ends.
#
#   my $d = Korvil::Driver->start('Build', @ARGV);
#   $d->kind; $d->files; $d->env; $d->package;
#   $d->info($text); $d->verbose_info($text);
#   $d->problem($file, $line, $text);    # "file:line: text"
#   $d->fail($text, $code);              # "<NAME>: text", exits
#   $d->defer_failure($text, $code);     # remembered for finish
#   $d->finish;                          # exits 0, or tells the deferred failures
#
# Messages of the driver go to the standard output; file-and-line problems
# and failure lines to the standard error. Both are unbuffered.

use strict;
use warnings;

use File::Basename qw(basename dirname);
use File::Path qw(make_path);
use File::Spec;
use IO::Handle;
use Korvil::Env;
use Korvil::Package;

our @KINDS = qw(source library application unit_testing system_testing object_testing java_testing);
my %KNOWN = map { $_ => 1 } @KINDS;
# Kinds the shipped packages have no tools for.
my %UNSUPPORTED = map { $_ => 1 } qw(object_testing java_testing);

sub start {
    my ($class, $driver, @argv) = @_;
    STDOUT->autoflush(1);
    STDERR->autoflush(1);
    my $self = bless({ driver => $driver, name => "$driver.pl", failures => [] }, $class);
    if (@argv < 2) {
        print STDERR "usage: $driver.pl <environment file> <kind> [files...]\n";
        exit(2);
    }
    my ($envfile, $kind, @files) = @argv;
    my $env = eval { Korvil::Env->load($envfile) };
    if (!$env) {
        print STDERR $@;
        $self->fail("cannot load the environment file $envfile");
    }
    $self->{env} = $env;
    $self->{name} = $env->get('NAME') if $env->get('NAME') ne '';
    $self->fail("unknown kind $kind (one of: @KINDS)") unless $KNOWN{$kind};
    $self->{kind} = $kind;
    $self->{files} = [@files];
    if ($UNSUPPORTED{$kind}) {
        my $package = $self->package;
        $self->fail("$kind is not supported by the target package " . $package->name);
    }
    return $self;
}

sub env    { return $_[0]{env}; }
sub kind   { return $_[0]{kind}; }
sub files  { return @{ $_[0]{files} }; }
sub name   { return $_[0]{name}; }
sub get    { return $_[0]{env}->get($_[1]); }
sub list   { return $_[0]{env}->list($_[1]); }
sub stage  { return $_[0]{env}->has_stage($_[1]); }

# The package of $LP_TARGETDIR, read once; a missing one ends the run with
# the reason ($LP_TARGETDIR's own text when it holds an error).
sub package {
    my ($self) = @_;
    return $self->{package} if $self->{package};
    my $package = eval { Korvil::Package->load($self->get('LP_TARGETDIR')) };
    if (!$package) {
        (my $why = $@) =~ s/\s+$//;
        print STDERR "$why\n";
        $self->fail('no target package');
    }
    print STDERR "$_\n" for $package->errors;
    return $self->{package} = $package;
}

sub info { my ($self, $text) = @_; print "$text\n"; }

sub verbose_info {
    my ($self, $text) = @_;
    $self->info($text) if $self->{env} && $self->{env}->verbose;
}

sub problem {
    my ($self, $file, $line, $text) = @_;
    print STDERR "$file:$line: $text\n";
}

sub fail {
    my ($self, $text, $code) = @_;
    print STDERR "$self->{name}: $text\n";
    exit($code || 1);
}

sub defer_failure {
    my ($self, $text, $code) = @_;
    push(@{ $self->{failures} }, [$text, $code || 1]);
}

# Ends the run: status 0 without deferred failures, else each told in
# turn and the status of the first.
sub finish {
    my ($self) = @_;
    my @failures = @{ $self->{failures} };
    exit(0) unless @failures;
    print STDERR "$self->{name}: $_->[0]\n" for @failures[0 .. $#failures - 1];
    $self->fail($failures[-1][0], $failures[0][1]);
}

# Runs the body of a step; a die inside it ends the run as a failure with
# its message.
sub guard {
    my ($self, $body) = @_;
    my $ok = eval { $body->(); 1 };
    return if $ok;
    (my $why = $@) =~ s/\s+$//;
    $self->fail($why);
}

# Makes the directory that is to hold a file.
sub make_dir_of {
    my ($self, $file) = @_;
    $self->make_dir(dirname($file));
}

sub make_dir {
    my ($self, $dir) = @_;
    return if $dir eq '' || -d $dir;
    make_path($dir, { error => \my $errors });
    return if -d $dir;
    my ($why) = map { values %$_ } @{ $errors || [] };
    $self->fail("cannot make the directory $dir" . (defined $why ? ": $why" : ''));
}

# $INTDIR, '.' when empty.
sub intdir {
    my ($self) = @_;
    my $dir = $self->get('INTDIR');
    return $dir eq '' ? '.' : $dir;
}

# The extension of objects: $OBJEXT, else the package's, else ".o".
sub objext {
    my ($self) = @_;
    my $ext = $self->get('OBJEXT');
    return $ext if $ext ne '';
    $ext = $self->{package} ? $self->{package}->string('OBJEXT') : '';
    return $ext ne '' ? $ext : '.o';
}

# The object a source compiles to: $INTDIR/<name without extension>$OBJEXT.
sub object_of {
    my ($self, $source) = @_;
    (my $base = basename($source)) =~ s/\.[^.]*$//;
    return File::Spec->catfile($self->intdir, $base . $self->objext);
}

1;
