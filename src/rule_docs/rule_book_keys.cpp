// Pages about the primary key and the splittable key.
#include "rule_docs/rule_book_parts.h"

namespace korvel {
namespace {

constexpr char kTable[] = R"(<entry name="uid" id="1" type="uint32"/>
<entry name="zone" id="2" type="uint32"/>
<primarykey entries="uid"/>)";
constexpr char kWithoutKey[] = R"(<entry name="uid" id="1" type="uint32"/>
<entry name="zone" id="2" type="uint32"/>)";
constexpr char kLongerKey[] = R"(<entry name="uid" id="1" type="uint32"/>
<entry name="zone" id="2" type="uint32"/>
<primarykey entries="uid zone"/>)";
constexpr char kOtherKey[] = R"(<entry name="uid" id="1" type="uint32"/>
<entry name="zone" id="2" type="uint32"/>
<primarykey entries="zone"/>)";
constexpr char kWideKey[] = R"(<entry name="uid" id="1" type="uint64"/>
<entry name="zone" id="2" type="uint32"/>
<primarykey entries="uid"/>)";
constexpr char kWideField[] = R"(<entry name="uid" id="1" type="uint32"/>
<entry name="zone" id="2" type="uint32"/>
<entry name="uid_wide" id="3" type="uint64" version="2"/>
<primarykey entries="uid"/>)";

constexpr char kSplit[] = R"(<entry name="uid" id="1" type="uint32"/>
<entry name="zone" id="2" type="uint32"/>
<primarykey entries="uid zone"/>
<splittablekey entries="uid"/>)";
constexpr char kNotSplit[] = R"(<entry name="uid" id="1" type="uint32"/>
<entry name="zone" id="2" type="uint32"/>
<primarykey entries="uid zone"/>)";
constexpr char kSplitOtherwise[] = R"(<entry name="uid" id="1" type="uint32"/>
<entry name="zone" id="2" type="uint32"/>
<primarykey entries="uid zone"/>
<splittablekey entries="zone"/>)";

// The text of a key is its names and a comma between two of them: 33 names of 31 bytes are 1055 bytes. A name may stand twice.
constexpr char kShortSplit[] = R"(<entry name="number_of_the_customer_in_store" id="1" type="uint32"/>
<primarykey entries="number_of_the_customer_in_store"/>
<splittablekey entries="number_of_the_customer_in_store"/>)";
constexpr char kLongSplit[] = R"(<entry name="number_of_the_customer_in_store" id="1" type="uint32"/>
<primarykey entries="number_of_the_customer_in_store"/>
<splittablekey entries="
  number_of_the_customer_in_store number_of_the_customer_in_store number_of_the_customer_in_store
  number_of_the_customer_in_store number_of_the_customer_in_store number_of_the_customer_in_store
  number_of_the_customer_in_store number_of_the_customer_in_store number_of_the_customer_in_store
  number_of_the_customer_in_store number_of_the_customer_in_store number_of_the_customer_in_store
  number_of_the_customer_in_store number_of_the_customer_in_store number_of_the_customer_in_store
  number_of_the_customer_in_store number_of_the_customer_in_store number_of_the_customer_in_store
  number_of_the_customer_in_store number_of_the_customer_in_store number_of_the_customer_in_store
  number_of_the_customer_in_store number_of_the_customer_in_store number_of_the_customer_in_store
  number_of_the_customer_in_store number_of_the_customer_in_store number_of_the_customer_in_store
  number_of_the_customer_in_store number_of_the_customer_in_store number_of_the_customer_in_store
  number_of_the_customer_in_store number_of_the_customer_in_store number_of_the_customer_in_store"/>)";

