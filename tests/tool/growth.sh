#!/bin/sh
# Requires that the cost of reading and of a whole check grows linearly with the size of the files: instructions, bytes of output and
# memory. Each of the three may become 2.2 times as large if the size is doubled. tests/tool/growth.sh PROGRAM
set -eu
program=$(realpath "${1:?usage: tests/tool/growth.sh PROGRAM}")
. "$(dirname "$0")/instructions.sh"
require_valgrind
[ -x /usr/bin/time ] || skip time
status=0

check_of() {
  schema "$1" "$2" >"$work/old.xml"
  cp "$work/old.xml" "$work/new.xml"
  cost 0 "$program" check "$work/old.xml" "$work/new.xml"
}

reading_of_wide() {
  wide "$1" >"$work/wide.xml"
  cost 0 "$program" compile "$work/wide.xml" -o "$work/wide.qmb"
}

refusing_counts() {
  counted_by_structure "$1" >"$work/wrong.xml"
  cost 2 "$program" lint "$work/wrong.xml"
}

# tables TABLES TYPE BETWEEN: prints a library of tables with a key and a field of that type, each table on its own line, or, if
# BETWEEN is empty, all on one line.
tables() {
  awk -v tables="$1" -v type="$2" -v between="$3" 'BEGIN {
    printf "<metalib name=\"generated\" version=\"1\">"
    for (t = 0; t < tables; ++t)
      printf "%s<meta name=\"%s_%d\"><entry name=\"key\" type=\"int8\"/><entry name=\"field\" type=\"%s\"/>" \
        "<primarykey entries=\"key\"/></meta>", between, type, t, type
    print between "</metalib>"
  }'
}

# Every table is restored, each before the one that follows it in the old file.
restoring_tables() {
  tables "$1" int8 '\n' >"$work/old.xml"
  tables 1 int16 '\n' >"$work/new.xml"
  cost 0 "$program" suggest "$work/old.xml" "$work/new.xml"
}

# Every table is refused and gets a fix, all on one long line.
fixing_one_line() {
  tables "$1" int16 '' >"$work/old.xml"
  sed 's/type="int16"/type="int8"/g' "$work/old.xml" >"$work/new.xml"
  cost 1 "$program" check --format json "$work/old.xml" "$work/new.xml"
}

# Unknown attributes, the first 1000 of which are reported.
refusing_attributes() {
  awk -v attributes="$1" 'BEGIN {
    printf "<metalib name=\"wrong\" version=\"1\""
    for (a = 0; a < attributes; ++a) printf " attribute_%d=\"\"", a
    print "/>"
  }' >"$work/wrong.xml"
  cost 2 "$program" lint "$work/wrong.xml"
}

# Tables, and fields of a table, that all have the same name and id.
refusing_duplicates() {
  awk -v copies="$1" 'BEGIN {
    print "<metalib name=\"wrong\" version=\"1\">"
    for (m = 0; m < copies; ++m) print "<meta name=\"table\" id=\"1\"><entry name=\"a\" type=\"int8\"/></meta>"
    print "<meta name=\"last\">"
    for (e = 0; e < copies; ++e) print "<entry name=\"a\" id=\"1\" type=\"int8\"/>"
    print "</meta></metalib>"
  }' >"$work/wrong.xml"
  cost 2 "$program" lint "$work/wrong.xml"
}

# A description with that many entities, followed by an error on the same line.
reading_entities() {
  awk -v entities="$1" 'BEGIN {
    printf "<metalib name=\"wrong\" version=\"1\"><meta name=\"table\" desc=\""
    for (e = 0; e < entities; ++e) printf "&amp;"
    print "\"><entry name=\"a\" type=\"none\"/></meta></metalib>"
  }' >"$work/wrong.xml"
  cost 2 "$program" lint "$work/wrong.xml"
}

# Unions with two members of the union below: the number of paths to the lowest doubles with every level.
showing_levels() {
  awk -v levels="$1" 'BEGIN {
    print "<metalib name=\"deep\" version=\"1\">\n<meta name=\"u_0\"><entry name=\"a\" type=\"int8\"/></meta>"
    for (l = 1; l < levels; ++l)
      print "<meta name=\"u_" l "\" kind=\"union\"><entry name=\"a\" type=\"u_" l - 1 "\"/><entry name=\"b\" type=\"u_" l - 1 "\"/></meta>"
    print "<meta name=\"table\"><entry name=\"k\" type=\"int8\"/><entry name=\"a\" type=\"u_" levels - 1 "\"/><primarykey entries=\"k\"/></meta>"
    print "</metalib>"
  }' >"$work/old.xml"
  sed 's/type="int8"/type="int16"/' "$work/old.xml" >"$work/new.xml"
  cost 1 "$program" check --format html "$work/old.xml" "$work/new.xml"
}

