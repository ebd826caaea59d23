// Text that deceives readers, in every place from which text comes: names, attributes and descriptions of schemas, names of
// files, texts of the project file, revisions. No format of any command prints it as it is. Only `suggest` copies the bytes of
// the file that it fixes: its output is applied to the file, or replaces it.
#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>

#include "base/characters.h"
#include "git_repository.h"

namespace tool_test {
namespace {

using nlohmann::json;
using testing::HasSubstr;

// What must not be in any output. A table of its own, not that of the program.
constexpr std::uint32_t kRanges[][2] = {{0x00, 0x08},      {0x0B, 0x1F},     {0x7F, 0x9F},     {0xAD, 0xAD},
                                        {0x61C, 0x61C},    {0x180E, 0x180E}, {0x200B, 0x200F}, {0x2028, 0x202E},
                                        {0x2060, 0x206F},  {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0xE0000, 0xE007F},
                                        {0xE0100, 0xE01EF}};

std::string Utf8(std::uint32_t code) {
  const auto tail = [code](unsigned shift) { return static_cast<char>(0x80 | (code >> shift & 0x3F)); };
  if (code < 0x80) return {static_cast<char>(code)};
  if (code < 0x800) return {static_cast<char>(0xC0 | code >> 6), tail(0)};
  if (code < 0x10000) return {static_cast<char>(0xE0 | code >> 12), tail(6), tail(0)};
  return {static_cast<char>(0xF0 | code >> 18), tail(12), tail(6), tail(0)};
}

// One letter and one character after the other: the first and the last of each range that XML can contain.
std::string Marks() {
  std::string marks;
  for (const auto& [first, last] : kRanges) {
    for (const std::uint32_t code : {first, last}) marks += code < 0x20 ? "" : "x" + Utf8(code);
  }
  return marks;
}

// For names of files, which are short.
const std::string kShort =
    Utf8(0x202E) + "a" + Utf8(0xAD) + Utf8(0x200B) + Utf8(0x85) + Utf8(0xE0041) + "\x1B[31m\n::error::b\xFF";

const std::string kName = Marks();
const std::string kReferences = "@all #1 GH-1 0123456789abcdef0123456789abcdef01234567";
const std::string kTable = "::t\n::error::c\n##[error]d\t" + kName + kReferences;
const std::string kLines = "&#10;::error::c&#10;##[error]d&#9;" + kName + kReferences;

std::string Schema(const std::string& type) {
  return "<metalib name=\"l" + kName + "\" version=\"1\">\n<meta name=\"s" + kLines + "\" desc=\"" + kLines +
         "\"><entry name=\"a" + kLines + "\" type=\"" + type + "\"/></meta>\n<meta name=\"::t" + kLines + "\" desc=\"" + kLines +
         "\" customattr=\"TableType=" + type + kLines + ";x" + kName + "=" + type + "\"><entry name=\"k" + kName +
         "\" type=\"uint32\" desc=\"" + kLines + "\"/><entry name=\"::f" + kLines + "\" type=\"" + type + "\" customattr2=\"" +
         type + kLines + "\"/><entry name=\"e" + kLines + "\" type=\"s" + kLines + "\"/><primarykey entries=\"k" + kName +
         "\"/><index name=\"i" + type + kLines + "\"><column entry=\"k" + kName + "\"/></index></meta>\n<meta name=\"" + type +
         kLines + "\"><entry name=\"k" + kName + "\" type=\"uint32\"/><primarykey entries=\"k" + kName +
         "\"/></meta>\n</metalib>\n";
}

// Characters and bytes of the text that must not be there.
std::string Hidden(std::string_view text) {
  std::string found;
  while (!text.empty()) {
    const korvel::Character first = korvel::FirstCharacter(text);
    bool is_hidden = first.length == 0;
    for (const auto& [low, high] : kRanges) is_hidden = is_hidden || (first.code_point >= low && first.code_point <= high);
    if (is_hidden) found += "U+" + std::to_string(first.code_point) + " in front of " + std::string(text.substr(0, 20)) + "\n";
    text.remove_prefix(std::max<std::size_t>(first.length, 1));
  }
  return found;
}

void ExpectHarmless(const std::string& text, bool has_commands = false) {
  EXPECT_EQ(Hidden(text), "");
  EXPECT_EQ(text.find("##["), std::string::npos) << text;
  static const std::regex kCommand("(^|\n)[ \t]*::");
  EXPECT_TRUE(has_commands || !std::regex_search(text, kCommand)) << text;
}

constexpr const char* kFormats[] = {"text", "json", "sarif", "junit", "github", "gitlab", "markdown", "html"};

class HostileTextTest : public GitTest {
 protected:
  HostileTextTest() : old_("o" + kShort + ".xml"), new_("::error::n" + kShort + ".xml") {
    environment_.emplace_back("SOURCE_DATE_EPOCH=1767225600");  // 2026-01-01
    Write(old_, Schema("uint32"));
    Write(new_, Schema("uint64"));
  }

