// A change of a structure that several tables embed is one finding in every format; waivers and limits hide no refused table.
#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <nlohmann/json.hpp>
#include <regex>

#include "golden_text.h"
#include "report/render/render.h"
#include "report/result/fold_edits.h"
#include "report/result/issues.h"
#include "report/result/summary.h"
#include "shared_report.h"

namespace report_test {
namespace {

using namespace korvel;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using Json = nlohmann::ordered_json;

std::size_t CountOf(const std::string& part, const std::string& text) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++count;
  return count;
}

// Whether a name occurs in the text, other than as a part of a longer one.
bool HasWord(const std::string& word, const std::string& text) {
  for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
    const std::size_t end = at + word.size();
    if (end == text.size() || std::isalnum(static_cast<unsigned char>(text[end])) == 0) return true;
  }
  return false;
}

std::string Render(const std::string& format, const Report& report) {
  return std::ranges::find(Formats(), format, &Format::name)->Render(report, false);
}

// The test cases of a JUnit report that contain an element.
std::size_t TestsWith(const std::string& element, const std::string& junit) {
  const std::regex test("<testcase[^>]*>(?:(?!</testcase>)[^])*?<" + element);
  return static_cast<std::size_t>(std::distance(std::sregex_iterator(junit.begin(), junit.end(), test), {}));
}

// What a reader sees as one text: of a review, the comment on the whole change. It has the findings again as comments on lines.
std::string Shown(const std::string& format, const Report& report) {
  const std::string text = Render(format, report);
  return format.ends_with("-review") ? Json::parse(text)["body"].get<std::string>() : text;
}

class EveryFormat : public testing::TestWithParam<std::string> {};

TEST_P(EveryFormat, ReportsEachCauseOnce) {
  const SharedReport made = MakeSharedReport(20, 12);
  const std::string text = Shown(GetParam(), made.report);
  for (std::size_t i = 0; i < 12; ++i) EXPECT_EQ(CountOf(TextOfField(i), text), 1u) << TextOfField(i);
}

TEST_P(EveryFormat, NamesEveryTable) {
  const SharedReport made = MakeSharedReport(20, 12);
  const std::string text = Shown(GetParam(), made.report);
  for (std::size_t i = 0; i < 20; ++i) {
    EXPECT_TRUE(HasWord("t" + std::to_string(i), text)) << i;
  }
}

// Twice as many tables with twice as many fields give twice the output, not four times.
TEST_P(EveryFormat, GrowsWithTablesPlusFindings) {
  const auto size = [](std::size_t tables, std::size_t fields) {
    return Shown(GetParam(), MakeSharedReport(tables, fields).report).size();
  };
  const std::size_t once = size(64, 64);
  const std::size_t twice = size(128, 128);
  EXPECT_LE(twice * 10, once * 21) << once << " -> " << twice;
}

// A waiver of one table must not hide that another table is refused.
TEST_P(EveryFormat, ListsAFindingThatIsWaivedForOneTableOnlyTwice) {
  SharedReport made = MakeSharedReport(3, 1);
  made.report.tables[0].changes->findings[0].waiver = {"because", "2999-01-01"};
  const std::string text = Shown(GetParam(), made.report);
  EXPECT_EQ(CountOf(TextOfField(0), text), 2u) << text;
  EXPECT_EQ(CountFailing(made.report), 2u);
}

// A limit leaves findings out, but the report says so, and every table stays refused.
TEST_P(EveryFormat, SaysHowManyFindingsAreNotListed) {
  SharedReport made = MakeSharedReport(3, 12);
  made.report.max_findings = 2;
  const std::string text = Shown(GetParam(), made.report);
  for (std::size_t i = 0; i < 12; ++i) EXPECT_EQ(CountOf(TextOfField(i), text), i < 2 ? 1u : 0u) << TextOfField(i);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_TRUE(HasWord("t" + std::to_string(i), text)) << i;
  if (GetParam() == "json") return;  // has numbers, see below
  EXPECT_THAT(text, HasSubstr("10 findings are not listed"));
}

std::vector<std::string> Names() {
  std::vector<std::string> names;
  for (const Format& format : Formats()) names.emplace_back(format.name);
  return names;
}

INSTANTIATE_TEST_SUITE_P(Every, EveryFormat, testing::ValuesIn(Names()), [](const auto& name) { return TestNameOf(name.param); });

// --- What is listed where ---

