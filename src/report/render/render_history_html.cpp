// Histories as one HTML page without references to other files. history.js compares versions in the browser. Tested by
// tests/tool/history_format_test.cpp.

#include "base/text.h"
#include "report/render/html_items.h"
#include "report/render/html_text.h"
#include "report/render/json_stream.h"
#include "report/render/render.h"
#include "report/result/notes.h"
#include "report/result/words.h"
#include "rule_docs/advice.h"

namespace korvel {
namespace {

StatusStyle VerdictStyle(OverallVerdict verdict) {
  if (verdict == OverallVerdict::kAllowed) return StatusStyle::kAllowed;
  const bool is_bad = verdict == OverallVerdict::kRefused || verdict == OverallVerdict::kIncomplete;
  return is_bad ? StatusStyle::kRefused : StatusStyle::kNotChecked;
}

std::string VersionBadge(OverallVerdict verdict) {
  const StatusText& style = TextOf(VerdictStyle(verdict));
  return Badge(style.name, style.sign, WordOf(verdict));
}

std::string VersionBadge(bool refused) { return Badge(refused ? StatusStyle::kRefused : StatusStyle::kAllowed); }

// A block of data for the script. No text in it can end the element.
std::string DataBlock(const History& history) {
  Json texts = Json::array();
  for (std::size_t i = 0; i < history.versions.size(); ++i) {
    const auto found = history.texts.texts().find(i);
    texts.push_back(found == history.texts.texts().end() ? Json() : Json(found->second));
  }
  Json lines = Json::array();
  for (const auto& line : history.texts.lines()) lines.push_back(SourceLine(line));
  const Json data = {{"lines", std::move(lines)}, {"texts", std::move(texts)}};
  std::string html = "<script type=\"application/json\">";
  for (const char c : JsonText(data, -1)) {
    c == '<' ? html.append("\\u003c") : html.append(1, c);
  }
  return html + "</script>\n";
}

// The section of one file.
class FileSection {
 public:
  FileSection(const History& history, std::size_t number) : history_(history), id_("h" + std::to_string(number)) {}

  std::string Text() {
    html_ = "<section id=\"" + id_ + "\">\n<h2>" + (history_.file.empty() ? "Versions" : Code(history_.file)) + " " +
            VersionBadge(VerdictOf(history_)) + "</h2>\n";
    for (const std::string& note : history_.notes) html_ += "<p class=\"note\">" + Html(note) + "</p>\n";
    AddVersions();
    for (const VersionStep& step : history_.steps) AddStep(step);
    AddAgainstNewest();
    AddReusedIds();
    if (!history_.texts.texts().empty()) AddComparison();
    return std::move(html_ += "</section>\n");
  }

 private:
  std::string StepId(std::size_t to) const { return id_ + "v" + std::to_string(to); }

  const VersionStep* StepTo(std::size_t version) const {
    for (const VersionStep& step : history_.steps) {
      if (step.to == version) return &step;
    }
    return nullptr;
  }

  // Each version with the verdict of the step to it.
  void AddVersions() {
    html_ += "<ol class=\"versions\" aria-label=\"versions\">\n";
    for (std::size_t i = 0; i < history_.versions.size(); ++i) {
      const VersionInfo& version = history_.versions[i];
      const VersionStep* const step = StepTo(i);
      const bool is_bad = !version.faults.empty() || (step != nullptr && step->Refused());
      html_ += std::string("<li") + (is_bad ? " class=\"refused\"" : "") + ">" +
               Link(step == nullptr ? "" : StepId(i), Code(version.name)) + " ";
      if (!version.faults.empty()) html_ += "cannot be read: " + Html(Join(LinesOf(version.faults), "; "));
      if (version.is_removed) html_ += "removed ";
      html_ += (step == nullptr ? "" : VersionBadge(step->Refused())) + "</li>\n";
    }
    html_ += "</ol>\n";
  }

  void AddStep(const VersionStep& step) {
    html_ += "<h3 id=\"" + StepId(step.to) + "\">Step " + std::to_string(NumberOf(history_, step)) + ": " +
             Code(history_.versions[step.from].name) + " \u2192 " + Code(history_.versions[step.to].name) + " " +
             VersionBadge(step.Refused()) + "</h3>\n";
    AddTables(step.report);
  }

  void AddTables(const Report& report) {
    const std::string tables = RenderTablesText(report, Detail::kNormal, false);
    if (!tables.empty()) html_ += "<pre class=\"step\">" + Lines(tables) + "</pre>\n";
  }

