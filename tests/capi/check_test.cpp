// What a check says, as structs.
#include <gtest/gtest.h>

#include <cstring>

#include "capi/example.h"

namespace capi_test {
namespace {

using korvelcheck::Check;
using korvelcheck::Report;
using korvelcheck::Schema;

TEST(CApiCheck, ReportsRefusedChangeWithSuggestion) {
  const Report report = RefusedReport();
  EXPECT_EQ(report.Info().verdict, KC_VERDICT_REFUSED);
  EXPECT_EQ(report.Info().passes, 0);
  EXPECT_EQ(report.Info().table_count, 7U);
  EXPECT_EQ(report.Info().finding_count, 2U);
  EXPECT_EQ(report.Info().left_out_count, 0U);
  EXPECT_STREQ(report.Info().summary, "2 tables refused, 5 allowed; 7 compared, 0 new, 0 removed; 2 findings, 0 waived");
  const kc_finding finding = report.Findings().at(0);
  EXPECT_EQ(finding.level, KC_LEVEL_REFUSED);
  EXPECT_EQ(finding.code, -3);
  EXPECT_STREQ(report.Tables().at(finding.table).name, "orders");
  EXPECT_STREQ(finding.rule, "primary-key.size");
  EXPECT_STREQ(finding.summary, "the size of a primary key field changed");
  EXPECT_STREQ(finding.text, "The size of primarykey can't be modified! entry:'order_no' metaname:'orders'");
  EXPECT_STREQ(finding.path, "orders.order_no");
  EXPECT_STREQ(finding.change, "type of order_no: uint32 -> uint64");
  EXPECT_STREQ(finding.suggestion,
               "keep order_no as it is; add a new field order_no_2 (uint64, id 9, version 7) for the new values; the key "
               "does not change");
  EXPECT_EQ(std::strlen(finding.fingerprint), 16U);
}

TEST(CApiCheck, LocatesFindings) {
  const kc_finding finding = RefusedReport().Findings().at(0);
  EXPECT_EQ(finding.location.line, 70U);
  EXPECT_EQ(finding.location.column, 41U);
  EXPECT_EQ(finding.location.end_line, 70U);
  EXPECT_EQ(finding.location.end_column, 47U);
  EXPECT_EQ(finding.new_location.line, 70U);
  EXPECT_EQ(finding.old_location.line, 69U);
}

TEST(CApiCheck, NamesFilesOfLocations) {
  const Report report = RefusedReport();
  const kc_finding finding = report.Findings().at(0);
  EXPECT_STREQ(finding.location.file, "v7-wider-key.xml");
  EXPECT_STREQ(finding.old_location.file, "v6.xml");
  EXPECT_STREQ(report.Tables().at(0).location.file, "v7-wider-key.xml");
}

TEST(CApiCheck, ReportsStatusOfTables) {
  const Report report = RefusedReport();
  const kc_table orders = report.Tables().at(report.Findings().at(0).table);
  EXPECT_EQ(orders.status, KC_TABLE_REFUSED);
  EXPECT_EQ(orders.code, -3);
  EXPECT_STREQ(orders.code_name, "ERROR_VALUE_FIELD");
  EXPECT_STREQ(orders.rule, "primary-key.size");
  EXPECT_EQ(orders.location.line, 68U);
  const kc_table customers = report.Tables().at(0);
  EXPECT_EQ(customers.status, KC_TABLE_ALLOWED);
  EXPECT_EQ(customers.code, 0);
  EXPECT_STREQ(customers.rule, "");
  EXPECT_STREQ(customers.summary, "");
}

TEST(CApiCheck, FixMakesChangeAllowed) {
  const Report report = RefusedReport();
  std::string text = cases::ReadFile(kShop + "v7-wider-key.xml");
  for (std::size_t finding = report.Findings().size(); finding-- > 0;) {
    const std::vector<kc_fix> edits = report.Fixes(finding);
    ASSERT_EQ(edits.size(), report.Findings().at(finding).fix_count);
    ASSERT_FALSE(edits.empty());
    for (std::size_t i = edits.size(); i-- > 0;) text.replace(edits[i].offset, edits[i].length, edits[i].text);
  }
  EXPECT_TRUE(Check(Example("v6.xml"), Schema::FromMemory("fixed.xml", text)).IsAllowed());
}

TEST(CApiCheck, AllowedChangePasses) {
  const Report report = Check(Example("v6.xml"), Example("v7.xml"));
  EXPECT_EQ(report.Info().verdict, KC_VERDICT_ALLOWED);
  EXPECT_EQ(report.Info().passes, 1);
}

TEST(CApiCheck, ChecksOnlyNamedTablesOnce) {
  const Report report = Check(Example("v6.xml"), Example("v7-wider-key.xml"), {"customers", "payments", "customers"});
  ASSERT_EQ(report.Tables().size(), 2U);
  EXPECT_STREQ(report.Tables()[0].name, "customers");
  EXPECT_STREQ(report.Tables()[1].name, "payments");
  EXPECT_TRUE(Check(Example("v6.xml"), Example("v7-wider-key.xml"), {"customers"}).IsAllowed());
}

// A library of one table.
std::string LibraryOf(const std::string& table) {
  return "<metalib name=\"m\" version=\"1\"><meta name=\"" + table +
         "\"><entry name=\"k\" type=\"uint32\"/><primarykey entries=\"k\"/></meta></metalib>";
}

TEST(CApiCheck, ReportsNewAndRemovedTables) {
  const Report report = Check(Schema::FromMemory("old.xml", LibraryOf("a")), Schema::FromMemory("new.xml", LibraryOf("b")));
  ASSERT_EQ(report.Tables().size(), 2U);
  EXPECT_EQ(report.Tables()[0].status, KC_TABLE_REFUSED);
  EXPECT_EQ(report.Tables()[0].is_removed, 1);
  EXPECT_STREQ(report.Tables()[0].location.file, "old.xml");
  EXPECT_EQ(report.Tables()[1].status, KC_TABLE_NEW);
  EXPECT_EQ(report.Tables()[1].is_removed, 0);
  EXPECT_STREQ(report.Tables()[1].name, "b");
}

// Nothing was compared: that must not read as allowed.
TEST(CApiCheck, OnlyNewTablesAreAnError) {
  const Schema old_schema = Schema::FromMemory("old.xml", LibraryOf("a"));
  const Schema new_schema = Schema::FromMemory("new.xml", LibraryOf("b"));
  EXPECT_THROW(Check(old_schema, new_schema, {"b"}), korvelcheck::Error);
}

// A finding in a structure that is used twice names the other path.
TEST(CApiCheck, ListsOtherPathsOfSharedFindings) {
  const Report report = Check(Example("v6.xml"), Example("v7-several-changes.xml"));
  std::string places;
  for (std::size_t i = 0; i < report.Findings().size(); ++i) {
    EXPECT_EQ(report.Affected(i).size(), report.Findings()[i].affected_count);
    for (const auto& [table, path] : report.Affected(i)) {
      places += std::string(report.Tables().at(table).name) + " " + path + "\n";
    }
  }
  EXPECT_EQ(places, "orders orders.ship_to.postcode\n");
}

TEST(CApiCheck, LintChecksOneSchema) {
  const Report report = korvelcheck::Lint(Example("v6.xml"));
  EXPECT_TRUE(report.IsAllowed());
  EXPECT_EQ(report.Tables().size(), 7U);
}

TEST(CApiCheck, ReportKeepsItsSchemas) {
  kc_report* handle = nullptr;
  {
    const Schema old_schema = Example("v6.xml");
    const Schema new_schema = Example("v7-wider-key.xml");
    ASSERT_EQ(kc_check(old_schema.get(), new_schema.get(), nullptr, 0, nullptr, &handle, nullptr), KC_OK);
  }
  const Report report(handle);
  EXPECT_STREQ(report.Findings().at(0).location.file, "v7-wider-key.xml");
  EXPECT_EQ(report.Text("json"), RefusedReport().Text("json"));
}

TEST(CApiCheck, UnknownTableIsAnError) {
  try {
    Check(Example("v6.xml"), Example("v7.xml"), {"oders"});
    FAIL() << "no error";
  } catch (const korvelcheck::Error& error) {
    EXPECT_EQ(error.result(), KC_ERROR_INPUT);
    EXPECT_STREQ(error.what(), "korvelcheck: table 'oders' is neither in v6.xml nor in v7.xml (did you mean 'orders'?)");
  }
}

// Two fields of a structure in ten tables: the second finding refers to the tables of the first, but its paths are its own.
TEST(CApiCheck, ListsOwnPathsOfManyTables) {
  const auto library = [](const char* type) {
    std::string text = "<metalib name='m' version='1' protocol='QMX'>\n<meta name='x'>";
    for (const char* name : {"a", "b"}) text += std::string("<entry name='") + name + "' type='" + type + "'/>";
    text += "</meta>\n";
    for (int i = 0; i < 10; ++i) {
      const std::string name = "t" + std::to_string(i);
      text += "<meta name='" + name +
              "'><entry name='id' type='uint32'/><entry name='x' type='x'/><primarykey entries='id'/></meta>\n";
    }
    return text + "</metalib>\n";
  };
  std::vector<std::string> tables;
  for (int i = 0; i < 10; ++i) tables.push_back("t" + std::to_string(i));
  const Report report =
      Check(Schema::FromMemory("old.xml", library("uint32")), Schema::FromMemory("new.xml", library("uint8")), tables);
  ASSERT_EQ(report.Findings().size(), 2U);
  for (const std::size_t finding : {0U, 1U}) {
    ASSERT_EQ(report.Affected(finding).size(), 9U);
    EXPECT_STREQ(report.Affected(finding)[0].path, finding == 0 ? "t1.x.a" : "t1.x.b");
  }
}

TEST(CApiCheck, MovedReportHasNoVerdict) {
  Report report = Check(Example("v6.xml"), Example("v7.xml"));
  const Report moved = std::move(report);
  EXPECT_TRUE(moved.IsAllowed());
  EXPECT_THROW(report.IsAllowed(), std::logic_error);  // NOLINT(bugprone-use-after-move): this is the subject of the test
}

TEST(CApiCheck, FailedCallLeavesNoVerdict) {
  kc_report_info info = {KC_VERDICT_ALLOWED, 1, 1, 0, 0, "left"};
  EXPECT_EQ(kc_report_get(nullptr, &info, sizeof(info)), KC_ERROR_ARGUMENT);
  EXPECT_EQ(info.verdict, 0);
  EXPECT_EQ(info.passes, 0);
}

TEST(CApiCheck, NamesWithAZeroByteAreErrors) {
  const std::string name("v6.xml\0.new", 11);
  EXPECT_THROW(Schema::FromFile(name), std::invalid_argument);
  EXPECT_THROW(Check(Example("v6.xml"), Example("v7.xml"), {name}), std::invalid_argument);
}

}  // namespace
}  // namespace capi_test
