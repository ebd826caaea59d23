// rules and explain: every example of a rule page is run as the page shows it, and docs/rules is what they print.
#include <gmock/gmock.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "report/render/rule_doc_format.h"
#include "rule_docs/rule_doc_files.h"
#include "rule_examples.h"
#include "tool_test.h"

namespace tool_test {
namespace {

namespace fs = std::filesystem;
using korvel::AllRuleDocs;
using korvel::RuleDoc;
using korvel::RuleDocExample;
using testing::HasSubstr;
using testing::StartsWith;

class ExampleTest : public ToolTest, public testing::WithParamInterface<RuleDoc> {
 protected:
  ExampleTest() {
    Write("old.xml", Example().old_schema);
    Write("new.xml", Example().new_schema);
  }
  const RuleDocExample& Example() const { return *GetParam().example; }
  std::string Rule() const { return GetParam().row->id; }
  // The call of the example, with further options.
  Outcome Call(const std::string& options = "") const {
    const std::string program = "korvelcheck ";
    EXPECT_THAT(Example().call, StartsWith(program));
    return Korvelcheck(Words(Example().call.substr(program.size()) + " " + options));
  }
};

TEST_P(ExampleTest, IsRefusedByTheRule) {
  const Outcome outcome = Call("--format json");
  ASSERT_EQ(outcome.exit_code, 1) << outcome.err;
  const nlohmann::json table = nlohmann::json::parse(outcome.out)["tables"][0];
  EXPECT_EQ(table["rule"], GetParam().replaced_by.empty() ? Rule() : GetParam().replaced_by);
  EXPECT_EQ(table["code"], Example().code);
  EXPECT_EQ(table["text"], Example().answer);
}

TEST_P(ExampleTest, LeavesTheTextInTheLog) {
  if (Rule() == "length.limit") GTEST_SKIP() << "the list of oversized fields is not logged";
  std::set<std::string> logged;
  std::istringstream log(Call("--log - --log-format json").err);
  for (std::string line; std::getline(log, line);) {
    const std::string message = nlohmann::json::parse(line)["message"];
    if (const korvel::RefusalRow* row = korvel::Identify(message)) logged.insert(row->id);
  }
  EXPECT_TRUE(logged.contains(Rule()));
}

// Rules whose old schema is refused even if nothing changes.
const std::set<std::string> kRefusedAlready = {
    "library.protocols",        // a table created in TLV has no rules while its library is in the record format
    "splittable-key.old-text",  // no change of such a table can be checked
};

TEST_P(ExampleTest, OldAgainstOldIsAllowed) {
  Write("new.xml", Example().old_schema);
  const Outcome outcome = Call();
  EXPECT_EQ(outcome.exit_code, kRefusedAlready.contains(Rule()) ? 1 : 0) << outcome.out << outcome.err;
}

TEST_P(ExampleTest, AllowedSchemaIsAllowed) {
  EXPECT_EQ(!Example().allowed_schema.empty(), !kRefusedAlready.contains(Rule()));
  if (Example().allowed_schema.empty()) return;
  Write("new.xml", Example().allowed_schema);
  const Outcome outcome = Call();
  EXPECT_EQ(outcome.exit_code, 0) << outcome.out << outcome.err;
}

INSTANTIATE_TEST_SUITE_P(All, ExampleTest, testing::ValuesIn(WithExample(korvel::AllRuleDocs())), Id);

// The examples of warnings and notes.
class AdviceExampleTest : public ToolTest, public testing::WithParamInterface<RuleDoc> {
 protected:
  // The rules that a check of these schemas reports, with their levels.
  std::set<std::string> Reported(const std::string& old_schema, const std::string& new_schema) const {
    Write("old.xml", old_schema);
    Write("new.xml", new_schema);
    const Outcome outcome = Korvelcheck(Words(GetParam().example->call.substr(12) + " --format json"));
    EXPECT_EQ(outcome.exit_code, 0) << outcome.out << outcome.err;
    const nlohmann::json report = nlohmann::json::parse(outcome.out);
    std::set<std::string> rules;
    for (const nlohmann::json& table : report["tables"]) {
      for (const auto& warning : table.value("warnings", nlohmann::json::array())) {
        rules.insert(warning["level"].get<std::string>() + " " + warning["rule"].get<std::string>());
      }
    }
    return rules;
  }
};

TEST_P(AdviceExampleTest, IsReported) {
  const std::string expected = std::string(korvel::WordOf(GetParam().advice->level)) + " " + GetParam().row->id;
  EXPECT_EQ(Reported(GetParam().example->old_schema, GetParam().example->new_schema), std::set<std::string>{expected});
}

TEST_P(AdviceExampleTest, BetterSchemaIsNotReported) {
  ASSERT_NE(GetParam().example->allowed_schema, "");
  EXPECT_EQ(Reported(GetParam().example->old_schema, GetParam().example->allowed_schema), std::set<std::string>());
}

INSTANTIATE_TEST_SUITE_P(All, AdviceExampleTest, testing::ValuesIn(WithExample(korvel::AllAdviceDocs())), Id);

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
            "  The field sets of two structures can be compared only if both structures exist. Here the old one\n"
            "  is missing.\n"
            "\n"
            "Allowed instead\n"
            "  Pass both structures.\n"
            "\n"
            "No example\n"
            "  korvelcheck same compares only tables that both files contain. Programs that call\n"
            "  CompareTableField themselves can get this refusal.\n");
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
                                "Allowed new.xml\n"
                                "  <metalib name=\"shop\" version=\"2\" protocol=\"QMX\">\n"
                                "    <meta name=\"orders\">\n"
                                "      <entry name=\"uid\" type=\"uint32\"/>\n"
                                "      <entry name=\"second_zone\" type=\"uint32\" version=\"2\"/>\n"
                                "      <primarykey entries=\"uid\"/>\n"
                                "    </meta>\n"
                                "  </metalib>\n"));
}

