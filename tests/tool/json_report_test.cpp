// The report as JSON, member by member and in order.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <optional>

#include "tool_test.h"

namespace tool_test {
namespace {

using Json = nlohmann::ordered_json;

class JsonReportTest : public ToolTest {
 protected:
  Json Report(const std::vector<std::string>& arguments, int exit_code) const {
    std::vector<std::string> all = arguments;
    all.insert(all.end(), {"--format", "json"});
    const Outcome outcome = Korvelcheck(all);
    EXPECT_EQ(outcome.exit_code, exit_code);
    EXPECT_EQ(outcome.err, "");
    return Json::parse(outcome.out, nullptr, false);
  }
};

std::vector<std::string> Keys(const Json& object) {
  std::vector<std::string> keys;
  for (const auto& item : object.items()) keys.push_back(item.key());
  return keys;
}

Json LocationOf(const char* file, int line, int column) { return {{"file", file}, {"line", line}, {"column", column}}; }

// The numbers in the order of the members; missing ones are 0. The number of unchanged tables may be absent.
Json SummaryOf(std::vector<int> numbers, std::optional<int> unchanged = {}) {
  constexpr const char* kNames[] = {"compared", "allowed", "refused",     "new",           "removed",    "failing",
                                    "findings", "waived",  "files_added", "files_deleted", "files_moved"};
  numbers.resize(std::size(kNames));
  Json summary;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    summary[kNames[i]] = numbers[i];
    if (i == 1 && unchanged) summary["unchanged"] = *unchanged;
  }
  return summary;
}

TEST_F(JsonReportTest, ReportHasTheseMembers) {
  Write("new.xml", Library(5, {Table({.key_type = "uint32"}), Table({.name = "zones"}), Table({.name = "carts"})}));
  Write("old.xml", Library(5, {Table(), Table({.name = "users"}), Table({.name = "carts"})}));
  const Json settings = {{"type", "generic"}, {"created_as", "qmx"}, {"server_version", ""}, {"whitelist", ""}, {"list_num", 0}};
  const Json orders = {{"table", "orders"},
                       {"status", "refused"},
                       {"code", -3},
                       {"code_name", "ERROR_VALUE_FIELD"},
                       {"rule", "primary-key.size"},
                       {"summary", "the size of a primary key field changed"},
                       {"text", "The size of primarykey can't be modified! entry:'uid' metaname:'orders'"},
                       {"removed", false},
                       {"location", LocationOf("new.xml", 2, 1)},
                       {"settings", settings}};
  const Json users = {{"table", "users"},
                      {"status", "refused"},
                      {"code", -2},
                      {"code_name", "CHECK_TABLE_ERROR_SYSTEM_ERROR"},
                      {"rule", "library.table"},
                      {"summary", "the table is missing in one of the libraries"},
                      {"text", "Get meta info failed, please check the table name ! table:'users'"},
                      {"removed", true},
                      {"location", LocationOf("old.xml", 3, 1)},
                      {"settings", settings}};
  const Json carts = {{"table", "carts"},
                      {"status", "allowed"},
                      {"code", 0},
                      {"code_name", "CHECK_TABLE_SUCCESS"},
                      {"location", LocationOf("new.xml", 4, 1)},
                      {"settings", settings}};
  const Json zones = {
      {"table", "zones"}, {"status", "new"}, {"location", LocationOf("new.xml", 3, 1)}, {"settings", Json::object()}};
  const Json old_input = {{"role", "old"}, {"file", "old.xml"}};
  const Json new_input = {{"role", "new"}, {"file", "new.xml"}};
  const Json expected = {{"version", 2},
                         {"tool", {{"name", "korvelcheck"}, {"version", KORVEL_VERSION}}},
                         {"command", "check"},
                         {"verdict", "refused"},
                         {"inputs", Json::array({old_input, new_input})},
                         {"tables", Json::array({orders, users, carts, zones})},
                         {"findings", nullptr},
                         {"files", Json::array()},
                         {"project", Json::array()},
                         {"summary", SummaryOf({3, 1, 2, 1, 1, 2, 2}, 1)}};
  Json report = Report({"check", "old.xml", "new.xml"}, 1);
  // Changes and findings are long: tests/report/golden contains them.
  report["findings"] = nullptr;
  for (Json& table : report["tables"]) EXPECT_EQ(table.erase("changes"), table["status"] == "new" ? 0u : 1u);
  EXPECT_EQ(report.dump(2), expected.dump(2)) << "members and their order";
}

TEST_F(JsonReportTest, AllowedReportHasTheVerdict) {
  const Json report = Report({"check", "old.xml", "same.xml"}, 0);
  EXPECT_EQ(report["verdict"], "allowed");
  EXPECT_EQ(report["summary"], SummaryOf({2, 2, 0, 0, 0, 0}, 2));
}

struct CommandCase {
  std::vector<std::string> arguments;
  std::vector<std::string> roles;
  std::vector<std::string> settings;
};

TEST_F(JsonReportTest, EveryCommandNamesItsInputsAndSettings) {
  const std::vector<std::string> all = {"type", "created_as", "server_version", "whitelist", "list_num"};
  const CommandCase kCases[] = {
      {{"check", "old.xml", "same.xml"}, {"old", "new"}, all},
      {{"compat", "old.xml", "same.xml"}, {"old", "new"}, {}},
      {{"values", "old.xml", "same.xml"}, {"source", "destination"}, {"created_as"}},
      {{"same", "old.xml", "same.xml"}, {"source", "destination"}, {}},
      {{"sortlist", "old.xml", "same.xml"}, {"source", "destination"}, {}},
      {{"lint", "old.xml", "same.xml", "wide.xml"}, {"file", "file", "file"}, all},
  };
  for (const CommandCase& test : kCases) {
    const Json report = Report(test.arguments, 0);
    EXPECT_EQ(report["command"], test.arguments.front());
    std::vector<std::string> roles;
    std::vector<std::string> files = {test.arguments.front()};
    for (const Json& input : report["inputs"]) {
      roles.push_back(input["role"]);
      files.push_back(input["file"]);
    }
    EXPECT_EQ(roles, test.roles);
    EXPECT_EQ(files, test.arguments);
    for (const Json& table : report["tables"]) EXPECT_EQ(Keys(table["settings"]), test.settings);
  }
}

TEST_F(JsonReportTest, RefusalWithoutTextHasNoRule) {
  Write("new.xml", Library(5, {Table()}));
  const Json report = Report({"compat", "old.xml", "new.xml", "--table", "users"}, 1);
  const Json& table = report["tables"][0];
  EXPECT_EQ(Keys(table), (std::vector<std::string>{"table", "status", "code", "code_name", "rule", "summary", "text", "removed",
                                                   "location", "settings"}));
  EXPECT_TRUE(table["rule"].is_null());
  EXPECT_EQ(table["summary"], "the table was removed");
  EXPECT_EQ(table["text"], "");
}

TEST_F(JsonReportTest, NamesAreVerbatim) {
  Write("odd.xml", Library(5, {Table({.name = "a&#10;&quot;\\\xe2\x82\xac"})}));
  EXPECT_EQ(Report({"lint", "odd.xml"}, 0)["tables"][0]["table"], "a\n\"\\\xe2\x82\xac");
}

// The checker truncates its texts at 1023 bytes, even in the middle of a character.
TEST_F(JsonReportTest, ReplacesBytesThatAreNotUtf8) {
  const std::string before = "Get meta info failed, please check the table name ! table:'";
  std::string name = (1023 - before.size()) % 2 == 0 ? "x" : "";
  while (name.size() < 1100) name += "\xc3\xa4";
  Write("old.xml", Library(5, {Table({.name = name})}));
  const std::string text = Report({"check", "old.xml", "same.xml"}, 1)["tables"][0]["text"];
  EXPECT_EQ(text, before + name.substr(0, 1022 - before.size()) + "\xef\xbf\xbd");
}

TEST_F(JsonReportTest, IsTheSameEveryTime) {
  const std::vector<std::string> arguments = {"check", "old.xml", "wide.xml", "--format", "json"};
  EXPECT_EQ(Korvelcheck(arguments).out, Korvelcheck(arguments).out);
}

}  // namespace
}  // namespace tool_test
