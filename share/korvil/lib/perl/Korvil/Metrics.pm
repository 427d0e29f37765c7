package Korvil::Metrics;

# Static metrics of a C or C++ source, by lexical analysis: the file, its
# classes (class, struct, union), functions and methods, each with
# VG, Statements, NestedLevel, Effort, Src1 and Src2.
#
#   my $file = Korvil::Metrics::analyse($text);
#   $file->{metrics}{VG}; $file->{items}[0]{type}; ...
#   print Korvil::Metrics::to_xml($file, $name, $dir);
#
# How each value is counted is told in docs/formats/metrics.md; in short:
#
# - the text is cut into tokens; comments, string and character literals
#   never count as code, and preprocessor lines are left out of every
#   count but the lines of code;
# - a definition is a "{" at file, namespace or class level: the tokens
#   since the end of the previous declaration (its head) tell a namespace,
#   a class, a function or method, or anything else (an initialiser, an
#   enumeration), whose braces are skipped;
# - a function's VG is 1 + its decision points (if, for, while, case,
#   catch, &&, ||, ?, and, or), NestedLevel the deepest brace level in
#   its body, Statements the ";" not inside parentheses or brackets plus
#   if, for, switch, try and while (a while whose condition ends in ";"
#   is counted by that ";"), Effort Halstead's E over its tokens;
# - a file's or a class's VG is the sum and NestedLevel the largest of
#   the functions defined in it, Statements and Effort are counted over its
#   whole text, as are the lines of code (Src1) and comment lines (Src2).

use strict;
use warnings;

our $VERSION = '1.0';

my %KEYWORDS = map { $_ => 1 } qw(
    alignas alignof and and_eq asm auto bitand bitor bool break case catch char char8_t
    char16_t char32_t class compl concept const consteval constexpr constinit const_cast
    continue co_await co_return co_yield decltype default delete do double dynamic_cast
    else enum explicit export extern false float for friend goto if inline int long
    mutable namespace new noexcept not not_eq nullptr operator or or_eq private protected
    public register reinterpret_cast requires restrict return short signed sizeof static
    static_assert static_cast struct switch template this thread_local throw true try
    typedef typeid typename union unsigned using virtual void volatile wchar_t while xor
    xor_eq _Alignas _Alignof _Atomic _Bool _Complex _Generic _Imaginary _Noreturn
    _Static_assert _Thread_local);

# Words that may follow a parameter list before the body.
my %TRAILING = map { $_ => 1 } qw(const volatile noexcept override final throw try & && -> :);

# Call-like words whose parentheses are never a parameter list.
my %NOT_A_NAME = map { $_ => 1 } qw(__attribute__ __declspec alignas decltype __asm__ asm
    noexcept throw sizeof alignof typeid static_assert _Static_assert);

my %CLASS_KEYS = map { $_ => 1 } qw(class struct union);

