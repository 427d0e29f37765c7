#!/usr/bin/perl
# Writes the benchmarks' large project straight from the file formats
# (docs/formats/project-file.md, docs/formats/object-information-file.md),
# without the library: what the load benchmark reads was not written by the
# code it measures.
#
#   perl generate_project.pl DIR GROUPS FILES_PER_FOLDER DTD
#
# DIR/big.rtp: GROUPS groups, each of three applications with seven sources
# and a unit-testing node with its script and a source (28 nodes a group),
# every node owning empty "Debug" and "Release" configurations; the project's
# own configurations on the installation's gcc-c package.
# DIR/big.inf: 10 folders of 10 folders of FILES_PER_FOLDER files, each file
# with a class and its method.

use strict;
use warnings;

my ($dir, $groups, $per_folder, $dtd) = @ARGV;
die "usage: $0 DIR GROUPS FILES_PER_FOLDER DTD\n" unless defined $dtd;

my $quid = 160109;
my $out;

sub line {
    my ($depth, $text) = @_;
    print $out '  ' x $depth, $text, "\n";
}

sub data {
    my ($depth, $name, %options) = @_;
    line($depth, '<data>');
    line($depth + 1, "<name>$name</name>");
    line($depth + 1, '<quid>' . $quid++ . '</quid>');
    line($depth + 1, '<icon>' . ($options{icon} // '') . '</icon>');
    line($depth + 1, '<renameable>true</renameable>');
    line($depth + 1, '<deletable>' . ($options{deletable} // 'true') . '</deletable>');
    line($depth + 1, "<$_>false</$_>") for qw(open sorted);
    line($depth + 1, '<executionResult>0</executionResult>');
    line($depth, '</data>');
}

# A node's own element: its data, state and configurations (each given as
# [name, [setting, value]...]).
sub node {
    my ($depth, $name, @configurations) = @_;
    line($depth, '<node>');
    data($depth + 1, $name);
    line($depth + 1, '<current_configuration>Debug</current_configuration>');
    line($depth + 1, '<state>0</state>');
    line($depth + 1, '<background>false</background>');
    line($depth + 1, '<outfilename_list>');
    line($depth + 1, '</outfilename_list>');
    line($depth + 1, "<$_></$_>") for qw(perlscript_before_child perlscript_after_child);
    line($depth + 1, '<configuration_list>');
    for my $c (@configurations) {
        my ($configuration, @settings) = @$c;
        line($depth + 2, '<configuration>');
        line($depth + 3, "<name>$configuration</name>");
        line($depth + 3, "<$_->[0]>$_->[1]</$_->[0]>") for @settings;
        line($depth + 2, '</configuration>');
    }
    line($depth + 1, '</configuration_list>');
    line($depth, '</node>');
}

my @EMPTY = (['Debug'], ['Release']);

sub file_ref {
    my ($depth, $name, $path) = @_;
    line($depth, '<nodefile_ref>');
    node($depth + 1, $name, @EMPTY);
    line($depth + 1, "<filepath>$path</filepath>");
    line($depth, '</nodefile_ref>');
}

sub source {
    my ($depth, $path) = @_;
    (my $name = $path) =~ s{.*/}{};
    line($depth, '<source>');
    file_ref($depth + 1, $name, $path);
    line($depth + 1, '<integrated>false</integrated>');
    line($depth + 1, '<source_child>');
    line($depth + 1, '</source_child>');
    line($depth, '</source>');
}

sub application {
    my ($depth, $name) = @_;
    line($depth, '<application>');
    line($depth + 1, '<test>');
    node($depth + 2, $name, ['Debug', ['ldflags', "-g -L/opt/$name"]], ['Release', ['ldflags', '-s']]);
    line($depth + 2, '<test_child>');
    source($depth + 3, "src/$name/file$_.c") for 0 .. 6;
    line($depth + 2, '</test_child>');
    line($depth + 1, '</test>');
    line($depth, '</application>');
}

sub unit_testing {
    my ($depth, $g) = @_;
    line($depth, '<unit_testing>');
    line($depth + 1, '<test>');
    node($depth + 2, "Unit $g", @EMPTY);
    line($depth + 2, '<test_child>');
    line($depth + 3, '<unittesting_script>');
    line($depth + 4, '<test_script>');
    file_ref($depth + 5, "test$g", "tests/test$g.ptu");
    for (qw(cas_all fam_all cas_selection fam_selection)) {
        line($depth + 5, "<$_>");
        line($depth + 5, "</$_>");
    }
    line($depth + 5, '<instance>&lt;all&gt;</instance>');
    line($depth + 4, '</test_script>');
    line($depth + 3, '</unittesting_script>');
    source($depth + 3, "src/app${g}_0/file0.c");
    line($depth + 2, '</test_child>');
    line($depth + 1, '</test>');
    line($depth, '</unit_testing>');
}

sub group {
    my ($depth, $g) = @_;
    line($depth, '<group>');
    line($depth + 1, '<group>');
    node($depth + 2, "Group $g", @EMPTY);
    line($depth + 2, '<group_child>');
    application($depth + 3, "app${g}_$_") for 0 .. 2;
    unit_testing($depth + 3, $g);
    line($depth + 2, '</group_child>');
    line($depth + 1, '</group>');
    line($depth, '</group>');
}

sub project_file {
    open($out, '>', "$dir/big.rtp") or die "$dir/big.rtp: $!\n";
    print $out qq{<?xml version="1.0" encoding="utf-8"?>\n<!DOCTYPE project SYSTEM "$dtd">\n};
    line(0, '<project>');
    line(1, '<group>');
    node(2, 'big');
    line(2, '<group_child>');
    group(3, $_) for 0 .. $groups - 1;
    line(2, '</group_child>');
    line(1, '</group>');
    line(1, '<object_file>big.inf</object_file>');
    line(1, '<sort_method>0</sort_method>');
    line(1, '<root_configuration_list>');
    for my $configuration (qw(Debug Release)) {
        line(2, '<configuration>');
        line(3, "<name>$configuration</name>");
        line(3, '<targetPath>${ZELTAHOME}/targets/gcc-c</targetPath>');
        line(3, '<cflags>-O2 -Wall</cflags>');
        line(3, '<ge_incdir>include,/usr/include</ge_incdir>');
        line(2, '</configuration>');
    }
    line(1, '</root_configuration_list>');
    line(1, '<version_file>1</version_file>');
    line(0, '</project>');
    close($out) or die "$dir/big.rtp: $!\n";
}

# A tag's own element: its data, place, qualifier and signature, then its
# children written by the code given.
sub tag {
    my ($depth, $name, $icon, $path, $line, $qualifier, $signature, $children) = @_;
    line($depth, '<tested_tag>');
    line($depth + 1, '<tag>');
    data($depth + 2, $name, icon => $icon);
    line($depth + 2, "<filepath>$path</filepath>");
    line($depth + 2, "<line>$line</line>");
    line($depth + 2, "<qualifier>$qualifier</qualifier>");
    line($depth + 2, "<signature>$signature</signature>");
    line($depth + 2, '<tag_child>');
    $children->($depth + 3) if $children;
    line($depth + 2, '</tag_child>');
    line($depth + 1, '</tag>');
    line($depth, '</tested_tag>');
}

# A file with a public class and its public virtual method.
sub file {
    my ($depth, $path, $f) = @_;
    (my $name = $path) =~ s{.*/}{};
    my $class = "Unit$f";
    my $method = sub {
        my ($d) = @_;
        line($d, '<method>');
        line($d + 1, '<function>');
        tag($d + 2, 'run', 'function_xpm', $path, 12, 65, '(int count#comma# const char* label)');
        line($d + 1, '</function>');
        line($d + 1, "<complete_name>${class}::run</complete_name>");
        line($d, '</method>');
    };
    my $classes = sub {
        my ($d) = @_;
        line($d, '<class>');
        tag($d + 1, $class, 'class_xpm', $path, 10, 1, '', $method);
        line($d + 1, '<inherits></inherits>');
        line($d, '</class>');
    };
    line($depth, '<file>');
    tag($depth + 1, $name, '', $path, -1, 0, '', $classes);
    line($depth, '</file>');
}

sub folder {
    my ($depth, $name, $filters, $children, %options) = @_;
    line($depth, '<folder>');
    data($depth + 1, $name, %options);
    line($depth + 1, "<filters>$filters</filters>");
    line($depth + 1, '<folder_child>');
    $children->($depth + 2);
    line($depth + 1, '</folder_child>');
    line($depth, '</folder>');
}

sub information_file {
    open($out, '>', "$dir/big.inf") or die "$dir/big.inf: $!\n";
    print $out qq{<?xml version="1.0" encoding="utf-8"?>\n<!DOCTYPE objects SYSTEM "$dtd">\n};
    line(0, '<objects>');
    folder(1, 'big', '', sub {
        my ($d) = @_;
        for my $t (0 .. 9) {
            folder($d, "part$t", '', sub {
                my ($d) = @_;
                for my $s (0 .. 9) {
                    folder($d, "module$s", '*.c;*.h', sub {
                        my ($d) = @_;
                        file($d, "part$t/module$s/unit$_.c", $_) for 0 .. $per_folder - 1;
                    });
                }
            });
        }
    }, deletable => 'false');
    line(1, '<version_file>1</version_file>');
    line(0, '</objects>');
    close($out) or die "$dir/big.inf: $!\n";
}

project_file();
information_file();
