# SPDX-License-Identifier: Apache-2.0
# Turns what a program writes as its help into its page of the manual: awk -v name=NAME -v version=VERSION
# A heading ends in a colon, between an empty line and an indented one; one that begins with the program's name opens the
# chapter of a command. Two blanks before a line make an entry, two blanks within it separate its text.
function roff(text)
{
    gsub(/\\/, "\\e", text)
    gsub(/-/, "\\-", text)
    gsub(/'/, "\\(aq", text)
    gsub(/`/, "\\(ga", text)
    gsub(/\^/, "\\(ha", text)
    gsub(/~/, "\\(ti", text)
    return substr(text, 1, 1) == "." ? "\\&" text : text
}

function heading(text)
{
    verbatim = text ~ /^Examples?:$/
    sub(/( \(.*\))?:$/, "", text)
    if (index(text, name " ") == 1) {
        inCommand = 1
        print ".SH \"" roff(text) "\""
    } else if (inCommand) {
        print ".SS \"" roff(text) "\""
    } else {
        print ".SH \"" roff(toupper(text)) "\""
    }
}

function entry(text,    at)
{
    at = match(text, /  +/)
    if (verbatim)
        print ".PP\n.nf\n" roff(text) "\n.fi"
    else if (at)
        print ".TP\n.B " roff(substr(text, 1, at - 1)) "\n" roff(substr(text, at + RLENGTH))
    else
        print ".TP\n.B " roff(text)
}

{ lines[NR] = $0 }

END {
    for (first = 3; first <= NR && lines[first] != ""; ++first)
        summary = summary " " lines[first]
    sub(/^ /, "", summary)
    sub(/[.:].*/, "", summary)
    print ".TH " toupper(roff(name)) " 1 \"\" \"" name " " version "\""
    print ".SH NAME\n" roff(name) " \\- " tolower(substr(summary, 1, 1)) roff(substr(summary, 2))
    print ".SH SYNOPSIS\n.B " roff(substr(lines[1], length("Usage: ") + 1))
    print ".SH DESCRIPTION"
    for (i = 3; i <= NR; ++i) {
        if (lines[i] == "") {
            if (lines[i + 1] ~ /^[^ ]/ && !(lines[i + 1] ~ /:$/ && lines[i + 2] ~ /^( |$)/))
                print ".PP"
        } else if (lines[i] ~ /^[^ ].*:$/ && lines[i - 1] == "" && lines[i + 1] ~ /^( |$)/) {
            heading(lines[i])
        } else if (lines[i] ~ /^  [^ ]/) {
            entry(substr(lines[i], 3))
        } else {
            text = lines[i]
            sub(/^ +/, "", text)
            print roff(text)
        }
    }
}
