#!/bin/sh
# Requires that the released tool costs what bench/instructions.txt says: tests/tool/cost.sh BUILD_TREE [--update]
#
# Counts the instructions of whole processes. A case fails if it is above its bound (make it cheaper, or raise the bound and say
# why), if it is 15 % below its bound (lower the bound), and if it differs by more than 5 % from the number that was measured
# together with bench/README.md (measure that page again). --update writes new numbers and bounds; run it on the commit that the
# page names.
set -eu
tree=$(realpath "${1:?usage: tests/tool/cost.sh BUILD_TREE [--update]}")
program=$tree/src/tool/korvelcheck
bounds=$tree/bench/process/korvel_bound_
top=$(cd "$(dirname "$0")/../.." && pwd)
table=$top/bench/instructions.txt
. "$top/tests/tool/instructions.sh"
enter_repository
require_valgrind
# The checksum of images and the C library take other instructions without it.
grep -qw avx2 /proc/cpuinfo || {
  echo 'skipped: the bounds are those of a processor with AVX2'
  exit 77
}
status=0

fail() {
  echo "  $*"
  status=1
}

files() { # METAS FIELDS CHANGE
  schema "$1" "$2" >"$work/old.xml"
  schema "$1" "$2" "$3" >"$work/new.xml"
  for side in old new; do "$program" compile "$work/$side.xml" -o "$work/$side.qmb"; done
}

count() { # STATUS FORM CASE
  number=$(instructions "$1" "$program" check "$work/old.$2" "$work/new.$2")
  echo "$number $3" >>"$work/counts"
}

# compare CASE COUNT
compare() {
  echo "$1: $2 instructions"
  row=$(grep " $1\$" "$table") || {
    fail "not in bench/instructions.txt"
    return
  }
  set -- "$1" "$2" $row
  [ "$2" -le "$4" ] || fail "above its bound: $4"
  [ "$2" -ge $(($4 / 100 * 85)) ] || fail "15 % below its bound, which can be lowered: $4"
  [ "$2" -ge $(($3 / 100 * 95)) ] && [ "$2" -le $(($3 / 100 * 105)) ] ||
    fail "not what was measured: $3; measure bench/README.md again, then run tests/tool/cost.sh BUILD_TREE --update"
}

# ratio WHAT COUNT BASE LIMIT: the limit in hundredths
ratio() {
  echo "$1: $(awk -v a="$2" -v b="$3" 'BEGIN { printf "%.3f", a / b }') times; allowed: $(awk -v l="$4" 'BEGIN { print l / 100 }')"
  [ $(($2 * 100)) -le $(($3 * $4)) ] || fail 'above the limit'
}

files 1 20 ''
for form in xml qmb; do count 0 $form "1 x 20, identical, $form"; done
for change in added refused; do
  files 1000 100 $change
  [ $change = added ] && expected=0 || expected=1
  for form in xml qmb; do count $expected $form "1000 x 100, $change, $form"; done
done
files 1 10000 refused
count 1 xml '1 x 10000, refused, xml'
files 1000 100 ''
for form in xml qmb; do count 0 $form "1000 x 100, identical, $form"; done

if [ "${2-}" = --update ]; then
  {
    echo '# Instructions of `korvelcheck check`, as tests/tool/cost.sh counts them: measured, at most, case.'
    echo "# Measured on commit $(git -C "$top" rev-parse --short HEAD)."
    while read -r number name; do echo "$number $((number / 100 * 105)) $name"; done <"$work/counts"
  } >"$work/table"
  cp "$work/table" "$table"
fi
while read -r number name; do compare "$name" "$number"; done <"$work/counts"

commit=$(sed -n 's/^# Measured on commit \(.*\)\.$/\1/p' "$table")
grep -q "\`$commit\`" "$top/bench/README.md" || fail "bench/README.md does not name commit $commit, on which bench/instructions.txt was measured"

last() { sed -n "s/^\([0-9]*\) 1000 x 100, identical, $1\$/\1/p" "$work/counts"; }
ratio 'XML, compared with parsing it by expat' "$(last xml)" "$(instructions 0 "${bounds}read" "$work/old.xml" "$work/new.xml")" 130
ratio 'images, compared with the checker alone' "$(last qmb)" "$(instructions 0 "${bounds}check" "$work/old.qmb" "$work/new.qmb")" 170
ratio 'images, compared with compat' "$(last qmb)" "$(instructions 0 "$program" compat "$work/old.qmb" "$work/new.qmb")" 145
exit "$status"
