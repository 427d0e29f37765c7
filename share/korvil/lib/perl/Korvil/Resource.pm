package Korvil::Resource;

# Reader of the resource grammar the target package ini files are written
# in: "KEY = value" entries, quoted strings (adjacent ones joined), words
# (Booleans, integers, plain text), lists in parentheses, groups in braces,
# comments from "#" or from "//" at the start of a token.
#
#   my ($root, $errors) = Korvil::Resource::read_file($path);
#
# $root is a hash of the top-level entries (the first entry of a name
# counts); a string, integer or Boolean is a plain scalar (Booleans as
# "true" and "false"), a list an array reference, a group a hash
# reference. $errors lists the faults found, each "file:line: message";
# reading goes on after a fault. read_file dies only when the file cannot
# be read.

use strict;
use warnings;

use constant MAX_DEPTH => 200;

sub read_file {
    my ($path) = @_;
    open(my $fh, '<:raw', $path) or die "$path: cannot read: $!\n";
    local $/;
    my $text = <$fh>;
    close($fh);
    $text = '' unless defined $text;
    return read_text($text, $path);
}

sub read_text {
    my ($text, $file) = @_;
    $text =~ s/^\xEF\xBB\xBF//;    # byte-order mark
    my @errors;
    my $error = sub {
        my ($line, $message) = @_;
        push(@errors, "$file:$line: $message");
    };
    my $tokens = _tokens($text, $error);
    my $parser = { tokens => $tokens, pos => 0, error => $error };
    my $root = _entries($parser, undef, 0);
    while (_peek($parser)) {    # stray closing brackets at the top level
        my $t = _next($parser);
        $error->($t->{line}, "unexpected '$t->{type}'");
        my $more = _entries($parser, undef, 0);
        for my $key (keys %$more) {
            $root->{$key} = $more->{$key} unless exists $root->{$key};
        }
    }
    return ($root, \@errors);
}

