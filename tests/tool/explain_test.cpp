// rules and explain: every example of the rule book is put to the program as it stands there, and docs/rules is what they print.
#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "rule_docs/book_format.h"
#include "tool_test.h"

namespace korvel {

inline void PrintTo(const RulePage& page, std::ostream* out) { *out << page.id; }

}  // namespace korvel

namespace tool_test {
namespace {

namespace fs = std::filesystem;
using korvel::AllPages;
using korvel::RuleExample;
using korvel::RulePage;
using testing::HasSubstr;
using testing::StartsWith;

std::vector<std::string> Words(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

std::string Id(const testing::TestParamInfo<RulePage>& info) {
  std::string name = info.param.id;
  for (char& c : name) c = c == '.' || c == '-' ? '_' : c;
  return name;
}

std::vector<RulePage> PagesWithExample() {
  std::vector<RulePage> pages;
  for (const RulePage& page : AllPages()) {
    if (HasExample(page)) pages.push_back(page);
  }
  return pages;
}

class ExampleTest : public ToolTest, public testing::WithParamInterface<RulePage> {
 protected:
  ExampleTest() {
    Write("old.xml", OldText(Example()));
    Write("new.xml", NewText(Example()));
  }
  const RuleExample& Example() const { return GetParam().example; }
  // The example's own call about two files.
  Outcome Ask(const std::string& old_file, const std::string& new_file, const std::string& more) const {
    return Korvelcheck(
        Words(std::string(Example().command) + " " + old_file + " " + new_file + " " + Example().options + " " + more));
  }
};

TEST_P(ExampleTest, IsRefusedByTheRule) {
  const Outcome outcome = Ask("old.xml", "new.xml", "--format json");
  ASSERT_EQ(outcome.exit_code, 1) << outcome.err;
  const nlohmann::json table = nlohmann::json::parse(outcome.out)["tables"][0];
  EXPECT_EQ(table["rule"], GetParam().replaced_by == nullptr ? GetParam().id : GetParam().replaced_by);
  EXPECT_EQ(table["code"], Example().code);
  EXPECT_EQ(table["text"], Example().answer);
}

TEST_P(ExampleTest, LeavesTheTextInTheLog) {
  if (GetParam().id == std::string("length.limit")) GTEST_SKIP() << "the list of oversized fields is not logged";
  std::set<std::string> logged;
  std::istringstream log(Ask("old.xml", "new.xml", "--log - --log-format json").err);
  for (std::string line; std::getline(log, line);) {
    const std::string message = nlohmann::json::parse(line)["message"];
    if (const korvel::RefusalRow* row = korvel::Identify(message)) logged.insert(row->id);
  }
  EXPECT_TRUE(logged.contains(GetParam().id));
}

// Old schemas that are refused as they are.
const std::set<std::string> kRefusedAlready = {
    "library.protocols",        // a table created in TLV has no rules while its library is in the record format
    "splittable-key.old-text",  // no change of such a table can be judged
};

TEST_P(ExampleTest, OldAgainstOldIsAllowed) {
  const Outcome outcome = Ask("old.xml", "old.xml", "");
  EXPECT_EQ(outcome.exit_code, kRefusedAlready.contains(GetParam().id) ? 1 : 0) << outcome.out << outcome.err;
}

TEST_P(ExampleTest, WhatIsAllowedInsteadIsAllowed) {
  EXPECT_EQ(HasInstead(GetParam()), !kRefusedAlready.contains(GetParam().id));
  if (!HasInstead(GetParam())) return;
  Write("new.xml", InsteadText(Example()));
  const Outcome outcome = Ask("old.xml", "new.xml", "");
  EXPECT_EQ(outcome.exit_code, 0) << outcome.out << outcome.err;
}

INSTANTIATE_TEST_SUITE_P(All, ExampleTest, testing::ValuesIn(PagesWithExample()), Id);

class ExplainTest : public ToolTest {
 protected:
  std::string Printed(const std::vector<std::string>& arguments) const {
    const Outcome outcome = Korvelcheck(arguments);
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
  }
};

TEST_F(ExplainTest, PrintsARule) {
  EXPECT_EQ(Printed({"explain", "arguments.old-meta"}),
            "arguments.old-meta: the old structure is missing\n"
            "  code  -1 CHECK_TABLE_ERROR_INVALID_PARAMETER\n"
            "  text  old_meta is NULL!\n"
            "\n"
            "What it protects\n"
            "  Whether two structures have the same fields can be told only where both are there.\n"
            "\n"
            "What is allowed instead\n"
            "  Hand over both structures.\n"
            "\n"
            "Why there is no example\n"
            "  `korvelcheck same` asks about tables that both files have. A program that calls CompareTableField\n"
            "  itself hears it.\n");
}

TEST_F(ExplainTest, PrintsTheExampleOfARule) {
  EXPECT_THAT(Printed({"explain", "field-name.digit"}),
              testing::EndsWith("\n"
                                "old.xml\n"
                                "  <metalib name=\"shop\" version=\"1\" protocol=\"QMX\">\n"
                                "    <meta name=\"orders\">\n"
                                "      <entry name=\"uid\" type=\"uint32\"/>\n"
                                "      <primarykey entries=\"uid\"/>\n"
                                "    </meta>\n"
                                "  </metalib>\n"
                                "\n"
                                "new.xml\n"
                                "  <metalib name=\"shop\" version=\"2\" protocol=\"QMX\">\n"
                                "    <meta name=\"orders\">\n"
                                "      <entry name=\"uid\" type=\"uint32\"/>\n"
                                "      <entry name=\"2nd_zone\" type=\"uint32\" version=\"2\"/>\n"
                                "      <primarykey entries=\"uid\"/>\n"
                                "    </meta>\n"
                                "  </metalib>\n"
                                "\n"
                                "$ korvelcheck check old.xml new.xml\n"
                                "  -17 ERROR_FIELD_NAME_STARTWITH_DIGIT\n"
                                "  CheckFieldNameValidate failed! table:'orders'\n"
                                "\n"
                                "new.xml as it would be allowed\n"
                                "  <metalib name=\"shop\" version=\"2\" protocol=\"QMX\">\n"
                                "    <meta name=\"orders\">\n"
                                "      <entry name=\"uid\" type=\"uint32\"/>\n"
                                "      <entry name=\"second_zone\" type=\"uint32\" version=\"2\"/>\n"
                                "      <primarykey entries=\"uid\"/>\n"
                                "    </meta>\n"
                                "  </metalib>\n"));
}

TEST_F(ExplainTest, PrintsACode) {
  const std::string page = Printed({"explain", "-35"});
  EXPECT_EQ(page,
            "-35 ERROR_ENTRY_LENGTH_NOT_LEGAL\n"
            "  Fields on the whitelist grew. The text lists their sizes, for a person to confirm.\n"
            "\n"
            "Returned with\n"
            "  length.whitelist          whitelisted fields above the limit grew; to be confirmed by hand\n");
  EXPECT_EQ(Printed({"explain", "35"}), page);
  EXPECT_EQ(Printed({"explain", "ERROR_ENTRY_LENGTH_NOT_LEGAL"}), page);
  EXPECT_EQ(Printed({"explain", "-51"}),
            "-51 ERROR_REPEATED_FIELD_NAME\n  By its name, a field's name stands twice.\n  Never returned by this checker.\n");
}

TEST_F(ExplainTest, KnowsARuleByItsText) {
  EXPECT_EQ(Printed({"explain", "Can't reduce list_num from 16 to 8"}), Printed({"explain", "table.list-num"}));
}

TEST_F(ExplainTest, JsonHasTheSame) {
  const nlohmann::json rule = nlohmann::json::parse(Printed({"explain", "table.list-num", "--format", "json"}));
  EXPECT_EQ(rule["rule"], "table.list-num");
  EXPECT_EQ(rule["codes"], nlohmann::json::parse(R"([{"code": -5, "code_name": "ERROR_SPLITTABLE_FIELD"},
                                                     {"code": -1, "code_name": "CHECK_TABLE_ERROR_INVALID_PARAMETER"}])"));
  EXPECT_EQ(rule["replaced_by"], nullptr);
  EXPECT_EQ(rule["unheard"], nullptr);
  EXPECT_EQ(rule["example"]["call"], "korvelcheck check old.xml new.xml");
  EXPECT_EQ(rule["example"]["code"], -1);
  EXPECT_EQ(rule["example"]["answer"], "Can't reduce list_num from 16 to 8");
  EXPECT_EQ(rule["example"]["old"], OldText(korvel::FindPage("table.list-num")->example));

  EXPECT_EQ(nlohmann::json::parse(Printed({"explain", "index.null", "--format", "json"}))["example"], nullptr);
  const nlohmann::json code = nlohmann::json::parse(Printed({"explain", "14", "--format=json"}));
  EXPECT_EQ(code["code"], -14);
  EXPECT_EQ(code["returned"], false);
  EXPECT_EQ(code["rules"], nlohmann::json::array());
}

TEST_F(ExplainTest, UnknownWordsAreRefused) {
  const std::string hint = "\n'korvelcheck rules' lists the rules, 'korvelcheck rules --codes' the codes: 0 to -51.\n";
  const std::string what = " is neither a rule nor a result code nor a text of the checker";
  ExpectNotAsked(Korvelcheck({"explain", "primary-key.sise"}),
                 "korvelcheck: explain: 'primary-key.sise'" + what + " (did you mean 'primary-key.size'?)" + hint);
  ExpectNotAsked(Korvelcheck({"explain", "ERROR_EXIST_FIELD"}),
                 "korvelcheck: explain: 'ERROR_EXIST_FIELD'" + what + " (did you mean 'ERROR_EIXST_FIELD'?)" + hint);
  for (const std::string word : {"52", "-52", "4x", "99999999999999999999", "-2147483648", ""}) {
    ExpectNotAsked(Korvelcheck({"explain", word}), "korvelcheck: explain: '" + word + "'" + what + hint);
  }
  ExpectNotAsked(Korvelcheck({"explain"}), "korvelcheck: explain: RULE-OR-CODE is required\nTry 'korvelcheck explain --help'.\n");
  ExpectNotAsked(Korvelcheck({"explain", "4", "5"}),
                 "korvelcheck: explain: unexpected argument '5'\nTry 'korvelcheck explain --help'.\n");
}

TEST_F(ExplainTest, RulesListsEachOnALine) {
  std::istringstream lines(Printed({"rules"}));
  std::vector<std::string> ids;
  for (std::string line; std::getline(lines, line);) ids.push_back(line.substr(0, line.find(' ')));
  std::vector<std::string> expected;
  for (const korvel::RefusalRow* row : korvel::AllRefusals()) expected.emplace_back(row->id);
  EXPECT_EQ(ids, expected);
  EXPECT_THAT(Printed({"rules"}),
              HasSubstr("\nprimary-key.size          -3       the size of a primary-key field changed (record format)\n"));
  EXPECT_EQ(nlohmann::json::parse(Printed({"rules", "--format", "json"}))["rules"].size(), expected.size());
  ExpectNotAsked(Korvelcheck({"rules", "old.xml"}),
                 "korvelcheck: rules: unexpected argument 'old.xml'\nTry 'korvelcheck rules --help'.\n");
}

TEST_F(ExplainTest, RulesListsTheCodes) {
  EXPECT_THAT(Printed({"rules", "--codes"}), StartsWith("0    CHECK_TABLE_SUCCESS\n-1   CHECK_TABLE_ERROR_INVALID_PARAMETER\n"));
  EXPECT_THAT(Printed({"rules", "--codes"}),
              HasSubstr("\n-14  ERROR_EXIST_TABLE                             never returned by this checker\n"));
  EXPECT_EQ(nlohmann::json::parse(Printed({"rules", "--codes", "--format", "json"}))["codes"].size(), 52u);
}

TEST_F(ExplainTest, TheBookGoesToAFileAsReportsDo) {
  ExpectOutcome(Korvelcheck({"explain", "4", "-o", "page"}), 0, "", "");
  EXPECT_EQ(Read("page"), Printed({"explain", "4"}));
}

// The files of docs/rules by name.
std::map<std::string, std::string> Documents() {
  std::map<std::string, std::string> documents;
  for (const auto& file : fs::directory_iterator(fs::path(KORVEL_SOURCE_DIR) / "docs" / "rules")) {
    std::ifstream stream(file.path(), std::ios::binary);
    documents[file.path().filename().string()] = {std::istreambuf_iterator<char>(stream), {}};
  }
  return documents;
}

// `make docs` mends it.
TEST_F(ExplainTest, TheDocumentsAreWhatIsPrinted) {
  std::map<std::string, std::string> expected = {{"README.md", Printed({"rules", "--format", "markdown"})},
                                                 {"result-codes.md", Printed({"rules", "--codes", "--format", "markdown"})}};
  for (const RulePage& page : AllPages()) {
    expected[korvel::PageFile(page.id)] = Printed({"explain", page.id, "--format", "markdown"});
  }
  const std::map<std::string, std::string> documents = Documents();
  for (const auto& [file, text] : documents) EXPECT_TRUE(expected.contains(file)) << "docs/rules/" << file << " is no rule's";
  for (const auto& [file, text] : expected) {
    const auto found = documents.find(file);
    EXPECT_EQ(found == documents.end() ? "(missing)" : found->second, text) << "docs/rules/" << file;
  }
}

}  // namespace
}  // namespace tool_test
