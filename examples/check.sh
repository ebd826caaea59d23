#!/bin/sh
# Runs every command of examples/README.md and README.md, and compares its output with the output shown there.
# Usage: examples/check.sh PATH_TO_TOOL [--update]    (--update rewrites the pages instead; review the diff)
set -u

if [ $# -lt 1 ]; then
  echo "usage: examples/check.sh PATH_TO_TOOL [--update]" >&2
  exit 2
fi
tool=$(command -v "$1") || { echo "check.sh: no program '$1'" >&2; exit 2; }
tool=$(cd "$(dirname "$tool")" && pwd)/$(basename "$tool")
cd "$(dirname "$0")/.." || exit 2

typed=$(mktemp) || exit 2
trap 'rm -f "$typed"' EXIT

# Prints a page with the output in its console blocks replaced by the current output of each command.
type_commands() {
  TOOL=$tool awk '
    /^```/ { console = ($0 == "```console") }
    console && /^\$ korvelcheck / {
      print
      command = "\"$TOOL\" " substr($0, length("$ korvelcheck ") + 1) " 2>&1"
      while ((command | getline line) > 0) print line
      close(command)
      next
    }
    console && !/^```/ { next }
    { print }
  ' "$1"
}

status=0
for file in examples/*/*.xml; do
  grep -q "^\$ korvelcheck .*$file" examples/README.md ||
    { echo "check.sh: no command of examples/README.md uses $file" >&2; status=1; }
done
for document in README.md examples/README.md; do
  type_commands "$document" > "$typed"
  if [ "${2-}" = --update ]; then
    cat "$typed" > "$document"
  elif ! diff -u "$document" "$typed"; then
    echo "check.sh: $document differs from the output of the tool; to update it: examples/check.sh TOOL --update" >&2
    status=1
  fi
done
exit $status