  static std::string Lines(const std::string& text) {
    std::string html;
    for (std::size_t begin = 0; begin < text.size();) {
      const std::size_t end = text.find('\n', begin);
      html += HtmlLine(std::string_view(text).substr(begin, end - begin)) + "\n";
      begin = end + 1;
    }
    return html;
  }

  void AddAgainstNewest() {
    std::vector<std::string> items;
    for (const NewestCheck& check : history_.against_newest) {
      for (const NewestRefusal& refusal : check.refused) {
        items.push_back("from " + history_.versions[check.from].name + ": table " + refusal.result.table + ", " +
                        refusal.summary + "; caused by: " + refusal.cause.change +
                        (refusal.cause.new_location.empty() ? "" : " (" + refusal.cause.new_location + ")"));
      }
    }
    std::size_t left_out = 0;
    for (const NewestCheck& check : history_.against_newest) left_out += check.left_out;
    if (left_out > 0) items.push_back(Counted(left_out, "refused table") + " not listed, because of --max-findings");
    if (!items.empty()) html_ += "<h3>Refused from an older version to the newest</h3>\n" + List(items);
    for (const NewestCheck& check : history_.against_newest) {
      if (check.warned.tables.empty()) continue;
      html_ += "<h3>Warnings that no step has: " + Code(history_.versions[check.from].name) + " \u2192 " +
               Code(history_.versions[history_.steps.back().to].name) + "</h3>\n";
      AddTables(check.warned);
    }
  }

  void AddReusedIds() {
    std::vector<std::string> items;
    for (const ReusedId& reused : history_.reused_ids) {
      const std::string word = reused.waiver ? "waived" : WordOf(kIdReusedAdvice.level);
      items.push_back(word + " [" + kIdReusedAdvice.row.id + "] " + DescriptionOf(history_, reused) +
                      "; suggestion: " + reused.suggestion + (reused.waiver ? "; " + ToText(*reused.waiver) : ""));
    }
    if (!items.empty()) html_ += "<h3>Reused ids</h3>\n" + List(items);
  }

  void AddSelect(const char* label, std::size_t selected) {
    html_ += std::string("<label>") + label + " <select>\n";
    for (std::size_t i = 0; i < history_.versions.size(); ++i) {
      html_ += "<option value=\"" + std::to_string(i) + "\"" + (i == selected ? " selected" : "") + ">" +
               Html(history_.versions[i].name) + "</option>\n";
    }
    html_ += "</select></label>\n";
  }

  // The form is hidden until the script runs.
  void AddComparison() {
    html_ += "<section class=\"compare\">\n<h3>Compare any two versions</h3>\n<form hidden>\n";
    AddSelect("old", 0);
    AddSelect("new", history_.versions.size() - 1);
    html_ +=
        "</form>\n<output aria-live=\"polite\"></output>\n<p class=\"note\">Lines of text, without a verdict; "
        "'korvelcheck history OLD NEW' checks two versions.</p>\n" +
        DataBlock(history_) + "</section>\n";
  }

  const History& history_;
  std::string id_;
  std::string html_;
};

std::string ProjectLines(const Histories& histories) {
  std::string html;
  for (const std::string& line : ProjectsOf(histories.projects)) html += "<p class=\"note\">" + Html(line) + "</p>\n";
  return html;
}

}  // namespace

std::string RenderHistoryHtml(const Histories& histories) {
  const std::string verdict = WordOf(VerdictOf(histories));
  std::string html = HtmlHead(kHistoryScript, verdict + " \u2013 history") + "<body>\n<header>\n<p class=\"verdict " +
                     TextOf(VerdictStyle(VerdictOf(histories))).name + "\">verdict: " + verdict + RemarkOn(histories) +
                     "</p>\n<h1>history</h1>\n" + ProjectLines(histories) + "</header>\n" +
                     "<main id=\"main\" tabindex=\"-1\">\n";
  for (std::size_t i = 0; i < histories.files.size(); ++i) html += FileSection(histories.files[i], i + 1).Text();
  std::vector<std::string> faults;
  for (const InputFault& fault : histories.faults) faults.push_back(fault.message);
  if (!faults.empty()) html += "<section>\n<h2>Not checked</h2>\n" + List(faults) + "</section>\n";
  std::vector<std::string> project;
  for (const ProjectFinding& finding : histories.project) {
    project.push_back(FileLineColumn(finding.file, finding.position) + ": " + WordOf(finding.level) + ": " + finding.text);
  }
  if (!project.empty()) html += "<section>\n<h2>Project</h2>\n" + List(project) + "</section>\n";
  html += "</main>\n<footer><p>korvelcheck " KORVEL_VERSION "</p></footer>\n<script>";
  html += kHistoryScript.text;
  return html + "</script>\n</body>\n</html>\n";
}

}  // namespace korvel