TEST(SharedFindings, AreListedWithTheFirstTable) {
  const SharedReport made = MakeSharedReport(3, 4);
  const FoldedReport folded(made.report);
  EXPECT_THAT(folded.findings(), SizeIs(4));
  EXPECT_THAT(folded.tables()[0].findings, SizeIs(4));
  EXPECT_THAT(folded.tables()[0].shared, IsEmpty());
  ASSERT_THAT(folded.tables()[2].shared, SizeIs(1));
  const SharedItems& items = folded.tables()[2].shared.front();
  EXPECT_EQ(items.table, made.report.tables.data());
  EXPECT_EQ(items.first, 0u);
  EXPECT_EQ(items.count, 4u);
  EXPECT_EQ(items.path, "t2");
  EXPECT_EQ(items.instead_of, "t0");
}

TEST(SharedFindings, RepeatNoLongListOfOtherTables) {
  const SharedReport made = MakeSharedReport(kMaxAlso + 2, 3);
  const FoldedReport folded(made.report);
  EXPECT_THAT(folded.findings()[0].also, SizeIs(kMaxAlso + 1));
  for (const std::size_t i : {1u, 2u}) {
    EXPECT_EQ(folded.findings()[i].also_as, 0u);
    EXPECT_EQ(folded.findings()[i].also_count, kMaxAlso + 1);
  }
  const SharedReport few = MakeSharedReport(kMaxAlso + 1, 3);
  const FoldedReport short_lists(few.report);
  for (const FoldedFinding& one : short_lists.findings()) EXPECT_THAT(one.also, SizeIs(kMaxAlso));
}

TEST(SharedFindings, WaivedForOneTableOnlyAreCountedSeparately) {
  SharedReport made = MakeSharedReport(3, 2);
  made.report.tables[0].changes->findings[0].waiver = {"because", "2999-01-01"};
  const FoldedReport folded(made.report);
  const Summary summary = Summarize(folded);
  EXPECT_EQ(summary.findings, 3u);
  EXPECT_EQ(summary.waived, 1u);
  EXPECT_EQ(summary.failing, 3u);
  EXPECT_THAT(folded.tables()[1].findings, SizeIs(1)) << "the one that is not waived here";
}

TEST(SharedFindings, WaivedForAllTablesAreOne) {
  SharedReport made = MakeSharedReport(3, 1);
  for (TableResult& table : made.report.tables) table.changes->findings[0].waiver = {"because", "2999-01-01"};
  const Summary summary = Summarize(FoldedReport(made.report));
  EXPECT_EQ(summary.findings, 1u);
  EXPECT_EQ(summary.waived, 1u);
  EXPECT_EQ(summary.failing, 0u);
  EXPECT_THAT(Render("junit", made.report), Not(HasSubstr("<failure")));
}

TEST(SharedFindings, LimitCountsThoseThatAreNotWaived) {
  SharedReport made = MakeSharedReport(2, 3);
  made.report.max_findings = 1;
  for (TableResult& table : made.report.tables) table.changes->findings[0].waiver = {"because", "2999-01-01"};
  const FoldedReport folded(made.report);
  EXPECT_EQ(folded.Count(korvel::Level::kRefused).left_out, 2u);
  EXPECT_EQ(folded.tables()[1].left_out, 2u);
  EXPECT_EQ(Summarize(folded).failing, 2u);
  const Issues issues(folded);
  EXPECT_TRUE(issues.all().front().waived);
  for (const Issue& issue : issues.all()) EXPECT_EQ(issue.waived, issue.rule != kLimitRule) << issue.summary;
}

// --- Edits ---

TEST(SharedEdits, AreListedOnceForEachStatus) {
  SharedReport made = MakeSharedReport(3, 4);
  made.report.tables[2].changes->status[3] = EditStatus::kAllowed;
  made.report.tables[2].changes->findings.pop_back();
  const FoldedReport folded(made.report);
  const std::vector<FoldedEdits> edits = FoldEdits(folded);
  EXPECT_THAT(edits[0].listed, ElementsAre(0, 1, 2, 3));
  EXPECT_THAT(edits[1].listed, IsEmpty());
  EXPECT_THAT(edits[2].listed, ElementsAre(3));
  ASSERT_THAT(edits[2].shared, SizeIs(1));
  EXPECT_EQ(edits[2].shared.front().count, 3u);
}

TEST(SharedEdits, OfListedFindingsAreListedWithThem) {
  SharedReport made = MakeSharedReport(2, 3);
  made.report.tables[1].changes->findings[1].verdict.rule = "field.type";
  const std::vector<FoldedEdits> edits = FoldEdits(FoldedReport(made.report));
  EXPECT_THAT(edits[1].listed, ElementsAre(1));
  const Json json = Json::parse(Render("json", made.report));
  const Json& changes = json["tables"][1]["changes"];
  EXPECT_EQ(changes["findings"][0]["edits"], Json::array({0}));
  EXPECT_EQ(changes["edits"][0]["item"], "f1");
}

