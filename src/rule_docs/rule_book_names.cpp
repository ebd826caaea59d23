// Pages about the names of fields.
#include "rule_docs/rule_book_parts.h"

namespace korvel {
namespace {

constexpr char kTable[] = R"(<entry name="uid" type="uint32"/>
<primarykey entries="uid"/>)";
constexpr char kEmpty[] = R"(<entry name="uid" type="uint32"/>
<entry name="" type="uint32" version="2"/>
<primarykey entries="uid"/>)";
constexpr char kDigit[] = R"(<entry name="uid" type="uint32"/>
<entry name="2nd_zone" type="uint32" version="2"/>
<primarykey entries="uid"/>)";
constexpr char kHyphen[] = R"(<entry name="uid" type="uint32"/>
<entry name="second-zone" type="uint32" version="2"/>
<primarykey entries="uid"/>)";
constexpr char kGood[] = R"(<entry name="uid" type="uint32"/>
<entry name="second_zone" type="uint32" version="2"/>
<primarykey entries="uid"/>)";
constexpr char k32Bytes[] = R"(<entry name="uid" type="uint32"/>
<entry name="zone_of_the_store_of_the_customer" type="uint32" version="2"/>
<primarykey entries="uid"/>)";
constexpr char k31Bytes[] = R"(<entry name="uid" type="uint32"/>
<entry name="zone_of_store_of_the_customer_2" type="uint32" version="2"/>
<primarykey entries="uid"/>)";

constexpr char kAnswer[] = "CheckFieldNameValidate failed! table:'orders'";

constexpr RulePage kPages[] = {
    {.id = "field-name.invalid",
     .protects =
         "A field's name is an identifier of the store: wherever a field is named, a name of other bytes could not be told from "
         "what stands around it. All names of the new schema are looked at, whether they changed or not; those inside "
         "structures are not. The text says of which table; which name it is stands in the log.",
     .allowed = "Letters, digits and underscores of ASCII, no digit at the front, at most 31 bytes.",
     .codes = {-9, -17, -18, -19},
     .example = {.old_schema = {.table = kTable},
                 .new_schema = {.table = kDigit},
                 .instead = {.table = kGood},
                 .code = -17,
                 .answer = kAnswer}},
    {.id = "field-name.empty",
     .protects = "A field without a name cannot be named by anybody.",
     .allowed = "A name of 1 to 31 bytes.",
     .replaced_by = "field-name.invalid",
     .example = {.old_schema = {.table = kTable},
                 .new_schema = {.table = kEmpty},
                 .instead = {.table = kGood},
                 .code = -19,
                 .answer = kAnswer}},
    {.id = "field-name.digit",
     .protects = "What begins with a digit is read as a number, not as the name of a field.",
     .allowed = "A letter or an underscore at the front.",
     .replaced_by = "field-name.invalid",
     .example = {.old_schema = {.table = kTable},
                 .new_schema = {.table = kDigit},
                 .instead = {.table = kGood},
                 .code = -17,
                 .answer = kAnswer}},
    {.id = "field-name.character",
     .protects = "A blank, a hyphen or a letter beyond ASCII would end the name, or be taken for something else, where the field "
                 "is named.",
     .allowed = "Letters, digits and underscores of ASCII.",
     .replaced_by = "field-name.invalid",
     .example = {.old_schema = {.table = kTable},
                 .new_schema = {.table = kHyphen},
                 .instead = {.table = kGood},
                 .code = -18,
                 .answer = kAnswer}},
    {.id = "field-name.length",
     .protects = "The store takes names of at most 31 bytes.",
     .allowed = "A name of at most 31 bytes.",
     .replaced_by = "field-name.invalid",
     .example = {.old_schema = {.table = kTable},
                 .new_schema = {.table = k32Bytes},
                 .instead = {.table = k31Bytes},
                 .code = -9,
                 .answer = kAnswer}},
};

}  // namespace

std::span<const RulePage> FieldNamePages() { return kPages; }

}  // namespace korvel
