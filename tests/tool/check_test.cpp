// check: verdicts, exit codes, and tables that are new, removed, requested or unknown.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::HasSubstr;

class CheckTest : public ToolTest {
 protected:
  // The part of the report about the refused table and its finding; the whole outcome if it is a different one.
  std::string Refusal(const std::vector<std::string>& options = {}) const {
    std::vector<std::string> arguments = {"check", "old.xml", "new.xml"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Outcome outcome = Korvelcheck(arguments);
    const std::string start = "verdict: refused\nnew.xml:2:1: refused";
    const std::string end = "1 table refused, 0 allowed; 1 compared, 0 new, 0 removed; 1 finding, 0 waived\n";
    const std::string verdicts = Verdicts(outcome.out);
    if (outcome.exit_code != 1 || !verdicts.starts_with(start) || !verdicts.ends_with(end)) return outcome.out + outcome.err;
    return verdicts.substr(start.size(), verdicts.size() - start.size() - end.size());
  }
};

TEST_F(CheckTest, AllowedChangeEndsWithZero) {
  ExpectOutcome(Korvelcheck({"check", "old.xml", "same.xml"}), 0, kAllowedReport, "");
}

TEST_F(CheckTest, RefusedChangeEndsWithOne) { ExpectVerdicts(Korvelcheck({"check", "old.xml", "wide.xml"}), 1, kWideFinding); }

TEST_F(CheckTest, AllowsNewFieldWithNewVersion) {
  Write("new.xml", Library(6, {Table({.fields = "<entry name=\"note\" id=\"2\" type=\"string\" size=\"8\" version=\"6\"/>"}),
                               Table({.name = "users"})}));
  EXPECT_EQ(Korvelcheck({"check", "old.xml", "new.xml"}).exit_code, 0);
}

TEST_F(CheckTest, RefusesRemovedTable) {
  Write("new.xml", Library(5, {Table()}));
  ExpectVerdicts(Korvelcheck({"check", "old.xml", "new.xml"}), 1,
                 "verdict: refused\n"
                 "old.xml:3:1: refused: table users: -2 CHECK_TABLE_ERROR_SYSTEM_ERROR (removed)\n"
                 "old.xml:3:1: refused [library.table] the table is missing in one of the libraries\n"
                 "  checker: Get meta info failed, please check the table name ! table:'users'\n"
                 "1 table refused, 1 allowed (0 changed, 1 unchanged); 2 compared, 0 new, 1 removed; 1 finding, 0 waived\n");
}

TEST_F(CheckTest, ReportsNewTableWithoutComparingIt) {
  Write("new.xml", Library(5, {Table({.name = "zones"}), Table({.name = "users"}), Table()}));
  ExpectOutcome(Korvelcheck({"check", "old.xml", "new.xml", "--verbose"}), 0,
                "verdict: allowed\n"
                "new.xml:4:1: unchanged: table orders\n"
                "new.xml:3:1: unchanged: table users\n"
                "new.xml:2:1: new: table zones (not compared)\n"
                "0 tables refused, 2 allowed (0 changed, 2 unchanged); 2 compared, 1 new, 0 removed\n",
                "");
}

// Tables keep the order of the old file; findings are numbered within their table.
TEST_F(CheckTest, ReportsAllStatuses) {
  const TableText stays{.name = "carts"};
  Write("old.xml", Library(5, {Table(), Table({.name = "users"}), Table(stays), Table({.name = "stock"})}));
  Write("new.xml", Library(5, {Table({.key_type = "uint32"}), Table({.name = "stock", .key_type = "uint8"}), Table(stays),
                               Table({.name = "zones"})}));
  ExpectVerdicts(Korvelcheck({"check", "old.xml", "new.xml"}), 1,
                 "verdict: refused\n"
                 "new.xml:2:1: refused: table orders: -3 ERROR_VALUE_FIELD\n"
                 "new.xml:2:52: refused [primary-key.size] the size of a primary key field changed\n"
                 "  checker: The size of primarykey can't be modified! entry:'uid' metaname:'orders'\n"
                 "old.xml:3:1: refused: table users: -2 CHECK_TABLE_ERROR_SYSTEM_ERROR (removed)\n"
                 "old.xml:3:1: refused [library.table] the table is missing in one of the libraries\n"
                 "  checker: Get meta info failed, please check the table name ! table:'users'\n"
                 "new.xml:3:1: refused: table stock: -3 ERROR_VALUE_FIELD\n"
                 "new.xml:3:51: refused [primary-key.size] the size of a primary key field changed\n"
                 "  checker: The size of primarykey can't be modified! entry:'uid' metaname:'stock'\n"
                 "new.xml:5:1: new: table zones (not compared)\n"
                 "3 tables refused, 1 allowed (0 changed, 1 unchanged); 4 compared, 1 new, 1 removed; 3 findings, 0 waived\n");
  const auto report = nlohmann::json::parse(Korvelcheck({"check", "old.xml", "new.xml", "--format", "json"}).out);
  std::vector<std::string> fates;
  for (const auto& table : report["tables"]) {
    const bool is_compared = table.contains("changes");
    fates.push_back(table["table"].get<std::string>() + " " + table["status"].get<std::string>() + " " +
                    (is_compared ? std::to_string(table["changes"]["findings"].size()) : "-"));
  }
  EXPECT_THAT(fates,
              testing::ElementsAre("orders refused 1", "users refused 1", "carts allowed 0", "stock refused 1", "zones new -"));
  const auto finding = [](int table) {
    return nlohmann::json{{"table", table}, {"finding", 0}, {"also", nlohmann::json::array()}};
  };
  EXPECT_EQ(report["findings"], nlohmann::json::array({finding(0), finding(1), finding(3)}));
}

TEST_F(CheckTest, ComparesOnlyRequestedTables) {
  ExpectOutcome(Korvelcheck({"check", "old.xml", "wide.xml", "--table", "users", "-v"}), 0,
                "verdict: allowed\nwide.xml:3:1: unchanged: table users\n"
                "0 tables refused, 1 allowed (0 changed, 1 unchanged); 1 compared, 0 new, 0 removed\n",
                "");
}

TEST_F(CheckTest, ComparesRequestedTablesInOrderAndOnce) {
  ExpectOutcome(Korvelcheck({"check", "old.xml", "same.xml", "--table", "users", "--table", "orders", "--table", "users", "-v"}),
                0,
                "verdict: allowed\nsame.xml:3:1: unchanged: table users\nsame.xml:2:1: unchanged: table orders\n"
                "0 tables refused, 2 allowed (0 changed, 2 unchanged); 2 compared, 0 new, 0 removed\n",
                "");
}

TEST_F(CheckTest, ReportsRequestedTableOfTheNewFileAsNew) {
  Write("new.xml", Library(5, {Table(), Table({.name = "zones"})}));
  ExpectOutcome(Korvelcheck({"check", "old.xml", "new.xml", "--table", "zones", "--table", "orders"}), 0,
                "verdict: allowed\nnew.xml:3:1: new: table zones (not compared)\n"
                "0 tables refused, 1 allowed (0 changed, 1 unchanged); 1 compared, 1 new, 0 removed\n",
                "");
}

TEST_F(CheckTest, NothingComparedIsAnError) {
  Write("new.xml", Library(5, {Table(), Table({.name = "zones"})}));
  ExpectInputError(Korvelcheck({"check", "old.xml", "new.xml", "--table", "zones"}),
                   "korvelcheck: nothing was compared: old.xml has none of the requested tables\n");
  Write("plain.xml", Library(5, {"<meta name=\"item\"><entry name=\"a\" id=\"1\" type=\"int8\"/></meta>"}));
  ExpectInputError(Korvelcheck({"check", "plain.xml", "old.xml"}),
                   "korvelcheck: nothing was compared: plain.xml has no table (a meta with a primary key)\n");
}

TEST_F(CheckTest, ReportsAllUnknownTables) {
  ExpectInputError(Korvelcheck({"check", "old.xml", "same.xml", "--table", "ordres", "--table", "orders", "--table", "x"}),
                   "korvelcheck: table 'ordres' is neither in old.xml nor in same.xml (did you mean 'orders'?)\n"
                   "korvelcheck: table 'x' is neither in old.xml nor in same.xml\n");
}

// A requested structure is checked like a table.
TEST_F(CheckTest, ChecksRequestedStructure) {
  const std::string text = Library(5, {"<meta name=\"item\"><entry name=\"a\" id=\"1\" type=\"int8\"/></meta>"});
  Write("old.xml", text);
  Write("new.xml", text);
  EXPECT_EQ(Refusal({"--table", "item"}),
            ": table item: -4 ERROR_PRIMARYKEY_FIELD\n"
            "new.xml:2:1: refused [primary-key.missing] the table has no primary key in one of the schemas\n"
            "  checker: Primaykey is invalid! table:'item'\n");
}

TEST_F(CheckTest, RefusesLowerLibraryVersion) {
  Write("old.xml", Library(5, {Table()}));
  Write("new.xml", Library(4, {Table()}));
  EXPECT_EQ(Refusal(),
            ": table orders: -1 CHECK_TABLE_ERROR_INVALID_PARAMETER\n"
            "new.xml:1:31: refused [library.version] the version of the new library is below that of the old library\n"
            "  checker: LibVersion invalid, newVersion 4 < oldVersion 5\n");
}

// The driver replaces the rule's text but not its code.
TEST_F(CheckTest, BadFieldNameKeepsItsCode) {
  Write("old.xml", Library(5, {Table()}));
  Write("new.xml", Library(6, {Table({.fields = "<entry name=\"1st\" id=\"2\" type=\"int8\" version=\"6\"/>"})}));
  EXPECT_EQ(Refusal(),
            ": table orders: -17 ERROR_FIELD_NAME_STARTWITH_DIGIT\n"
            "new.xml:2:74: refused [field-name.invalid] a field name is not a valid identifier\n"
            "  checker: CheckFieldNameValidate failed! table:'orders'\n");
}

class GrowthTest : public CheckTest {
 protected:
  GrowthTest() {
    Write("old.xml", Library(5, {WithHistory(131072)}));
    Write("new.xml", Library(5, {WithHistory(524288)}));
  }
  static std::string WithHistory(int size) {
    return Table({.fields = "<entry name=\"history\" id=\"2\" type=\"bytes\" size=\"" + std::to_string(size) + "\"/>"});
  }
};

TEST_F(GrowthTest, LengthsAreNotCheckedWithoutServerVersion) {
  EXPECT_EQ(Korvelcheck({"check", "old.xml", "new.xml"}).exit_code, 0);
  EXPECT_EQ(Korvelcheck({"check", "old.xml", "new.xml", "--whitelist", "history"}).exit_code, 0);
}

TEST_F(GrowthTest, RefusesOversizedField) {
  EXPECT_EQ(Refusal({"--server-version", "3.38.9"}),
            ": table orders: -2 CHECK_TABLE_ERROR_SYSTEM_ERROR\nnew.xml:2:109: refused [length.limit] fields are larger than the "
            "servers allow and are not whitelisted\n"
            "  checker: ERR_ENTRY_LEN;history|\n");
}

TEST_F(GrowthTest, RefusesGrownWhitelistedFieldWithItsSizes) {
  EXPECT_EQ(Refusal({"--server-version", "3.29.0", "--whitelist", "payload;history"}),
            ": table orders: -35 ERROR_ENTRY_LENGTH_NOT_LEGAL\n"
            "new.xml:2:109: refused [length.whitelist] whitelisted fields above the limit grew and need manual confirmation\n"
            "  checker: WARNING_WHITELIST:entry:history size 131072 -> 524288 |\n");
}

TEST_F(GrowthTest, NewerServerAllowsTheSize) {
  EXPECT_EQ(Korvelcheck({"check", "old.xml", "new.xml", "--server-version", "3.39.0"}).exit_code, 0);
}

// The check of one table must not affect the next.
TEST_F(GrowthTest, ChecksEveryTableByItself) {
  const std::string large = "<entry name=\"history\" id=\"2\" type=\"bytes\" size=\"524288\"/>";
  const std::string users = Table({.name = "users", .fields = large});
  Write("old.xml", Library(5, {WithHistory(131072), users}));
  Write("new.xml", Library(5, {WithHistory(524288), users}));
  const Outcome outcome = Korvelcheck({"check", "old.xml", "new.xml", "--server-version", "3.29.0", "--whitelist", "history"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("\n1 table refused, 1 allowed (0 changed, 1 unchanged);"));
}

// The result depends only on the bytes of the files.
TEST_F(CheckTest, LocaleHasNoEffect) {
  const std::string name = "\xc3\xa4\xc4\xb1 orders";
  Write("old.xml", Library(5, {Table({.name = name})}));
  Write("new.xml", Library(5, {Table({.name = name, .key_type = "uint8"})}));
  const Call call{.arguments = {"check", "old.xml", "new.xml"}};
  Call german = call;
  Call plain = call;
  Call unicode = call;
  plain.environment = {"LC_ALL=C"};
  unicode.environment = {"LC_ALL=C.UTF-8"};
  german.environment = {"LC_ALL=de_DE.UTF-8", "LANGUAGE=de"};
  const Outcome expected = Korvelcheck(plain);
  EXPECT_EQ(expected.exit_code, 1);
  EXPECT_THAT(expected.out, HasSubstr("metaname:'" + name + "'\n"));
  for (const Call& other : {call, unicode, german}) ExpectOutcome(Korvelcheck(other), 1, expected.out, expected.err);
}

}  // namespace
}  // namespace tool_test
