# Instructions that a program executes: unlike times, they are the same on a loaded machine. Sourced by the tests beside it.

# Status 77 tells ctest that a test was skipped.
require_valgrind() {
  command -v valgrind >/dev/null && return
  echo 'skipped: valgrind is not installed'
  exit 77
}

# instructions COMMAND...: prints the number. The command must succeed.
instructions() {
  valgrind --tool=callgrind --callgrind-out-file=/dev/null --log-file="$work/callgrind.log" "$@" >"$work/output" 2>&1 || {
    echo "failed: $*" >&2
    cat "$work/callgrind.log" "$work/output" >&2
    return 1
  }
  sed -n 's/.*Collected : \([0-9]*\).*/\1/p' "$work/callgrind.log"
}

# schema METAS FIELDS: prints a library of tables with so many fields each.
schema() {
  awk -v metas="$1" -v fields="$2" 'BEGIN {
    print "<metalib name=\"generated\" version=\"1\" protocol=\"QMX\">"
    for (m = 0; m < metas; ++m) {
      printf "  <meta name=\"table_%d\" desc=\"table %d\">\n", m, m
      for (f = 0; f < fields; ++f)
        printf "    <entry name=\"field_%d\" id=\"%d\" type=\"int32\" version=\"1\" desc=\"field %d of a table\"/>\n", f, f + 1, f
      print "    <primarykey entries=\"field_0\"/>\n  </meta>"
    }
    print "</metalib>"
  }'
}

# wide ENTRIES: prints a table whose entries all are counted by the first, members of its keys and columns of its index, with ids that
# go down. At most 32767 entries.
wide() {
  awk -v entries="$1" 'BEGIN {
    print "<metalib name=\"wide\" version=\"1\" protocol=\"TLV\">\n<meta name=\"table\">"
    for (e = 0; e < entries; ++e) {
      printf "<entry name=\"field_%d\" id=\"%d\" type=\"int32\"%s/>\n", e, entries - e, e == 0 ? "" : " refer=\"field_0\""
      names = names " field_" e
      columns = columns "<column entry=\"field_" e "\"/>\n"
    }
    print "<primarykey entries=\"" names "\"/>\n<splittablekey entries=\"" names "\"/>"
    print "<index name=\"by_all\">" columns "</index>\n</meta>\n</metalib>"
  }'
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
