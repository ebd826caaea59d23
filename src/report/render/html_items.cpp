// Findings and changes as HTML. Tested by tests/report/html_test.cpp and tests/browser/html_test.py.
#include "report/render/html_items.h"

#include "report/render/html_rules.h"
#include "report/render/html_text.h"
#include "report/result/words.h"

namespace korvel {
namespace {

std::string CauseTerm(const Finding& finding) { return finding.edits.size() > 1 ? "Refused in combination" : "Change"; }

// A finding without edits of a removed table needs no explanation.
std::string Cause(const FoldedFinding& folded) {
  if (!folded.finding->edits.empty()) return List(EditsOf(*folded.table, *folded.finding));
  return IsPreexisting(*folded.table) ? kPreexisting : "";
}

}  // namespace

std::string Badge(const char* name, const char* sign, const std::string& word) {
  return "<span class=\"badge " + std::string(name) + "\"><span aria-hidden=\"true\">" + sign + "</span> " + word + "</span>";
}

std::string Badge(StatusStyle style) {
  const StatusText& text = TextOf(style);
  return Badge(text.name, text.sign, text.word);
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

std::string Result(const std::string& rule, int code) {
  return "<p class=\"result\">" + (rule.empty() ? "" : RuleLink(rule) + " ") + std::to_string(code) + " " +
         Html(CodeNameOf(code)) + "</p>\n";
}

std::string Problem(const std::string& summary, const std::string& checker_text) {
  return "<p class=\"problem\">" + Html(summary) + "</p>\n<p class=\"checker\">" + Html(CheckerLine(checker_text)) + "</p>\n";
}

std::string HtmlItems::Finding(const PageFinding& listed) const {
  const korvel::Finding& finding = *listed.folded.finding;
  const StatusText& status = TextOf(listed.Style());
  const std::size_t pair = page_.PairOf(*listed.folded.table);
  std::string html = "<article class=\"item " + std::string(status.name) + "\" id=\"" + listed.id +
                     "\" tabindex=\"0\" data-status=\"" + status.name + "\" aria-labelledby=\"" + listed.id + "h\">\n<h3 id=\"" +
                     listed.id + "h\">" + Link(listed.id, LabelOf(listed.id)) + " " + Badge(listed.Style()) + " " +
                     (finding.path.empty() ? "the library" : Code(finding.path)) + "</h3>\n";
  if (IsAdvice(finding)) {
    html += "<p class=\"problem\">" + Html(SummaryOf(finding.verdict)) + "</p>\n<p class=\"result\">" +
            RuleLink(finding.verdict.rule) + "</p>\n";
  } else {
    html += Problem(SummaryOf(finding.verdict), finding.verdict.text) + Result(finding.verdict.rule, finding.verdict.code);
  }
  html += "<dl>\n" + Term(CauseTerm(finding), Cause(listed.folded));
  html += Term("New", LocationOf(finding.new_location, pair)) + Term("Old", LocationOf(finding.old_location, pair));
  html += Term("Suggestion", Html(finding.suggestion));
  html += Term("Also affected", AlsoItems(listed.folded));
  if (finding.waiver)
    html += Term("Waived", Html(finding.waiver->reason) + " (until " + Html(finding.waiver->until) +
                               (finding.waiver->is_wide ? "; wide: any change of this rule here)" : ")"));
  return html + Term("Fingerprint", finding.fingerprint.empty() ? "" : Code(finding.fingerprint)) + "</dl>\n</article>\n";
}

std::string HtmlItems::AlsoItems(const FoldedFinding& folded) const {
  if (!folded.also_as) return List(AlsoOf(page_.folded(), folded));
  return "the same " + std::to_string(folded.also_count) + " tables and paths as " + FindingLink(*folded.also_as);
}

std::string HtmlItems::FindingLink(std::size_t position) const {
  const std::string& id = page_.findings()[position].id;
  return Link(id, LabelOf(id));
}

std::string HtmlItems::Change(const PageChange& change) const {
  const std::size_t pair = page_.PairOf(*change.table);
  const StatusText& status = TextOf(change.style);
  std::string html = "<li class=\"item " + std::string(status.name) + "\" id=\"" + change.id +
                     "\" tabindex=\"0\" data-status=\"" + status.name + "\">" + Link(change.id, LabelOf(change.id)) + " " +
                     Badge(change.style) + " " + Html(Describe(*change.edit));
  if (!change.edit->paths.empty() && !change.edit->paths.front().empty()) html += " " + Code(change.edit->paths.front());
  if (change.also > 0 && !change.OfLibrary()) html += " (and " + Counted(change.also, "other table") + ")";
  const Location& location = change.edit->new_location ? change.edit->new_location : change.edit->old_location;
  return html + " <span class=\"location\">" + LocationOf(location, pair) + "</span></li>\n";
}

std::string HtmlItems::LocationOf(const Location& location, std::size_t pair) const {
  const TextRange* const range = page_.Find(location);
  if (range == nullptr) return "";
  const bool is_new = location.source == page_.pairs()[pair].second;
  return Link(range->begin ? sources_.LineId(pair, is_new, range->begin->line) : "", Html(ToText(*range)));
}

}  // namespace korvel
