// The rules of an HTML report. Tested by tests/report/html_test.cpp and tests/browser/html_test.py.
#include "report/render/html_rules.h"

#include <algorithm>

#include "report/render/html_items.h"
#include "report/render/html_text.h"
#include "report/result/words.h"
#include "rule_docs/rule_docs.h"

namespace korvel {
namespace {

// Paragraphs are separated by blank lines.
std::string Paragraphs(const std::string& text) {
  std::string html;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find("\n\n", begin), text.size());
    html += "<p>" + Html(text.substr(begin, end - begin)) + "</p>\n";
    begin = std::min(text.find_first_not_of('\n', end), text.size());
  }
  return html;
}

std::string IdOf(std::string_view rule) { return "rule-" + std::string(rule); }

std::string Explanation(const RuleDoc& doc) {
  const bool is_refusal = doc.level.empty();
  return "<section class=\"rule\" id=\"" + IdOf(doc.row->id) + "\">\n<h3>" + Code(doc.row->id) + " " + Html(doc.row->summary) +
         "</h3>\n<h4>" + (is_refusal ? "What it protects" : "What goes wrong") + "</h4>\n" + Paragraphs(doc.protects) + "<h4>" +
         (is_refusal ? "Allowed instead" : "What to do instead") + "</h4>\n" + Paragraphs(doc.allowed) +
         "<p class=\"note\">For an example, run <code>korvelcheck explain " + doc.row->id + "</code>.</p>\n</section>\n";
}

}  // namespace

std::string RuleLink(std::string_view id) { return Link(FindRuleDoc(id) == nullptr ? "" : IdOf(id), Code(id)); }

HtmlRules::HtmlRules(const Page& page) {
  for (const InputFault& fault : page.report().faults) Add(RuleOf(fault.kind).id, 1, "");
  for (const ProjectFinding& finding : page.report().project) Add(finding.rule, 1, "");
  const auto& findings = page.folded().findings();
  for (std::size_t i = 0; i < findings.size(); ++i) {
    Add(findings[i].finding->verdict.rule, 1, i < page.findings().size() ? page.findings()[i].id : "");
  }
  for (const TableResult& table : page.report().tables) {
    if (table.status == Status::kRefused) Add(table.verdict.rule, 0, "");
  }
  std::ranges::stable_sort(rules_, std::ranges::greater(), &Rule::findings);
}

void HtmlRules::Add(std::string_view id, std::size_t findings, const std::string& first) {
  if (FindRuleDoc(id) == nullptr) return;
  const auto found = std::ranges::find(rules_, id, &Rule::id);
  Rule& rule = found == rules_.end() ? rules_.emplace_back(Rule{id, 0, ""}) : *found;
  rule.findings += findings;
  if (rule.first.empty()) rule.first = first;
}

std::string HtmlRules::Index() const {
  std::string items;
  std::size_t findings = 0;
  for (const Rule& rule : rules_) {
    if (rule.findings == 0) continue;
    findings += rule.findings;
    items += "<li>" + std::to_string(rule.findings) + " " + RuleLink(rule.id) + " " + Html(FindRuleDoc(rule.id)->row->summary) +
             (rule.first.empty() ? "" : "; first: " + Link(rule.first, LabelOf(rule.first))) + "</li>\n";
  }
  if (findings < 2) return "";
  return "<nav aria-label=\"rules\"><details>\n<summary>Findings by rule</summary>\n<ul class=\"rules\">\n" + items +
         "</ul></details></nav>\n";
}

std::string HtmlRules::Explanations() const {
  std::string html;
  for (const Rule& rule : rules_) html += Explanation(*FindRuleDoc(rule.id));
  return html.empty() ? "" : "<section>\n<h2>Rules</h2>\n" + html + "</section>\n";
}

}  // namespace korvel
