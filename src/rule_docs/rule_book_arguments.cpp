// Pages about what the operations are handed. No schema file brings these texts about: korvelcheck hands over what it has found.
#include "rule_docs/rule_book_parts.h"

namespace korvel {
namespace {

constexpr RulePage kPages[] = {
    {.id = "arguments.check",
     .protects =
         "The check compares two libraries, and looks the table up in both by its name. Without one of the three there is "
         "nothing to compare, and an answer would be a guess. An empty name counts as none.",
     .allowed = "Hand over both libraries and the table's name.",
     .unheard =
         "korvelcheck has read both files and knows the table's name before it asks. A program that calls KorvelModifyTable "
         "itself hears it."},
    {.id = "arguments.table-type",
     .protects =
         "Some rules depend on the kind of the table: a list table may have no index, and attributes that are added must "
         "name the type that the server holds. With a type that is neither generic (0) nor list (1) the wrong rules would "
         "be asked.",
     .allowed = "Hand over 0 for a generic table and 1 for a list table. A sorted list is a list.",
     .unheard = "--type takes generic and list, nothing else. A program that calls KorvelModifyTable itself hears it."},
    {.id = "arguments.protocol",
     .protects = "Records are stored in the protocol in which the table was created, and the protocol decides which rules its "
                 "fields are judged by. With an unknown one no rule would fit.",
     .allowed = "Hand over 1 for a table created in the record format and 2 for one created in TLV.",
     .unheard = "--created-as takes qmx and tlv, nothing else. A program that calls KorvelModifyTable itself hears it."},
    {.id = "arguments.compat",
     .protects =
         "The readability check needs two libraries and the name of a table that may be in them, as the whole check does.",
     .allowed = "Hand over both libraries and the table's name.",
     .unheard = "korvelcheck has read both files and knows the table's name before it asks. A program that calls "
                "CheckTableMetaCompatible itself finds the text in its log, and only there."},
    {.id = "arguments.meta",
     .protects = "A rule compares two structures. Where one of them is missing it refuses, for a structure that is not there "
                 "cannot be shown to fit.",
     .allowed = "Hand over both structures. Inside a table: leave a field that is a structure a structure.",
     .codes = {-1, -3},
     .unheard =
         "korvelcheck asks about tables that both files have, and that a field stopped being a structure is refused first, "
         "as field.type. A program that calls ComparePrimaryKey, CompareSplittableKey or CompareIndex itself hears it."},
    {.id = "arguments.old-meta",
     .protects = "Whether two structures have the same fields can be told only where both are there.",
     .allowed = "Hand over both structures.",
     .unheard = "`korvelcheck same` asks about tables that both files have. A program that calls CompareTableField itself hears "
                "it."},
    {.id = "arguments.new-meta",
     .protects = "Whether two structures have the same fields can be told only where both are there.",
     .allowed = "Hand over both structures.",
     .unheard = "`korvelcheck same` asks about tables that both files have. A program that calls CompareTableField itself hears "
                "it."},
    {.id = "arguments.name-meta",
     .protects = "Field names can be checked only where the table is there.",
     .allowed = "A library in which the table, once found, stays found.",
     .unheard = "The names are checked after the table was found in both libraries."},
    {.id = "arguments.lookup",
     .protects = "Fields are looked up by name or, in TLV, by id. A field without a name or with a negative id cannot be found "
                 "again, so nothing could be said about its records.",
     .allowed = "Names for all fields, and ids of 0 and above where the library is in TLV.",
     .codes = {-3, -4},
     .unheard =
         "In schema files fields always have a name, if only an empty one, and ids start at 0. A metadata library of a "
         "caller's own making may hold others; the rule that looks then takes the field for missing and writes its own text."},
};

}  // namespace

std::span<const RulePage> ArgumentPages() { return kPages; }

}  // namespace korvel
