#!/bin/sh
# Requires that no library hashes text by std::hash, whose seed is fixed: a file could have names that all collide.
# tests/tool/fixed_hash.sh CONTROL LIBRARY...
#
# CONTROL is a program that does use it. If the function is not found there, this test would not find it anywhere, and fails.
set -eu
control=${1:?usage: tests/tool/fixed_hash.sh CONTROL LIBRARY...}
shift
[ $# -gt 0 ] || {
  echo 'no libraries are given'
  exit 1
}

# The function that every std::hash of text calls; it is not inline.
calls_fixed_hash() { nm "$1" | grep -q '_Hash_bytes'; }

calls_fixed_hash "$control" || {
  echo "$control calls std::hash, but the symbol is not there: this test finds nothing"
  exit 1
}
status=0
for library; do
  nm "$library" | grep -q ' [TtWw] ' || {
    echo "$library has no symbols"
    status=1
  }
  if calls_fixed_hash "$library"; then
    echo "$library hashes text by std::hash; use korvel::KeyedHash or sort"
    nm -A "$library" | grep '_Hash_bytes'
    status=1
  fi
done
exit "$status"
