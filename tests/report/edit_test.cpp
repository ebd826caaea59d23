// Names, descriptions and locations of edits.
#include "analysis/diff/edit.h"

#include <gmock/gmock.h>

#include <set>

#include "analysis/diff/diff.h"
#include "read_source.h"

namespace report_test {
namespace {

using korvel::Describe;
using korvel::DescribeIn;
using korvel::Difference;
using korvel::Edit;
using korvel::EditKind;
using korvel::Location;
using korvel::NameOf;

TEST(Edit, NamesDiffer) {
  std::set<std::string_view> names;
  for (int i = 0; i <= static_cast<int>(EditKind::kEntryMeta); ++i) {
    EXPECT_FALSE(NameOf(static_cast<EditKind>(i)).empty());
    EXPECT_TRUE(names.insert(NameOf(static_cast<EditKind>(i))).second);
  }
}

TEST(Edit, IsDescribedOnOneLine) {
  const auto describe = [](EditKind kind, const char* item, const char* before, const char* after) {
    Edit edit;
    edit.kind = kind;
    edit.meta = "orders";
    edit.item = item;
    edit.before = before;
    edit.after = after;
    return Describe(edit);
  };
  EXPECT_EQ(describe(EditKind::kLibraryVersion, "", "5", "6"), "version of the library: 5 -> 6");
  EXPECT_EQ(describe(EditKind::kTableAttribute, "ListNum", "5", ""), "attribute ListNum of orders: 5 -> none");
  EXPECT_EQ(describe(EditKind::kTableAttribute, "ListNum", "5", "5"), "attribute ListNum of orders: 5") << "checked alone";
  EXPECT_EQ(describe(EditKind::kTableAttribute, "", "a", "b"), "attribute of orders: a -> b");
  EXPECT_EQ(describe(EditKind::kPrimaryKey, "", "uid", "uid zone"), "primary key of orders: uid -> uid zone");
  EXPECT_EQ(describe(EditKind::kEntryType, "uid", "uint32", "uint64"), "type of uid: uint32 -> uint64");
  EXPECT_EQ(describe(EditKind::kEntryMoved, "zone", "uid", "n_items"), "field zone moved after n_items");
  EXPECT_EQ(describe(EditKind::kEntryMoved, "zone", "uid", ""), "field zone moved to the front");
  EXPECT_EQ(describe(EditKind::kEntryAdded, "a\nb", "", "int8"), "field a\\nb added");
  EXPECT_EQ(describe(EditKind::kEntryAdded, "", "", "int8"), "field \"\" added");
  EXPECT_EQ(describe(EditKind::kEntryRenamed, "note", "note", ""), "field note renamed to \"\"");
  EXPECT_EQ(describe(EditKind::kEntryType, "", "uint32", "uint64"), "type of \"\": uint32 -> uint64");
  EXPECT_EQ(describe(EditKind::kIndexColumns, "by_zone", "zone", "zone desc"), "columns of index by_zone: zone -> zone desc");
}

TEST(Edit, NamesItsStructureInAListAboutAnotherTable) {
  const auto describe = [](EditKind kind, const char* table) {
    Edit edit;
    edit.kind = kind;
    edit.meta = kind == EditKind::kLibraryVersion ? "" : "item";
    edit.item = kind < EditKind::kIndexAdded ? "" : "price";
    edit.before = "1";
    edit.after = "2";
    return DescribeIn(table, edit);
  };
  EXPECT_EQ(describe(EditKind::kEntryVersion, "item"), "version of price: 1 -> 2");
  EXPECT_EQ(describe(EditKind::kEntryVersion, "orders"), "version of item.price: 1 -> 2");
  EXPECT_EQ(describe(EditKind::kEntryRemoved, "orders"), "field item.price removed");
  EXPECT_EQ(describe(EditKind::kIndexColumns, "orders"), "columns of index item.price: 1 -> 2");
  EXPECT_EQ(describe(EditKind::kMetaKind, "orders"), "kind of item: 1 -> 2");
  EXPECT_EQ(describe(EditKind::kLibraryVersion, "orders"), "version of the library: 1 -> 2");
}

std::vector<std::string> DescribeAll(const std::string& protocol, const std::string& old_fields, const std::string& new_fields) {
  const auto source = [&](const char* name, const std::string& fields) {
    return ReadSource(name, R"(<metalib name="m" version="1" protocol=")" + protocol + R"("><meta name="t">)" + fields +
                                R"(<entry name="uid" id="1" type="int8"/><primarykey entries="uid"/></meta></metalib>)");
  };
  const korvel::Source old_source = source("old", old_fields);
  const korvel::Source new_source = source("new", new_fields);
  std::vector<std::string> texts;
  const Difference difference(old_source, new_source, "t");
  for (const Edit& edit : difference.edits()) texts.push_back(Describe(edit));
  return texts;
}

// Regression: it was a renamed field, and nothing said why its size was refused, too.
TEST(Edit, SaysThatAnIdIsReused) {
  const std::string guild = R"(<entry name="guild" id="3" type="string" size="30"/>)";
  const std::string clan = R"(<entry name="clan" id="3" type="uint32"/>)";
  EXPECT_THAT(DescribeAll("TLV", guild, clan),
              testing::ElementsAre("field guild removed; its id 3 is reused by clan (uint32)",
                                   "type of guild: string(30) -> uint32; its id 3 is reused by clan (uint32)"));
}

TEST(Edit, ChangedFieldsReuseNoId) {
  const auto field = [](const std::string& name, int id, const std::string& type) {
    return "<entry name=\"" + name + "\" id=\"" + std::to_string(id) + "\" type=\"" + type + "\"/>";
  };
  const auto all = [](const std::vector<std::string>& texts) { return testing::PrintToString(texts); };
  const std::string reused = "is reused by";
  for (const auto& [old_fields, new_fields] : {
           std::pair(field("guild", 3, "int32"), field("clan", 3, "int32")),        // only the name
           std::pair(field("guild_id", 3, "int32"), field("guildId", 3, "int64")),  // a spelling of the name
           std::pair(field("guild", 3, "int32"), field("guild", 3, "int64")),       // only the type
           std::pair(field("a", 3, "int32") + field("b", 4, "int8"),
                     field("b", 3, "int8") + field("a", 4, "int32")),  // both stay
       }) {
    EXPECT_THAT(all(DescribeAll("TLV", old_fields, new_fields)), testing::Not(testing::HasSubstr(reused)));
  }
  EXPECT_THAT(all(DescribeAll("QMX", field("guild", 3, "int32"), field("clan", 3, "int64"))),
              testing::Not(testing::HasSubstr(reused)))
      << "ids do not identify fields";
}

// The text at a location: the value of its attribute, or the name of its element.
std::string TextAt(const Location& location) {
  if (!location) return "(nowhere)";
  const korvel::SchemaText& text = *location.source->text;
  const std::size_t element = text.source_map.Find(location.element).value();
  const std::string place = location.source->name + " ";
  if (location.attribute.empty()) {
    const std::size_t length = text.Bytes().substr(element).find('"', text.Bytes().substr(element).find('"') + 1) + 1;
    return place + std::string(text.Bytes().substr(element, length));
  }
  const auto value = qmx::FindAttributeValue(text.Bytes(), element, location.attribute);
  return value ? place + std::string(location.attribute) + "=" +
                     std::string(text.Bytes().substr(value->begin, value->end - value->begin))
               : place + "no " + std::string(location.attribute);
}

TEST(Edit, HasBothLocations) {
  const auto old_source =
      ReadSource("old", R"(<metalib name="m" version="1"><meta name="other"><entry name="o" type="int8"/></meta>
<meta name="t" customattr="A=1"><entry name="a" type="int8"/><entry name="b" type="int8" id="4"/><entry name="c" type="int16"/>
<entry name="d" type="bytes" size="3"/><primarykey entries="a"/><index name="i"><column entry="a"/></index>
<index name="j"><column entry="a"/></index></meta></metalib>)");
  const auto new_source = ReadSource("new", R"(<metalib name="m" version="2" protocol="QMX">
<meta name="t" customattr="A=2;B=1"><entry name="new" type="int8"/><entry name="c" type="int32"/>
<entry name="a" type="int8" customattr2="x"/><entry name="e" type="int8" id="4"/><primarykey entries="c a"/>
<splittablekey entries="c"/><index name="i"><column entry="c"/></index><index name="k"><column entry="c"/></index></meta></metalib>)");
  std::vector<std::string> places;
  const Difference difference(old_source, new_source, "t");
  for (const Edit& edit : difference.edits()) {
    places.push_back(std::string(NameOf(edit.kind)) + " " + edit.item + ": " + TextAt(edit.old_location) + ", " +
                     TextAt(edit.new_location));
  }
  const std::vector<std::string> expected = {
      "library-version : old version=1, new version=2",
      "library-protocol : old <metalib name=\"m\", new protocol=QMX",
      "table-attribute A: old customattr=A=1, new customattr=A=2;B=1",
      "table-attribute B: old customattr=A=1, new customattr=A=2;B=1",
      "entry-added new: (nowhere), new <entry name=\"new\"",
      "entry-moved c: old <entry name=\"c\", new <entry name=\"c\"",
      "entry-type c: old type=int16, new type=int32",
      "entry-customattr2 a: old <entry name=\"a\", new customattr2=x",
      "entry-renamed b: old name=b, new name=e",
      "entry-removed d: old <entry name=\"d\", new <meta name=\"t\"",
      "primary-key : old entries=a, new entries=c a",
      "splittable-key : old <meta name=\"t\", new entries=c",
      "index-columns i: old <index name=\"i\", new <index name=\"i\"",
      "index-removed j: old <index name=\"j\", new <meta name=\"t\"",
      "index-added k: (nowhere), new <index name=\"k\"",
  };
  EXPECT_EQ(places, expected);
}

}  // namespace
}  // namespace report_test
