// Pages about indexes.
#include "rule_docs/rule_book_parts.h"

namespace korvel {
namespace {

constexpr char kPlain[] = R"(<entry name="uid" type="uint32"/>
<entry name="zone" type="uint32"/>
<entry name="day" type="uint32"/>
<primarykey entries="uid"/>)";
constexpr char kIndexed[] = R"(<entry name="uid" type="uint32"/>
<entry name="zone" type="uint32"/>
<entry name="day" type="uint32"/>
<primarykey entries="uid"/>
<index name="by_zone"><column entry="zone"/></index>)";
constexpr char kRenamed[] = R"(<entry name="uid" type="uint32"/>
<entry name="zone" type="uint32"/>
<entry name="day" type="uint32"/>
<primarykey entries="uid"/>
<index name="by_area"><column entry="zone"/></index>)";
constexpr char kOtherColumn[] = R"(<entry name="uid" type="uint32"/>
<entry name="zone" type="uint32"/>
<entry name="day" type="uint32"/>
<primarykey entries="uid"/>
<index name="by_zone"><column entry="day"/></index>)";

constexpr RulePage kPages[] = {
    {.id = "index.table-type",
     .protects =
         "What an index may do depends on the kind of the table. For a type that is neither generic nor list it cannot be "
         "told.",
     .allowed = "Hand over 0 for a generic table and 1 for a list table.",
     .unheard = "--type takes generic and list, nothing else. A program that calls CompareIndex itself hears it."},
    {.id = "index.list-table",
     .protects =
         "The store keeps no indexes of list tables. One is refused there even if the old schema has it already: it never "
         "was of use.",
     .allowed = "No index on a list table. Where records have to be found by another field, a generic table can have one.",
     .example = {.options = "--type list",
                 .old_schema = {.table = kPlain},
                 .new_schema = {.table = kIndexed},
                 .instead = {.table = kPlain},
                 .code = -6,
                 .answer = "List type table isn't allowed to configure index field! table:'orders'"}},
    {.id = "index.count",
     .protects = "Indexes are built over fields of the records, and a change of the schema builds none anew. One that is added "
                 "would not hold the records already stored; one that is removed would be missed by the programs that read "
                 "through it.",
     .allowed = "Keep the indexes. Their order in the schema is not compared.",
     .example = {.old_schema = {.table = kPlain},
                 .new_schema = {.table = kIndexed},
                 .instead = {.table = kPlain},
                 .code = -6,
                 .answer = "The number of index can't be modified! table:'orders'"}},
    {.id = "index.name",
     .protects = "Indexes are told apart by name. One of another name is another index: it would not hold the records "
                 "already stored, and the old one would be gone.",
     .allowed = "Keep the names of the indexes. Their order in the schema is not compared.",
     .example = {.old_schema = {.table = kIndexed},
                 .new_schema = {.table = kRenamed},
                 .instead = {.table = kIndexed},
                 .code = -6,
                 .answer = "Can't change index field! index:'by_area' table:'orders'"}},
    {.id = "index.columns",
     .protects = "The entries of an index are made of its columns. With another set of columns the entries already made fit no "
                 "question that is asked of the index later.",
     .allowed = "Keep the columns of the index. Their order and their directions are not compared.",
     .example = {.old_schema = {.table = kIndexed},
                 .new_schema = {.table = kOtherColumn},
                 .instead = {.table = kIndexed},
                 .code = -6,
                 .answer = "The column of index field can't be modified! index:'by_zone' table:'orders'"}},
    {.id = "index.null",
     .protects = "Columns can be compared only where both indexes are there.",
     .allowed = "A library that has the indexes it counts.",
     .codes = {-6},
     .replaced_by = "index.columns",
     .unheard = "The columns are compared after the index was found in both schemas."},
    {.id = "index.column-set",
     .protects = "It says of which table an index has another number of columns, or a column that it had not: the detail behind "
                 "index.columns.",
     .allowed = "Keep the columns of the index. Their order and their directions are not compared.",
     .codes = {-6},
     .replaced_by = "index.columns",
     .example = {.old_schema = {.table = kIndexed},
                 .new_schema = {.table = kOtherColumn},
                 .instead = {.table = kIndexed},
                 .code = -6,
                 .answer = "The column of index field can't be modified! index:'by_zone' table:'orders'"}},
    {.id = "index.column-field",
     .protects =
         "It says which field became a column of an index: the detail behind index.columns. The text names the field where "
         "it says index.",
     .allowed = "Keep the columns of the index. Their order and their directions are not compared.",
     .codes = {-6},
     .replaced_by = "index.columns",
     .example = {.old_schema = {.table = kIndexed},
                 .new_schema = {.table = kOtherColumn},
                 .instead = {.table = kIndexed},
                 .code = -6,
                 .answer = "The column of index field can't be modified! index:'by_zone' table:'orders'"}},
};

}  // namespace

std::span<const RulePage> IndexPages() { return kPages; }

}  // namespace korvel
