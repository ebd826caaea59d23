#!/bin/sh
# Demonstrates the checker on the shop of examples/: one change that is allowed and one that is refused.
# Usage: scripts/example.sh PATH_TO_TOOL
# Fails if the tool does not give the expected results (exit code 0, then 1).
set -u

if [ $# -ne 1 ]; then
  echo "usage: scripts/example.sh PATH_TO_TOOL" >&2
  exit 2
fi
tool=$(command -v "$1") || { echo "example: no program '$1'; build it first (make example does)" >&2; exit 2; }
case $tool in
  /*) ;;
  *) tool=$PWD/$tool ;;
esac
cd "$(dirname "$0")/.." || exit 2

# step WANTED_EXIT_CODE TITLE ARGUMENT...: prints the command, runs it, and checks its exit code.
step() {
  wanted=$1 title=$2
  shift 2
  printf '\n%s\n\n  $ korvelcheck %s\n\n' "$title" "$*"
  output=$("$tool" "$@" 2>&1)
  status=$?
  printf '%s\n' "$output" | sed 's/^/    /'
  printf '\n  exit code %s\n' "$status"
  if [ "$status" -ne "$wanted" ]; then
    echo "example: expected exit code $wanted" >&2
    exit 1
  fi
}

echo "A web shop stores its tables in the Korvel store. The schema is examples/shop/v5.xml. Two changes are proposed."

step 0 "1. New fields, longer carts, longer reviews: existing records must stay readable:" \
  check examples/shop/v5.xml examples/shop/v6.xml

step 1 "2. Order numbers of 64 bits instead of 32. They are part of the key, and records are found by the bytes of their key:" \
  check examples/shop/v6.xml examples/shop/v7-wider-key.xml

echo
echo "Both results are as expected. For more changes, and what to do about each refusal, see examples/README.md"
