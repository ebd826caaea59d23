// Pages about the kind of a table, as its attributes tell it: type, list length, sort settings, data protocol.
//
// The whole check returns -1 for every refusal of this family; the rule itself and `sortlist` return the codes of the rows.
#include "rule_docs/rule_book_parts.h"

namespace korvel {
namespace {

constexpr char kTable[] = R"(<entry name="uid" type="uint32"/>
<entry name="score" type="uint32"/>
<entry name="day" type="uint32"/>
<primarykey entries="uid"/>)";
constexpr char kSorted[] = R"(<entry name="uid" type="uint32"/>
<entry name="score" type="uint32" customattr2="sort=1"/>
<entry name="day" type="uint32"/>
<primarykey entries="uid"/>)";
constexpr char kSortedByTwo[] = R"(<entry name="uid" type="uint32"/>
<entry name="score" type="uint32" customattr2="sort=1"/>
<entry name="day" type="uint32" customattr2="sort=2"/>
<primarykey entries="uid"/>)";
constexpr char kSortedOtherwise[] = R"(<entry name="uid" type="uint32"/>
<entry name="score" type="uint32" customattr2="sort=2"/>
<entry name="day" type="uint32" customattr2="sort=1"/>
<primarykey entries="uid"/>)";

constexpr char kGeneric[] = "TableType=GENERIC";
constexpr char kGenericQmx[] = "TableType=GENERIC;DataProtocol=QMX";
constexpr char kGenericTlv[] = "TableType=GENERIC;DataProtocol=TLV";
constexpr char kList8[] = "TableType=LIST;ListNum=8";
constexpr char kList16[] = "TableType=LIST;ListNum=16";
constexpr char kList32[] = "TableType=LIST;ListNum=32";
constexpr char kSortList[] = "TableType=SORTLIST;ListNum=8";
constexpr char kSortList16[] = "TableType=SORTLIST;ListNum=16";
constexpr char kSortListDown[] = "TableType=SORTLIST;ListNum=8;SortRule=DESC";

constexpr char kUnreadable[] =
    "In schema files every field that is counted can be read and has a name, if only an empty one. A metadata library of a "
    "caller's "
    "own making may fail to give one.";