# finding_refusals FIELDS FORMAT: every tenth field has another type. Each is refused, and the cost of finding it and, if the format
# shows fixes, of its fix does not depend on the number of fields.
finding_refusals() {
  schema 1 "$1" >"$work/old.xml"
  sed 's/9" type="int32"/9" type="int8"/' "$work/old.xml" >"$work/new.xml"
  cost 1 "$program" check --format "$2" "$work/old.xml" "$work/new.xml"
}

# sharing_refusals TABLES FIELDS: every second field of a structure that all tables embed is refused.
sharing_refusals() {
  awk -v tables="$1" -v fields="$2" 'BEGIN {
    print "<metalib name=\"shared\" version=\"1\" protocol=\"QMX\">\n<meta name=\"s\">"
    for (f = 0; f < fields; ++f) printf "<entry name=\"field_%d\" id=\"%d\" type=\"int%d\"/>\n", f, f + 1, f % 2 ? 32 : 64
    print "</meta>"
    for (t = 0; t < tables; ++t)
      print "<meta name=\"table_" t "\"><entry name=\"key\" id=\"1\" type=\"int8\"/><entry name=\"part\" id=\"2\" type=\"s\"/>" \
        "<primarykey entries=\"key\"/></meta>"
    print "</metalib>"
  }' >"$work/old.xml"
  sed 's/type="int32"/type="int16"/' "$work/old.xml" >"$work/new.xml"
  cost 1 "$program" check "$work/old.xml" "$work/new.xml"
}

# colliding TABLES FIELDS: writes old.xml and new.xml with tables, and fields of the last one, whose names all have the same
# std::hash; every tenth has another type. Each line of colliding_parts has two parts that lead to the same state of the hash at its
# place in the name, so a choice of one of each line is such a name. tests/qmx/colliding_parts_test.cpp checks that.
colliding() {
  awk -v tables="$1" -v fields="$2" '
    { first[NR] = $1; second[NR] = $2 }
    function name(number, result, part) {
      result = ""
      for (part = 1; part <= NR; ++part) {
        result = result (number % 2 ? second[part] : first[part])
        number = int(number / 2)
      }
      return result
    }
    function entry(field, number) { return "<entry name=\"" field "\" type=\"int" (number % 10 ? 32 : 16) "\"/>\n" }
    END {
      print "<metalib name=\"colliding\" version=\"1\" protocol=\"QMX\">"
      for (t = 0; t < tables; ++t) {
        print "<meta name=\"" name(t) "\"><entry name=\"k\" type=\"int32\"/>" entry("f", t)
        for (f = 0; t == tables - 1 && f < fields; ++f) printf "%s", entry(name(f), f)
        print "<primarykey entries=\"k\"/></meta>"
      }
      print "</metalib>"
    }' "$(dirname "$0")/colliding_parts" >"$work/old.xml"
  sed 's/type="int16"/type="int8"/' "$work/old.xml" >"$work/new.xml"
}

refusing_colliding_tables() {
  colliding "$1" 0
  cost 1 "$program" check "$work/old.xml" "$work/new.xml"
}

# The checker refuses such long names of fields, whether they collide or not.
listing_colliding_fields() {
  colliding 1 "$1"
  cost 0 "$program" diff "$work/old.xml" "$work/new.xml"
}

# A project in which every tenth of so many files has another description than in its last commit. The instructions of git do not count.
checking_files() {
  rm -rf "$work/project"
  mkdir "$work/project"
  for file in $(seq "$1"); do schema 1 20 >"$work/project/t$file.xml"; done
  git -C "$work/project" init --quiet
  git -C "$work/project" add .
  git -C "$work/project" -c user.name=A -c user.email=a@example.org commit --quiet --message old
  for file in $(seq 10 10 "$1"); do schema 1 20 | sed 's/table 0/other/' >"$work/project/t$file.xml"; done
  (cd "$work/project" && cost 0 "$program" check --no-project --against git:HEAD .)
}

# refusing_all TABLES FIELDS: every field of every table but the key is refused.
refusing_all() {
  schema "$1" "$2" >"$work/old.xml"
  sed '/field_0"/!s/type="int32"/type="int8"/' "$work/old.xml" >"$work/new.xml"
  cost 1 "$program" check --format json "$work/old.xml" "$work/new.xml"
}

# refusing_more FIELDS: refuses that many changes of a table that is already refused without them: its fields have long names.
refusing_more() {
  awk -v fields="$1" 'BEGIN {
    for (name = "n"; length(name) < 1000; name = name "n");
    print "<metalib name=\"long\" version=\"1\"><meta name=\"table\"><entry name=\"key\" type=\"int8\"/>"
    for (f = 0; f < fields; ++f) print "<entry name=\"" name "_" f "\" type=\"int32\"/>"
    print "<primarykey entries=\"key\"/></meta></metalib>"
  }' >"$work/old.xml"
  sed 's/type="int32"/type="int8"/' "$work/old.xml" >"$work/new.xml"
  cost 1 "$program" check "$work/old.xml" "$work/new.xml"
}

