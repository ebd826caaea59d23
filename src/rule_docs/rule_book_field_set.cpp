// Pages of `korvelcheck same`: have two schemas the same set of fields? The whole check does not ask it.
#include "rule_docs/rule_book_parts.h"

namespace korvel {
namespace {

constexpr char kTable[] = R"(<entry name="uid" type="uint32"/>
<entry name="zone" type="uint32"/>
<primarykey entries="uid"/>)";
constexpr char kReordered[] = R"(<entry name="zone" type="uint32"/>
<entry name="uid" type="uint32"/>
<primarykey entries="uid"/>)";
constexpr char kLonger[] = R"(<entry name="uid" type="uint32"/>
<entry name="zone" type="uint32"/>
<entry name="day" type="uint32"/>
<primarykey entries="uid"/>)";
constexpr char kRenamed[] = R"(<entry name="uid" type="uint32"/>
<entry name="area" type="uint32"/>
<primarykey entries="uid"/>)";
constexpr char kWider[] = R"(<entry name="uid" type="uint32"/>
<entry name="zone" type="uint64"/>
<primarykey entries="uid"/>)";

constexpr RulePage kPages[] = {
    {.id = "field-set.count",
     .protects =
         "Programs that hand records from one schema to another want to know that both have the same fields. With another "
         "number of them some have no counterpart. Structures inside a table are compared likewise.",
     .allowed = "The same fields on both sides. Their order, ids, versions and keys are not compared.",
     .example = {.command = "same",
                 .old_schema = {.table = kTable},
                 .new_schema = {.table = kLonger},
                 .instead = {.table = kReordered},
                 .code = -33,
                 .answer = "orders ValueFieldNum(2) is not equal to orders ValueFieldNum(3)"}},
    {.id = "field-set.missing",
     .protects =
         "Programs that hand records from one schema to another find the fields by name. One whose name is not on the other "
         "side has no counterpart there.",
     .allowed = "The same names on both sides. Their order is not compared.",
     .example = {.command = "same",
                 .old_schema = {.table = kTable},
                 .new_schema = {.table = kRenamed},
                 .instead = {.table = kReordered},
                 .code = -34,
                 .answer = "can not find value_entry:zone in orders"}},
    {.id = "field-set.shape",
     .protects =
         "A value can be handed over as it is only if both sides give it the same type, the same count and the same size. "
         "A field that is larger on one side differs, although a change to it may be allowed.",
     .allowed = "The same type, count and size on both sides.",
     .example = {.command = "same",
                 .old_schema = {.table = kTable},
                 .new_schema = {.table = kWider},
                 .instead = {.table = kReordered},
                 .code = -34,
                 .answer =
                     "orders value_entry:zone type(7) != orders value_entry:zone type(9) or src entry count(1) != dst entry "
                     "count(1) or src entry size(4) != dst entry size(8)"}},
};

}  // namespace

std::span<const RulePage> FieldSetPages() { return kPages; }

}  // namespace korvel
