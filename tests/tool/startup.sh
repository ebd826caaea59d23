#!/bin/sh
# Limits the instructions that the released tool needs to start: tests/tool/startup.sh PROGRAM
#
# A typical call checks one table of 20 fields before a commit: it finishes before a loader of shared libraries would have
# resolved the program's symbols.
set -eu
program=$(realpath "${1:?usage: tests/tool/startup.sh PROGRAM}")
. "$(dirname "$0")/instructions.sh"
enter_repository
status=0

# at_most LIMIT WHAT COMMAND...
at_most() {
  limit=$1 what=$2
  shift 2
  count=$(instructions 0 "$@")
  echo "$what: $count instructions; allowed: $limit"
  [ "$count" -le "$limit" ] || status=1
}

if readelf --dynamic --program-headers "$program" | grep -E '\(NEEDED\)|INTERP'; then
  echo 'the program needs the shared libraries listed above; allowed: none'
  status=1
fi

require_valgrind
schema 1 20 >"$work/old.xml"
cp "$work/old.xml" "$work/new.xml"
at_most 250000 'version' "$program" --version
at_most 1050000 'check of 1 table of 20 fields' "$program" check "$work/old.xml" "$work/new.xml"
exit "$status"
