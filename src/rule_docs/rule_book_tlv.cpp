// Pages about fields in TLV.
#include "rule_docs/rule_book_parts.h"

namespace korvel {
namespace {

constexpr char kTable[] = R"(<entry name="uid" id="1" type="uint32"/>
<entry name="zone" id="2" type="uint32"/>
<primarykey entries="uid"/>)";
constexpr char kWithoutZone[] = R"(<entry name="uid" id="1" type="uint32"/>
<primarykey entries="uid"/>)";
constexpr char kReordered[] = R"(<entry name="zone" id="2" type="uint32"/>
<entry name="uid" id="1" type="uint32"/>
<primarykey entries="uid"/>)";

constexpr char kBoxed[] = R"(<entry name="uid" id="1" type="uint32"/>
<entry name="size" id="2" type="box"/>
<primarykey entries="uid"/>)";
constexpr char kBox[] = R"(<meta name="box">
  <entry name="width" id="1" type="uint32" count="4"/>
</meta>)";
constexpr char kSignedBox[] = R"(<meta name="box">
  <entry name="width" id="1" type="int32" count="4"/>
</meta>)";
constexpr char kSignedBoxToo[] = R"(<meta name="box">
  <entry name="width" id="1" type="uint32" count="4"/>
  <entry name="signed_width" id="2" type="int32" count="4" version="2"/>
</meta>)";
constexpr char kShorterBox[] = R"(<meta name="box">
  <entry name="width" id="1" type="uint32" count="2"/>
  <entry name="weight" id="2" type="uint64" version="2"/>
</meta>)";
constexpr char kLongerBox[] = R"(<meta name="box">
  <entry name="width" id="1" type="uint32" count="8"/>
</meta>)";

constexpr RulePage kPages[] = {
    {.id = "field.missing-tlv",
     .protects =
         "TLV records carry the ids of their fields. A field of the table that is gone, or has another name or id, leaves "
         "values in the stored records that the new schema has no place for; the servers that could pass over them are "
         "yet to come, as the text says. Inside structures fields may go.",
     .allowed = "Keep the fields of the table with their names and ids. Their order does not matter.",
     .example = {.old_schema = {.table = kTable, .protocol = "TLV"},
                 .new_schema = {.table = kWithoutZone, .protocol = "TLV"},
                 .instead = {.table = kReordered, .protocol = "TLV"},
                 .code = -3,
                 .answer = "The entry:zone can't be delete now,it will be supported by korvsvr of 3.28.0!"}},
    {.id = "field.id-tlv",
     .protects =
         "In TLV fields are found by their ids. One whose id is negative cannot be found, although a field of the same id "
         "and name is there.",
     .allowed = "Ids of 0 and above.",
     .unheard = "Ids in TLV schema files start at 0. A metadata library of a caller's own making may hold others."},
    {.id = "field.type-tlv",
     .protects = "Stored bytes are read by the type of their field: the same bytes are another value by another type. That holds "
                 "inside structures as it does outside.",
     .allowed = "Keep the type. For values of another type add a field with an id of its own.",
     .example = {.old_schema = {.table = kBoxed, .structures = kBox, .protocol = "TLV"},
                 .new_schema = {.table = kBoxed, .structures = kSignedBox, .protocol = "TLV"},
                 .instead = {.table = kBoxed, .structures = kSignedBoxToo, .protocol = "TLV"},
                 .code = -3,
                 .answer = "The type of entry can't be modified!  entry_id:'1' metaname:'box'"}},
    {.id = "field.count-tlv",
     .protects =
         "Stored records may hold as many elements as the old count allows. With a smaller one the last of them would have "
         "no room.",
     .allowed = "Keep the count or raise it: inside structures of a TLV library it may grow with and without a refer property.",
     .example = {.old_schema = {.table = kBoxed, .structures = kBox, .protocol = "TLV"},
                 .new_schema = {.table = kBoxed, .structures = kShorterBox, .protocol = "TLV"},
                 .instead = {.table = kBoxed, .structures = kLongerBox, .protocol = "TLV"},
                 .code = -3,
                 .answer = "The count of entry can't be reduced! entry:'width' metaname:'box'"}},
};

}  // namespace

std::span<const RulePage> TlvFieldPages() { return kPages; }

}  // namespace korvel
