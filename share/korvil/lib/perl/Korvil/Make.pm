package Korvil::Make;

# Whether a product is up to date with what it is made of, as a build
# decides before it runs a compiler or a linker.
#
#   my $stamp = stamp_text(@command, @more);   # what made the product
#   up_to_date($product, $stamp, @inputs)      # true: nothing to do
#   dependencies($depfile)                     # the files a compiler's
#                                              # dependency file names
#   record($product, $stamp)                   # after a good make
#   forget($product)                           # before a make
#
# A product is up to date when it exists, its stamp file (the product's
# name with ".stamp") holds the same text as the stamp the build would
# make it with now (the command line, the target package: so changed
# options or another package remake it), and no input is missing or newer
# than the product. Times are taken to the nanosecond where the file
# system keeps them.

use strict;
use warnings;

use Time::HiRes ();

sub stamp_file { return "$_[0].stamp"; }

sub stamp_text {
    return join("\n", map { defined $_ ? $_ : '' } @_) . "\n";
}

sub _mtime {
    my ($file) = @_;
    my @st = Time::HiRes::stat($file);
    return @st ? $st[9] : undef;
}

sub _read {
    my ($file) = @_;
    open(my $fh, '<', $file) or return undef;
    binmode($fh);
    local $/;
    my $text = <$fh>;
    close($fh);
    return $text;
}

sub up_to_date {
    my ($product, $stamp, @inputs) = @_;
    my $made = _mtime($product);
    return 0 unless defined $made;
    my $recorded = _read(stamp_file($product));
    return 0 unless defined $recorded && $recorded eq $stamp;
    for my $input (@inputs) {
        my $time = _mtime($input);
        return 0 if !defined $time || $time > $made;
    }
    return 1;
}

# The files of a make-style dependency file ("target: a b \" lines, "\ "
# an escaped blank); undef when it cannot be read or holds no rule.
sub dependencies {
    my ($depfile) = @_;
    my $text = _read($depfile);
    return undef unless defined $text;
    $text =~ s/\\\r?\n/ /g;
    my @files;
    my $rules = 0;
    for my $line (split(/\r?\n/, $text)) {
        next unless $line =~ /^(?:[^:\\]|\\.)+?:(?:\s|$)(.*)$/s;
        ++$rules;
        my $rest = $1;
        while ($rest =~ /((?:\\.|[^\s\\])+)/g) {
            (my $file = $1) =~ s/\\(.)/$1/g;
            push(@files, $file);
        }
    }
    return $rules ? \@files : undef;
}

sub record {
    my ($product, $stamp) = @_;
    my $file = stamp_file($product);
    open(my $fh, '>', $file) or die "$file: cannot write: $!\n";
    binmode($fh);
    print $fh $stamp;
    close($fh) or die "$file: cannot write: $!\n";
}

sub forget {
    my ($product) = @_;
    unlink(stamp_file($product));
}

1;
