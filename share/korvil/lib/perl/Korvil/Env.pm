package Korvil::Env;

# The environment script of a node: a Perl file assigning $VAR and @VAR
# variables (and %ENV entries) that the library writes before each run.
#
#   my $env = Korvil::Env->load($file);   # dies with "file:line: message"
#   $env->get('NAME');        # a scalar, '' when unset
#   $env->list('OBJECTS');    # a list, () when unset
#   $env->has_stage('t');     # the letter is in $STAGE
#   $env->verbose;            # $ENV{ZELTASTUDIO_VERBOSE} is '1'

use strict;
use warnings;

use File::Spec;

# Each script is run with "do" in a package of its own, so that its
# variables neither meet the drivers' code nor another script's (a build
# loads the scripts of the sources it compiles beside its own); it runs
# without strict, as the library writes it.
my $loaded = 0;

sub _do_file {
    my ($package, $file) = @_;
    ## no critic (ProhibitStringyEval)
    # "do" tells a fault in $@, which the end of a successful eval would
    # clear: it is raised again inside.
    my $result = eval "package $package; my \$r = do \$file; die \$@ if \$@; \$r";
    return $result;
}

sub load {
    my ($class, $file) = @_;
    die "no environment file given\n" unless defined $file && $file ne '';
    my $path = File::Spec->rel2abs($file);
    die "$file:1: no such environment file\n" unless -f $path;
    local ($@, $!);
    my $package = 'Korvil::Env::Script' . ++$loaded;
    my $result = _do_file($package, $path);
    if ($@) {
        # Perl's own form "TEXT at FILE line N, near ..." made "FILE:N: TEXT, near ...".
        my @lines;
        for my $line (split(/\n/, $@)) {
            next if $line !~ /\S/;
            if ($line =~ /^(.*?) at (.+?) line (\d+)(?:\.|,\s*(.*))?$/) {
                push(@lines, "$2:$3: $1" . (defined $4 && $4 ne '' ? ", $4" : ''));
            } else {
                push(@lines, "$path:1: $line");
            }
        }
        die join('', map { "$_\n" } @lines);
    }
    die "$file: cannot read: $!\n" if !defined $result && $!;
    return bless({ file => $path, package => $package }, $class);
}

sub file { return $_[0]{file}; }

sub get {
    my ($self, $name) = @_;
    no strict 'refs';
    my $value = ${"$self->{package}::$name"};
    return defined $value ? $value : '';
}

sub list {
    my ($self, $name) = @_;
    no strict 'refs';
    return grep { defined } @{"$self->{package}::$name"};
}

sub has_stage {
    my ($self, $letter) = @_;
    return index($self->get('STAGE'), $letter) >= 0;
}

sub verbose { return defined $ENV{ZELTASTUDIO_VERBOSE} && $ENV{ZELTASTUDIO_VERBOSE} eq '1'; }

1;
