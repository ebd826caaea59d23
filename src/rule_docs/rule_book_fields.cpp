// Pages about fields in the record format, and about versions and order, which the record format alone looks at.
#include "rule_docs/rule_book_parts.h"

namespace korvel {
namespace {

constexpr char kTable[] = R"(<entry name="uid" type="uint32"/>
<entry name="zone" type="uint32"/>
<entry name="note" type="string" size="64"/>
<primarykey entries="uid"/>)";
constexpr char kWithoutZone[] = R"(<entry name="uid" type="uint32"/>
<entry name="note" type="string" size="64"/>
<primarykey entries="uid"/>)";
constexpr char kShortNote[] = R"(<entry name="uid" type="uint32"/>
<entry name="zone" type="uint32"/>
<entry name="note" type="string" size="32"/>
<primarykey entries="uid"/>)";
constexpr char kLongNote[] = R"(<entry name="uid" type="uint32"/>
<entry name="zone" type="uint32"/>
<entry name="note" type="string" size="128"/>
<primarykey entries="uid"/>)";
constexpr char kSignedZone[] = R"(<entry name="uid" type="uint32"/>
<entry name="zone" type="int32"/>
<entry name="note" type="string" size="64"/>
<primarykey entries="uid"/>)";
constexpr char kSecondZone[] = R"(<entry name="uid" type="uint32"/>
<entry name="zone" type="uint32"/>
<entry name="note" type="string" size="64"/>
<entry name="signed_zone" type="int32" version="2"/>
<primarykey entries="uid"/>)";
constexpr char kSwapped[] = R"(<entry name="uid" type="uint32"/>
<entry name="note" type="string" size="64"/>
<entry name="zone" type="uint32"/>
<primarykey entries="uid"/>)";
constexpr char kInserted[] = R"(<entry name="uid" type="uint32"/>
<entry name="day" type="uint32" version="2"/>
<entry name="zone" type="uint32"/>
<entry name="note" type="string" size="64"/>
<primarykey entries="uid"/>)";
constexpr char kNewerZone[] = R"(<entry name="uid" type="uint32"/>
<entry name="zone" type="uint32" version="2"/>
<entry name="note" type="string" size="64"/>
<primarykey entries="uid"/>)";
constexpr char kMarkedZone[] = R"(<entry name="uid" type="uint32"/>
<entry name="zone" type="uint32" customattr2="pii"/>
<entry name="note" type="string" size="64"/>
<primarykey entries="uid"/>)";
constexpr char kAddedTooOld[] = R"(<entry name="uid" type="uint32"/>
<entry name="zone" type="uint32"/>
<entry name="note" type="string" size="64"/>
<entry name="day" type="uint32" version="1"/>
<primarykey entries="uid"/>)";
constexpr char kAdded[] = R"(<entry name="uid" type="uint32"/>
<entry name="zone" type="uint32"/>
<entry name="note" type="string" size="64"/>
<entry name="day" type="uint32" version="2"/>
<primarykey entries="uid"/>)";

constexpr char kFourScores[] = R"(<entry name="uid" type="uint32"/>
<entry name="scores" type="uint32" count="4"/>
<primarykey entries="uid"/>)";
constexpr char kEightScores[] = R"(<entry name="uid" type="uint32"/>
<entry name="scores" type="uint32" count="8"/>
<primarykey entries="uid"/>)";
constexpr char kFourMoreScores[] = R"(<entry name="uid" type="uint32"/>
<entry name="scores" type="uint32" count="4"/>
<entry name="more_scores" type="uint32" count="4" version="2"/>
<primarykey entries="uid"/>)";
constexpr char kUpToEight[] = R"(<entry name="uid" type="uint32"/>
<entry name="n_scores" type="uint32"/>
<entry name="scores" type="uint32" count="8" refer="n_scores"/>
<primarykey entries="uid"/>)";
constexpr char kUpToFour[] = R"(<entry name="uid" type="uint32"/>
<entry name="n_scores" type="uint32"/>
<entry name="scores" type="uint32" count="4" refer="n_scores"/>
<primarykey entries="uid"/>)";
constexpr char kUpToSixteen[] = R"(<entry name="uid" type="uint32"/>
<entry name="n_scores" type="uint32"/>
<entry name="scores" type="uint32" count="16" refer="n_scores"/>
<primarykey entries="uid"/>)";