constexpr RulePage kPages[] = {
    {.id = "table.to-sortlist",
     .protects =
         "The records of a sorted list lie in the order of its sort fields. Those of a table without attributes were stored "
         "without that order, and a schema alone does not sort them.",
     .allowed =
         "Attributes that say what the server holds already: a generic table, or a list of the server's length. A sorted list "
         "is a new table.",
     .codes = {-3, -1},
     .example = {.options = "--type list --list-num 8",
                 .old_schema = {.table = kTable},
                 .new_schema = {.table = kSorted, .attributes = kSortList},
                 .instead = {.table = kTable, .attributes = kList8},
                 .code = -1,
                 .answer = "Can't modify table type (table:orders) from others to sortlist "}},
    {.id = "table.declared-type",
     .protects =
         "A table without attributes has a type all the same: the one with which the server created it. Attributes that are "
         "added must describe what is there; they do not turn a generic table into a list.",
     .allowed = "Attributes that name the server's type. If korvelcheck has it wrong, say so: --type.",
     .codes = {-4, -1},
     .example = {.options = "--type generic",
                 .old_schema = {.table = kTable},
                 .new_schema = {.table = kTable, .attributes = kList8},
                 .instead = {.table = kTable, .attributes = kGeneric},
                 .code = -1,
                 .answer = "Can't change table_type(table:orders) from GENERIC to LIST"}},
    {.id = "table.declared-list-num",
     .protects =
         "A list without attributes has a length all the same: the one with which the server created it. Attributes that are "
         "added must name it. They may neither lengthen nor shorten the list.",
     .allowed =
         "Attributes that name the server's length; the next change may raise it. If korvelcheck has the length wrong, say "
         "so: --list-num.",
     .codes = {-5, -1},
     .example = {.options = "--type list --list-num 8",
                 .old_schema = {.table = kTable},
                 .new_schema = {.table = kTable, .attributes = kList16},
                 .instead = {.table = kTable, .attributes = kList8},
                 .code = -1,
                 .answer = "Can't change table_list_num(table:orders) from 8 to 16"}},
    {.id = "table.attributes-removed",
     .protects =
         "The attributes say what kind of table it is. Without them the schema no longer tells, and the next change could not "
         "be held against it.",
     .allowed = "Keep the attributes.",
     .codes = {-15, -1},
     .example = {.old_schema = {.table = kTable, .attributes = kGeneric},
                 .new_schema = {.table = kTable},
                 .instead = {.table = kTable, .attributes = kGeneric},
                 .code = -1,
                 .answer = "Can't change table orders from new format to old format"}},
    {.id = "table.type",
     .protects =
         "Generic tables and lists are stored in different ways, and a schema alone does not turn the records of one into "
         "those of the other. A sorted list is a list here.",
     .allowed = "Keep the type. A table of another type is a new table.",
     .codes = {-4, -1},
     .example = {.old_schema = {.table = kTable, .attributes = kGeneric},
                 .new_schema = {.table = kTable, .attributes = kList8},
                 .instead = {.table = kTable, .attributes = kGeneric},
                 .code = -1,
                 .answer = "Can't change table type from GENERIC to LIST"}},
    {.id = "table.list-num",
     .protects = "Every list may have used all its slots. In a shorter one the records of the last slots would have no place.",
     .allowed = "Keep the length or raise it.",
     .codes = {-5, -1},
     .example = {.old_schema = {.table = kTable, .attributes = kList16},
                 .new_schema = {.table = kTable, .attributes = kList8},
                 .instead = {.table = kTable, .attributes = kList32},
                 .code = -1,
                 .answer = "Can't reduce list_num from 16 to 8"}},
    {.id = "table.sort-fields",
     .protects =
         "The records of a sorted list lie in the order of its sort fields. With a field more or less the stored order is not "
         "the one that the servers go by. `sortlist` lets more sort fields pass, and refuses fewer.",
     .allowed = "Keep the sort fields. A list with others is a new table.",
     .codes = {-6, -1},
     .example = {.old_schema = {.table = kSorted, .attributes = kSortList},
                 .new_schema = {.table = kSortedByTwo, .attributes = kSortList},
                 .instead = {.table = kSorted, .attributes = kSortList16},
                 .code = -1,
                 .answer = "Can't change sort_field_num from 1 to 2"}},
    {.id = "table.sort-rule",
     .protects =
         "The records of a sorted list lie in ascending or in descending order. Read by the other rule they are in disorder. "
         "INSC in the text is ascending.",
     .allowed = "Keep the sort rule. An absent one is INSC.",
     .codes = {-15, -1},
     .example = {.old_schema = {.table = kSorted, .attributes = kSortList},
                 .new_schema = {.table = kSorted, .attributes = kSortListDown},
                 .instead = {.table = kSorted, .attributes = kSortList16},
                 .code = -1,
                 .answer = "Can't change sort_rule from INSC to DESC"}},
    {.id = "table.data-protocol",
     .protects =
         "The data protocol says how the records of the table are stored. Those stored in one cannot be read as the other.",
     .allowed = "Keep the protocol that the attributes name. Attributes without one may gain it.",
     .codes = {-16, -1},
     .example = {.old_schema = {.table = kTable, .attributes = kGenericQmx},
                 .new_schema = {.table = kTable, .attributes = kGenericTlv},
                 .instead = {.table = kTable, .attributes = kGenericQmx},
                 .code = -1,
                 .answer = "Can't change DataProtocolType from QMX to TLV"}},
    {.id = "table.new-field",
     .protects =
         "The sort fields of a sorted list are found by looking at every field. One that cannot be read could be one of them.",
     .allowed = "A library that gives the fields it counts.",
     .codes = {-7, -1},
     .unheard = kUnreadable},
    {.id = "table.new-field-name",
     .protects = "Sort fields are found in the old schema by their names. One without a name cannot be found.",
     .allowed = "Names for all fields.",
     .codes = {-8, -1},
     .unheard = kUnreadable},
    {.id = "table.old-field",
     .protects =
         "The sort fields of a sorted list are found by looking at every field. One that cannot be read could be one of them.",
     .allowed = "A library that gives the fields it counts.",
     .codes = {-9, -1},
     .unheard = kUnreadable},
    {.id = "table.old-field-name",
     .protects = "Sort fields are found in the old schema by their names. One without a name cannot be found.",
     .allowed = "Names for all fields.",
     .codes = {-10, -1},
     .unheard = kUnreadable},
    {.id = "table.sort-attribute",
     .protects =
         "The second custom attribute of a sort field says which place it has in the order. Where fields change places the "
         "stored order is not the one that the servers go by.",
     .allowed = "Keep the attributes of the fields. One that had none may gain one that marks no sort field.",
     .codes = {-11, -1},
     .example = {.old_schema = {.table = kSortedByTwo, .attributes = kSortList},
                 .new_schema = {.table = kSortedOtherwise, .attributes = kSortList},
                 .instead = {.table = kSortedByTwo, .attributes = kSortList16},
                 .code = -1,
                 .answer = "System error:old_customattr2:sort=1,new_customattr2:sort=2"}},
    {.id = "table.attributes",
     .protects =
         "The attributes say what kind of table it is. From ones that cannot be understood no rule can tell whether it stays "
         "of its kind. The text says what is wrong and what is allowed.",
     .allowed = "TableType, ListNum, SortRule and DataProtocol, each at most once, as key=value and joined by ';'.",
     .codes = {-1, -2},
     .example = {.old_schema = {.table = kTable, .attributes = kGeneric},
                 .new_schema = {.table = kTable, .attributes = "TableType=HEAP"},
                 .instead = {.table = kTable, .attributes = kGeneric},
                 .code = -1,
                 .answer =
                     "Table attributes are invalid! table:'orders', TableType is 'HEAP'; allowed: GENERIC, LIST, SORTLIST"}},
};

}  // namespace

std::span<const RulePage> KindPages() { return kPages; }

}  // namespace korvel
