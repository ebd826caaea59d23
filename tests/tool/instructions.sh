# Counts the instructions of a program: unlike times, they do not depend on the load of the machine. Sourced by the tests here.

# Status 77 tells ctest that a test was skipped.
skip() {
  echo "skipped: $1 is not installed"
  exit 77
}

require_valgrind() {
  command -v valgrind >/dev/null || skip valgrind
}

# enter_repository: changes to a directory in which the search for project files ends. Elsewhere, it takes as long as there are
# directories above.
enter_repository() {
  mkdir -p "$work/repository/.git"
  cd "$work/repository"
}

# instructions STATUS COMMAND...: prints the number. The command must end with that status.
instructions() {
  wanted=$1 ended=0
  shift
  valgrind --tool=cachegrind --cache-sim=no --cachegrind-out-file=/dev/null --log-file="$work/valgrind.log" "$@" >"$work/output" 2>&1 ||
    ended=$?
  [ "$ended" -eq "$wanted" ] || {
    echo "ended with status $ended instead of $wanted: $*" >&2
    cat "$work/valgrind.log" "$work/output" >&2
    return 1
  }
  sed -n 's/.*I *refs: *\([0-9,]*\).*/\1/p' "$work/valgrind.log" | tr -d ,
}

# cost STATUS COMMAND...: prints the number of instructions, the bytes of output and the peak of resident memory in KiB.
cost() {
  count=$(instructions "$@")
  bytes=$(wc -c <"$work/output")
  shift
  /usr/bin/time --quiet -f %M -o "$work/memory" "$@" >/dev/null 2>&1 || true
  echo "$count $bytes $(cat "$work/memory")"
}

# schema METAS FIELDS [added|refused]: prints a library of tables with so many fields each; with one more field in each table, or
# with another type of the last field of the last table.
schema() {
  awk -v metas="$1" -v fields="$2" -v change="${3-}" 'BEGIN {
    print "<metalib name=\"generated\" version=\"" (change == "" ? 1 : 2) "\" protocol=\"QMX\">"
    for (m = 0; m < metas; ++m) {
      printf "  <meta name=\"table_%d\" desc=\"table %d\">\n", m, m
      last = change == "added" ? fields : fields - 1
      for (f = 0; f <= last; ++f) {
        type = change == "refused" && m == metas - 1 && f == last ? "int8" : "int32"
        printf "    <entry name=\"field_%d\" id=\"%d\" type=\"%s\" version=\"%d\" desc=\"field %d of a table\"/>\n", f, f + 1, type, f < fields ? 1 : 2, f
      }
      print "    <primarykey entries=\"field_0\"/>\n  </meta>"
    }
    print "</metalib>"
  }'
}

# wide ENTRIES: prints a table whose entries are all counted by the first one, and are members of its keys and columns of its
# index; ids descend. At most 32767 entries.
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

# counted_by_structure ENTRIES: prints a table with that many structures, and the same number of entries that refer to the last
# structure as their counter.
counted_by_structure() {
  awk -v entries="$1" 'BEGIN {
    print "<metalib name=\"wrong\" version=\"1\">\n<meta name=\"s\"><entry name=\"a\" type=\"int8\"/></meta>\n<meta name=\"table\">"
    for (e = 1; e <= entries; ++e) print "<entry name=\"s_" e "\" type=\"s\"/>"
    for (e = 1; e <= entries; ++e) print "<entry name=\"field_" e "\" type=\"int8\" refer=\"s_" entries "\"/>"
    print "</meta>\n</metalib>"
  }'
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