constexpr char kBox[] = R"(<meta name="box">
  <entry name="width" type="uint32"/>
</meta>)";
constexpr char kCrate[] = R"(<meta name="crate">
  <entry name="width" type="uint32"/>
</meta>)";
constexpr char kBoxed[] = R"(<entry name="uid" type="uint32"/>
<entry name="size" type="box"/>
<primarykey entries="uid"/>)";
constexpr char kCrated[] = R"(<entry name="uid" type="uint32"/>
<entry name="size" type="crate"/>
<primarykey entries="uid"/>)";
constexpr char kWiderBox[] = R"(<meta name="box">
  <entry name="width" type="uint32"/>
  <entry name="height" type="uint32" version="2"/>
</meta>)";

constexpr char kNumberedBox[] = R"(<meta name="box">
  <entry name="width" id="1" type="uint32"/>
</meta>)";
constexpr char kRenumberedBox[] = R"(<meta name="box">
  <entry name="width" id="2" type="uint32"/>
</meta>)";
constexpr char kNumberedBoxed[] = R"(<entry name="uid" id="1" type="uint32"/>
<entry name="size" id="2" type="box"/>
<primarykey entries="uid"/>)";

constexpr RulePage kPages[] = {
    {.id = "field.structure-missing",
     .protects =
         "A field that is a structure is judged field by field. Where the new library has no such structure, none of them "
         "can be found.",
     .allowed = "Keep the structure in the library.",
     .unheard = "In schema files the structure of a field is always there: a type that names nothing is an error of the file. A "
                "metadata library of a caller's own making may lack one."},
    {.id = "field.structure",
     .protects =
         "A record holds the fields of a structure where the structure stands. Another structure has other fields, or will "
         "have them with its next change. Structures are told apart by name, so one with the same fields under another "
         "name is refused, too.",
     .allowed =
         "Keep the structure and give it the further fields, with a version above the old library's. Or add a field with the "
         "other structure.",
     .example = {.old_schema = {.table = kBoxed, .structures = kBox},
                 .new_schema = {.table = kCrated, .structures = kCrate},
                 .instead = {.table = kBoxed, .structures = kWiderBox},
                 .code = -3,
                 .answer = "Can't modify the entry struct type  box -> crate"}},
    {.id = "field.missing",
     .protects = "Records of the record format hold their fields one behind the other, without names. When the schema forgets a "
                 "field, the bytes that were stored for it are taken for those of the next one. Fields are told apart by name, "
                 "so a renamed field is missing, too.",
     .allowed = "Keep the field and its name. One that nobody needs any more can stay and be left empty.",
     .example = {.old_schema = {.table = kTable},
                 .new_schema = {.table = kWithoutZone},
                 .instead = {.table = kTable},
                 .code = -3,
                 .answer = "The entry can't be found! entry_name:'zone' metaname:'orders'"}},
    {.id = "field.id",
     .protects =
         "In a TLV library the id of a field is what records know it by. Where both libraries are in TLV and the table was "
         "created in the record format, a field must keep its name and its id alike.",
     .allowed = "Keep the ids of the fields. A field with another id is another field: add it, with a version above the old "
                "library's.",
     .example = {.options = "--created-as qmx",
                 .old_schema = {.table = kNumberedBoxed, .structures = kNumberedBox, .protocol = "TLV"},
                 .new_schema = {.table = kNumberedBoxed, .structures = kRenumberedBox, .protocol = "TLV"},
                 .instead = {.table = kNumberedBoxed, .structures = kNumberedBox, .protocol = "TLV"},
                 .code = -3,
                 .answer = "The entry_id can't be modified! entry_id:'1' metaname:'box'"}},
    {.id = "field.size",
     .protects =
         "A stored value may need all the bytes that its field had. In a smaller field it would be cut, or would reach into "
         "what comes behind it.",
     .allowed = "Keep the size or let the field grow: a field outside the key may become larger.",
     .example = {.old_schema = {.table = kTable},
                 .new_schema = {.table = kShortNote},
                 .instead = {.table = kLongNote},
                 .code = -3,
                 .answer = "The size of entry can't be reduced! entry:'note' metaname:'orders'"}},
    {.id = "field.type",
     .protects =
         "Stored bytes are read by the type of their field: the same bytes are another value by another type, even one of "
         "the same size.",
     .allowed = "Keep the type. For values of another type add a field, with a version above the old library's.",
     .example = {.old_schema = {.table = kTable},
                 .new_schema = {.table = kSignedZone},
                 .instead = {.table = kSecondZone},
                 .code = -3,
                 .answer = "The type of entry can't be modified! entry:'zone' metaname:'orders'"}},
    {.id = "field.count-refer",
     .protects =
         "A field with a refer property holds as many elements as another field says, up to its count. Stored records may "
         "have used all of them, and with a smaller count the last ones would have no room.",
     .allowed = "Keep the count or raise it.",
     .example = {.old_schema = {.table = kUpToEight},
                 .new_schema = {.table = kUpToFour},
                 .instead = {.table = kUpToSixteen},
                 .code = -3,
                 .answer = "The count of entry can't be reduced if contain refer property! entry:'scores' metaname:'orders'"}},
    {.id = "field.count",
     .protects =
         "A field without a refer property holds all its elements in every record. Stored records have as many as the old "
         "count says, and nothing tells a reader so: with another count it would take too few of them, or take other "
         "bytes for them.",
     .allowed = "Keep the count. For more elements add a field, with a version above the old library's.",
     .example = {.old_schema = {.table = kFourScores},
                 .new_schema = {.table = kEightScores},
                 .instead = {.table = kFourMoreScores},
                 .code = -3,
                 .answer =
                     "The count of entry can't be modified if not contain refer property! entry:'scores' metaname:'orders'"}},
    {.id = "field.customattr2",
     .protects = "The second custom attribute says how the store and its programs treat a field: for a sorted list, that it is "
                 "sorted by it. The stored records were written under the old one. A missing attribute and an empty one are the "
                 "same.",
     .allowed = "Keep the attribute. A field that is added may bear any.",
     .example = {.old_schema = {.table = kTable},
                 .new_schema = {.table = kMarkedZone},
                 .instead = {.table = kTable},
                 .code = -3,
                 .answer = "The customattr2 of entry can not modify! entry:'zone' metaname:'orders'"}},
    {.id = "field.version",
     .protects = "The version of a field says in which version of the library it came: records older than that do not have it. "
                 "With another number, readers would miss the field where it is, or look for it where it is not.",
     .allowed = "Keep the versions of fields that stay. Raise the version of the library.",
     .example = {.old_schema = {.table = kTable},
                 .new_schema = {.table = kNewerZone},
                 .instead = {.table = kTable},
                 .code = -8,
                 .answer = "Version of the entry can't be modified! entry:'zone' meta:'orders'"}},
    {.id = "field.new-version",
     .protects =
         "Records written under the old library do not have a field that is added now. Its version is how a reader knows: "
         "it must be above the old library's, so that no stored record seems to have the field. An absent version "
         "counts as 1.",
     .allowed = "Give an added field a version above the old library's; as a rule, that of the new library.",
     .example = {.old_schema = {.table = kTable},
                 .new_schema = {.table = kAddedTooOld},
                 .instead = {.table = kAdded},
                 .code = -8,
                 .answer = "new entry version lower than old metalib version or misspell 'version', please check both. "
                           "entry:'day' meta:'orders'"}},
    {.id = "field.order",
     .protects = "Records of the record format hold their fields one behind the other, in the order of the schema. Fields that "
                 "change places would be read from each other's bytes.",
     .allowed = "Keep the fields in their order. Fields may be added anywhere, also between them.",
     .example = {.old_schema = {.table = kTable},
                 .new_schema = {.table = kSwapped},
                 .instead = {.table = kInserted},
                 .code = -8,
                 .answer = "Order of the entry can't be modified! entry:'note' meta:'orders'"}},
};

}  // namespace

std::span<const RulePage> FieldPages() { return kPages; }

}  // namespace korvel