my $OPERATORS = qr{
    >>= | <<= | <=> | ->\* | \.\.\. | :: | -> | \+\+ | -- | << | >> | <= | >= | == | != |
    && | \|\| | \+= | -= | \*= | /= | %= | &= | \|= | \^= | \.\* | \#\# |
    [-+*/%=<>!&|^~?:;,.(){}\[\]\#]
}x;

# ---------------------------------------------------------------- tokens

# The tokens of the text, each [text, kind, line] with kind one of
# kw, id, num, str, chr, op; and for each line (1-based) whether it holds
# code (a token or a preprocessor line) and whether it holds comment text.
sub tokenize {
    my ($text) = @_;
    my (@tokens, @code, @comment);
    my $line = 1;
    my $at_line_start = 1;
    pos($text) = 0;
    my $length = length($text);
    while (pos($text) < $length) {
        if ($text =~ /\G\n/gc) { ++$line; $at_line_start = 1; next; }
        next if $text =~ /\G[ \t\r\f\x0b]+/gc;
        if ($text =~ /\G\\\r?\n/gc) { ++$line; next; }
        if ($text =~ m{\G//[^\n]*}gc) { $comment[$line] = 1; next; }
        if ($text =~ m{\G/\*}gc) { $line = _block_comment(\$text, $line, \@comment); next; }
        if ($at_line_start && $text =~ /\G#/gc) {
            $line = _directive(\$text, $line, \@code, \@comment);
            next;
        }
        $at_line_start = 0;
        my $start_line = $line;
        my ($token, $kind);
        if ($text =~ /\G((?:u8|u|U|L)?R"([^\s()\\"]{0,16})\()/gc) {
            my ($prefix, $delimiter) = ($1, $2);
            my $end = index($text, ")$delimiter\"", pos($text));
            $end = $length - length($delimiter) - 2 if $end < 0;
            $token = $prefix . substr($text, pos($text), $end - pos($text)) . ")$delimiter\"";
            pos($text) = $end + length($delimiter) + 2;
            $kind = 'str';
        } elsif ($text =~ /\G((?:u8|u|U|L)?"(?:[^"\\\n]|\\.)*")/gcs) {
            ($token, $kind) = ($1, 'str');
        } elsif ($text =~ /\G((?:u8|u|U|L)?'(?:[^'\\\n]|\\.)*')/gcs) {
            ($token, $kind) = ($1, 'chr');
        } elsif ($text =~ /\G((?:\d|\.\d)(?:[eEpP][-+]|[\w.']|)*)/gc) {
            ($token, $kind) = ($1, 'num');
        } elsif ($text =~ /\G([A-Za-z_\$][\w\$]*)/gc) {
            ($token, $kind) = ($1, $KEYWORDS{$1} ? 'kw' : 'id');
        } elsif ($text =~ /\G($OPERATORS)/gc) {
            ($token, $kind) = ($1, 'op');
        } else {
            pos($text) = pos($text) + 1; # a character of no token (@, `, a stray quote)
            $code[$line] = 1;
            next;
        }
        $line += ($token =~ tr/\n//);
        $code[$_] = 1 for $start_line .. $line;
        push(@tokens, [$token, $kind, $start_line]);
    }
    return { tokens => \@tokens, code => \@code, comment => \@comment, lines => $line };
}

# After "/*": to the end of the comment (or of the text); returns the line
# it ends on, every line it touches marked as comment.
sub _block_comment {
    my ($text, $line, $comment) = @_;
    my $start = pos($$text);
    my $end = index($$text, '*/', $start);
    $end = $end < 0 ? length($$text) : $end + 2;
    my $body = substr($$text, $start, $end - $start);
    my $last = $line + ($body =~ tr/\n//);
    $comment->[$_] = 1 for $line .. $last;
    pos($$text) = $end;
    return $last;
}

# After the "#" of a directive: to the end of its logical line (lines
# joined by a final backslash), comments inside it marked as such. The
# directive's lines are code; it gives no token. Returns the line after.
sub _directive {
    my ($text, $line, $code, $comment) = @_;
    $code->[$line] = 1;
    while (pos($$text) < length($$text)) {
        if ($$text =~ /\G\n/gc) { return $line + 1; }
        if ($$text =~ /\G\\\r?\n/gc) { ++$line; $code->[$line] = 1; next; }
        if ($$text =~ m{\G//[^\n]*}gc) { $comment->[$line] = 1; next; }
        if ($$text =~ m{\G/\*}gc) { $line = _block_comment($text, $line, $comment); next; }
        next if $$text =~ /\G(?:"(?:[^"\\\n]|\\.)*"|'(?:[^'\\\n]|\\.)*')/gc;
        next if $$text =~ m{\G[^\n\\/"']+}gc;
        pos($$text) = pos($$text) + 1;
    }
    return $line;
}

# ---------------------------------------------------------------- counts

# Halstead's effort E = D * V over tokens $from..$to: operators are the
# keywords and punctuators (a bracket pair counted once, at its opening),
# operands the identifiers and literals; V = N * log2(n), D = n1/2 * N2/n2.
# 0 when there is no operand.
sub halstead_effort {
    my ($tokens, $from, $to) = @_;
    my (%operators, %operands);
    my ($N1, $N2) = (0, 0);
    for my $i ($from .. $to) {
        my ($t, $kind) = @{ $tokens->[$i] };
        if ($kind eq 'op') {
            next if $t eq ')' || $t eq ']' || $t eq '}';
            $t = $t eq '(' ? '()' : $t eq '[' ? '[]' : $t eq '{' ? '{}' : $t;
            ++$operators{$t};
            ++$N1;
        } elsif ($kind eq 'kw') {
            ++$operators{$t};
            ++$N1;
        } else {
            ++$operands{$t};
            ++$N2;
        }
    }
    my ($n1, $n2) = (scalar(keys %operators), scalar(keys %operands));
    my $n = $n1 + $n2;
    return 0 if $n2 == 0 || $n < 2;
    my $volume = ($N1 + $N2) * log($n) / log(2);
    return ($n1 / 2) * ($N2 / $n2) * $volume;
}

# Over tokens $from..$to: [statements, decision points, deepest brace level].
sub code_counts {
    my ($tokens, $from, $to) = @_;
    my ($statements, $decisions, $depth, $deepest) = (0, 0, 0, 0);
    my @open;
    for (my $i = $from; $i <= $to; ++$i) {
        my ($t, $kind) = @{ $tokens->[$i] };
        if ($kind eq 'op') {
            if ($t eq '(' || $t eq '[') {
                push(@open, $t);
            } elsif ($t eq '{') {
                push(@open, $t);
                $deepest = $depth if ++$depth > $deepest;
            } elsif ($t eq ')' || $t eq ']') {
                pop(@open);
            } elsif ($t eq '}') {
                pop(@open);
                --$depth if $depth > 0;
            } elsif ($t eq ';') {
                ++$statements if !@open || $open[-1] eq '{';
            } elsif ($t eq '&&' || $t eq '||' || $t eq '?') {
                ++$decisions;
            }
        } elsif ($kind eq 'kw') {
            ++$statements if $t eq 'if' || $t eq 'for' || $t eq 'switch' || $t eq 'try';
            ++$statements if $t eq 'while' && !_condition_ends_statement($tokens, $i, $to);
            ++$decisions if $t =~ /^(?:if|for|while|case|catch|and|or)$/;
        }
    }
    return ($statements, $decisions, $deepest);
}

# Whether the "while" at $i has its condition followed by ";" (the end of a
# do-while, or a loop with an empty body).
sub _condition_ends_statement {
    my ($tokens, $i, $to) = @_;
    return 0 unless $i + 1 <= $to && $tokens->[$i + 1][0] eq '(';
    my $close = _matching($tokens, $i + 1, $to);
    return defined $close && $close + 1 <= $to && $tokens->[$close + 1][0] eq ';';
}

# The index of the bracket closing the one at $i (same kind), or undef.
sub _matching {
    my ($tokens, $i, $to) = @_;
    my $open = $tokens->[$i][0];
    my $close = { '(' => ')', '[' => ']', '{' => '}', '<' => '>' }->{$open};
    my $depth = 0;
    for my $j ($i .. $to) {
        my $t = $tokens->[$j][0];
        if ($t eq $open) {
            ++$depth;
        } elsif ($t eq $close) {
            return $j if --$depth == 0;
        }
    }
    return undef;
}

# Code lines and comment lines between two lines, both included.
sub line_counts {
    my ($lex, $first, $last) = @_;
    my ($code, $comment) = (0, 0);
    for my $l ($first .. $last) {
        ++$code if $lex->{code}[$l];
        ++$comment if $lex->{comment}[$l];
    }
    return ($code, $comment);
}

# ---------------------------------------------------------------- structure

# The metrics of a source text: the file record
#   { type => 'FILE', line => 1, metrics => {...}, items => [...] }
# whose items are classes, functions and out-of-line methods in line
# order; a class's items are its inline methods and functions. Each item
# is { type, name, class (members), line, metrics, items }.
sub analyse {
    my ($text) = @_;
    my $lex = tokenize($text);
    my $tokens = $lex->{tokens};
    my $last = $#$tokens;

    my $file = { type => 'FILE', name => '', line => 1, items => [], functions => [] };
    my @classes;   # every class, for the file's items
    my @top;       # functions and out-of-line methods at file level
    my @scopes = ({ kind => 'file' });
    my $head = 0;
    my $i = 0;
    while ($i <= $last) {
        my $t = $tokens->[$i][0];
        my $scope = $scopes[-1];
        if ($t eq ';') {
            $head = $i + 1;
        } elsif ($t eq '}') {
            my $closed = @scopes > 1 ? pop(@scopes) : undef;
            _finish_class($lex, $closed->{class}, $closed->{first}, $i)
                if $closed && $closed->{kind} eq 'class';
            $head = $i + 1;
        } elsif ($t eq '(' || $t eq '[') {
            my $close = _matching($tokens, $i, $last);
            $i = defined $close ? $close : $last;
        } elsif ($t eq ':' && $scope->{kind} eq 'class' && $head < $i
                 && !grep { $tokens->[$_][1] ne 'id' && $tokens->[$_][1] ne 'kw' } $head .. $i - 1) {
            $head = $i + 1; # public:, signals:, public slots:
        } elsif ($t eq '{') {
            my $what = _classify($tokens, $head, $i, $scope);
            my $kind = $what->{kind};
            if ($kind eq 'namespace') {
                push(@scopes, { kind => 'namespace' });
                $head = $i + 1;
            } elsif ($kind eq 'class') {
                my $class = { type => 'CLASS', name => $what->{name},
                              line => $tokens->[$what->{name_index}][2], items => [],
                              functions => [] };
                push(@classes, $class);
                push(@scopes, { kind => 'class', class => $class, first => $head });
                $head = $i + 1;
            } elsif ($kind eq 'function') {
                my $end = _matching($tokens, $i, $last);
                $end = $last unless defined $end;
                my $unit = _function($lex, $what, $head, $i, $end, $scope);
                push(@{ $file->{functions} }, $unit);
                if ($scope->{kind} eq 'class' && !$what->{qualified}) {
                    push(@{ $scope->{class}{items} }, $unit);
                    push(@{ $scope->{class}{functions} }, $unit);
                } else {
                    push(@top, $unit);
                }
                $i = $end;
                $head = $end + 1;
            } else {
                # an initialiser, an enumeration, a brace initialiser of a
                # member: part of the head, which goes on to its ";"
                my $end = _matching($tokens, $i, $last);
                $i = defined $end ? $end : $last;
            }
        }
        ++$i;
    }
    # Classes left open by unbalanced braces end with the text.
    for my $open (reverse @scopes) {
        _finish_class($lex, $open->{class}, $open->{first}, $last) if $open->{kind} eq 'class';
    }

    $file->{items} = [sort { $a->{line} <=> $b->{line} } @classes, @top];
    my ($statements) = code_counts($tokens, 0, $last);
    my ($src1, $src2) = line_counts($lex, 1, $lex->{lines});
    $file->{metrics} = _container_metrics($file->{functions}, $statements,
                                          halstead_effort($tokens, 0, $last), $src1, $src2);
    return $file;
}

# What the "{" at $brace opens, from the head tokens $head..$brace-1:
#   { kind => 'namespace' }, { kind => 'class', name, name_index },
#   { kind => 'function', name, name_index, class, qualified, type },
#   or { kind => 'other' }.
sub _classify {
    my ($tokens, $head, $brace, $scope) = @_;
    my @h = _clean_head($tokens, $head, $brace - 1);
    return { kind => 'other' } unless @h;
    my @words = map { $tokens->[$_][0] } @h;

    return { kind => 'namespace' }
        if grep({ $_ eq 'namespace' } @words)
        || ($words[0] eq 'extern' && @words == 2 && $tokens->[$h[1]][1] eq 'str');
    return { kind => 'other' } if _has_assignment(\@words);

    my $parameters = _parameter_list($tokens, \@h);
    if (!defined $parameters) {
        return { kind => 'other' } if grep { $_ eq 'enum' } @words;
        # the last class key with no parenthesis after it
        for (my $k = $#words; $k >= 0; --$k) {
            last if $words[$k] eq '(' || $words[$k] eq ')';
            next unless $CLASS_KEYS{ $words[$k] };
            my ($name, $index) = _class_name($tokens, [@h[$k + 1 .. $#h]]);
            return { kind => 'class', name => $name, name_index => $index } if defined $name;
            last;
        }
        return { kind => 'other' };
    }
    # A "{" after a member name in a constructor's initialiser list is
    # that member's brace initialiser, not the body.
    my $previous = $tokens->[$brace - 1];
    if (grep { $tokens->[$_][0] eq ':' && $_ > $parameters->{close} } @h) {
        return { kind => 'other' } if $previous->[1] eq 'id' || $previous->[0] eq '>';
    }
    my $f = _function_name($tokens, \@h, $parameters->{position});
    return { kind => 'other' } unless $f;
    my $friend = grep { $_ eq 'friend' } @words;
    my $class = $f->{qualifier};
    $class = $scope->{class}{name} if !defined $class && !$friend && $scope->{kind} eq 'class';
    my $type = 'FUNCTION';
    if (defined $class) {
        $type = $f->{name} eq $class ? 'CONSTRUCTOR' : $f->{name} eq "~$class" ? 'DESTRUCTOR' : 'METHOD';
    }
    return { kind => 'function', name => $f->{name}, name_index => $f->{index}, class => $class,
             qualified => defined $f->{qualifier}, type => $type };
}

# Whether the head holds "=" outside parentheses (an initialiser), the
# name operator= left aside.
sub _has_assignment {
    my ($words) = @_;
    my $depth = 0;
    for my $k (0 .. $#$words) {
        my $w = $words->[$k];
        ++$depth if $w eq '(';
        --$depth if $w eq ')';
        return 1 if $w eq '=' && $depth == 0 && ($k == 0 || $words->[$k - 1] ne 'operator');
    }
    return 0;
}

# The head's token indices without template parameter lists at its start
# and without attributes ([[...]], __attribute__((...)), __declspec(...),
# alignas(...)).
sub _clean_head {
    my ($tokens, $from, $to) = @_;
    my @kept;
    my $i = $from;
    while ($i <= $to) {
        my $t = $tokens->[$i][0];
        if ($t eq 'template' && $i + 1 <= $to && $tokens->[$i + 1][0] eq '<') {
            my $close = _matching_angle($tokens, $i + 1, $to);
            $i = (defined $close ? $close : $to) + 1;
            next;
        }
        if ($t eq '[' && $i + 1 <= $to && $tokens->[$i + 1][0] eq '[') {
            my $close = _matching($tokens, $i, $to);
            $i = (defined $close ? $close : $to) + 1;
            next;
        }
        if (($t eq '__attribute__' || $t eq '__declspec' || $t eq 'alignas')
            && $i + 1 <= $to && $tokens->[$i + 1][0] eq '(') {
            my $close = _matching($tokens, $i + 1, $to);
            $i = (defined $close ? $close : $to) + 1;
            next;
        }
        push(@kept, $i++);
    }
    return @kept;
}

# The ">" closing the "<" at $i, counting nested angles and skipping
# parenthesised parts; undef when none.
sub _matching_angle {
    my ($tokens, $i, $to) = @_;
    my $depth = 0;
    for (my $j = $i; $j <= $to; ++$j) {
        my $t = $tokens->[$j][0];
        if ($t eq '(') {
            my $close = _matching($tokens, $j, $to);
            return undef unless defined $close;
            $j = $close;
        } elsif ($t eq '<') {
            ++$depth;
        } elsif ($t eq '>') {
            return $j if --$depth == 0;
        } elsif ($t eq '>>') {
            $depth -= 2;
            return $j if $depth <= 0;
        }
    }
    return undef;
}

# The parameter list among the head's parenthesised groups: the first one
# followed by nothing, by a trailing word (const, noexcept, override, ->,
# a constructor's ":" ...) or by another such group (noexcept(...),
# throw(...)). { position => index in @$h, close => token index }, or
# undef when there is none.
sub _parameter_list {
    my ($tokens, $h) = @_;
    for (my $p = 0; $p < @$h; ++$p) {
        next unless $tokens->[ $h->[$p] ][0] eq '(';
        my $depth = 0;
        my $q = $p;
        for (; $q < @$h; ++$q) {
            my $t = $tokens->[ $h->[$q] ][0];
            ++$depth if $t eq '(';
            last if $t eq ')' && --$depth == 0;
        }
        my $next = $q + 1 < @$h ? $tokens->[ $h->[ $q + 1 ] ][0] : undef;
        my $before = $p > 0 ? $tokens->[ $h->[ $p - 1 ] ][0] : '';
        if ($NOT_A_NAME{$before}) {
            $p = $q;
            next;
        }
        return { position => $p, close => $h->[$q < @$h ? $q : $#$h] }
            if !defined $next || $TRAILING{$next};
        $p = $q;
    }
    return undef;
}

# The function's name before the parameter list at position $p of @$h:
# { name, index (of the name's token), qualifier (the class of
# "Class::name", template arguments left out) }, or undef.
sub _function_name {
    my ($tokens, $h, $p) = @_;
    my @w = map { $tokens->[$_][0] } @$h;
    my ($name, $start);
    # operator(), operator==, operator bool, operator new[] ...
    for (my $k = $p - 1; $k >= 0 && $k >= $p - 4; --$k) {
        next unless $w[$k] eq 'operator';
        my @rest = _join_words(@w[$k + 1 .. $p - 1]);
        $name = 'operator' . (@rest && $rest[0] =~ /^\w/ ? ' ' : '') . join('', @rest);
        $start = $k;
        last;
    }
    if (!defined $name) {
        return undef unless $p > 0 && $tokens->[ $h->[ $p - 1 ] ][1] eq 'id';
        $name = $w[$p - 1];
        $start = $p - 1;
        if ($start > 0 && $w[$start - 1] eq '~') {
            $name = "~$name";
            --$start;
        }
    }
    my $qualifier;
    my $k = $start - 1;
    if ($k >= 1 && $w[$k] eq '::') {
        my $j = $k - 1;
        if ($w[$j] eq '>') {
            my $depth = 0;
            for (; $j >= 0; --$j) {
                ++$depth if $w[$j] eq '>';
                last if $w[$j] eq '<' && --$depth == 0;
            }
            --$j;
        }
        $qualifier = $w[$j] if $j >= 0 && $tokens->[ $h->[$j] ][1] eq 'id';
    }
    return { name => $name, index => $h->[$start], qualifier => $qualifier };
}

# Tokens of an operator's name: words apart, symbols together.
sub _join_words {
    my @out;
    for my $w (@_) {
        if (@out && $w =~ /^\w/ && $out[-1] =~ /\w$/) {
            $out[-1] .= " $w";
        } else {
            push(@out, $w);
        }
    }
    return @out;
}

# A class's name from the tokens after its key: the last identifier before
# its base list (":") or template arguments, "final" left out. undef for an
# anonymous class.
sub _class_name {
    my ($tokens, $h) = @_;
    my ($name, $index);
    for my $i (@$h) {
        my ($t, $kind) = @{ $tokens->[$i] };
        last if $t eq ':' || $t eq '<';
        ($name, $index) = ($t, $i) if $kind eq 'id' && $t ne 'final';
    }
    return ($name, $index);
}

# The record of a function whose head starts at $head, body at $open..$close.
sub _function {
    my ($lex, $what, $head, $open, $close, $scope) = @_;
    my $tokens = $lex->{tokens};
    my ($statements, $decisions, $deepest) = code_counts($tokens, $open + 1, $close - 1);
    my ($src1, $src2) = line_counts($lex, $tokens->[$head][2], $tokens->[$close][2]);
    my $unit = { type => $what->{type}, name => $what->{name},
                 line => $tokens->[ $what->{name_index} ][2], items => [] };
    $unit->{class} = $what->{class} if $what->{type} ne 'FUNCTION';
    $unit->{metrics} = {
        VG => 1 + $decisions,
        Statements => $statements,
        NestedLevel => $deepest,
        Effort => halstead_effort($tokens, $head, $close),
        Src1 => $src1,
        Src2 => $src2,
    };
    return $unit;
}

sub _finish_class {
    my ($lex, $class, $first, $last) = @_;
    my $tokens = $lex->{tokens};
    my ($statements) = code_counts($tokens, $first, $last);
    my ($src1, $src2) = line_counts($lex, $tokens->[$first][2], $tokens->[$last][2]);
    $class->{metrics} = _container_metrics($class->{functions}, $statements,
                                           halstead_effort($tokens, $first, $last), $src1, $src2);
}

# A file's or class's metrics: VG summed and NestedLevel the largest over
# its functions, the rest counted over its text.
sub _container_metrics {
    my ($functions, $statements, $effort, $src1, $src2) = @_;
    my ($vg, $nested) = (0, 0);
    for my $f (@$functions) {
        $vg += $f->{metrics}{VG};
        $nested = $f->{metrics}{NestedLevel} if $f->{metrics}{NestedLevel} > $nested;
    }
    return { VG => $vg, Statements => $statements, NestedLevel => $nested, Effort => $effort,
             Src1 => $src1, Src2 => $src2 };
}

# ---------------------------------------------------------------- output

my @KEYS = qw(VG Statements NestedLevel Effort Src1 Src2);

sub _escape {
    my ($s) = @_;
    $s =~ s/&/&amp;/g;
    $s =~ s/</&lt;/g;
    $s =~ s/>/&gt;/g;
    $s =~ s/"/&quot;/g;
    return $s;
}

sub _number {
    my ($v) = @_;
    return $v == int($v) ? sprintf('%d', $v) : sprintf('%.2f', $v);
}

# The metrics document of a file record.
sub to_xml {
    my ($file, $name, $dir) = @_;
    my $out = qq{<?xml version="1.0" encoding="UTF-8"?>\n};
    $out .= _element_xml({ %$file, name => $name, dir => $dir }, 0);
    return $out;
}

sub _element_xml {
    my ($e, $depth) = @_;
    my $pad = '  ' x $depth;
    my $attributes = ' Name="' . _escape($e->{name}) . '" Line="' . $e->{line} . '"';
    $attributes .= ' Dir="' . _escape($e->{dir}) . '"' if defined $e->{dir};
    $attributes .= ' Class="' . _escape($e->{class}) . '"' if defined $e->{class};
    my $out = "$pad<$e->{type}$attributes>\n$pad  <METRICS>\n";
    for my $key (@KEYS) {
        $out .= "$pad    <METRIC Key=\"$key\" Value=\"" . _number($e->{metrics}{$key}) . "\"/>\n";
    }
    $out .= "$pad  </METRICS>\n";
    if (@{ $e->{items} }) {
        $out .= "$pad  <ITEMS>\n";
        $out .= _element_xml($_, $depth + 2) for @{ $e->{items} };
        $out .= "$pad  </ITEMS>\n";
    }
    return $out . "$pad</$e->{type}>\n";
}

1;
