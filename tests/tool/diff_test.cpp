// diff: every edit with its locations; nothing is checked.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using Json = nlohmann::json;

class DiffTest : public ToolTest {
 protected:
  // Two tables that share a structure, a removed table and a new one.
  void WriteMall() const {
    const std::string items = R"(<entry name="items" id="2" type="item" count="9"/>)";
    Write("mall.xml", Library(5, {R"(<meta name="item"><entry name="sku" id="1" type="string" size="32"/></meta>)",
                                  Table({.fields = items}), Table({.name = "carts", .fields = items}), Table({.name = "gone"})}));
    Write("next.xml", Library(6, {R"(<meta name="item"><entry name="sku" id="1" type="string" size="64"/></meta>)",
                                  Table({.key_type = "uint32", .fields = items}), Table({.name = "carts", .fields = items}),
                                  Table({.name = "fresh"})}));
  }

  Json Report(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "diff");
    arguments.insert(arguments.end(), {"--format", "json"});
    const Outcome outcome = Korvelcheck(arguments);
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_EQ(outcome.err, "");
    return Json::parse(outcome.out);
  }
};

TEST_F(DiffTest, TablesWithoutEditsSaySo) {
  ExpectOutcome(Korvelcheck({"diff", "old.xml", "same.xml"}), 0,
                "same.xml:2:1: table orders: no change\n"
                "same.xml:3:1: table users: no change\n"
                "0 changes; 0 tables changed, 2 unchanged, 0 new, 0 removed\n",
                "");
}

TEST_F(DiffTest, ListsSharedStructuresAndTheLibraryOnce) {
  WriteMall();
  ExpectOutcome(Korvelcheck({"diff", "mall.xml", "next.xml"}), 0,
                "library: 1 change\n"
                "  next.xml:1:31: version of the library: 5 -> 6 (was at mall.xml:1:31)\n"
                "next.xml:3:1: table orders: 1 change; more in item\n"
                "  next.xml:3:52: type of uid: uint64 -> uint32 (was at mall.xml:3:52)\n"
                "next.xml:4:1: table carts: changes in item\n"
                "mall.xml:5:1: table gone: removed\n"
                "next.xml:5:1: table fresh: new\n"
                "structure item: 1 change; embedded as orders.items[], carts.items[]\n"
                "  next.xml:2:64: size of sku: 32 -> 64 (was at mall.xml:2:64)\n"
                "3 changes; 2 tables changed, 0 unchanged, 1 new, 1 removed\n",
                "");
}

// Nothing is checked: changes that `check` refuses end with exit code 0.
TEST_F(DiffTest, RefusedChangesAreChanges) {
  EXPECT_EQ(Korvelcheck({"check", "old.xml", "wide.xml"}).exit_code, 1);
  ExpectOutcome(Korvelcheck({"diff", "old.xml", "wide.xml", "--table", "orders"}), 0,
                "wide.xml:2:1: table orders: 1 change\n"
                "  wide.xml:2:52: type of uid: uint64 -> uint32 (was at old.xml:2:52)\n"
                "1 change; 1 table changed, 0 unchanged, 0 new, 0 removed\n",
                "");
}

TEST_F(DiffTest, LocatesRemovedItemsInTheOldFile) {
  Write("more.xml", Library(5, {Table({.fields = R"(<entry name="note" id="2" type="uint8"/>)"})}));
  Write("less.xml", Library(5, {Table()}));
  EXPECT_THAT(Korvelcheck({"diff", "more.xml", "less.xml"}).out, HasSubstr("\n  more.xml:2:61: field note removed\n"));
  EXPECT_THAT(Korvelcheck({"diff", "less.xml", "more.xml"}).out, HasSubstr("\n  more.xml:2:61: field note added\n"));
  Write("more.xml", Library(5, {Table({.fields = R"(<splittablekey entries="uid"/>)"})}));
  EXPECT_THAT(Korvelcheck({"diff", "more.xml", "less.xml"}).out,
              HasSubstr("\n  more.xml:2:85: splittable key of orders: uid -> none\n"));
}

// A table that another one embeds lists its edits once, under its own name.
TEST_F(DiffTest, EmbeddedTableIsListedAsTable) {
  const std::string inner = R"(<entry name="user" id="2" type="users"/>)";
  Write("before.xml", Library(5, {Table({.fields = inner}), Table({.name = "users"})}));
  Write("after.xml", Library(5, {Table({.fields = inner}), Table({.name = "users", .key_type = "uint32"})}));
  ExpectOutcome(Korvelcheck({"diff", "before.xml", "after.xml"}), 0,
                "after.xml:2:1: table orders: changes in users\n"
                "after.xml:3:1: table users: 1 change\n"
                "  after.xml:3:51: type of uid: uint64 -> uint32 (was at before.xml:3:51)\n"
                "1 change; 2 tables changed, 0 unchanged, 0 new, 0 removed\n",
                "");
}