# versions VERSIONS FORMAT: a history in which each step refuses every table.
versions() {
  rm -rf "$work/versions"
  mkdir "$work/versions"
  for version in $(seq "$1"); do
    schema 5 10 | sed "s/version=\"1\" protocol/version=\"$version\" protocol/; /field_9/s/type=\"int32\"/type=\"string\" size=\"$((9999 - version))\"/" \
      >"$work/versions/v$version.xml"
  done
  (cd "$work/versions" && cost 1 "$program" history --no-project --format "$2" $(seq -f v%g.xml "$1"))
}

# at_most TIMES SMALL LARGE SLACK
at_most() {
  [ "$3" -le $(($2 * $1 / 10 + $4)) ] || status=1
}

# growth WHAT TIMES SMALL LARGE: compares the costs of a size and of a larger size. TIMES is in tenths. The memory that a process takes
# without doing anything differs a little from run to run.
growth() {
  what=$1 times=$2
  set -- $3 $4
  echo "$what: $1 -> $4 instructions, $2 -> $5 bytes of output, $3 -> $6 KiB of memory;" \
    "allowed: $((times / 10)).$((times % 10)) times"
  at_most "$times" "$1" "$4" 0
  at_most "$times" "$2" "$5" 100
  at_most "$times" "$3" "$6" 2048
}

doubling() {
  growth "twice the $1" 22 "$2" "$3"
}

fields=$(check_of 1 2000) twice=$(check_of 1 4000)
doubling fields "$fields" "$twice"
metas=$(check_of 500 4) twice=$(check_of 1000 4)
doubling metas "$metas" "$twice"
members=$(reading_of_wide 4000) twice=$(reading_of_wide 8000)
doubling 'key members and columns' "$members" "$twice"
refusals=$(refusing_counts 4000) twice=$(refusing_counts 8000)
doubling 'entries whose counter is a structure' "$refusals" "$twice"
restored=$(restoring_tables 1000) twice=$(restoring_tables 2000)
doubling 'restored tables' "$restored" "$twice"
fixes=$(fixing_one_line 250) twice=$(fixing_one_line 500)
doubling 'fixed tables on one line' "$fixes" "$twice"
unknown=$(refusing_attributes 25000) twice=$(refusing_attributes 50000)
doubling 'unknown attributes of an element' "$unknown" "$twice"
duplicates=$(refusing_duplicates 5000) twice=$(refusing_duplicates 10000)
doubling 'tables and fields with the same name and id' "$duplicates" "$twice"
entities=$(reading_entities 100000) twice=$(reading_entities 200000)
doubling 'entities in an attribute' "$entities" "$twice"
levels=$(showing_levels 50) twice=$(showing_levels 100)
doubling 'levels of unions, each embedded twice in the next' "$levels" "$twice"
found=$(finding_refusals 2000 text) twice=$(finding_refusals 4000 text)
doubling 'fields of a table, a tenth of which is refused' "$found" "$twice"
found=$(finding_refusals 1000 json) twice=$(finding_refusals 2000 json)
doubling 'fields of a table, a tenth of which is refused and gets a fix' "$found" "$twice"
shared=$(sharing_refusals 5 200) tables=$(sharing_refusals 10 200) fields=$(sharing_refusals 5 400)
doubling 'tables that share a structure with refused fields' "$shared" "$tables"
doubling 'refused fields of a shared structure' "$shared" "$fields"
names=$(refusing_colliding_tables 1000) twice=$(refusing_colliding_tables 2000)
doubling 'tables with colliding names' "$names" "$twice"
names=$(listing_colliding_fields 1000) twice=$(listing_colliding_fields 2000)
doubling 'fields with colliding names' "$names" "$twice"
files=$(checking_files 200) twice=$(checking_files 400)
doubling 'files of a project' "$files" "$twice"
steps=$(versions 20 text) twice=$(versions 40 text)
doubling 'versions of a history' "$steps" "$twice"
steps=$(versions 20 html) twice=$(versions 40 html)
doubling 'versions of a history, as a page' "$steps" "$twice"
checked=$(check_of 20 100) four=$(check_of 40 200)
growth 'twice the tables, each with twice the fields' 44 "$checked" "$four"
refused=$(refusing_all 5 40) four=$(refusing_all 10 80)
growth 'twice the tables, each with twice the fields, all refused' 44 "$refused" "$four"
shared=$(sharing_refusals 10 100) four=$(sharing_refusals 20 200)
growth 'twice the tables that share a structure, with twice the fields' 44 "$shared" "$four"
# Each change is checked with the whole table.
refused=$(refusing_more 25) four=$(refusing_more 50)
growth 'twice the changes of a table that is refused without them' 44 "$refused" "$four"
exit "$status"
