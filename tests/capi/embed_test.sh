#!/bin/sh
# The example in C gets from two schema files to a refused change with its location and suggestion: embed_test.sh SOURCE EMBED
set -eu
cd "$1/examples/shop"
output=$("$2" v6.xml v7-wider-key.xml) && status=0 || status=$?
expected="v7-wider-key.xml:70:41: refused [primary-key.size] the size of a primary key field changed
  path: orders.order_no
  checker: The size of primarykey can't be modified! entry:'order_no' metaname:'orders'
  suggestion: keep order_no as it is; add a new field order_no_2 (uint64, id 9, version 7) for the new values; the key does not change
v7-wider-key.xml:85:45: refused [primary-key.size] the size of a primary key field changed
  path: payments.order_no
  checker: The size of primarykey can't be modified! entry:'order_no' metaname:'payments'
  suggestion: keep order_no as it is; add a new field order_no_2 (uint64, id 6, version 7) for the new values; the key does not change
refused: 2 tables refused, 5 allowed; 7 compared, 0 new, 0 removed; 2 findings, 0 waived"
[ "$status" = 1 ] || { echo "exit code $status; expected: 1" >&2; exit 1; }
[ "$output" = "$expected" ] || { printf '%s\n' "$output" >&2; exit 1; }

"$2" v6.xml v7.xml | grep -qx 'allowed: 0 tables refused, 7 allowed; 7 compared, 1 new, 0 removed'
"$2" v6.xml absent.xml 2>"${TMPDIR:-/tmp}/embed_errors.$$" && status=0 || status=$?
message=$(cat "${TMPDIR:-/tmp}/embed_errors.$$")
rm "${TMPDIR:-/tmp}/embed_errors.$$"
[ "$status" = 2 ] && [ "$message" = 'korvelcheck: absent.xml: No such file or directory' ] || {
  echo "exit code $status: $message" >&2
  exit 1
}