TEST_F(ExplainTest, PrintsAdvice) {
  const std::string page = Printed({"explain", "advice.table-kind"});
  EXPECT_THAT(page, StartsWith("advice.table-kind: a table became a union, or stopped being one\n"
                               "  level  warning\n\nWhat goes wrong\n  A record of a structure"));
  EXPECT_THAT(page, HasSubstr("\n\nWhat to do instead\n  Keep the kind"));
  EXPECT_THAT(page, HasSubstr("\n\n$ korvelcheck check old.xml new.xml\n  warning [advice.table-kind]\n\nBetter new.xml\n"));
  const auto json = nlohmann::json::parse(Printed({"explain", "advice.id-reused", "--format", "json"}));
  EXPECT_EQ(json["rule"], "advice.id-reused");
  EXPECT_EQ(json["level"], "warning");
  EXPECT_EQ(json["example"], nullptr);
  EXPECT_THAT(json["no_example_reason"].get<std::string>(), StartsWith("It takes three versions"));
}

TEST_F(ExplainTest, PrintsACode) {
  const std::string page = Printed({"explain", "-35"});
  EXPECT_EQ(page,
            "-35 ERROR_ENTRY_LENGTH_NOT_LEGAL\n"
            "  Whitelisted fields grew. The message lists their sizes for a person to confirm.\n"
            "\n"
            "Rules\n"
            "  length.whitelist          whitelisted fields above the limit grew and need manual confirmation\n");
  EXPECT_EQ(Printed({"explain", "35"}), page);
  EXPECT_EQ(Printed({"explain", "ERROR_ENTRY_LENGTH_NOT_LEGAL"}), page);
  EXPECT_EQ(Printed({"explain", "-51"}),
            "-51 ERROR_REPEATED_FIELD_NAME\n  A field name is used twice.\n  Never returned by this checker.\n");
}

TEST_F(ExplainTest, KnowsARuleByItsText) {
  EXPECT_EQ(Printed({"explain", "Can't reduce list_num from 16 to 8"}), Printed({"explain", "table.list-num"}));
}

