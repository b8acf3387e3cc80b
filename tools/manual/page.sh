#!/bin/sh
# page.sh LOWDOWN NAME SECTION DATE VERSION SUMMARY <PAGE.md: a page of the manual of a page of the documents.
set -eu
name=$(printf %s "$2" | sed 's/-/\\\\-/g')
# Links to other documents are their texts alone; the first title is the page's name.
sed -e 's/\[\([^]]*\)\]([^)]*)/\1/g' -e '1{/^# /d;}' |
    "$1" -s -tman -M "title=$2" -M "section=$3" -M "date=$4" -M "source=audlmd $5" |
    sed -e 's/\\f(*C[RBW]*/\\fB/g' -e "/^\.TH/a .SH NAME\n$name \\\\- $6\n.SH DESCRIPTION" |
    awk '!(/^\.(PP|LP)$/ && (one ~ /^\.S[HS]/ || two ~ /^\.S[HS]$/)) { print } { two = one; one = $0 }'
