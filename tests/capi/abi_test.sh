#!/bin/sh
# The gate for symbols and structs passes, and fails for each kind of change: abi_test.sh SOURCE LIBRARY LAYOUT_PROGRAM
set -eu
source=$1
library=$2
layout=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0

gate() { # [RELEASED_LISTS]
  "$source/scripts/check-abi" "$work/lists" "$library" "$layout" "$@" 2>"$work/errors"
}

copy_lists() {
  rm -rf "$work/lists" "$work/released"
  mkdir "$work/lists" "$work/released"
  cp "$source/src/capi/symbols.list" "$source/src/capi/structs.list" "$work/lists"
  cp "$source/src/capi/symbols.list" "$source/src/capi/structs.list" "$work/released"
}

# fails WHAT TEXT: the gate fails and prints a line with TEXT
fails() {
  if gate "$work/released"; then
    echo "the gate passes: $1" >&2
    status=1
  elif ! grep -qF "$2" "$work/errors"; then
    echo "the gate does not say '$2':" >&2
    cat "$work/errors" >&2
    status=1
  fi
}

copy_lists
gate || { cat "$work/errors" >&2; exit 1; }
gate "$work/released" || { cat "$work/errors" >&2; exit 1; }

sed -i '/ kc_lint$/d' "$work/lists/symbols.list"
fails 'a function is exported that is not listed' 'not in symbols.list: KORVELCHECK_0.1 kc_lint'

copy_lists
echo 'KORVELCHECK_0.1 kc_more' >>"$work/lists/symbols.list"
fails 'a listed function is missing' 'in symbols.list, but not in the library: KORVELCHECK_0.1 kc_more'

copy_lists
sed -i 's/^kc_table.code 12 4$/kc_table.code 16 4/' "$work/lists/structs.list"
fails 'a member has another offset' 'not in structs.list: kc_table.code 12 4'

copy_lists
sed -i 's/^KC_VERDICT_ALLOWED 1$/KC_VERDICT_ALLOWED 2/' "$work/lists/structs.list"
fails 'a constant has another value' 'not in structs.list: KC_VERDICT_ALLOWED 1'

copy_lists
sed -i '/^kc_fix size /d' "$work/lists/structs.list"
fails 'a struct has another size' 'not in structs.list: kc_fix size 24'

copy_lists
echo 'KORVELCHECK_0.1 kc_old' >>"$work/released/symbols.list"
fails 'a function of a release was removed' 'removed or changed since the release: KORVELCHECK_0.1 kc_old'

copy_lists
sed -i 's/^kc_affected.path 8 8$/kc_affected.path 16 8/' "$work/released/structs.list"
fails 'a member moved since a release' 'removed or changed since the release: kc_affected.path 16 8'

copy_lists
sed -i 's/^kc_location size .*/kc_location size 24/' "$work/released/structs.list"
fails 'a struct inside others has grown' 'removed or changed since the release: kc_location size 24'

copy_lists
sed -i 's/^kc_table size .*/kc_table size 24/; /^kc_table.location /d' "$work/released/structs.list"
gate "$work/released" || {
  echo 'the gate refuses an appended member:' >&2
  cat "$work/errors" >&2
  status=1
}
exit "$status"
