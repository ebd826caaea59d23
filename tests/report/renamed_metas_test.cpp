// Which tables count as renamed, and the file with their old names.
#include "analysis/diff/renamed_metas.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "analysis/suggest/restored_names.h"
#include "read_source.h"

namespace report_test {
namespace {

using korvel::MetaModel;
using korvel::RenameDifference;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

MetaModel Meta(const std::string& name, const std::vector<std::string>& fields) {
  MetaModel meta{.name = name, .primary_key = {fields.front()}};
  for (const std::string& field : fields) meta.entries.push_back({.name = field, .type = "int32"});
  return meta;
}

TEST(RenameDifference, SameContent) {
  EXPECT_EQ(RenameDifference(Meta("orders", {"a", "b"}), Meta("oders", {"a", "b"})), 1u) << "the edits of the name";
  EXPECT_EQ(RenameDifference(Meta("items", {"a", "b"}), Meta("goods", {"a", "b"})), 3u) << "the names are not similar";
}

TEST(RenameDifference, NearlySameContent) {
  EXPECT_TRUE(RenameDifference(Meta("items", {"a", "b", "c", "d"}), Meta("goods", {"a", "b", "c", "x"})));
  EXPECT_TRUE(RenameDifference(Meta("items", {"a", "b", "c"}), Meta("goods", {"a", "b", "c", "d"})));
  EXPECT_FALSE(RenameDifference(Meta("items", {"a", "b", "c"}), Meta("goods", {"a", "b", "x"})));
  EXPECT_FALSE(RenameDifference(Meta("items", {"a", "b"}), Meta("goods", {"a", "b", "c"})));
}

TEST(RenameDifference, SimilarNamesNeedLessContent) {
  EXPECT_TRUE(RenameDifference(Meta("orders", {"a", "b"}), Meta("oders", {"a", "c"})));
  EXPECT_FALSE(RenameDifference(Meta("orders", {"a", "b", "c"}), Meta("oders", {"a", "x", "y"})));
  EXPECT_TRUE(RenameDifference(Meta("orders", {"a"}), Meta("oders", {"a"})));
}

// The structure may have been renamed, too.
TEST(RenameDifference, NamesOfStructuresAreNotCompared) {
  MetaModel before = Meta("items", {"a", "b"});
  MetaModel after = Meta("goods", {"a", "b"});
  before.entries[1].type = "size";
  after.entries[1].type = "szie";
  EXPECT_EQ(RenameDifference(before, after), 3u);
  after.entries[1].count = 2;
  EXPECT_FALSE(RenameDifference(before, after));
  after.entries[1] = {.name = "b", .type = "int32"};
  EXPECT_FALSE(RenameDifference(before, after));
}

TEST(RenameDifference, OtherThings) {
  EXPECT_FALSE(RenameDifference(Meta("items", {"a"}), Meta("goods", {"a"}))) << "one field is too little";
  EXPECT_FALSE(RenameDifference(Meta("orders_2025", {"a", "b"}), Meta("orders_2026", {"a", "b"}))) << "only a number differs";
  EXPECT_FALSE(RenameDifference(Meta("orders", {"a", "b"}), Meta("orders_2", {"a", "b"})));
  EXPECT_FALSE(RenameDifference(Meta("items", {"a", "b"}), Meta("goods", {"b", "a"}))) << "another key";
  MetaModel other = Meta("goods", {"a", "b"});
  other.kind = QMX_TYPE_UNION;
  EXPECT_FALSE(RenameDifference(Meta("items", {"a", "b"}), other));
}

TEST(RenameDifference, MoreCommonFieldsAreLessDifference) {
  const MetaModel table = Meta("items", {"a", "b", "c", "d", "e", "f", "g", "h"});
  const auto same = RenameDifference(table, Meta("goods", {"a", "b", "c", "d", "e", "f", "g", "h"}));
  const auto one = RenameDifference(table, Meta("goods", {"a", "b", "c", "d", "e", "f", "g", "x"}));
  const auto two = RenameDifference(table, Meta("goods", {"a", "b", "c", "d", "e", "f", "x", "y"}));
  EXPECT_LT(*same, *one);
  EXPECT_LT(*one, *two);
}

std::string Table(const std::string& name, const std::string& type = "int8") {
  return "<meta name=\"" + name + "\"><entry name=\"k\" type=\"int8\"/><entry name=\"v\" type=\"" + type +
         "\"/><primarykey entries=\"k\"/></meta>\n";
}

std::string Library(const std::string& metas) { return "<metalib name=\"m\" version=\"1\">\n" + metas + "</metalib>\n"; }

korvel::RenamedMetas Renamed(const std::string& old_metas, const std::string& new_metas) {
  return FindRenamedTables(ReadSource("old.xml", Library(old_metas)), ReadSource("new.xml", Library(new_metas)));
}

TEST(RenamedTables, OldAndNewNames) {
  EXPECT_THAT(Renamed(Table("items") + Table("users"), Table("users") + Table("goods")), ElementsAre(Pair("items", "goods")));
  EXPECT_THAT(Renamed(Table("items"), Table("items") + Table("goods")), IsEmpty());
  EXPECT_THAT(Renamed(Table("items") + Table("goods"), Table("goods")), IsEmpty());
  EXPECT_THAT(Renamed(Table("items"), Table("goods", "int16")), IsEmpty());
}

// Each new table once.
TEST(RenamedTables, SeveralWithTheSameContent) {
  EXPECT_THAT(Renamed(Table("aaaa") + Table("bbbb"), Table("cccc") + Table("dddd")),
              ElementsAre(Pair("aaaa", "cccc"), Pair("bbbb", "dddd")));
  EXPECT_THAT(Renamed(Table("orders") + Table("users"), Table("usres") + Table("oders")),
              ElementsAre(Pair("orders", "oders"), Pair("users", "usres")))
      << "similar names first";
  EXPECT_THAT(Renamed(Table("aaaa") + Table("bbbb"), Table("bbbbc")), ElementsAre(Pair("bbbb", "bbbbc")));
}

TEST(RestoredNames, EveryOtherByteStays) {
  const auto text = [](const std::string& table, const std::string& structure) {
    return "<!-- " + std::string("t s") + " -->\n<metalib name='m' version='1'>\n<meta  name='" + structure +
           "' desc='s'><entry name='s' type='int8'/></meta>\n<meta name='" + table + "'>\n<entry type='" + structure +
           "' name='s'/> <!-- s --><entry name='t' type='int8'/><primarykey entries='t'/></meta></metalib>";
  };
  const korvel::Source source = ReadSource("new.xml", text("tt", "ss"));
  const std::optional<korvel::Source> restored = WithOldNames(source, {{"t", "tt"}, {"s", "ss"}});
  ASSERT_TRUE(restored);
  EXPECT_EQ(restored->text->Bytes(), text("t", "s"));
  EXPECT_EQ(restored->name, "new.xml");
}

TEST(RestoredNames, NameThatXmlCannotExpress) {
  const korvel::Source source = ReadSource("new.xml", Library(Table("t")));
  EXPECT_FALSE(WithOldNames(source, {{"\x01", "t"}}));
}

}  // namespace
}  // namespace report_test
