#!/bin/sh
# Tests "make case" in a temporary copy: new_case_test.sh TOP KORVELCHECK.
set -eu
top=$1
korvelcheck=$2
copy=$(mktemp -d)
trap 'rm -rf "$copy"' EXIT
mkdir -p "$copy/scripts" "$copy/tests/cases/keys"
cp "$top/Makefile" "$copy"
cp "$top/scripts/new-case" "$copy/scripts"
cd "$copy"

fail() {
  echo "new_case_test: $*" >&2
  cat out err >&2
  exit 1
}

# Runs the script on a name and expects an exit code.
expect_code() {
  code=0
  scripts/new-case "$2" >out 2>err || code=$?
  [ "$code" = "$1" ] || fail "exit code $code instead of $1 for '$2'"
}

# The number of files under tests/cases.
files() { find tests/cases -type f | wc -l; }

# A new case is a valid pair, and the change is allowed.
make --silent case NAME=keys/key-kept-allowed >out 2>err || fail "make case fails"
[ "$(files)" = 2 ] || fail "two files expected"
grep -q 'make goldens' out || fail "the next steps are missing"
"$korvelcheck" check tests/cases/keys/key-kept-allowed/old.xml tests/cases/keys/key-kept-allowed/new.xml >out 2>err ||
  fail "the templates are not an allowed pair"

# An existing case stays as it is.
echo edited >tests/cases/keys/key-kept-allowed/old.xml
expect_code 2 keys/key-kept-allowed
grep -q 'tests/cases/keys/key-kept-allowed already exists' err || fail "the message does not name the directory"
[ "$(cat tests/cases/keys/key-kept-allowed/old.xml)" = edited ] || fail "the existing case was overwritten"

# Bad names create nothing.
for name in '' keys keys/ /renamed keys/Renamed keys/a_b keys/a/b ../keys/a 'keys/a b' keys/-a keys/a- 'keys/a
keys/b'; do
  expect_code 2 "$name"
  grep -q 'bad name' err || fail "no message for '$name'"
done
[ "$(files)" = 2 ] || fail "a bad name created files"
! make --silent case >out 2>err || fail "make case without NAME succeeds"
grep -q 'bad name' err || fail "no message without NAME"

# A new family is possible, with a note.
expect_code 0 shapes/first-allowed
grep -q 'new family' out || fail "no note about the new family"