// --- JSON ---

TEST(SharedFindings, JsonRefersToThemFromEachTable) {
  const SharedReport made = MakeSharedReport(12, 3);
  const Json json = Json::parse(Render("json", made.report));
  const Json part = {{"table", 0}, {"first", 0}, {"count", 3}, {"path", "t11"}, {"instead_of", "t0"}};
  const Json& last = json["tables"][11];
  EXPECT_EQ(last["rule"], "field.size");
  EXPECT_EQ(last["text"], "the whole change of t11 is refused");
  EXPECT_EQ(last["changes"]["shared_findings"], Json::array({part}));
  EXPECT_EQ(last["changes"]["shared_edits"], Json::array({part}));
  EXPECT_EQ(json["findings"][0]["also"][10], Json({{"table", 11}, {"path", "t11.i.f0"}}));
  EXPECT_EQ(json["findings"][2], Json({{"table", 0}, {"finding", 2}, {"also_as", 0}}));
}

TEST(SharedFindings, JsonCountsThoseThatAreNotListed) {
  SharedReport made = MakeSharedReport(3, 12);
  made.report.max_findings = 2;
  const Json json = Json::parse(Render("json", made.report));
  EXPECT_EQ(json["summary"]["findings"], 12);
  EXPECT_EQ(json["summary"]["left_out"], 10);
  for (const Json& table : json["tables"]) EXPECT_EQ(table["changes"]["left_out"], 10);
}

// --- JUnit ---

TEST(SharedFindings, JunitFailsTheTestOfEachTable) {
  const SharedReport made = MakeSharedReport(5, 3);
  const std::string text = Render("junit", made.report);
  EXPECT_EQ(TestsWith("failure", text), 5u) << text;
  EXPECT_EQ(CountOf("same as in table t0 (and the next 2 findings)", text), 4u);
}

// All listed findings are waived, but the search stopped before it found all.
TEST(SharedFindings, JunitFailsTheTestOfATableWhoseSearchStopped) {
  SharedReport made = MakeSharedReport(1, 1);
  made.report.tables[0].changes->findings[0].waiver = {"because", "2999-01-01"};
  made.report.tables[0].changes->stopped = true;
  EXPECT_EQ(TestsWith("failure", Render("junit", made.report)), 1u);
}

// --- SARIF ---

TEST(SharedFindings, SarifSuppressesTheLimitOfAWaivedTable) {
  SharedReport made = MakeSharedReport(1, 3);
  made.report.max_findings = 1;
  for (Finding& finding : made.report.tables[0].changes->findings) finding.waiver = {"because", "2999-01-01"};
  const Json results = Json::parse(Render("sarif", made.report))["runs"][0]["results"];
  ASSERT_THAT(results, SizeIs(2));
  for (const Json& result : results) EXPECT_TRUE(result.contains("suppressions")) << result;
  made.report.tables[0].changes->findings.back().waiver.reset();
  EXPECT_FALSE(Json::parse(Render("sarif", made.report))["runs"][0]["results"][1].contains("suppressions"));
}

// --- Written piece by piece ---

TEST(JsonDocuments, HaveTheBytesOfTheWholeDocument) {
  for (const SharedReport& made : {MakeSharedReport(0, 1), MakeSharedReport(1, 1), MakeSharedReport(3, 2)}) {
    for (const char* format : {"json", "sarif", "gitlab", "github-review"}) {
      const std::string text = Render(format, made.report);
      EXPECT_EQ(text, Json::parse(text).dump(2) + "\n") << format;
    }
  }
}

// No piece is larger than one table or finding needs.
TEST(Documents, AreWrittenInSmallPieces) {
  const auto largest = [](const std::string& format, std::size_t size) {
    const SharedReport made = MakeSharedReport(size, size);
    std::size_t bytes = 0;
    std::ranges::find(Formats(), format, &Format::name)->write(made.report, false, [&](std::string_view piece) {
      bytes = std::max(bytes, piece.size());
    });
    return bytes;
  };
  for (const char* format : {"json", "junit"}) EXPECT_LT(largest(format, 100), std::size_t{100} << 10) << format;
  EXPECT_LT(largest("sarif", 100), std::size_t{200} << 10) << "the rules of the catalog are one piece";
}

}  // namespace
}  // namespace report_test
