// A report as one HTML page without references to other files; it is readable without its script. html_page.cpp selects the
// contents; html_items.cpp, html_source.cpp and html_layout.cpp render the parts. Tested by tests/report/html_test.cpp and, in
// a browser, by tests/browser/html_test.py.
#include <algorithm>
#include <iterator>
#include <set>

#include "base/text.h"
#include "report/render/html_items.h"
#include "report/render/html_layout.h"
#include "report/render/html_page.h"
#include "report/render/html_rules.h"
#include "report/render/html_source.h"
#include "report/render/html_text.h"
#include "report/render/render.h"
#include "report/result/notes.h"
#include "report/result/words.h"
#include "rule_docs/fault_rules.h"

namespace korvel {
namespace {

class HtmlReport {
 public:
  explicit HtmlReport(const Report& report)
      : report_(report), page_(report), sources_(page_), items_(page_, sources_), rules_(page_) {}

  std::string Text() {
    html_ = HtmlHead(kPageScript, std::string(WordOf(VerdictOf(summary_))) + " \u2013 " + Title());
    html_ += "<body>\n<a class=\"skip\" href=\"#main\">Skip to the findings</a>\n" + LayoutPatterns();
    html_ += "<header>\n" + Verdict() + "</header>\n" + Contents() + rules_.Index() + Filter() +
             "<main id=\"main\" tabindex=\"-1\">\n";
    Faults();
    Notes();
    for (std::size_t i = 0; i < report_.tables.size(); ++i) Table(page_.folded().tables()[i], i);
    Libraries();
    OtherTables();
    LeftOut();
    html_ += rules_.Explanations();
    for (std::size_t i = 0; i < page_.pairs().size(); ++i) html_ += sources_.SectionOf(i);
    html_ += "</main>\n<footer><p>korvelcheck " KORVEL_VERSION "</p></footer>\n<script>";
    html_ += kPageScript.text;
    return std::move(html_ += "</script>\n</body>\n</html>\n");
  }

 private:
  // --- The head of the page ---

  std::string Title() const {
    std::string files;
    std::set<std::string> seen;  // a report about a project has many inputs
    for (const ReportInput& input : report_.inputs) {
      if (seen.size() == 2) break;
      if (seen.insert(input.source->name).second) AppendPart(files, " \u2192 ", Html(input.source->name));
    }
    if (files.empty() && !report_.faults.empty()) files = Html(report_.faults.front().file);
    return Html(report_.command) + (files.empty() ? "" : ": " + files);
  }

  std::string Verdict() const {
    constexpr StatusStyle kStyles[] = {StatusStyle::kAllowed, StatusStyle::kRefused, StatusStyle::kNotChecked,
                                       StatusStyle::kRefused, StatusStyle::kNotChecked};
    const OverallVerdict verdict = VerdictOf(summary_);
    const StatusText& style = TextOf(kStyles[static_cast<std::size_t>(verdict)]);
    std::string html = "<p class=\"verdict " + std::string(style.name) + "\"><span aria-hidden=\"true\">" + style.sign +
                       "</span> " + "verdict: " + WordOf(verdict) + RemarkOn(summary_) + "</p>\n";
    return html + "<h1>" + Title() + "</h1>\n<p>" + Html(ToText(summary_)) + "</p>\n";
  }

  // Open if it leaves room for the first finding on the first screen.
  std::string Contents() const {
    constexpr std::size_t kMaxOpen = 12;
    std::size_t count = 0;
    std::string items;
    for (std::size_t i = 0; i < report_.tables.size(); ++i) {
      const TableResult& table = report_.tables[i];
      if (HasNothingToShow(table)) continue;
      ++count;
      items += "<li><a href=\"#t" + std::to_string(i + 1) + "\">" + Html(table.table) + "</a> " + StatusBadge(table) + "</li>\n";
    }
    return count == 0 ? ""
                      : "<nav aria-label=\"tables\"><details" + std::string(count <= kMaxOpen ? " open" : "") + ">\n<summary>" +
                            Counted(count, "table") + "</summary>\n<ul>\n" + items + "</ul></details></nav>\n";
  }

