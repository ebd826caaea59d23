#!/bin/sh
# Holds that the cost of reading and of a whole check grows with the size of the files and no faster:
# tests/tool/growth.sh PROGRAM
set -eu
program=${1:?usage: tests/tool/growth.sh PROGRAM}
. "$(dirname "$0")/instructions.sh"
require_valgrind
status=0

check_of() {
  schema "$1" "$2" >"$work/old.xml"
  cp "$work/old.xml" "$work/new.xml"
  instructions 0 "$program" check "$work/old.xml" "$work/new.xml"
}

reading_of_wide() {
  wide "$1" >"$work/wide.xml"
  instructions 0 "$program" compile "$work/wide.xml" -o "$work/wide.qmb"
}

refusing_counts() {
  counted_by_structure "$1" >"$work/wrong.xml"
  instructions 2 "$program" lint "$work/wrong.xml"
}

# doubling WHAT SMALL LARGE: numbers of instructions of a size and of twice that size.
doubling() {
  echo "twice the $1: $2 -> $3 instructions; allowed: 2.2 times"
  [ "$3" -le $(($2 * 22 / 10)) ] || status=1
}

fields=$(check_of 1 2000) twice=$(check_of 1 4000)
doubling fields "$fields" "$twice"
metas=$(check_of 500 4) twice=$(check_of 1000 4)
doubling metas "$metas" "$twice"
members=$(reading_of_wide 4000) twice=$(reading_of_wide 8000)
doubling 'key members and columns' "$members" "$twice"
refusals=$(refusing_counts 4000) twice=$(refusing_counts 8000)
doubling 'entries that a structure is to count' "$refusals" "$twice"
exit "$status"