TEST_F(DiffTest, ImagesHaveNoLines) {
  EXPECT_EQ(Korvelcheck({"compile", "wide.xml", "-o", "wide.qmb"}).exit_code, 0);
  EXPECT_THAT(Korvelcheck({"diff", "old.xml", "wide.qmb"}).out,
              StartsWith("wide.qmb: table orders: 1 change\n  wide.qmb: type of uid: uint64 -> uint32 (was at old.xml:2:52)\n"));
  const Json place = Report({"old.xml", "wide.qmb"})["tables"][0]["changes"][0]["new_location"];
  EXPECT_EQ(place["file"], "wide.qmb");
  EXPECT_TRUE(place["line"].is_null() && place["column"].is_null());
}

TEST_F(DiffTest, NamesStayOnTheirLine) {
  Write("plain.xml", Library(5, {Table()}));
  Write("odd.xml", Library(5, {Table({.fields = R"(<entry name="a&#10;b" id="2" type="uint8"/>)"})}));
  EXPECT_THAT(Korvelcheck({"diff", "plain.xml", "odd.xml"}).out, HasSubstr("field a\\nb added\n"));
}

TEST_F(DiffTest, JsonMatchesText) {
  WriteMall();
  const Json report = Report({"mall.xml", "next.xml"});
  EXPECT_EQ(report["command"], "diff");
  EXPECT_EQ(report["inputs"], Json::parse(R"([{"role": "old", "file": "mall.xml"}, {"role": "new", "file": "next.xml"}])"));
  EXPECT_EQ(report["library"][0]["kind"], "library-version");
  EXPECT_EQ(report["summary"], Json::parse(R"({"changes": 3, "changed": 2, "same": 0, "new": 1, "removed": 1})"));
  std::vector<std::string> status;
  for (const Json& table : report["tables"]) status.push_back(table["status"]);
  EXPECT_THAT(status, ElementsAre("changed", "changed", "removed", "new"));
  EXPECT_EQ(report["tables"][1]["structures"], Json::parse(R"(["item"])"));
  EXPECT_THAT(report["tables"][1]["changes"], IsEmpty());
  EXPECT_EQ(report["structures"][0], Json::parse(R"({
    "structure": "item",
    "embedded": [{"table": "orders", "paths": ["orders.items[]"], "path_count": 1},
                 {"table": "carts", "paths": ["carts.items[]"], "path_count": 1}],
    "changes": [{"kind": "entry-size", "meta": "item", "item": "sku", "text": "size of sku: 32 -> 64", "before": "32",
                 "after": "64", "old_location": {"file": "mall.xml", "line": 2, "column": 64},
                 "new_location": {"file": "next.xml", "line": 2, "column": 64}}]})"));
}

TEST_F(DiffTest, MissingLocationsAreNull) {
  Write("more.xml", Library(5, {Table({.fields = R"(<entry name="note" id="2" type="uint8"/>)"})}));
  Write("less.xml", Library(5, {Table()}));
  EXPECT_TRUE(Report({"less.xml", "more.xml"})["tables"][0]["changes"][0]["old_location"].is_null());
  EXPECT_EQ(Report({"more.xml", "less.xml"})["tables"][0]["changes"][0]["new_location"]["column"], 1) << "the table's";
}

TEST_F(DiffTest, OtherFormatsAndUnknownTablesAreRefused) {
  ExpectInputError(Korvelcheck({"diff", "old.xml", "same.xml", "--format", "sarif"}),
                   "korvelcheck: diff: --format: 'sarif' is not allowed; allowed: text|json\nTry 'korvelcheck diff --help'.\n");
  ExpectInputError(Korvelcheck({"diff", "old.xml", "same.xml", "--table", "order"}),
                   "korvelcheck: table 'order' is neither in old.xml nor in same.xml (did you mean 'orders'?)\n");
  ExpectInputError(Korvelcheck({"diff", "old.xml", "no.xml"}), "korvelcheck: no.xml: No such file or directory\n");
  Write("bare.xml", Library(5, {R"(<meta name="item"><entry name="sku" id="1" type="uint8"/></meta>)"}));
  ExpectInputError(Korvelcheck({"diff", "bare.xml", "old.xml"}),
                   "korvelcheck: nothing was compared: bare.xml has no table (a meta with a primary key)\n");
}

}  // namespace
}  // namespace tool_test