  // Hidden until the script runs.
  std::string Filter() const {
    if (page_.findings().empty() && page_.changes().empty()) return "";
    std::string html = "<form id=\"filter\" role=\"search\" hidden>\n<fieldset><legend>Show</legend>\n";
    const auto add = [&](const std::string& name, const std::string& label, const char* checked) {
      html += "<label><input type=\"radio\" name=\"status\" value=\"" + name + "\"" + checked + "> " + label + "</label>\n";
    };
    add("all", "all", " checked");
    for (const StatusStyle style : {StatusStyle::kRefused, StatusStyle::kWarning, StatusStyle::kNote, StatusStyle::kWaived,
                                    StatusStyle::kBlocked, StatusStyle::kNotChecked, StatusStyle::kAllowed}) {
      if (style == StatusStyle::kWarning && !HasWarnings()) continue;
      if (style == StatusStyle::kNote && summary_.notes.all == 0) continue;
      add(TextOf(style).name, std::string(TextOf(style).sign) + " " + TextOf(style).word, "");
    }
    return html +
           "</fieldset>\n<label class=\"search\">search <input type=\"search\" id=\"search\" "
           "autocomplete=\"off\"></label>\n"
           "<output id=\"count\" aria-live=\"polite\"></output>\n"
           "<p class=\"keys\"><kbd>n</kbd> or <kbd>j</kbd> next, <kbd>p</kbd> or <kbd>k</kbd> previous, <kbd>/</kbd> "
           "search</p>\n</form>\n";
  }

  bool HasWarnings() const { return summary_.warnings.all > 0 || CountErrors(report_.project) < report_.project.size(); }

  // Why files were not checked.
  void Faults() {
    if (report_.faults.empty()) return;
    html_ += "<section>\n<h2>Not checked</h2>\n";
    for (const InputFault& fault : report_.faults) {
      html_ += "<article class=\"item refused\" tabindex=\"0\" data-status=\"refused\">\n<h3>" +
               Badge("refused", TextOf(StatusStyle::kRefused).sign, "error") + " " + RuleLink(RuleOf(fault.kind).id) +
               "</h3>\n<p class=\"problem\">" + Html(fault.text) + "</p>\n<dl>\n" +
               Term("Location", fault.file.empty() ? "" : Code(ToText(LocationOf(fault)))) +
               Term("Allowed", Html(fault.allowed)) + Term("Needed by", fault.needed_by.empty() ? "" : Code(fault.needed_by)) +
               "</dl>\n</article>\n";
    }
    html_ += "</section>\n";
  }

  static std::string ProjectFindingStart(const ProjectFinding& finding) {
    const bool is_error = finding.level == ProjectFinding::Level::kError;
    const StatusStyle style = finding.waiver ? StatusStyle::kWaived : is_error ? StatusStyle::kRefused : StatusStyle::kWarning;
    const std::string name = TextOf(style).name;
    return "<article class=\"item " + name + "\" tabindex=\"0\" data-status=\"" + name + "\">\n<h3>" + Badge(style);
  }

  static std::string HtmlLines(const std::string& suggestion) {
    return Join(SuggestionLines(suggestion), "<br>", [](const std::string& line) { return Html(line); });
  }

  // The baselines and project files, notes about files, and findings about project files.
  void Notes() {
    std::vector<std::string> states = BaselinesOf(report_);
    std::ranges::move(ProjectsOf(report_.projects), std::back_inserter(states));
    if (states.empty() && report_.files.empty() && report_.project.empty()) return;
    html_ += "<section>\n<h2>Project</h2>\n";
    if (!states.empty()) html_ += List(states);
    std::vector<std::string> files;
    for (const FileNote& note : report_.files) files.push_back(ToText(note));
    html_ += List(files);
    for (const ProjectFinding& finding : report_.project) {
      html_ += ProjectFindingStart(finding) + " " + RuleLink(finding.rule) + "</h3>\n<p class=\"problem\">" + Html(finding.text) +
               "</p>\n<dl>\n" + Term("Location", Code(FileLineColumn(OneLine(finding.file), finding.position))) +
               Term("Waived", finding.waiver ? Html(ToText(*finding.waiver)) : "") +
               Term("Suggestion", HtmlLines(finding.suggestion)) +
               Term("Fingerprint", finding.fingerprint.empty() ? "" : Code(finding.fingerprint)) + "</dl>\n</article>\n";
    }
    html_ += "</section>\n";
  }

  // --- Tables ---

  std::string StatusBadge(const TableResult& table) const {
    switch (table.status) {
      case Status::kNew:
        return Badge("new", "+", "new");
      case Status::kAllowed:
        return Badge(StatusStyle::kAllowed);
      case Status::kRefused:
        break;
    }
    return Badge(StatusStyle::kRefused) + (table.removed ? " (removed)" : "");
  }

  // Whether anything besides the library changes.
  static bool HasOwnEdits(const TableResult& table) {
    return table.changes && std::ranges::any_of(table.changes->edits, [](const Edit& edit) { return !edit.meta.empty(); });
  }

  // Whether a table needs no section: it is allowed or new, and no change and no finding is listed with it.
  bool HasNothingToShow(const TableResult& table) const {
    return table.status != Status::kRefused && !HasOwnEdits(table) && !page_.ListsChangeOf(table) &&
           table.advice.findings.empty();
  }

