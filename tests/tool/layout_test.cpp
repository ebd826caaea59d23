// layout: what it prints, for one schema and for two, and what it refuses.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::HasSubstr;
using Json = nlohmann::json;

class LayoutTest : public ToolTest {};

TEST_F(LayoutTest, ShowsOffsetsSizesSharesAndMarks) {
  Write("one.xml", Library(5, {Table({.fields = R"(<entry name="größe" id="7" type="string" size="24" version="5"/>)"})}));
  ExpectOutcome(Korvelcheck({"layout", "one.xml"}), 0,
                "table orders: 32 bytes per packed record, 2 fields\n"
                "offset  size  share                field  type    element  count  id\n"
                "     0     8  25.0%  |###       |  uid    uint64        8  1       1  key\n"
                "     8    24  75.0%  |########  |  größe  string       24  1       7  version 5\n",
                "");
}

TEST_F(LayoutTest, PutsTwoSchemasSideBySide) {
  const Outcome outcome = Korvelcheck({"layout", "old.xml", "wide.xml", "--table", "orders"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_THAT(outcome.out, HasSubstr("table orders: "));
  EXPECT_THAT(outcome.out, HasSubstr("; = same, > moved, ~ changed, + added, - removed\n"));
  EXPECT_THAT(outcome.out, testing::ContainsRegex("\n~ .*uid .*type uint[0-9]+ -> uint[0-9]+, (grew|shrank) by"));
  EXPECT_EQ(outcome.err, "");
}

TEST_F(LayoutTest, ReportsTablesOfOneFile) {
  Write("first.xml", Library(5, {Table({.name = "orders"}), Table({.name = "gone"})}));
  Write("second.xml", Library(6, {Table({.name = "orders"}), Table({.name = "fresh"})}));
  const std::string out = Korvelcheck({"layout", "first.xml", "second.xml"}).out;
  EXPECT_THAT(out, HasSubstr("table gone: removed, was 8 bytes"));
  EXPECT_THAT(out, HasSubstr("table fresh: new, 8 bytes"));
}

TEST_F(LayoutTest, OffsetsDoNotApplyToTlvRecords) {
  Write("tlv.xml", Library(5, {Table({.fields = R"(<entry name="n" id="2" type="uint8"/>)"})}, "QMX"));
  EXPECT_THAT(Korvelcheck({"layout", "tlv.xml"}).out, Not(HasSubstr("TLV records")));
  Write("tlv.xml", Library(5, {Table({.attributes = "TableType=GENERIC;DataProtocol=TLV"})}));
  const std::string out = Korvelcheck({"layout", "tlv.xml"}).out;
  EXPECT_THAT(out, HasSubstr("TLV records: sizes are those of the packed form; fields have no fixed offset\n"));
  EXPECT_THAT(out, HasSubstr("\n     -     8  100.0%"));
}

TEST_F(LayoutTest, JsonMatchesText) {
  const Json one = Json::parse(Korvelcheck({"layout", "wide.xml", "--format", "json", "--table", "orders"}).out);
  EXPECT_EQ(one["version"], 1);
  EXPECT_EQ(one["command"], "layout");
  EXPECT_EQ(one["tables"].size(), 1u);
  EXPECT_EQ(one["tables"][0]["fields"][0]["path"], "uid");
  EXPECT_EQ(one["tables"][0]["fields"][0]["offset"], 0);
  EXPECT_EQ(one["tables"][0]["fields"][0]["key"], true);
  const Json two = Json::parse(Korvelcheck({"layout", "old.xml", "wide.xml", "--format", "json"}).out);
  EXPECT_EQ(two["inputs"][0]["role"], "old");
  EXPECT_EQ(two["tables"][0]["fields"][0]["change"], "changed");
  EXPECT_EQ(two["tables"][1]["fields"][0]["change"], "same");
}

TEST_F(LayoutTest, ReadsImagesAndWritesFiles) {
  EXPECT_EQ(Korvelcheck({"compile", "wide.xml", "-o", "wide.qmb"}).exit_code, 0);
  const std::string expected = Korvelcheck({"layout", "wide.xml"}).out;
  EXPECT_EQ(Korvelcheck({"layout", "wide.qmb"}).out, expected);
  EXPECT_EQ(Korvelcheck({"layout", "wide.xml", "-o", "layout.txt"}).exit_code, 0);
  EXPECT_EQ(Read("layout.txt"), expected);
}

TEST_F(LayoutTest, NamesStayOnTheirLine) {
  Write("odd.xml", Library(5, {Table({.fields = R"(<entry name="a&#10;b" type="uint8"/>)"})}));
  EXPECT_THAT(Korvelcheck({"layout", "odd.xml"}).out, HasSubstr("  a\\nb  "));
}

TEST_F(LayoutTest, UnknownTablesAreRefused) {
  ExpectInputError(Korvelcheck({"layout", "old.xml", "--table", "order"}),
                   "korvelcheck: table 'order' is not in old.xml (did you mean 'orders'?)\n");
  ExpectInputError(Korvelcheck({"layout", "old.xml", "same.xml", "--table", "order"}),
                   "korvelcheck: table 'order' is neither in old.xml nor in same.xml (did you mean 'orders'?)\n");
  ExpectInputError(
      Korvelcheck({"layout", "old.xml", "--format", "sarif"}),
      "korvelcheck: layout: --format: 'sarif' is not allowed; allowed: text|json\nTry 'korvelcheck layout --help'.\n");
  ExpectInputError(Korvelcheck({"layout", "old.xml", "same.xml", "wide.xml"}),
                   "korvelcheck: layout: unexpected argument 'wide.xml'\nTry 'korvelcheck layout --help'.\n");
}

}  // namespace
}  // namespace tool_test
