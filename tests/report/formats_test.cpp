// Every format with hand-made reports: golden files, and documents with hostile names that independent parsers must accept.
#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>

#include "base/characters.h"
#include "golden_text.h"
#include "report/render/render.h"
#include "rule_docs/rule_docs.h"
#include "sample_report.h"
#include "shared_report.h"
#include "support/golden.h"

namespace report_test {
namespace {

using korvel::BeginsLogCommand;
using korvel::CharacterLength;
using korvel::FirstCharacter;
using korvel::Format;
using korvel::Formats;
using korvel::IsHidden;
using test_support::ExpectGolden;

namespace fs = std::filesystem;

const fs::path kHere = fs::path(KORVEL_SOURCE_DIR) / "tests" / "report";
const fs::path kGoldens = kHere / "golden" / "samples";

// Ten tables that share three findings, of which the report lists two.
Sample SharedSample() {
  SharedReport made = MakeSharedReport(10, 3);
  made.report.max_findings = 2;
  return {std::move(made.old_source), std::move(made.new_source), std::move(made.report)};
}

struct NamedReport {
  const char* name;
  Sample (*make)();
};

constexpr NamedReport kReports[] = {
    {"everything", [] { return EverythingReport(); }},
    {"allowed", AllowedReport},
    {"shared", SharedSample},
    {"faults", [] { return FaultReport(); }},
};

TEST(Formats, MatchGoldens) {
  std::set<std::string> known;
  for (const NamedReport& report : kReports) {
    for (const Format& format : Formats()) {
      const std::string name = std::string(report.name) + "." + format.name;
      known.insert(name);
      ExpectGolden(kGoldens / name, GoldenText(format, report.make().report));
    }
  }
  test_support::ExpectNoOtherGoldens(kGoldens, known);
}

TEST(Formats, TextIsColoredOnRequest) {
  Sample sample = EverythingReport();
  sample.report.detail = korvel::Detail::kVerbose;
  const std::string text = Formats().front().Render(sample.report, true);
  EXPECT_THAT(text, testing::StartsWith("verdict: \x1b[31mrefused\x1b[0m\n"));
  EXPECT_THAT(text, testing::HasSubstr(": \x1b[33mwaived\x1b[0m [field.count]"));
  EXPECT_THAT(text, testing::HasSubstr(": \x1b[32m"
                                       "allowed\x1b[0m: table logs"));
  for (const Format& format : Formats().subspan(1)) {
    EXPECT_EQ(format.Render(sample.report, true), format.Render(sample.report, false)) << format.name;
  }
}

// --- Documents stay well-formed ---

// Delimiters of all formats, hidden characters, commands for services, invalid UTF-8.
constexpr char kOdd[] =
    "\n\r\t\x01\x1b[31m\x7f]]>-->\"'<b>&amp;|`*_[x](y)@all #1 %0A::error::\\\xc2\x85\xe2\x80\xa8\xef\xbf\xbf\xc3"
    "\xe2\x80\xae\xc2\xad\xf3\xa0\x81\x81##[error]\xff";

class DocumentTest : public testing::TestWithParam<std::string> {
 protected:
  DocumentTest() : path_(fs::temp_directory_path() / ("korvel_" + GetParam() + "." + std::to_string(::getpid()))) {}
  ~DocumentTest() override { fs::remove(path_); }

  std::string Render(const Sample& sample) const {
    const auto format = std::ranges::find(Formats(), GetParam(), &Format::name);
    return format->Render(sample.report, false);
  }

  // Whether a program accepts the document; its path is appended to the command.
  testing::AssertionResult IsAcceptedBy(const std::string& command, const std::string& document) const {
    std::ofstream(path_, std::ios::binary) << document;
    std::string output;
    FILE* const pipe = ::popen((command + " '" + path_.string() + "' 2>&1").c_str(), "r");
    for (int c; (c = std::fgetc(pipe)) != EOF;) output += static_cast<char>(c);
    if (::pclose(pipe) == 0) return testing::AssertionSuccess();
    return testing::AssertionFailure() << command << ":\n" << output << "\n" << document;
  }

  testing::AssertionResult IsValid(const fs::path& schema, const std::string& document) const {
    return IsAcceptedBy(KORVEL_PYTHON " '" + (kHere / "validate.py").string() + "' '" + schema.string() + "'", document);
  }

