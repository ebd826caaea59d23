// A table is unchanged if and only if its difference has no edit but that of the version of the library.
#include "analysis/diff/same_table.h"

#include <gtest/gtest.h>

#include "models.h"
#include "read_source.h"

namespace report_test {
namespace {

using korvel::AreAllUnchanged;
using korvel::CountOwnEdits;
using korvel::Difference;
using korvel::IsUnchanged;
using korvel::Source;

TEST(SameTable, AgreesWithTheDifferenceOfRandomPairs) {
  std::uint64_t changed = 0;
  const std::uint64_t pairs = TestRandomModels(20261123, 2000, [&](ModelPair& models, std::mt19937_64& /*random*/) {
    const Source old_source = SourceOf("old", models.old_model);
    const Source new_source = SourceOf("new", models.new_model);
    const Difference difference(old_source, new_source, "t");
    EXPECT_EQ(IsUnchanged(old_source, new_source, "t"), CountOwnEdits(difference.edits()) == 0) << Lines(difference).size();
    EXPECT_TRUE(IsUnchanged(old_source, SourceOf("copy", models.old_model), "t"));
    EXPECT_TRUE(AreAllUnchanged(old_source, SourceOf("copy", models.old_model)));
    EXPECT_TRUE(!AreAllUnchanged(old_source, new_source) || IsUnchanged(old_source, new_source, "t"));
    changed += CountOwnEdits(difference.edits()) > 0 ? 1 : 0;
  });
  EXPECT_GT(changed, pairs / 4);
  EXPECT_LT(changed, pairs);
}

// Each replacement changes one thing.
TEST(SameTable, SeesEveryKindOfEdit) {
  const std::string text = R"(<metalib name="mall" version="5" protocol="QMX"><meta name="item"><entry name="n" type="int8"/>
<entry name="price" type="int32" id="7" version="2"/></meta><meta name="other"><entry name="o" type="int8"/></meta>
<meta name="t" customattr="ListNum=1"><entry name="a" type="uint32"/><entry name="c" type="uint32" customattr2="x"/>
<entry name="list" type="item" count="4" refer="c"/><entry name="s" type="string" size="8"/><primarykey entries="a c"/>
<splittablekey entries="a"/><index name="i"><column entry="a"/><column entry="c" desc="true"/></index></meta></metalib>)";
  const Source old_source = ReadSource("old", text);
  const auto is_unchanged = [&](const std::string& from, const std::string& to) {
    std::string changed = text;
    changed.replace(changed.find(from), from.size(), to);
    const Source new_source = ReadSource("new", changed);
    const bool is_same = IsUnchanged(old_source, new_source, "t");
    EXPECT_EQ(is_same, CountOwnEdits(Difference(old_source, new_source, "t").edits()) == 0) << to;
    EXPECT_EQ(AreAllUnchanged(old_source, new_source), from == "version=\"5\"") << to;
    return is_same;
  };
  EXPECT_TRUE(is_unchanged("version=\"5\"", "version=\"6\""));
  EXPECT_TRUE(is_unchanged("name=\"o\" type=\"int8\"", "name=\"o\" type=\"int16\"")) << "the table does not embed it";
  const std::pair<const char*, const char*> kChanges[] = {
      {"name=\"mall\"", "name=\"shop\""},
      {" protocol=\"QMX\"", ""},
      {"name=\"price\"", "name=\"cost\""},
      {"id=\"7\"", "id=\"8\""},
      {"version=\"2\"", "version=\"3\""},
      {"type=\"int32\"", "type=\"int64\""},
      {"ListNum=1", "ListNum=2"},
      {"customattr2=\"x\"", "customattr2=\"y\""},
      {"customattr2=\"x\"", ""},
      {"count=\"4\"", "count=\"5\""},
      {"refer=\"c\"", "refer=\"a\""},
      {"refer=\"c\"", ""},
      {"type=\"item\"", "type=\"other\""},
      {"size=\"8\"", "size=\"9\""},
      {"entries=\"a c\"", "entries=\"a\""},
      {"entries=\"a c\"", "entries=\"c a\""},
      {"<splittablekey entries=\"a\"/>", ""},
      {"name=\"i\"", "name=\"j\""},
      {"desc=\"true\"", ""},
      {"<column entry=\"a\"/>", ""},
      {"<meta name=\"item\"", "<meta name=\"item\" kind=\"union\""},
  };
  for (const auto& [from, to] : kChanges) EXPECT_FALSE(is_unchanged(from, to)) << from << " -> " << to;
}

}  // namespace
}  // namespace report_test
