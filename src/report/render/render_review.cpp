// A report as a review of a pull request or merge request: JSON that packaging/review/post-review posts. docs/review.schema.json
// lists all members. Tested by tests/report/review_test.cpp and formats_test.cpp.
#include <algorithm>
#include <map>
#include <utility>

#include "base/text.h"
#include "report/render/json_stream.h"
#include "report/render/json_values.h"
#include "report/render/render.h"
#include "report/render/review_text.h"
#include "report/result/line_fix.h"

namespace korvel {
namespace {

// The language of a block of code that the service offers to apply to the lines of the fix. GitHub applies it to the lines of the
// comment; GitLab to its line and to a number of lines above and below. That line is the one of the fix that is next to `line`.
using BlockLanguage = std::string (*)(const LineFix& fix, std::size_t line);

std::string GithubLanguage(const LineFix& /*fix*/, std::size_t /*line*/) { return "suggestion"; }

std::string GitlabLanguage(const LineFix& fix, std::size_t line) {
  const std::size_t commented = std::clamp(line, fix.first, fix.last);
  return "suggestion:-" + std::to_string(commented - fix.first) + "+" + std::to_string(fix.last - commented);
}

class ReviewWriter {
 public:
  ReviewWriter(const Report& report, BlockLanguage language) : folded_(report), issues_(folded_), language_(language) {}

  void Write(const TextSink& sink) {
    const Report& report = folded_.report();
    JsonStream json(sink);
    json.Begin('{');
    json.AddMembers(HeaderToJson(kJsonVersion, report.command));
    json.Add("verdict", WordOf(VerdictOf(Summarize(folded_))));
    json.Add("exit_code", ExitCodeOf(report));
    json.Add("body", ReviewSummary(folded_, issues_));
    json.Begin("comments", '[');
    for (const Issue* issue : ReviewOrder(issues_.all())) {
      if (HasLine(*issue)) json.Add(CommentOn(*issue));
    }
    json.End();
    json.End();
  }

 private:
  // Whether a person may want to change a line of a new file: not if the finding is waived or the file is the old one.
  bool HasLine(const Issue& issue) const {
    const TextRange& range = issue.location;
    if (issue.waived || !range.begin || issues_.paths().Of(range.file).empty()) return false;
    return issue.table == nullptr || range.file == issue.table->second->name;
  }

  Json CommentOn(const Issue& issue) {
    const TextRange& range = issue.location;
    Json json = {{"fingerprint", issue.fingerprint},
                 {"path", issues_.paths().Of(range.file)},
                 {"start_line", range.begin->line},
                 {"line", range.end.line},
                 {"body", ReviewComment(folded_, issue, issues_.paths())},
                 {"suggestion", nullptr}};
    AddFixTo(json, issue);
    return json;
  }

  void AddFixTo(Json& json, const Issue& issue) {
    if (issue.folded == nullptr || issue.folded->finding->fix.empty()) return;
    const LineFix fix = LinesOf(*issue.table->second).Fixed(issue.folded->finding->fix);
    if (fix.problem != nullptr) {
      json["body"] = json["body"].text() + "\nThe fix is not shown as a block to apply: " + fix.problem +
                     ". `korvelcheck suggest` prints it.\n";
      return;
    }
    json["suggestion"] = {{"start_line", fix.first},
                          {"line", fix.last},
                          {"block", MarkdownBlock(language_(fix, issue.location.end.line), fix.text)}};
  }

  const LineStarts& LinesOf(const Source& source) {
    const auto found = lines_.find(&source);
    return found != lines_.end() ? found->second : lines_.try_emplace(&source, source.text->Bytes()).first->second;
  }

  FoldedReport folded_;
  Issues issues_;
  BlockLanguage language_;
  std::map<const Source*, LineStarts> lines_;
};

}  // namespace

void WriteGithubReview(const Report& report, const TextSink& sink) { ReviewWriter(report, GithubLanguage).Write(sink); }

void WriteGitlabReview(const Report& report, const TextSink& sink) { ReviewWriter(report, GitlabLanguage).Write(sink); }

}  // namespace korvel
