// HTML pages as text: their contents and their limits. tests/browser tests them in a browser.
#include <gmock/gmock.h>

#include <list>
#include <regex>
#include <set>

#include "change_check.h"
#include "read_source.h"
#include "report/render/html_layout.h"
#include "report/render/html_page.h"
#include "report/render/html_source.h"
#include "report/render/render.h"

namespace report_test {
namespace {

using namespace korvel;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

// A report and its sources.
struct Checked {
  std::list<Source> sources;
  Report report;
};

// Checks the table.
void Answer(TableResult& table) {
  const ChangeCheck check = MakeCheck(*table.first, *table.second, table.table);
  const Verdict whole = check.WholeVerdict();
  table.status = whole.Refused() ? Status::kRefused : Status::kAllowed;
  table.verdict.code = whole.code;
  table.verdict.rule = whole.rule;
  table.verdict.text = whole.text;
  table.changes =
      table.removed ? FindRemovedTable({*table.first, *table.second, table.table, check.settings}, whole) : check.Find();
}

void CheckOperation(Checked& checked, const std::string& name, bool ask) {
  const Source& old_source = checked.sources.front();
  const Source& new_source = checked.sources.back();
  TableResult table;
  table.table = name;
  table.first = &old_source;
  table.second = &new_source;
  table.removed = !new_source.HasMeta(name);
  table.declared = DeclaredAt(table.removed ? old_source : new_source, name);
  checked.report.tables.push_back(table);
  if (!ask) return;
  Answer(checked.report.tables.back());
}

// The report of `check` for all tables of two schema files.
Checked Check(const std::string& old_metas, const std::string& new_metas, bool ask = true) {
  Checked checked;
  const auto library = [](int version, const std::string& metas) {
    return "<metalib name=\"mall\" version=\"" + std::to_string(version) + "\" protocol=\"QMX\">\n" + metas + "</metalib>\n";
  };
  checked.sources.push_back(ReadSource("old.xml", library(5, old_metas)));
  checked.sources.push_back(ReadSource("new.xml", library(6, new_metas)));
  checked.report.command = "check";
  checked.report.path_prefix = "";
  checked.report.inputs = {{"old", &checked.sources.front()}, {"new", &checked.sources.back()}};
  for (const std::string_view name : checked.sources.front().tables) CheckOperation(checked, std::string(name), ask);
  return checked;
}

std::string Meta(const std::string& name, const std::string& fields, const std::string& key = "uid") {
  return "  <meta name=\"" + name + "\">\n" + fields + (key.empty() ? "" : "    <primarykey entries=\"" + key + "\"/>\n") +
         "  </meta>\n";
}

std::string Entry(const std::string& name, const std::string& type, const std::string& more = "") {
  return "    <entry name=\"" + name + "\" type=\"" + type + "\"" + more + "/>\n";
}

const std::string kUid = Entry("uid", "uint32");

Checked TwoChanges() {
  return Check(Meta("orders", kUid + Entry("n", "uint32")),
               Meta("orders", kUid + Entry("n", "uint8") + Entry("note", "string", " size=\"8\" version=\"6\"")));
}

// Every id once, every link to an id.
void ExpectLinked(const std::string& html) {
  std::set<std::string> ids;
  static const std::regex kId(" id=\"([^\"]*)\"");
  static const std::regex kLink("href=\"#([^\"]*)\"");
  for (std::sregex_iterator at(html.begin(), html.end(), kId), end; at != end; ++at) {
    EXPECT_TRUE(ids.insert((*at)[1]).second) << (*at)[1] << " is not unique";
  }
  for (std::sregex_iterator at(html.begin(), html.end(), kLink), end; at != end; ++at) {
    EXPECT_TRUE(ids.contains((*at)[1])) << "#" << (*at)[1] << " has no target";
  }
}

TEST(Html, ListsFindingsAndChangesAndMarksTheirLines) {
  const Checked checked = TwoChanges();
  const Page page(checked.report);
  ASSERT_EQ(page.findings().size(), 1u);
  ASSERT_EQ(page.changes().size(), 2u);
  EXPECT_EQ(page.changes()[0].edit->kind, EditKind::kLibraryVersion);
  EXPECT_EQ(page.changes()[1].edit->kind, EditKind::kEntryAdded);
  const auto lines = [](const std::vector<LineMark>& marks) {
    std::vector<std::string> shown;
    for (const LineMark& mark : marks) shown.push_back(mark.id + "@" + std::to_string(mark.line));
    return shown;
  };
  EXPECT_THAT(lines(page.pairs().front().old_marks), ElementsAre("c1@1", "f1@4"));
  EXPECT_THAT(lines(page.pairs().front().new_marks), ElementsAre("c1@1", "f1@4", "c2@5"));
  const std::string html = RenderHtml(checked.report);
  ExpectLinked(html);
  EXPECT_THAT(html, HasSubstr("<mark class=\"refused\">uint8</mark>"));
  EXPECT_THAT(html, HasSubstr("type of n: uint32 -&gt; uint8"));
}

TEST(Html, VerdictIsFirst) {
  const std::string html = RenderHtml(TwoChanges().report);
  const std::string body = html.substr(html.find("<body>"));
  EXPECT_LT(body.find("verdict: refused"), body.find("<h1>"));
}

TEST(Html, SharedChangesAreListedOnce) {
  const auto with = [](const std::string& type) {
    return Meta("part", Entry("n", type), "") + Meta("a", kUid + Entry("p", "part")) + Meta("b", kUid + Entry("q", "part"));
  };
  const Checked checked = Check(with("uint32"), with("uint8"));
  const Page page(checked.report);
  ASSERT_EQ(page.findings().size(), 1u);
  ASSERT_EQ(page.changes().size(), 1u);
  EXPECT_EQ(page.changes()[0].also, 1u);
  const std::string html = RenderHtml(checked.report);
  EXPECT_THAT(html, HasSubstr("b.q.n"));
  EXPECT_THAT(html, HasSubstr("Also affected by: <a href=\"#f1\">F1</a>"));
}

TEST(Html, RemovedTableMarksOnlyTheOldSide) {
  const Checked checked = Check(Meta("orders", kUid) + Meta("logs", kUid), Meta("orders", kUid));
  const Page page(checked.report);
  ASSERT_EQ(page.findings().size(), 1u);
  EXPECT_EQ(page.pairs().front().old_marks.back().id, "f1");
  const std::string html = RenderHtml(checked.report);
  EXPECT_THAT(html, HasSubstr("(removed)"));
  ExpectLinked(html);
}

TEST(Html, WaivedFindingsShowReasonAndDate) {
  Checked checked = TwoChanges();
  checked.report.tables.front().changes->findings.front().waiver = Waiver{"agreed <b>", "2027-01-31"};
  const std::string html = RenderHtml(checked.report);
  EXPECT_THAT(html, HasSubstr("data-status=\"waived\""));
  EXPECT_THAT(html, HasSubstr("agreed &lt;b&gt; (until 2027-01-31)"));
}

// The legend followed the first layout section even if that had no picture.
TEST(Html, LegendFollowsTheFirstPicture) {
  constexpr char kLegend[] = "<p class=\"legend\">";
  EXPECT_THAT(RenderHtml(TwoChanges().report), HasSubstr(kLegend));
  const std::string stays =
      RenderHtml(Check(Meta("orders", kUid), Meta("orders", Entry("uid", "uint32", " version=\"4\""))).report);
  EXPECT_THAT(stays, HasSubstr("<p>Unchanged: "));
  EXPECT_THAT(stays, Not(HasSubstr(kLegend)));
}

TEST(Html, DumpedLinesHaveANote) {
  Checked checked = TwoChanges();
  const std::string note = "Compiled; the lines are the output of <code>korvelcheck dump</code>: <code>new.xml</code>";
  EXPECT_THAT(RenderHtml(checked.report), Not(HasSubstr(note)));
  checked.sources.back().text->is_dump = true;
  EXPECT_THAT(RenderHtml(checked.report), HasSubstr(note));
}

TEST(Html, ImageHasLayoutButNoSource) {
  Checked checked = TwoChanges();
  checked.sources.back().text.reset();
  const std::string html = RenderHtml(checked.report);
  EXPECT_THAT(html, HasSubstr("No source text: <code>new.xml</code> is compiled, and cannot be written as XML."));
  EXPECT_THAT(html, HasSubstr("role=\"img\""));
  EXPECT_THAT(html, Not(HasSubstr("<table class=\"source")));
  ExpectLinked(html);
}

TEST(Html, OneFileAloneHasOneColumn) {
  Checked checked = Check(Meta("9orders", kUid), Meta("9orders", kUid));
  for (TableResult& table : checked.report.tables) table.first = table.second;
  const std::string html = RenderHtml(checked.report);
  ExpectLinked(html);
  EXPECT_THAT(html, Not(HasSubstr("old: ")));
}

TEST(Html, NewTableIsListedAsNew) {
  Checked checked = Check(Meta("orders", kUid), Meta("orders", kUid) + Meta("fresh", kUid));
  TableResult table;
  table.table = "fresh";
  table.second = &checked.sources.back();
  table.declared = DeclaredAt(checked.sources.back(), "fresh");
  checked.report.tables.push_back(table);
  EXPECT_THAT(RenderHtml(checked.report), HasSubstr("fresh: new, not compared"));
}

TEST(Html, ProjectNotesAreBeforeTables) {
  Checked checked = TwoChanges();
  checked.report.files.push_back({FileNote::Kind::kAdded, "", "more<.xml"});
  checked.report.project.push_back({"waiver.unused", "korvelcheck.toml", {3, 1}, "unused & old", "remove it"});
  const std::string html = RenderHtml(checked.report);
  EXPECT_THAT(html, HasSubstr("more&lt;.xml"));
  EXPECT_THAT(html, HasSubstr("unused &amp; old"));
  EXPECT_THAT(html, HasSubstr("korvelcheck.toml:3:1"));
}

// --- Bounds ---

// A table in which every fiftieth field becomes smaller.
Checked ManyFields(int number, bool ask = true) {
  std::string before = kUid;
  std::string after = kUid;
  for (int i = 0; i < number; ++i) {
    before += Entry("f" + std::to_string(i), i % 50 == 0 ? "uint32" : "uint16");
    after += Entry("f" + std::to_string(i), i % 50 == 0 ? "uint8" : "uint16");
  }
  return Check(Meta("wide", before), Meta("wide", after), ask);
}

TEST(Html, ShowsOnlyMarkedPartsOfLongFiles) {
  const Checked checked = ManyFields(1500);
  const Page page(checked.report);
  ASSERT_EQ(page.findings().size(), 30u);
  const HtmlSources sources(page);
  EXPECT_EQ(sources.LineId(0, true, 4), "p1n4");
  EXPECT_EQ(sources.LineId(0, true, 7), "p1n7");
  EXPECT_EQ(sources.LineId(0, true, 8), "");
  EXPECT_THAT(sources.SectionOf(0), HasSubstr("Only lines near a finding or change are shown, with 3 lines of context."));
  EXPECT_THAT(sources.SectionOf(0), HasSubstr("rows not shown"));
  ExpectLinked(RenderHtml(checked.report));
}

TEST(Html, LimitsAreKeptAndReported) {
  const Checked checked = ManyFields(1500);
  HtmlLimits limits;
  limits.findings = 10;
  limits.lines = 20;
  limits.changes = 0;
  const Page page(checked.report, limits);
  EXPECT_EQ(page.findings().size(), 10u);
  EXPECT_EQ(page.findings_left_out(), 20u);
  EXPECT_EQ(page.changes_left_out(), 1u);
  const HtmlSources sources(page);
  EXPECT_THAT(sources.SectionOf(0), HasSubstr("The page shows at most 20 rows of source."));
}

TEST(Html, DrawsManyAdjacentFieldsAsOnePiece) {
  const Checked checked = ManyFields(500, false);
  const std::string html = LayoutSection(checked.report.tables.front(), "x");
  EXPECT_THAT(html, HasSubstr("49 fields"));
  EXPECT_THAT(LayoutSection(ManyFields(50 * 200, false).report.tables.front(), "x"),
              HasSubstr("No picture: more than 150 blocks"));
}

// --- Pictures ---

TEST(Html, UnchangedLayoutIsOneSentence) {
  const Checked checked = Check(Meta("orders", kUid), Meta("orders", kUid));
  EXPECT_THAT(LayoutSection(checked.report.tables.front(), "x"), HasSubstr("Unchanged: 4 bytes in 1 field"));
}

TEST(Html, DrawsPiecesToScaleExceptTheSmallest) {
  const Checked checked = Check(Meta("orders", kUid + Entry("body", "bytes", " size=\"4092\"")),
                                Meta("orders", kUid + Entry("body", "bytes", " size=\"8188\"")));
  const std::string html = LayoutSection(checked.report.tables.front(), "x");
  EXPECT_THAT(html, HasSubstr("x=\"5.0\" y=\"122.0\" width=\"955.0\"")) << "fills the picture";
  EXPECT_THAT(html, HasSubstr("x=\"5.0\" y=\"22.0\" width=\"477.3\"")) << "4092 of 8188";
  EXPECT_THAT(html, HasSubstr("Drawn to scale; 2 pieces drawn wider to be visible."));
}

}  // namespace
}  // namespace report_test
