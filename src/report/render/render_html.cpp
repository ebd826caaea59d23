// The report as one HTML page that needs nothing else: no network, no other file, and no script to be read. What is listed is
// html_page.cpp's business, sources are html_source.cpp's, pictures html_layout.cpp's.
// Held by tests/report/html_test.cpp and, in a browser, tests/browser/html_test.py.
#include <algorithm>
#include <set>

#include "base/one_line.h"
#include "report/render/html_assets.h"
#include "report/render/html_layout.h"
#include "report/render/html_page.h"
#include "report/render/html_source.h"
#include "report/render/html_text.h"
#include "report/render/render.h"
#include "report/result/words.h"

namespace korvel {
namespace {

std::string Badge(const char* name, const char* sign, const std::string& word) {
  return "<span class=\"badge " + std::string(name) + "\"><span aria-hidden=\"true\">" + sign + "</span> " + word + "</span>";
}

std::string Badge(StatusStyle look) {
  const StatusText& words = WordsOf(look);
  return Badge(words.name, words.sign, words.word);
}

std::string Term(const std::string& name, const std::string& html) {
  return html.empty() ? "" : "<dt>" + name + "</dt><dd>" + html + "</dd>\n";
}

std::string List(const std::vector<std::string>& items) {
  if (items.size() == 1) return Html(items.front());
  std::string html;
  for (const std::string& item : items) html += "<li>" + Html(item) + "</li>";
  return html.empty() ? "" : "<ul>" + html + "</ul>";
}

class Writer {
 public:
  explicit Writer(const Report& report) : report_(report), page_(report), sources_(page_) {}

  std::string Run() {
    html_ = Head();
    html_ += "<body>\n<a class=\"skip\" href=\"#main\">Skip to the findings</a>\n" + LayoutPatterns();
    html_ += "<header>\n" + Verdict() + "</header>\n" + Contents() + Filter() + "<main id=\"main\" tabindex=\"-1\">\n";
    Notes();
    Libraries();
    for (std::size_t i = 0; i < report_.tables.size(); ++i) Table(report_.tables[i], i);
    Quiet();
    LeftOut();
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
      if (seen.insert(input.source->name).second) files += (files.empty() ? "" : " \u2192 ") + Html(input.source->name);
    }
    return Html(report_.command) + (files.empty() ? "" : ": " + files);
  }

  std::string Head() const {
    std::string html = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n";
    html +=
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; base-uri 'none'; form-action 'none'; "
        "style-src '";
    html.append(kPageStyle.hash).append("'; script-src '").append(kPageScript.hash).append("'\">\n");
    html +=
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<meta name=\"color-scheme\" content=\"light "
        "dark\">\n";
    html += "<title>" + std::string(WordOf(VerdictOf(summary_))) + " \u2013 " + Title() + "</title>\n<style>";
    html += kPageStyle.text;
    return html + "</style>\n</head>\n";
  }

  std::string Verdict() const {
    const bool allowed = VerdictOf(summary_) == Status::kAllowed;
    const StatusText& words = WordsOf(allowed ? StatusStyle::kAllowed : StatusStyle::kRefused);
    std::string html = "<p class=\"verdict " + std::string(words.name) + "\"><span aria-hidden=\"true\">" + words.sign +
                       "</span> " + "verdict: " + words.word + RemarkOn(summary_) + "</p>\n";
    return html + "<h1>" + Title() + "</h1>\n<p>" + Html(ToText(summary_)) + "</p>\n";
  }

  std::string Contents() const {
    std::string items;
    for (std::size_t i = 0; i < report_.tables.size(); ++i) {
      const TableResult& table = report_.tables[i];
      if (HasNothingToShow(table)) continue;
      items += "<li><a href=\"#t" + std::to_string(i + 1) + "\">" + Html(table.table) + "</a> " + StatusBadge(table) + "</li>\n";
    }
    return items.empty() ? "" : "<nav aria-label=\"tables\"><ul>\n" + items + "</ul></nav>\n";
  }

  // Shown by the script, without which it would do nothing.
  std::string Filter() const {
    if (page_.findings().empty() && page_.changes().empty()) return "";
    std::string html = "<form id=\"filter\" role=\"search\" hidden>\n<fieldset><legend>Show</legend>\n";
    const auto add = [&](const std::string& name, const std::string& label, const char* checked) {
      html += "<label><input type=\"radio\" name=\"look\" value=\"" + name + "\"" + checked + "> " + label + "</label>\n";
    };
    add("all", "all", " checked");
    for (const StatusStyle look : {StatusStyle::kRefused, StatusStyle::kWaived, StatusStyle::kBlocked, StatusStyle::kAllowed}) {
      add(WordsOf(look).name, std::string(WordsOf(look).sign) + " " + WordsOf(look).word, "");
    }
    return html +
           "</fieldset>\n<label class=\"words\">with the words <input type=\"search\" id=\"words\" "
           "autocomplete=\"off\"></label>\n"
           "<output id=\"count\" aria-live=\"polite\"></output>\n"
           "<p class=\"keys\"><kbd>n</kbd> or <kbd>j</kbd> next, <kbd>p</kbd> or <kbd>k</kbd> previous, <kbd>/</kbd> "
           "words</p>\n</form>\n";
  }