 private:
  fs::path path_;
};

// No hidden characters except line ends and, in lines of source, tabs; no commands for services.
testing::AssertionResult IsPlainText(std::string_view document) {
  for (std::size_t at = 0; at < document.size(); at += CharacterLength(document.substr(at))) {
    const auto [length, code] = FirstCharacter(document.substr(at));
    const bool is_plain = length != 0 && (!IsHidden(code) || code == '\n' || code == '\t');
    if (is_plain && !BeginsLogCommand(document.substr(at))) continue;
    return testing::AssertionFailure() << "character " << code << " after " << document.substr(0, at);
  }
  return testing::AssertionSuccess();
}

// Every line is a command that the runner knows; names start no commands.
testing::AssertionResult AreCommands(const std::string& document) {
  std::istringstream lines(document);
  for (std::string line; std::getline(lines, line);) {
    const auto begins = [&](const char* command) { return line.starts_with(command); };
    if (!begins("::error ") && !begins("::warning ") && !begins("::notice ")) return testing::AssertionFailure() << line;
  }
  return testing::AssertionSuccess();
}

TEST_P(DocumentTest, IsWellFormedWithHostileNames) {
  const std::string format = GetParam();
  for (const Sample& sample :
       {EverythingReport(kOdd), EverythingReport(), AllowedReport(), SharedSample(), FaultReport(), FaultReport(kOdd)}) {
    const std::string document = Render(sample);
    EXPECT_FALSE(document.empty());
    EXPECT_TRUE(IsPlainText(document));
    if (format == "json") {
      EXPECT_TRUE(IsValid(fs::path(KORVEL_SOURCE_DIR) / "docs" / "report.schema.json", document));
    } else if (format == "sarif") {
      EXPECT_TRUE(IsValid(kHere / "schemas" / "sarif-2.1.0.json", document));
    } else if (format == "gitlab") {
      EXPECT_TRUE(IsValid(kHere / "schemas" / "gitlab-code-quality.json", document));
    } else if (format.ends_with("-review")) {
      EXPECT_TRUE(IsValid(fs::path(KORVEL_SOURCE_DIR) / "docs" / "review.schema.json", document));
    } else if (format == "junit") {
      EXPECT_TRUE(IsAcceptedBy("xmllint --noout", document));
    } else if (format == "github") {
      EXPECT_TRUE(AreCommands(document));
    } else if (format != "text" && format != "markdown") {
      EXPECT_EQ(format, "html") << "a format without a parser";  // tests/browser parses it
    }
  }
}

std::vector<std::string> NamesOfFormats() {
  std::vector<std::string> names;
  for (const Format& format : Formats()) names.emplace_back(format.name);
  return names;
}

INSTANTIATE_TEST_SUITE_P(Every, DocumentTest, testing::ValuesIn(NamesOfFormats()),
                         [](const auto& format) { return TestNameOf(format.param); });

// --- Members that other programs rely on ---

using Json = nlohmann::json;

Json Parsed(const char* format, const Sample& sample) {
  return Json::parse(std::ranges::find(Formats(), std::string_view(format), &Format::name)->Render(sample.report, false));
}

TEST(Sarif, NamesRulesByTheirPosition) {
  const Json run = Parsed("sarif", EverythingReport())["runs"][0];
  const Json& rules = run["tool"]["driver"]["rules"];
  ASSERT_EQ(run["results"].size(), 10u);
  for (const Json& result : run["results"]) EXPECT_EQ(rules.at(result["ruleIndex"].get<std::size_t>())["id"], result["ruleId"]);
  EXPECT_EQ(run["invocations"][0]["exitCode"], 1);
  EXPECT_EQ(Parsed("sarif", AllowedReport())["runs"][0]["invocations"][0]["exitCode"], 0);
}

// A service shows the description of a rule to people who have only the log.
TEST(Sarif, EveryRuleIsDescribed) {
  const Json rules = Parsed("sarif", EverythingReport())["runs"][0]["tool"]["driver"]["rules"];
  std::size_t pages = 0;
  for (const Json& rule : rules) {
    SCOPED_TRACE(rule["id"]);
    EXPECT_NE(rule["shortDescription"]["text"], "");
    EXPECT_EQ(rule["defaultConfiguration"]["level"], rule["id"] == "waiver.unused" ? "warning" : "error");
    const auto* const doc = korvel::FindRuleDoc(rule["id"].get<std::string>());
    if (doc == nullptr) continue;
    ++pages;
    EXPECT_EQ(rule["fullDescription"]["text"], doc->protects);
    EXPECT_LE(doc->protects.size(), 1024u) << "services truncate longer ones";
    for (const char* form : {"text", "markdown"}) {
      EXPECT_THAT(rule["help"][form].get<std::string>(), testing::StartsWith(doc->protects)) << form;
      EXPECT_THAT(rule["help"][form].get<std::string>(), testing::HasSubstr(doc->allowed)) << form;
    }
  }
  EXPECT_GT(pages, korvel::AllRuleDocs().size()) << "the report has an expired waiver";
}

TEST(Sarif, DescribesRulesThatAreNotInTheCatalog) {
  for (const char* id : {"refused", "report.limit", "project.no-longer-checked", "waiver.expired", "waiver.unused"}) {
    Sample sample = AllowedReport();
    sample.report.project = {{id, "korvelcheck.toml", {3, 1}, "text", ""}};
    EXPECT_TRUE(Parsed("sarif", sample)["runs"][0]["tool"]["driver"]["rules"].back().contains("shortDescription")) << id;
  }
}

TEST(Sarif, WaivedFindingIsSuppressed) {
  const Json results = Parsed("sarif", EverythingReport())["runs"][0]["results"];
  EXPECT_EQ(results[4]["suppressions"][0]["justification"], "nobody has mail");
  EXPECT_FALSE(results[0].contains("suppressions"));
}

TEST(Sarif, FixReplacesTheMarkedText) {
  const Json result = Parsed("sarif", EverythingReport())["runs"][0]["results"][0];
  const Json part = result["fixes"][0]["artifactChanges"][0]["replacements"][0];
  Json region = result["locations"][0]["physicalLocation"]["region"];
  region.erase("snippet");
  Json deleted = part["deletedRegion"];
  EXPECT_EQ(deleted["byteLength"], 6);
  deleted.erase("byteOffset");
  deleted.erase("byteLength");
  EXPECT_EQ(deleted, region);
  EXPECT_EQ(part["insertedContent"]["text"], "uint32");
}

TEST(Sarif, PathsAreUris) {
  Sample sample = EverythingReport();
  sample.new_source->name = "a b/\xc3\xa9%[x]:1.xml";
  EXPECT_EQ(Parsed("sarif", sample)["runs"][0]["results"][0]["locations"][0]["physicalLocation"]["artifactLocation"]["uri"],
            "a%20b/%C3%A9%25%5Bx%5D%3A1.xml");
}

TEST(Gitlab, FingerprintsAreUnique) {
  Sample sample = EverythingReport();
  for (auto& finding : sample.report.tables[0].changes->findings) finding.fingerprint = "00";
  std::set<std::string> fingerprints;
  const Json entries = Parsed("gitlab", sample);
  for (const Json& entry : entries) fingerprints.insert(entry["fingerprint"]);
  EXPECT_EQ(fingerprints.size(), entries.size());
}

// Of a command that does not check changes one by one. The refusal has neither a text nor a rule.
TEST(Formats, RefusedTableWithoutChangesIsAnIssue) {
  Sample sample = AllowedReport();
  korvel::TableResult& table = sample.report.tables[0];
  table.status = korvel::Status::kRefused;
  table.verdict.code = -2;
  const Json result = Parsed("sarif", sample)["runs"][0]["results"][0];
  EXPECT_EQ(result["ruleId"], "refused");
  EXPECT_THAT(result["message"]["text"].get<std::string>(),
              testing::MatchesRegex("CHECK_TABLE_ERROR_SYSTEM_ERROR: [^\n]+\nchecker: \\(no text\\)\ntable carts: -2 "
                                    "CHECK_TABLE_ERROR_SYSTEM_ERROR"));
  EXPECT_THAT(Formats().front().Render(sample.report, false),
              testing::EndsWith("Run 'korvelcheck explain CHECK_TABLE_ERROR_SYSTEM_ERROR' for the result code.\n"));
  EXPECT_EQ(Parsed("gitlab", sample)[0]["location"]["lines"]["begin"], 12);
}

// Services need a line, but an image has none.
TEST(Formats, ImageHasNoLines) {
  Sample sample = EverythingReport();
  sample.old_source->text.reset();
  sample.new_source->text.reset();
  sample.report.tables[0].changes->findings[0].fix.clear();
  EXPECT_FALSE(Parsed("sarif", sample)["runs"][0]["results"][0]["locations"][0]["physicalLocation"].contains("region"));
  EXPECT_EQ(Parsed("gitlab", sample)[0]["location"]["lines"]["begin"], 1);
  for (const Format& format : Formats()) EXPECT_FALSE(format.Render(sample.report, false).empty()) << format.name;
}

}  // namespace
}  // namespace report_test
