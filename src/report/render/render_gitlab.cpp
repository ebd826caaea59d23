// A report as GitLab code quality entries. Faults have the severity "critical", warnings "minor", notes and waived findings
// "info". Tested by tests/report/formats_test.cpp.
#include "base/text.h"
#include "report/render/json_stream.h"
#include "report/render/render.h"
#include "report/result/issues.h"
#include "report/result/service_path.h"

namespace korvel {
namespace {

const char* SeverityOf(const Issue& issue) {
  if (issue.fault != nullptr) return "critical";
  if (issue.waived || issue.level == Level::kNote) return "info";
  return issue.level == Level::kWarning ? "minor" : "major";
}

// Every entry needs a path, also that of a fault of the whole call.
std::string PathOf(const Issue& issue, const ServicePaths& paths) {
  const std::string& file = issue.location.file;
  if (file.empty()) return kFileOfCall;
  const std::string path = paths.Of(file);
  return path.empty() ? file : path;
}

Json EntryOf(const Issue& issue, const ServicePaths& paths) {
  std::string body;
  for (const std::string& line : DetailsOf(issue, paths)) body += "- " + MarkdownText(line) + "\n";
  // Every entry needs a line, also that of an image.
  const std::size_t line = issue.location.begin ? issue.location.begin->line : 1;
  const std::size_t end = issue.location.begin ? issue.location.end.line : 1;
  return {{"description", issue.summary},
          {"check_name", issue.rule},
          {"fingerprint", issue.fingerprint},
          {"severity", SeverityOf(issue)},
          {"categories", {"Compatibility"}},
          {"content", {{"body", body}}},
          {"location", {{"path", PathOf(issue, paths)}, {"lines", {{"begin", line}, {"end", end}}}}}};
}

}  // namespace

void WriteGitlab(const Report& report, const TextSink& sink) {
  const FoldedReport folded(report);
  const Issues issues(folded);
  JsonStream json(sink);
  json.Begin('[');
  for (const Issue& issue : issues.all()) json.Add(EntryOf(issue, issues.paths()));
  json.End();
}

}  // namespace korvel