  // What is about files and the project, and no table.
  void Notes() {
    if (report_.files.empty() && report_.project.empty()) return;
    html_ += "<section>\n<h2>Project</h2>\n";
    std::vector<std::string> files;
    for (const FileNote& note : report_.files) files.push_back(ToText(note));
    html_ += List(files);
    for (const ProjectFinding& finding : report_.project) {
      html_ += "<article class=\"item refused\" tabindex=\"0\" data-look=\"refused\">\n<h3>" + Badge(StatusStyle::kRefused) +
               " " + Code(finding.rule) + "</h3>\n<p class=\"said\">" + Html(finding.text) + "</p>\n<dl>\n" +
               Term("Place", Code(OneLine(finding.file) + ":" + std::to_string(finding.position.line) + ":" +
                                  std::to_string(finding.position.column))) +
               Term("Way out", Html(finding.suggestion)) + "</dl>\n</article>\n";
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
    return Badge(StatusStyle::kRefused) + (table.removed ? " (gone)" : "");
  }

  // Whether more changes about it than what is the library's.
  static bool HasOwnEdits(const TableResult& table) {
    return table.changes && std::ranges::any_of(table.changes->edits, [](const Edit& edit) { return !edit.meta.empty(); });
  }

  // Whether there is nothing to tell about a table but that it is allowed or new.
  bool HasNothingToShow(const TableResult& table) const {
    return table.status != Status::kRefused && !HasOwnEdits(table) && !page_.ListsChangeOf(table);
  }

  void Table(const TableResult& table, std::size_t position) {
    if (HasNothingToShow(table)) return;
    const std::string id = "t" + std::to_string(position + 1);
    html_ += "<section class=\"table\" id=\"" + id + "\">\n<h2>" + Code(table.table) + " " + StatusBadge(table) + "</h2>\n" +
             "<p class=\"place\">" + LocationOf(table.declared, page_.PairOf(table)) + "</p>\n";
    if (table.status == Status::kRefused)
      html_ += "<p class=\"said\">whole change: " + Html(TextOf(table.text)) + "</p>\n" + Answer(table.rule, table.code);
    if (table.changes) Changed(table, *table.changes);
    const bool has_layout = HasOwnEdits(table) && table.first != table.second && !table.removed;
    if (has_layout && pictures_++ < page_.limits().pictures) html_ += WithLegend(LayoutSection(table, id));
    html_ += "</section>\n";
  }

  // The first picture explains all.
  std::string WithLegend(std::string layout) {
    const bool explains = !is_explained_ && layout.find("<svg") != std::string::npos;
    is_explained_ = is_explained_ || explains;
    return explains ? std::move(layout += LayoutLegend()) : std::move(layout);
  }

  std::string Answer(const std::string& rule, int code) const {
    return "<p class=\"answer\">" + (rule.empty() ? "" : Code(rule) + " ") + std::to_string(code) + " " + Html(CodeNameOf(code)) +
           "</p>\n";
  }

  void Changed(const TableResult& table, const Changes& changes) {
    if (changes.stopped) {
      html_ += "<p class=\"note\">Stopped at " + Counted(changes.findings.size(), "finding") +
               ": changes behind them were not looked at and count as waiting. <code>--max-findings</code> allows more.</p>\n";
    }
    for (const PageFinding& finding : page_.findings()) {
      if (finding.folded.table == &table) Finding(finding);
    }
    SharedFindings(table);
    if (!changes.edits.empty()) html_ += "<p class=\"part\">" + Html(AllowedPart(changes)) + ".</p>\n";
    std::string items;
    for (const PageChange& change : page_.changes()) {
      if (change.table == &table && !change.OfLibrary()) items += Change(change);
    }
    if (!items.empty()) html_ += "<ul class=\"changes\">\n" + items + "</ul>\n";
  }

  // Changes that every table of a pair has.
  void Libraries() {
    std::string items;
    for (const PageChange& change : page_.changes()) {
      if (change.OfLibrary()) items += Change(change);
    }
    if (items.empty()) return;
    html_ += "<section class=\"table\">\n<h2>Library</h2>\n<ul class=\"changes\">\n" + items + "</ul>\n</section>\n";
  }

  // Findings of the table that stand with another one.
  void SharedFindings(const TableResult& table) {
    std::string links;
    for (const PageFinding& finding : page_.findings()) {
      if (finding.folded.table == &table) continue;
      const auto& also = finding.folded.also;
      const bool is_here = std::ranges::any_of(also, [&](const FoldedFinding::Embedding& one) { return one.table == &table; });
      if (is_here) links += " " + Link(finding.id, LabelOf(finding.id));
    }
    if (!links.empty()) html_ += "<p>For what is told above, too:" + links + ".</p>\n";
  }

  void Finding(const PageFinding& listed) {
    const korvel::Finding& finding = *listed.folded.finding;
    const StatusText& words = WordsOf(listed.GetStatusStyle());
    const std::size_t pair = page_.PairOf(*listed.folded.table);
    html_ += "<article class=\"item " + std::string(words.name) + "\" id=\"" + listed.id + "\" tabindex=\"0\" data-look=\"" +
             words.name + "\" aria-labelledby=\"" + listed.id + "h\">\n<h3 id=\"" + listed.id + "h\">" +
             Link(listed.id, LabelOf(listed.id)) + " " + Badge(listed.GetStatusStyle()) + " " +
             (finding.path.empty() ? "the library" : Code(finding.path)) + "</h3>\n";
    html_ +=
        "<p class=\"said\">" + Html(TextOf(finding.verdict.text)) + "</p>\n" + Answer(finding.verdict.rule, finding.verdict.code);
    html_ += "<dl>\n" + Term(EditsTerm(finding), List(EditsOf(*listed.folded.table, finding)));
    html_ += Term("New", LocationOf(finding.new_location, pair)) + Term("Old", LocationOf(finding.old_location, pair));
    html_ += Term("Way out", Html(finding.suggestion));
    html_ += Term("Reached also by", List(AlsoOf(listed.folded)));
    if (finding.waiver) html_ += Term("Waived", Html(finding.waiver->reason) + " (until " + Html(finding.waiver->until) + ")");
    html_ += Term("Fingerprint", finding.fingerprint.empty() ? "" : Code(finding.fingerprint)) + "</dl>\n</article>\n";
  }

  static std::string EditsTerm(const korvel::Finding& finding) { return finding.edits.size() > 1 ? "Only together" : "Change"; }

  std::string Change(const PageChange& change) const {
    const std::size_t pair = page_.PairOf(*change.table);
    const StatusText& words = WordsOf(change.look);
    std::string html = "<li class=\"item " + std::string(words.name) + "\" id=\"" + change.id + "\" tabindex=\"0\" data-look=\"" +
                       words.name + "\">" + Link(change.id, LabelOf(change.id)) + " " + Badge(change.look) + " " +
                       Html(Describe(*change.edit));
    if (!change.edit->paths.empty() && !change.edit->paths.front().empty()) html += " " + Code(change.edit->paths.front());
    if (change.also > 0 && !change.OfLibrary()) html += " (and " + Counted(change.also, "other table") + ")";
    const Location& place = change.edit->new_location ? change.edit->new_location : change.edit->old_location;
    return html + " <span class=\"place\">" + LocationOf(place, pair) + "</span></li>\n";
  }

  // A place with its line, linked where the page shows it.
  std::string LocationOf(const Location& location, std::size_t pair) const {
    const TextRange* const mark = page_.Find(location);
    if (mark == nullptr) return "";
    const bool is_new = location.source == page_.pairs()[pair].second;
    return Link(mark->begin ? sources_.LineId(pair, is_new, mark->begin->line) : "", Html(ToText(*mark)));
  }

  // --- The end ---

  void Quiet() {
    std::vector<std::string> names;
    for (const TableResult& table : report_.tables) {
      if (!HasNothingToShow(table)) continue;
      names.push_back(table.table +
                      (table.status == Status::kNew ? ": new, not compared" : ": allowed, nothing changed about it"));
    }
    if (!names.empty()) html_ += "<section>\n<h2>Other tables</h2>\n" + List(names) + "</section>\n";
  }

  void LeftOut() {
    std::string left_out;
    const auto add = [&](std::size_t number, const std::string& noun) {
      if (number > 0) left_out += (left_out.empty() ? "" : ", ") + Counted(number, noun);
    };
    add(page_.findings_left_out(), "finding");
    add(page_.changes_left_out(), "change");
    if (pictures_ > page_.limits().pictures) add(pictures_ - page_.limits().pictures, "layout");
    if (!left_out.empty())
      html_ += "<p class=\"note\">Too much for one page, not listed here: " + left_out + ". The JSON report has all.</p>\n";
  }

  const Report& report_;
  Page page_;
  HtmlSources sources_;
  Summary summary_ = Summarize(report_);
  std::size_t pictures_ = 0;   // wanted so far
  bool is_explained_ = false;  // what pictures show
  std::string html_;
};

}  // namespace

std::string RenderHtml(const Report& report) { return Writer(report).Run(); }

}  // namespace korvel