constexpr RulePage kPages[] = {
    {.id = "primary-key.missing",
     .protects = "The primary key decides where a record lives and how it is found again. Without one the records of the table "
                 "could not be reached, and what has no key on the old side was no table.",
     .allowed = "Keep the primary key. A structure that is to become a table is a new table.",
     .example = {.old_schema = {.table = kTable},
                 .new_schema = {.table = kWithoutKey},
                 .instead = {.table = kTable},
                 .code = -4,
                 .answer = "Primaykey is invalid! table:'orders'"}},
    {.id = "primary-key.count",
     .protects = "The primary key decides where a record lives. With a field more or less, every key that the servers make is "
                 "another one than that under which the record was stored: it would not be found any more.",
     .allowed = "Keep the same key fields; their order in the key is not compared. A table with another key is another table, "
                "into which the records are copied.",
     .example = {.old_schema = {.table = kTable},
                 .new_schema = {.table = kLongerKey},
                 .instead = {.table = kTable},
                 .code = -4,
                 .answer = "Primarykey number can't be modified!  table:'orders'"}},
    {.id = "primary-key.field",
     .protects =
         "The primary key decides where a record lives. Made of another field, it leads to another place, and the stored "
         "records are not found under it. Fields are told apart by name, byte for byte, so renaming a key field counts as "
         "another field.",
     .allowed = "Keep the key fields and their names. Their order in the key is not compared.",
     .example = {.old_schema = {.table = kTable},
                 .new_schema = {.table = kOtherKey},
                 .instead = {.table = kTable},
                 .code = -4,
                 .answer = "Primaykey can't be modified! primaykey:'zone' table:'orders'"}},
    {.id = "primary-key.none",
     .protects = "Whether a field belongs to the key can be told only of a table that has one.",
     .allowed = "Keep the primary key.",
     .unheard = "Key fields are looked up after both tables were found to have a key: primary-key.missing comes first."},
    {.id = "primary-key.member",
     .protects = "It says which field of the new key was no key field before, and of which table: the detail behind "
                 "primary-key.field.",
     .allowed = "Keep the key fields and their names. Their order in the key is not compared.",
     .codes = {-4},
     .replaced_by = "primary-key.field",
     .example = {.old_schema = {.table = kTable},
                 .new_schema = {.table = kOtherKey},
                 .instead = {.table = kTable},
                 .code = -4,
                 .answer = "Primaykey can't be modified! primaykey:'zone' table:'orders'"}},
    {.id = "primary-key.size",
     .protects = "The store finds a record by the bytes of its key. A key field of another size, larger or smaller, makes other "
                 "bytes of the same value: every stored record would lie where nobody looks for it.",
     .allowed = "Keep the size of key fields. For a wider value add a field outside the key, with a version above the old "
                "library's. Fields outside the key may grow.",
     .example = {.old_schema = {.table = kTable},
                 .new_schema = {.table = kWideKey},
                 .instead = {.table = kWideField},
                 .code = -3,
                 .answer = "The size of primarykey can't be modified! entry:'uid' metaname:'orders'"}},
    {.id = "primary-key.size-tlv",
     .protects = "In TLV, too, a record is found by the bytes of its key. A key field of another size makes other bytes of the "
                 "same value, and the stored records would not be found under them.",
     .allowed = "Keep the size of key fields. For a wider value add a field with an id of its own outside the key.",
     .example = {.old_schema = {.table = kTable, .protocol = "TLV"},
                 .new_schema = {.table = kWideKey, .protocol = "TLV"},
                 .instead = {.table = kWideField, .protocol = "TLV"},
                 .code = -3,
                 .answer = "The size of primorykey can't be modified! entry:'uid' metaname:'orders'"}},
    {.id = "primary-key.name-tlv",
     .protects =
         "In TLV fields are found by id. Where the first field with the id of a key field has another name, the key would "
         "be read into a field that is not meant.",
     .allowed = "Ids that no two fields of a table share.",
     .unheard = "Ids in TLV schema files are unique. A metadata library of a caller's own making may hold others."},
    {.id = "splittable-key.presence",
     .protects = "The splittable key says how the records of a table are spread over the servers. With a key added or removed a "
                 "record would be looked for on another server than the one that holds it.",
     .allowed = "Keep the splittable key, or keep the table without one.",
     .example = {.old_schema = {.table = kNotSplit},
                 .new_schema = {.table = kSplit},
                 .instead = {.table = kNotSplit},
                 .code = -5,
                 .answer = "Splittablekey can't be modified! table:'orders'"}},
    {.id = "splittable-key.changed",
     .protects = "The splittable key says how the records of a table are spread over the servers, and those already placed by it "
                 "stay where they are. By another key they would be looked for elsewhere. The order of its fields counts here, "
                 "and so do upper and lower case.",
     .allowed = "Keep the fields of the splittable key and their order.",
     .example = {.old_schema = {.table = kSplit},
                 .new_schema = {.table = kSplitOtherwise},
                 .instead = {.table = kSplit},
                 .code = -5,
                 .answer = "Splittablekey can't be modified! splittablekey:'uid' table:'orders'"}},
    {.id = "splittable-key.new-text",
     .protects = "Splittable keys are compared by their text: the names of their fields with commas between them. A text of more "
                 "than 1023 bytes cannot be had, so it cannot be shown that the records stay where they are.",
     .allowed = "Keep the splittable key that the table has; a new table takes one of fewer or shorter names.",
     .example = {.old_schema = {.table = kShortSplit},
                 .new_schema = {.table = kLongSplit},
                 .instead = {.table = kShortSplit},
                 .code = -5,
                 .answer = "Can't get new splittablekey! table:'orders'"}},
    {.id = "splittable-key.old-text",
     .protects = "Splittable keys are compared by their text: the names of their fields with commas between them. A text of more "
                 "than 1023 bytes cannot be had, so it cannot be shown that the records stay where they are.",
     .allowed = "Nothing: with such a key no change of the table can be judged. Its records go into a table with a shorter key.",
     .example = {.old_schema = {.table = kLongSplit},
                 .new_schema = {.table = kShortSplit},
                 .code = -5,
                 .answer = "Can't get old splittablekey! table:'orders'"}},
};

}  // namespace

std::span<const RulePage> KeyPages() { return kPages; }

}  // namespace korvel