  // Runs a call that reports something, and expects that nothing in its output deceives.
  Outcome Expect(const std::vector<std::string>& arguments, int least, int most, const std::string& format = "") const {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const Outcome outcome = Run(arguments);
    EXPECT_THAT(outcome.exit_code, testing::AllOf(testing::Ge(least), testing::Le(most))) << outcome.err;
    EXPECT_NE(outcome.out + outcome.err, "");
    ExpectHarmless(outcome.out, format == "github");
    ExpectHarmless(outcome.err);
    if (!outcome.out.empty() && (format == "json" || format == "sarif" || format == "gitlab")) {
      EXPECT_FALSE(json::parse(outcome.out, nullptr, false).is_discarded());
    }
    return outcome;
  }
  Outcome ExpectReport(const std::vector<std::string>& arguments, const char* format) const {
    return Expect(Joined({arguments.front(), "--format", format}, {arguments.begin() + 1, arguments.end()}), 0, 1, format);
  }
  void ExpectError(const std::vector<std::string>& arguments) const { Expect(arguments, 2, 2); }

  std::string old_;
  std::string new_;
};

TEST_F(HostileTextTest, NoFormatOfAReportShowsIt) {
  for (const char* const format : kFormats) {
    for (const char* const command : {"check", "compat", "sortlist", "history"}) {
      ExpectReport({command, "--", old_, new_}, format);
    }
    for (const char* const command : {"values", "same"}) ExpectReport({command, "--table", kTable, "--", old_, new_}, format);
    ExpectReport({"lint", "--no-project", "--server-version", "3.29.0", "--", new_}, format);
    ExpectReport({"check", "--type", "list", "--created-as", "tlv", "--", old_, new_}, format);
  }
  for (const char* const format : {"text", "json"}) {
    ExpectReport({"diff", "--", old_, new_}, format);
    ExpectReport({"layout", "--", new_}, format);
    ExpectReport({"layout", "--", old_, new_}, format);
  }
}

TEST_F(HostileTextTest, ReviewsDoNotShowIt) {
  for (const char* const format : {"github-review", "gitlab-review"}) {
    const json review = json::parse(ExpectReport({"check", "--", old_, new_}, format).out, nullptr, false);
    ASSERT_FALSE(review["comments"].empty());
    for (const json& comment : review["comments"]) {
      const std::string body = comment["body"];
      EXPECT_EQ(Hidden(body), "");
      EXPECT_EQ(body.find("\n/"), std::string::npos) << "a command to the service";
      EXPECT_EQ(comment["suggestion"], nullptr) << "the service may change the names";
    }
    const std::string body = review["body"];
    EXPECT_EQ(Hidden(body), "");
    EXPECT_EQ(body.find("\n/"), std::string::npos);
  }
}

// Regression: JSON had C1 controls and line separators as they are.
TEST_F(HostileTextTest, JsonHasTheSameValues) {
  const json report = json::parse(ExpectReport({"check", "--", old_, new_}, "json").out, nullptr, false);
  ASSERT_TRUE(report.is_object());
  EXPECT_EQ(report["tables"][0]["table"], kTable);
}

// Regression: GH-1 and the ids of commits became links.
TEST_F(HostileTextTest, MarkdownHasNoReferences) {
  std::string text = ExpectReport({"check", "--", old_, new_}, "markdown").out;
  text = std::regex_replace(text, std::regex("```[^`]*```|<code>[^<]*(<[^/][^<]*)*</code>"), "CODE");
  for (const char* const reference : {"GH-1", "@all", "#1 ", "0123456789abcdef0123456789abcdef01234567"}) {
    EXPECT_EQ(text.find(reference), std::string::npos) << reference << " in " << text;
  }
}

TEST_F(HostileTextTest, NoMessageShowsIt) {
  Write("garbage" + kShort, kShort);
  Write("invalid" + kShort, "<metalib name=\"l\" version=\"1\"><meta name=\"t" + kLines + "\"><entry name=\"a" + kLines +
                                "\" type=\"" + kLines + "\" id=\"" + kLines + "\"/></meta></metalib>");
  std::filesystem::create_directory(PathOf("directory" + kShort));
  for (const char* const file : {"garbage", "invalid", "directory", "missing"}) {
    ExpectError({"lint", "--no-project", "--", file + kShort});
    ExpectError({"check", "--no-project", "--", old_, file + kShort});
    for (const char* const format : kFormats) {
      Expect({"check", "--no-project", "--format", format, "--", old_, file + kShort}, 2, 2, format);
    }
  }
  ExpectError({"check", "--table", "t" + kShort, "--", old_, new_});
  ExpectError({"lint", "--server-version", kShort, "--", old_});
  ExpectError({"explain", kShort});
  ExpectError({kShort});
  ExpectError({"check", "--x" + kShort});
  ExpectError({"check", "--format", kShort, "--", old_, new_});
  ExpectError({"check", "--project", "missing" + kShort, "--", old_, new_});
  Expect({"check", "-o", "missing" + kShort + "/r", "--", old_, new_}, 2, 3);
  ExpectError({"check", "-o", old_, "--", old_, new_});
  ExpectError({"compile", "-o", "image", "--", "garbage" + kShort});
}

TEST_F(HostileTextTest, NoLogShowsIt) {
  for (const char* const format : {"text", "json"}) {
    Expect({"check", "--log", "log" + kShort, "--log-format", format, "--", old_, new_}, 1, 1);
    const std::string log = Read("log" + kShort);
    EXPECT_NE(log, "");
    ExpectHarmless(log);
    Expect({"check", "--log", "-", "--log-format", format, "--", old_, new_}, 1, 1);
  }
  ExpectError({"check", "--log", "missing" + kShort + "/log", "--", old_, new_});
  ExpectError({"check", "--log", old_, "--", old_, new_});
}

TEST_F(HostileTextTest, NoSchemaFromAnImageShowsIt) {
  ExpectOutcome(Run({"compile", "-o", "image", "--", new_}), 0, "", "");
  Expect({"dump", "image"}, 0, 0);
  Write("dumped.xml", Run({"dump", "image"}).out);
  EXPECT_THAT(Run({"diff", "--", new_, "dumped.xml"}).out, HasSubstr("\n0 changes; "));
}

TEST_F(HostileTextTest, ProjectFileDoesNotShowIt) {
  const std::string reason = Utf8(0x202E) + Utf8(0x2028) + Utf8(0xE0041) + " ##[error]";
  std::filesystem::create_directory(PathOf("s"));
  Write("s/a" + Utf8(0x202E) + ".xml", Schema("uint64"));
  Write("korvelcheck.toml", "[schemas]\npaths = [\"s/*.xml\", \"missing" + reason +
                                "\"]\n[[waivers]]\nrule = \"field.type\"\ntable = \"t" + reason + "\"\nreason = \"" + reason +
                                "\"\nuntil = 2026-02-01\n[[waivers]]\nrule = \"r" + reason + "\"\ntable = \"t\"\nreason = \"" +
                                reason + "\"\nuntil = 2026-02-01\n");
  for (const char* const format : kFormats) Expect({"lint", "--format", format}, 0, 2, format);
  for (const char* const format : {"text", "json"}) {
    Expect({"waivers", "--format", format, "--", old_, "s/a" + Utf8(0x202E) + ".xml"}, 0, 2, "");
  }
  ExpectError({"waive", "0123456789abcdef", "--reason", "r", "--until", "2026-02-01", "--", old_, new_});
  Write("korvelcheck.toml", "x" + reason + "\n");
  ExpectError({"lint"});
  Write("korvelcheck.toml", "\"" + reason + "\" = 1\n[schemas]\npaths = [\"*.xml\"]\nagainst = \"" + reason + "\"\n");
  ExpectError({"lint"});
}

// The waiver in the project file is for reviewers, too.
TEST_F(HostileTextTest, NewWaiverDoesNotShowIt) {
  const std::string reason = "because" + Utf8(0x202E) + Utf8(0xE0041);
  const std::string file = "n" + Utf8(0x202E) + ".xml";  // waivers name files in UTF-8
  Write(file, Schema("uint64"));
  const auto check = [&] { return json::parse(Run({"check", "--format", "json", "--", old_, file}).out, nullptr, false); };
  const json report = check();
  for (const auto& finding : report["tables"][0]["changes"]["findings"]) {
    Write("korvelcheck.toml", "");
    Expect({"waive", finding["fingerprint"], "--reason", reason, "--until", "2026-02-01", "--", old_, file}, 0, 0);
    ExpectHarmless(Read("korvelcheck.toml"));
  }
  EXPECT_EQ(check()["summary"]["waived"], 1);
}

TEST_F(HostileTextTest, RevisionsDoNotShowIt) {
  const std::string tag = "v" + Utf8(0x202E) + Utf8(0xE0041) + "'$(x)" + Utf8(0xAD);
  std::filesystem::create_directory(PathOf("s" + kShort));
  Write("s" + kShort + "/a.xml", Schema("uint32"));
  Commit("first " + kShort);
  Git({"tag", tag});
  Write("s" + kShort + "/a.xml", Schema("uint64"));
  Commit("second " + kShort);
  for (const char* const format : kFormats) {
    ExpectReport({"check", "--no-project", "--against", "git:" + tag, "--", "s" + kShort}, format);
    ExpectReport({"check", "--no-project", "--against", "git-tag:v*", "--", "s" + kShort}, format);
    ExpectReport({"history", "--no-project", "--git", "--", "s" + kShort}, format);
  }
  const std::string file = "s" + Utf8(0x202E) + ".xml";
  Write(file, Schema("uint32"));
  Commit("third " + kShort);
  Git({"tag", tag + "3"});
  Write(file, Schema("uint64"));
  Commit("fourth " + kShort);
  Git({"tag", tag + "4"});
  for (const char* const format : kFormats) ExpectReport({"history", "--no-project", "--tags", "v*", "--", file}, format);
  for (const std::string& revision : {"x" + tag, tag + "~5", "origin/" + tag, kShort}) {
    ExpectError({"check", "--no-project", "--against", "git:" + revision, "--", "s" + kShort});
    ExpectError({"lint", "--no-project", "git:" + revision + ":a" + kShort});
  }
}

// A service takes a line that begins with "::" or contains "##[" for a command, and a shell a word that begins with '-' for an
// option.
TEST_F(HostileTextTest, PathsAreNeitherCommandsNorOptions) {
  Write("::error::a.xml", Library(5, {Table()}));
  Write("##[error]b.xml", Library(5, {Table()}));
  Write("-c.xml", Library(5, {Table()}));
  EXPECT_THAT(Run({"lint", "-v", "--no-project", "--", "::error::a.xml"}).out, HasSubstr("\n./::error::a.xml:2:1: allowed"));
  EXPECT_THAT(Run({"lint", "-v", "--no-project", "--", "##[error]b.xml"}).out, HasSubstr("\n./\\x23#[error]b.xml:2:1: allowed"));
  EXPECT_THAT(Run({"lint", "-v", "--no-project", "--", "-c.xml"}).out, HasSubstr("\n./-c.xml:2:1: allowed"));
  Write("::error::a.xml", "<");
  EXPECT_THAT(Run({"lint", "-v", "--no-project", "--", "::error::a.xml"}).err, testing::StartsWith("./::error::a.xml:1:"));
}

}  // namespace
}  // namespace tool_test