# Tokens: { type => '=' '{' '}' '(' ')' ',' ';' 'string' 'word', value, line }.
sub _tokens {
    my ($text, $error) = @_;
    my @tokens;
    my $line = 1;
    my $len = length($text);
    my $i = 0;
    while ($i < $len) {
        my $c = substr($text, $i, 1);
        if ($c eq "\n") {
            ++$line;
            ++$i;
        } elsif ($c eq ' ' || $c eq "\t" || $c eq "\r") {
            ++$i;
        } elsif ($c eq '#' || substr($text, $i, 2) eq '//') {
            my $end = index($text, "\n", $i);
            $i = $end < 0 ? $len : $end;
        } elsif ($c =~ /[={}(),;]/) {
            push(@tokens, { type => $c, line => $line });
            ++$i;
        } elsif ($c eq '"') {
            my ($value, $next) = _string($text, $i + 1, $line, $error);
            push(@tokens, { type => 'string', value => $value, line => $line });
            $i = $next;
        } elsif (ord($c) < 32 || ord($c) == 127) {
            $error->($line, sprintf('control character 0x%02X skipped', ord($c)));
            ++$i;
        } else {
            my $start = $i;
            while ($i < $len) {
                my $w = substr($text, $i, 1);
                last if $w =~ /[\s={}(),;"#]/ || ord($w) < 32 || ord($w) == 127;
                ++$i;
            }
            push(@tokens, { type => 'word', value => substr($text, $start, $i - $start), line => $line });
        }
    }
    return \@tokens;
}

# A quoted string from just after its opening quote: its value and the
# position after the closing quote (the end of line when it is missing).
sub _string {
    my ($text, $i, $line, $error) = @_;
    my $value = '';
    my $len = length($text);
    while (1) {
        if ($i >= $len || substr($text, $i, 1) eq "\n") {
            $error->($line, 'unterminated string');
            $value =~ s/\r$//;
            return ($value, $i);
        }
        my $c = substr($text, $i, 1);
        if ($c eq '"') {
            return ($value, $i + 1);
        }
        if ($c ne '\\') {
            $value .= $c;
            ++$i;
            next;
        }
        my $e = substr($text, $i + 1, 1);
        my %simple = ('"' => '"', '\\' => '\\', n => "\n", t => "\t", r => "\r");
        if (exists $simple{$e}) {
            $value .= $simple{$e};
            $i += 2;
        } elsif ($e eq 'u' && substr($text, $i + 2, 4) =~ /^[0-9A-Fa-f]{4}$/) {
            my $ch = chr(hex(substr($text, $i + 2, 4)));
            utf8::encode($ch);    # the file is UTF-8: keep bytes throughout
            $value .= $ch;
            $i += 6;
        } else {
            $error->($line, "unknown escape '\\$e'");
            $value .= '\\';
            ++$i;
        }
    }
}

sub _peek { my ($p, $ahead) = @_; return $p->{tokens}[ $p->{pos} + ($ahead || 0) ]; }
sub _next { my ($p) = @_; return $p->{tokens}[ $p->{pos}++ ]; }

# Skips the rest of the tokens of a line.
sub _skip_line {
    my ($p, $line) = @_;
    ++$p->{pos} while _peek($p) && _peek($p)->{line} == $line;
}

# Entries up to the closing "}" of a group opened on line $open_line, or
# up to the end of the file (or a stray bracket) when it is undef.
sub _entries {
    my ($p, $open_line, $depth) = @_;
    my %entries;
    while (my $t = _peek($p)) {
        if (defined $open_line && $t->{type} eq '}') {
            _next($p);
            return \%entries;
        }
        return \%entries if !defined $open_line && ($t->{type} eq '}' || $t->{type} eq ')');
        if ($t->{type} eq ';') {
            _next($p);
            next;
        }
        if ($t->{type} ne 'word' || !_peek($p, 1) || _peek($p, 1)->{type} ne '=') {
            $p->{error}->($t->{line}, $t->{type} eq 'word' ? "'=' expected after '$t->{value}'"
                                                             : 'a name expected');
            _skip_line($p, $t->{line});
            next;
        }
        _next($p);
        _next($p);
        my $value = _value($p, $depth, $t->{line});
        next unless defined $value;
        $entries{ $t->{value} } = $value unless exists $entries{ $t->{value} };
        _next($p) if _peek($p) && _peek($p)->{type} eq ';';
    }
    $p->{error}->($open_line, "unterminated group") if defined $open_line;
    return \%entries;
}

sub _value {
    my ($p, $depth, $line) = @_;
    my $t = _peek($p);
    if (!$t || $t->{type} =~ /^[=;,})]$/ || ($t->{type} eq 'word' && _peek($p, 1) && _peek($p, 1)->{type} eq '=')) {
        $p->{error}->($line, 'a value expected');
        return undef;
    }
    _next($p);
    if ($t->{type} eq 'string') {
        my $value = $t->{value};
        $value .= _next($p)->{value} while _peek($p) && _peek($p)->{type} eq 'string';
        return $value;
    }
    return _word($t, $p->{error}) if $t->{type} eq 'word';
    if ($depth >= MAX_DEPTH) {
        $p->{error}->($t->{line}, 'nesting too deep');
        my $level = 1;
        while ($level > 0 && (my $n = _next($p))) {
            ++$level if $n->{type} eq '{' || $n->{type} eq '(';
            --$level if $n->{type} eq '}' || $n->{type} eq ')';
        }
        return undef;
    }
    return _entries($p, $t->{line}, $depth + 1) if $t->{type} eq '{';
    return _list($p, $t->{line}, $depth + 1);
}

sub _word {
    my ($t, $error) = @_;
    my $w = $t->{value};
    return $w if $w eq 'true' || $w eq 'false';
    if ($w =~ /^([+-]?)0*(\d+)$/) {
        my $number = ($1 eq '-' && $2 ne '0' ? '-' : '') . $2;
        if (length($2) > 19 || (length($2) == 19 && $2 gt ($1 eq '-' ? '9223372036854775808' : '9223372036854775807'))) {
            $error->($t->{line}, "integer out of range: $w");
            return undef;
        }
        return $number;
    }
    return $w;
}

sub _list {
    my ($p, $open, $depth) = @_;
    my @items;
    my $want_item = 1;
    while (1) {
        my $t = _peek($p);
        if (!$t) {
            $p->{error}->($open, 'unterminated list');
            return \@items;
        }
        if ($t->{type} eq ')') {
            _next($p);
            return \@items;
        }
        if ($t->{type} eq 'word' && _peek($p, 1) && _peek($p, 1)->{type} eq '=') {
            $p->{error}->($open, 'unterminated list');
            return \@items;
        }
        if ($t->{type} eq '}') {
            $p->{error}->($open, 'unterminated list');
            return \@items;
        }
        if ($t->{type} eq '=' || $t->{type} eq ';') {
            $p->{error}->($t->{line}, "unexpected '$t->{type}' in a list");
            _next($p);
            next;
        }
        if ($t->{type} eq ',') {
            $p->{error}->($t->{line}, 'an item expected before a comma') if $want_item;
            _next($p);
            $want_item = 1;
            next;
        }
        $p->{error}->($t->{line}, "',' expected between list items") unless $want_item;
        my $value = _value($p, $depth, $t->{line});
        push(@items, $value) if defined $value;
        $want_item = 0;
    }
}

1;