  void Table(const FoldedTable& folded, std::size_t position) {
    const TableResult& table = *folded.table;
    if (HasNothingToShow(table)) return;
    const std::string id = "t" + std::to_string(position + 1);
    html_ += "<section class=\"table\" id=\"" + id + "\">\n<h2>" + Code(table.table) + " " + StatusBadge(table) + "</h2>\n" +
             "<p class=\"location\">" + items_.LocationOf(table.declared, page_.PairOf(table)) + "</p>\n";
    if (table.status == Status::kRefused && !IsRepeatedByFirst(folded))
      html_ += Problem("whole change: " + SummaryOf(table), table.verdict.text) + Result(table.verdict.rule, table.verdict.code);
    Changed(folded);
    const bool has_layout = HasOwnEdits(table) && table.first != table.second && !table.removed;
    if (has_layout && pictures_++ < page_.limits().pictures) html_ += WithLegend(LayoutSection(table, id));
    html_ += "</section>\n";
  }

  // Whether the first finding says the same as the verdict on the whole table.
  bool IsRepeatedByFirst(const FoldedTable& folded) const {
    const std::span<const PageFinding> findings = page_.FindingsOf(folded);
    if (findings.empty()) return false;
    const korvel::Verdict& first = findings.front().folded.finding->verdict;
    const korvel::Verdict& whole = folded.table->verdict;
    return first.code == whole.code && first.text == whole.text;
  }

  // The legend follows the first picture.
  std::string WithLegend(std::string layout) {
    const bool needs_legend = !has_legend_ && layout.find("<svg") != std::string::npos;
    has_legend_ = has_legend_ || needs_legend;
    return needs_legend ? std::move(layout += LayoutLegend()) : std::move(layout);
  }

  void Changed(const FoldedTable& table) {
    for (const std::string& limit : LimitsOf(table)) html_ += "<p class=\"note\">" + Html(limit) + "</p>\n";
    for (const PageFinding& finding : page_.FindingsOf(table)) html_ += items_.Finding(finding);
    SharedFindings(table);
    if (!table.table->changes) return;
    const Changes& changes = *table.table->changes;
    if (!changes.edits.empty()) html_ += "<p class=\"part\">" + Html(AllowedPart(changes)) + ".</p>\n";
    std::string items;
    for (const PageChange& change : page_.changes()) {
      if (change.table == table.table && !change.OfLibrary()) items += items_.Change(change);
    }
    if (!items.empty()) html_ += "<ul class=\"changes\">\n" + items + "</ul>\n";
  }

  // Changes of the library, which all tables of a pair share.
  void Libraries() {
    std::string items;
    for (const PageChange& change : page_.changes()) {
      if (change.OfLibrary()) items += items_.Change(change);
    }
    if (items.empty()) return;
    html_ += "<section class=\"table\">\n<h2>Library</h2>\n<ul class=\"changes\">\n" + items + "</ul>\n</section>\n";
  }

  // Links to findings of this table that are listed with another table. Of consecutive ones to the first and the last.
  void SharedFindings(const FoldedTable& table) {
    std::string links;
    for (const SharedItems& items : table.shared) {
      const std::size_t end = std::min(items.first + items.count, page_.findings().size());
      const bool is_range = end > items.first + 2;
      for (std::size_t i = items.first; i < end; i = is_range && i + 1 < end ? end - 1 : i + 1) {
        links += (is_range && i > items.first ? "\u2013" : " ") + items_.FindingLink(i);
      }
    }
    if (!links.empty()) html_ += "<p>Also affected by:" + links + ".</p>\n";
  }

  // --- The end ---

  void OtherTables() {
    std::vector<std::string> names;
    for (const TableResult& table : report_.tables) {
      if (!HasNothingToShow(table)) continue;
      names.push_back(table.table + (table.status == Status::kNew ? ": new, not compared" : ": allowed, unchanged"));
    }
    if (!names.empty()) html_ += "<section>\n<h2>Other tables</h2>\n" + List(names) + "</section>\n";
  }

  void LeftOut() {
    std::string left_out;
    const auto add = [&](std::size_t number, const std::string& noun) {
      if (number > 0) AppendPart(left_out, ", ", Counted(number, noun));
    };
    add(page_.findings_left_out(), "finding");
    add(page_.changes_left_out(), "change");
    if (pictures_ > page_.limits().pictures) add(pictures_ - page_.limits().pictures, "layout");
    if (!left_out.empty())
      html_ +=
          "<p class=\"note\">Not listed, to limit the size of the page: " + left_out + ". The JSON report has everything.</p>\n";
  }

  const Report& report_;
  Page page_;
  HtmlSources sources_;
  HtmlItems items_;
  HtmlRules rules_;
  Summary summary_ = Summarize(page_.folded());
  std::size_t pictures_ = 0;  // so far, including those left out
  bool has_legend_ = false;
  std::string html_;
};

}  // namespace

std::string RenderHtml(const Report& report) { return HtmlReport(report).Text(); }

}  // namespace korvel
