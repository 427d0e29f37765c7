package Korvil::Package;

# The target deployment package a node is built with: its ini file read
# with Korvil::Resource, and the tools the drivers call.
#
#   my $package = Korvil::Package->load($dir);   # dies with a message
#   $package->string('OBJEXT'); $package->list('DEFAULT_INCLUDE_PATHS');
#   my @cc = $package->compiler_for('src/a.cpp');  # command words

use strict;
use warnings;

use File::Basename qw(basename);
use Korvil::Resource;
use Korvil::Run;

# Extensions compiled as C++; every other source is given to CC.
my %CPP_EXTENSIONS = map { $_ => 1 } qw(.cpp .cc .cxx .C);

# Reads the first *.ini file (in name order) of the package directory. Dies
# with the directory text itself when it is no directory: the environment
# script puts its "Error: ..." explanation there when no package was found.
sub load {
    my ($class, $dir) = @_;
    $dir = '' unless defined $dir;
    die "$dir\n" if $dir =~ /^\s*Error:/;
    die "the target package directory is not set\n" if $dir eq '';
    die "the target package directory $dir does not exist\n" unless -d $dir;
    opendir(my $dh, $dir) or die "$dir: cannot read the target package directory: $!\n";
    my @ini = sort grep { /\.ini$/ && -f "$dir/$_" } readdir($dh);
    closedir($dh);
    die "$dir: the target package directory holds no .ini file\n" unless @ini;
    my $file = "$dir/$ini[0]";
    my ($values, $errors) = Korvil::Resource::read_file($file);
    return bless({ dir => $dir, file => $file, values => $values, errors => $errors }, $class);
}

sub dir    { return $_[0]{dir}; }
sub file   { return $_[0]{file}; }
# Faults of the ini file, each "file:line: message".
sub errors { return @{ $_[0]{errors} }; }

# The text of a scalar entry; '' when it is absent or not a scalar.
sub string {
    my ($self, $key) = @_;
    my $v = $self->{values}{$key};
    return (defined $v && !ref($v)) ? $v : '';
}

# The texts of a list entry; a single string is a one-item list, an empty
# one an empty list.
sub list {
    my ($self, $key) = @_;
    my $v = $self->{values}{$key};
    return () unless defined $v;
    return ($v eq '' ? () : ($v)) unless ref($v);
    return grep { defined && !ref } @$v if ref($v) eq 'ARRAY';
    return ();
}

# The display name, the directory name when NAME is not set.
sub name {
    my ($self) = @_;
    my $name = $self->string('NAME');
    return $name ne '' ? $name : basename($self->{dir});
}

# A tool's command words: the first of the keys that is set, split
# shell-like ("ccache gcc" is two words). Dies when none is.
sub tool {
    my ($self, @keys) = @_;
    for my $key (@keys) {
        my @words = Korvil::Run::shell_words($self->string($key));
        return @words if @words;
    }
    die sprintf("the target package %s names no %s\n", $self->name, join(' or ', @keys));
}

sub is_cpp_source {
    my ($class_or_self, $file) = @_;
    my ($ext) = $file =~ /(\.[^.\/]+)$/;
    return defined $ext && $CPP_EXTENSIONS{$ext};
}

# The compiler of a source: CXX (else CC) for C++, CC for the rest.
sub compiler_for {
    my ($self, $file) = @_;
    return $self->is_cpp_source($file) ? $self->tool('CXX', 'CC') : $self->tool('CC');
}

# The linker of programs and shared libraries: LD, else the compilers.
sub linker { my ($self) = @_; return $self->tool('LD', 'CXX', 'CC'); }

# The archiver and its flags (ARFLAGS, "rcs" when not set).
sub archiver {
    my ($self) = @_;
    my @flags = Korvil::Run::shell_words($self->string('ARFLAGS'));
    return ($self->tool('AR'), @flags ? @flags : ('rcs'));
}

# DEFAULT_DEFINES as compiler options: "-DX" and other options as they
# are, a bare "X=1" made "-DX=1".
sub define_options {
    my ($self) = @_;
    return map { /^-/ ? $_ : "-D$_" } Korvil::Run::shell_words($self->string('DEFAULT_DEFINES'));
}

1;