TEST_F(ExplainTest, JsonHasTheSame) {
  const nlohmann::json rule = nlohmann::json::parse(Printed({"explain", "table.list-num", "--format", "json"}));
  EXPECT_EQ(rule["version"], 1);
  EXPECT_EQ(rule["tool"], (nlohmann::json{{"name", "korvelcheck"}, {"version", KORVEL_VERSION}}));
  EXPECT_EQ(rule["command"], "explain");
  EXPECT_EQ(rule["rule"], "table.list-num");
  EXPECT_EQ(rule["codes"], nlohmann::json::parse(R"([{"code": -5, "code_name": "ERROR_SPLITTABLE_FIELD"},
                                                     {"code": -1, "code_name": "CHECK_TABLE_ERROR_INVALID_PARAMETER"}])"));
  EXPECT_EQ(rule["replaced_by"], nullptr);
  EXPECT_EQ(rule["no_example_reason"], nullptr);
  EXPECT_EQ(rule["example"]["call"], "korvelcheck check old.xml new.xml");
  EXPECT_EQ(rule["example"]["code"], -1);
  EXPECT_EQ(rule["example"]["answer"], "Can't reduce list_num from 16 to 8");
  EXPECT_EQ(rule["example"]["old"], korvel::FindRuleDoc("table.list-num")->example->old_schema);

  EXPECT_EQ(nlohmann::json::parse(Printed({"explain", "index.null", "--format", "json"}))["example"], nullptr);
  const nlohmann::json code = nlohmann::json::parse(Printed({"explain", "14", "--format=json"}));
  EXPECT_EQ(code["code"], -14);
  EXPECT_EQ(code["returned"], false);
  EXPECT_EQ(code["rules"], nlohmann::json::array());
}

TEST_F(ExplainTest, ListsTheRulesOfAFamily) {
  EXPECT_EQ(Printed({"explain", "field-set"}),
            "field-set.count           -33      the structures have different numbers of fields\n"
            "field-set.missing         -34      a field is missing in the other structure\n"
            "field-set.shape           -34      a field has a different type, count or size\n");
  EXPECT_EQ(Printed({"explain", "waiver", "--format", "markdown"}),
            "| Rule | Code or level | Reported because |\n"
            "|---|---|---|\n"
            "| [waiver.expired](waiver-expired.md) | error | a waiver in the project file has expired |\n"
            "| [waiver.malformed](waiver-malformed.md) | error | a waiver in the project file is invalid |\n"
            "| [waiver.unused](waiver-unused.md) | warning | a waiver in the project file matches no finding |\n");
  const nlohmann::json json = nlohmann::json::parse(Printed({"explain", "field-set", "--format", "json"}));
  EXPECT_EQ(json["command"], "explain");
  ASSERT_EQ(json["matches"].size(), 3u);
  EXPECT_EQ(json["matches"][0]["rule"], "field-set.count");
}

TEST_F(ExplainTest, ListsTheRulesAboutAWord) {
  EXPECT_EQ(Printed({"explain", "Renamed"}),
            "index.name                -6       an index was renamed or replaced\n"
            "field.missing             -3       a field was removed or renamed (record format)\n"
            "field.missing-tlv         -3       a field was removed or renamed, or its id changed (TLV)\n"
            "advice.library-renamed    note     the library was renamed\n");
  EXPECT_EQ(Printed({"explain", "whitelist"}), Printed({"explain", "WhiteList"}));
}

// A list of one rule says less than its page.
TEST_F(ExplainTest, TheOnlyMatchIsExplained) {
  EXPECT_EQ(Printed({"explain", "check"}), Printed({"explain", "check.failed"}));
  EXPECT_EQ(Printed({"explain", "union"}), Printed({"explain", "advice.table-kind"}));
}

TEST_F(ExplainTest, UnknownWordsAreRefused) {
  const std::string hint = "\n'korvelcheck rules' lists the rules, 'korvelcheck rules --codes' the codes: 0 to -51.\n";
  const std::string what = " is neither a rule nor a result code nor a text of the checker";
  ExpectInputError(Korvelcheck({"explain", "primary-key.sise"}),
                   "korvelcheck: explain: 'primary-key.sise'" + what + " (did you mean 'primary-key.size'?)" + hint);
  ExpectInputError(Korvelcheck({"explain", "ERROR_EXIST_FIELD"}),
                   "korvelcheck: explain: 'ERROR_EXIST_FIELD'" + what + " (did you mean 'ERROR_EIXST_FIELD'?)" + hint);
  ExpectInputError(Korvelcheck({"explain", "primary-kye"}),
                   "korvelcheck: explain: 'primary-kye'" + what + " (did you mean 'primary-key'?)" + hint);
  for (const std::string word : {"ta", "52", "-52", "4x", "99999999999999999999", "-2147483648", ""}) {
    ExpectInputError(Korvelcheck({"explain", word}), "korvelcheck: explain: '" + word + "'" + what + hint);
  }
  ExpectInputError(Korvelcheck({"explain"}), "korvelcheck: explain: TOPIC is required\nTry 'korvelcheck explain --help'.\n");
  ExpectInputError(Korvelcheck({"explain", "4", "5"}),
                   "korvelcheck: explain: '4' is not a fingerprint; allowed with files and --against: at least four hexadecimal "
                   "digits\nTry 'korvelcheck explain --help'.\n");
}

