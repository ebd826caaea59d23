// Ids of TLV fields that a history uses again.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <utility>

#include "git_repository.h"

namespace tool_test {
namespace {

using testing::HasSubstr;
using testing::Not;

// A structure drops a field, and a later version gives its id to a field of another type.
class ReusedIdTest : public GitTest {
 protected:
  void WriteVersion(int number, const std::string& fields) const {
    const std::string item = "<meta name=\"item\"><entry name=\"w\" id=\"1\" type=\"bytes\" size=\"" +
                             std::to_string(4 * number) + "\"/>" + fields + "</meta>";
    Write("v" + std::to_string(number) + ".xml",
          Library(number, {item, Table({.fields = "<entry name=\"i\" id=\"2\" type=\"item\"/>"})}, "TLV"));
  }
  Outcome History(const std::vector<std::string>& versions, const std::vector<std::string>& more = {}) const {
    return Run(Joined(Joined({"history"}, versions), more));
  }
};

TEST_F(ReusedIdTest, IsReportedAcrossVersionsWithBothLocations) {
  WriteVersion(1, "<entry name=\"x\" id=\"2\" type=\"uint32\"/>");
  WriteVersion(2, "");
  WriteVersion(3, "");
  WriteVersion(4, "<entry name=\"y\" id=\"2\" type=\"float\"/>");
  WriteVersion(5, "");
  const std::vector<std::string> versions = {"v1.xml", "v2.xml", "v3.xml", "v4.xml", "v5.xml"};
  const Outcome outcome = History(versions);
  EXPECT_EQ(outcome.exit_code, 0) << outcome.out;
  EXPECT_THAT(
      outcome.out,
      HasSubstr(
          "\nwarning [advice.id-reused] a field got the id of a removed field with a different or smaller type: id 2 of item\n"
          "  new: y, float, in v4.xml (v4.xml:2:"));
  EXPECT_THAT(outcome.out, HasSubstr(")\n  was: x, uint32, in v1.xml (v1.xml:2:"));
  EXPECT_THAT(outcome.out, HasSubstr(")\n  path: orders.i.y\n  change: id 2 of item: x, uint32 -> y, float\n"
                                     "  suggestion: give y an id that no version has used\n  fingerprint: "));
  EXPECT_THAT(outcome.out, HasSubstr("; 1 warning\n"));
  EXPECT_EQ(History(versions, {"--fail-on", "warning"}).exit_code, 1);
  const auto reused = nlohmann::json::parse(History(versions, {"--format", "json"}).out)["files"][0]["reused_ids"];
  ASSERT_EQ(reused.size(), 1u);
  EXPECT_EQ(reused[0]["rule"], "advice.id-reused");
  EXPECT_EQ(reused[0]["id"], 2);
  EXPECT_EQ(reused[0]["before"]["version"], "v1.xml");
  EXPECT_EQ(reused[0]["after"]["field"], "y");
}

TEST_F(ReusedIdTest, SameTypeIsNoReuse) {
  WriteVersion(1, "<entry name=\"x\" id=\"2\" type=\"uint32\"/>");
  WriteVersion(2, "");
  WriteVersion(3, "<entry name=\"y\" id=\"2\" type=\"uint32\"/>");
  EXPECT_THAT(History({"v1.xml", "v2.xml", "v3.xml"}).out, Not(HasSubstr("advice.id-reused")));
}

// Only another type was reported: the records of the first version did not read back.
TEST_F(ReusedIdTest, SmallerSizeOrCountIsReported) {
  const std::pair<std::string, std::string> kPairs[] = {
      {"type=\"string\" size=\"64\"", "type=\"string\" size=\"8\""},
      {"type=\"uint32\" count=\"5\"", "type=\"uint32\" count=\"2\""},
  };
  for (const auto& [large, small] : kPairs) {
    WriteVersion(1, "<entry name=\"x\" id=\"2\" " + large + "/>");
    WriteVersion(2, "");
    WriteVersion(3, "<entry name=\"y\" id=\"2\" " + small + "/>");
    EXPECT_THAT(History({"v1.xml", "v2.xml", "v3.xml"}).out, HasSubstr("[advice.id-reused]")) << small;
    WriteVersion(1, "<entry name=\"x\" id=\"2\" " + small + "/>");
    WriteVersion(3, "<entry name=\"y\" id=\"2\" " + large + "/>");
    EXPECT_THAT(History({"v1.xml", "v2.xml", "v3.xml"}).out, Not(HasSubstr("[advice.id-reused]"))) << large;
  }
  WriteVersion(1, "<entry name=\"x\" id=\"2\" type=\"uint32\" count=\"5\"/>");
  WriteVersion(3, "<entry name=\"y\" id=\"2\" type=\"uint32\"/>");
  EXPECT_THAT(History({"v1.xml", "v2.xml", "v3.xml"}).out, HasSubstr("\n  was: x, uint32, count 5, in v1.xml (v1.xml:2:"));
}

// Structures were found by their names, which records do not contain.
TEST_F(ReusedIdTest, RenamedStructureIsTheSame) {
  const auto rename = [&](const std::string& file) {
    std::string text = Read(file);
    for (std::size_t at = 0; (at = text.find("\"item\"", at)) != std::string::npos;) text.replace(at, 6, "\"part\"");
    Write(file, text);
  };
  WriteVersion(1, "<entry name=\"x\" id=\"2\" type=\"uint32\"/>");
  WriteVersion(2, "");
  WriteVersion(3, "<entry name=\"y\" id=\"2\" type=\"float\"/>");
  rename("v2.xml");
  rename("v3.xml");
  EXPECT_THAT(
      History({"v1.xml", "v2.xml", "v3.xml"}).out,
      HasSubstr("[advice.id-reused] a field got the id of a removed field with a different or smaller type: id 2 of part\n"));
}

// Reused ids failed histories for ever.
TEST_F(ReusedIdTest, CanBeWaived) {
  WriteVersion(1, "<entry name=\"x\" id=\"2\" type=\"uint32\"/>");
  WriteVersion(2, "");
  WriteVersion(3, "<entry name=\"y\" id=\"2\" type=\"float\"/>");
  WriteVersion(4, "");
  const std::vector<std::string> versions = {"v1.xml", "v2.xml", "v3.xml", "v4.xml"};
  const auto reused = nlohmann::json::parse(History(versions, {"--format", "json"}).out)["files"][0]["reused_ids"][0];
  EXPECT_EQ(reused["path"], "orders.i.y");
  EXPECT_EQ(reused["change"], "id 2 of item: x, uint32 -> y, float");
  const std::string named = "[[waivers]]\ntable = \"orders\"\nrule = \"advice.id-reused\"\n";
  const std::string exact = "path = \"orders.i.y\"\nchange = \"id 2 of item: x, uint32 -> y, float\"\nfile = \"v3.xml\"\n";
  const std::string fingerprint = "fingerprint = \"" + reused["fingerprint"].get<std::string>() + "\"\n";
  const std::string reason = "reason = \"no records\"\nuntil = ";
  for (const std::string& finding : {exact, exact + fingerprint, std::string("entry = \"i.y\"\n")}) {
    Write("korvelcheck.toml", named + finding + reason + "2026-01-01\n");
    const Outcome outcome = History(versions, {"--fail-on", "warning"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.out;
    EXPECT_THAT(outcome.out, HasSubstr("\nwaived [advice.id-reused] "));
    EXPECT_THAT(History(versions, {"--format", "html"}).out, HasSubstr("waived [advice.id-reused] "));
    EXPECT_EQ(History(versions, {"--fail-on", "warning", "--format", "sarif"}).exit_code, 0);
  }
  const std::string other = "path = \"orders.i.y\"\nchange = \"id 2 of item: x, uint32 -> y, double\"\nfile = \"v3.xml\"\n";
  for (const std::string& text : {named + other + reason + "2026-01-01\n", named + exact + reason + "2025-12-31\n"}) {
    Write("korvelcheck.toml", text);
    EXPECT_EQ(History(versions, {"--fail-on", "warning"}).exit_code, 1) << text;
  }
}

// Nothing wrote such a waiver, and no report said what it contains.
TEST_F(ReusedIdTest, ReportShowsTheWaiver) {
  WriteVersion(1, "<entry name=\"x\" id=\"2\" type=\"uint32\"/>");
  WriteVersion(2, "");
  WriteVersion(3, "<entry name=\"y\" id=\"2\" type=\"float\"/>");
  WriteVersion(4, "");
  const std::vector<std::string> versions = {"v1.xml", "v2.xml", "v3.xml", "v4.xml"};
  const std::string report = History(versions).out;
  const std::size_t begin = report.find("    [[waivers]]\n");
  ASSERT_NE(begin, std::string::npos) << report;
  EXPECT_THAT(report,
              HasSubstr("\n  to waive it, add this to the project file:\n    [[waivers]]\n    rule = \"advice.id-reused\"\n"));
  const std::string entry = report.substr(begin, report.find("    reason = ") - begin);
  Write("korvelcheck.toml", entry + "reason = \"no records\"\nuntil = \"2026-01-01\"\n");
  const Outcome waived = History(versions, {"--fail-on", "warning"});
  EXPECT_EQ(waived.exit_code, 0) << waived.out;
  EXPECT_THAT(waived.out, Not(HasSubstr("to waive it")));
  const std::string fingerprint = entry.substr(entry.find("fingerprint = ") + 15, 16);
  const Outcome waive = Run({"waive", fingerprint, "v2.xml", "v3.xml", "--reason", "r", "--until", "2026-01-01"});
  EXPECT_EQ(waive.exit_code, 2);
  EXPECT_THAT(waive.err, HasSubstr("'korvelcheck history' prints the entries that waive its findings about reused ids.\n"));
}

TEST_F(ReusedIdTest, IsOnTheHtmlPage) {
  WriteVersion(1, "<entry name=\"x\" id=\"2\" type=\"uint32\"/>");
  WriteVersion(2, "");
  WriteVersion(3, "<entry name=\"y\" id=\"2\" type=\"float\"/>");
  EXPECT_THAT(History({"v1.xml", "v2.xml", "v3.xml"}, {"--format", "html"}).out,
              HasSubstr("<h3>Reused ids</h3>\nwarning [advice.id-reused] "));
}

// A waiver for a history was reported as unused.
TEST_F(ReusedIdTest, ItsWaiverIsNoConcernOfCheck) {
  WriteVersion(1, "");
  Write("korvelcheck.toml",
        "[schemas]\npaths = [\"v1.xml\"]\n[[waivers]]\ntable = \"orders\"\nrule = \"advice.id-reused\"\nentry = \"i.y\"\n"
        "reason = \"no records\"\nuntil = 2026-01-01\n");
  Commit("first");
  const Outcome outcome = Run({"check", "--against", "git:HEAD", "--strict-waivers"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.out;
  EXPECT_THAT(outcome.out, Not(HasSubstr("waiver.unused")));
}

// The refusal of the step says it already.
TEST_F(ReusedIdTest, ChangeOfTypeInOneStepIsNoReuse) {
  WriteVersion(1, "<entry name=\"x\" id=\"2\" type=\"uint32\"/>");
  WriteVersion(2, "<entry name=\"y\" id=\"2\" type=\"float\"/>");
  const Outcome outcome = History({"v1.xml", "v2.xml"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, Not(HasSubstr("advice.id-reused")));
}

// An id that came back with its old type counts as used from then on.
TEST_F(ReusedIdTest, LastUseCounts) {
  WriteVersion(1, "<entry name=\"x\" id=\"2\" type=\"uint32\"/>");
  WriteVersion(2, "");
  WriteVersion(3, "<entry name=\"z\" id=\"2\" type=\"uint32\"/>");
  WriteVersion(4, "");
  WriteVersion(5, "<entry name=\"y\" id=\"2\" type=\"float\"/>");
  EXPECT_THAT(History({"v1.xml", "v2.xml", "v3.xml", "v4.xml", "v5.xml"}).out, HasSubstr("  was: z, uint32, in v3.xml"));
}

TEST_F(ReusedIdTest, PackedFieldsHaveNoTags) {
  for (int number = 1; number <= 3; ++number) {
    const char* const types[] = {"uint32", "", "float"};
    const std::string type = types[number - 1];
    const std::string field = type.empty() ? "" : "<entry name=\"x\" id=\"2\" type=\"" + type + "\"/>";
    Write("v" + std::to_string(number) + ".xml", Library(number, {Table({.fields = field})}));
  }
  EXPECT_THAT(History({"v1.xml", "v2.xml", "v3.xml"}).out, Not(HasSubstr("advice.id-reused")));
}

TEST_F(ReusedIdTest, OnlyStructuresOfWantedTablesCount) {
  WriteVersion(1, "<entry name=\"x\" id=\"2\" type=\"uint32\"/>");
  WriteVersion(2, "");
  WriteVersion(3, "<entry name=\"y\" id=\"2\" type=\"float\"/>");
  for (int number = 1; number <= 3; ++number) {
    std::string text = Read("v" + std::to_string(number) + ".xml");
    const std::string more =
        "<meta name=\"users\"><entry name=\"k\" id=\"1\" type=\"uint32\"/><primarykey entries=\"k\"/></meta>\n";
    text.insert(text.rfind("</metalib>"), more);
    Write("v" + std::to_string(number) + ".xml", text);
  }
  const std::vector<std::string> versions = {"v1.xml", "v2.xml", "v3.xml"};
  EXPECT_THAT(History(versions, {"--table", "orders"}).out, HasSubstr("advice.id-reused"));
  EXPECT_THAT(History(versions, {"--table", "users"}).out, Not(HasSubstr("advice.id-reused")));
}

}  // namespace
}  // namespace tool_test
