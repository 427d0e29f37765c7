# The baseline of the split benchmark: routes the lines of a runtime output
# by their record code into the seven result files, by the same table and
# rules as QASTSplitSurvey, and stamps the same records with the time.
#
#   LC_ALL=C awk -v dir=<output directory> -f split.awk <runtime output>
BEGIN {
    name[0] = "atlout.rio"; name[1] = "mendralt.tpf"; name[2] = "tallivexlt.tqf"
    name[3] = "zeltacov.tio"; name[4] = "tracer.tdf"; name[5] = "atlendtest.txt"
    codes[1] = "PU PT PS PY PE PB PF PO PX"
    codes[2] = "QU QT QD QS QF"
    codes[3] = "NT DT CO FT DC TP TA TB TE EI"
    codes[4] = "SF CS CI LK ST NO NI DI ME MR MC SY SA AC LS LE TM TS TU OT US IN MS TX SO SI HS TI ID DB ED BA EA GL"
    for (i = 1; i <= 4; i++) {
        n = split(codes[i], list, " ")
        for (j = 1; j <= n; j++) table[list[j]] = i
    }
    for (i = 0; i <= 5; i++) file[i] = dir "/" name[i]
}
{
    first = substr($0, 1, 1)
    index_ = 0
    if (first >= "A" && first <= "Z") {
        pair = substr($0, 1, 2)
        if (pair in table) index_ = table[pair]
    } else if (first == "t" && substr($0, 2, 1) <= "d") {
        index_ = 5
    }
    line = $0
    if (index_ == 1 && substr($0, 1, 3) == "PT ") {
        line = (NF >= 4) ? $0 " \"" strftime("%a %b %e %H:%M:%S %Y") "\"" \
                         : "PT \"\" \"" strftime("%a %b %e %H:%M:%S %Y") "\""
    } else if (index_ == 2 && substr($0, 1, 3) == "QD ") {
        line = "QD \"" strftime("%a %b %e %H:%M:%S %Y") "\""
    } else if (index_ == 3 && substr($0, 1, 6) == "DT \"0\"") {
        line = "DT \"" strftime("%a %b %e %H:%M:%S %Y") "\""
    }
    print line > file[index_]
}