TEST_F(ExplainTest, RulesListsEachOnALine) {
  std::istringstream lines(Printed({"rules"}));
  std::vector<std::string> ids;
  for (std::string line; std::getline(lines, line);) ids.push_back(line.substr(0, line.find(' ')));
  std::vector<std::string> expected;
  for (const korvel::RefusalRow* row : korvel::AllRefusals()) expected.emplace_back(row->id);
  const std::size_t refusals = expected.size();
  expected.emplace_back();
  for (const korvel::AdviceRule* rule : korvel::AllAdvice()) expected.emplace_back(rule->row.id);
  expected.emplace_back();
  for (const korvel::RefusalRow& row : korvel::kFaultRules) expected.emplace_back(row.id);
  expected.emplace_back();
  for (const korvel::ProjectRule* rule : korvel::kProjectRules) expected.emplace_back(rule->row.id);
  EXPECT_EQ(ids, expected);
  EXPECT_THAT(Printed({"rules"}), HasSubstr("\nschema.syntax             error    a schema file is not well-formed XML\n"));
  EXPECT_THAT(Printed({"rules"}), HasSubstr("\nadvice.library-renamed    note     the library was renamed\n"));
  EXPECT_THAT(Printed({"rules"}), HasSubstr("\nprimary-key.size          -3       the size of a primary key field changed\n"));
  const nlohmann::json json = nlohmann::json::parse(Printed({"rules", "--format", "json"}));
  EXPECT_EQ(json["command"], "rules");
  EXPECT_EQ(json["rules"].size(), refusals);
  EXPECT_EQ(json["advice"].size(), korvel::AllAdvice().size());
  EXPECT_EQ(json["faults"].size(), korvel::kFaultRules.size());
  EXPECT_EQ(json["project"].size(), korvel::kProjectRules.size());
  ExpectInputError(Korvelcheck({"rules", "old.xml"}),
                   "korvelcheck: rules: unexpected argument 'old.xml'\nTry 'korvelcheck rules --help'.\n");
}

TEST_F(ExplainTest, RulesListsTheCodes) {
  EXPECT_THAT(Printed({"rules", "--codes"}), StartsWith("0    CHECK_TABLE_SUCCESS\n-1   CHECK_TABLE_ERROR_INVALID_PARAMETER\n"));
  EXPECT_THAT(Printed({"rules", "--codes"}),
              HasSubstr("\n-14  ERROR_EXIST_TABLE                             never returned by this checker\n"));
  EXPECT_EQ(nlohmann::json::parse(Printed({"rules", "--codes", "--format", "json"}))["codes"].size(), 52u);
}

TEST_F(ExplainTest, PagesCanBeWrittenToAFile) {
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

// `make docs` regenerates the index and the summaries.
TEST_F(ExplainTest, DocumentsAreWhatIsPrinted) {
  std::map<std::string, std::string> expected = {{"README.md", Printed({"rules", "--format", "markdown"})},
                                                 {"result-codes.md", Printed({"rules", "--codes", "--format", "markdown"})}};
  for (const RuleDoc& doc : AllRuleDocs()) {
    expected[korvel::RuleDocFileName(doc.row->id)] = Printed({"explain", doc.row->id, "--format", "markdown"});
  }
  for (const RuleDoc& doc : korvel::AllAdviceDocs()) {
    expected[korvel::RuleDocFileName(doc.row->id)] = Printed({"explain", doc.row->id, "--format", "markdown"});
  }
  for (const RuleDoc& doc : korvel::AllFaultDocs()) {
    expected[korvel::RuleDocFileName(doc.row->id)] = Printed({"explain", doc.row->id, "--format", "markdown"});
  }
  for (const RuleDoc& doc : korvel::AllProjectDocs()) {
    expected[korvel::RuleDocFileName(doc.row->id)] = Printed({"explain", doc.row->id, "--format", "markdown"});
  }
  const std::map<std::string, std::string> documents = Documents();
  for (const auto& [file, text] : documents)
    EXPECT_TRUE(expected.contains(file)) << "docs/rules/" << file << " is not the page of a rule";
  for (const auto& [file, text] : expected) {
    const auto found = documents.find(file);
    EXPECT_EQ(found == documents.end() ? "(missing)" : found->second, text) << "docs/rules/" << file;
  }
}

}  // namespace
}  // namespace tool_test
