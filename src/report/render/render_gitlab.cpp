// A report as GitLab code quality entries. Waived findings have the severity "info". Tested by
// tests/report/formats_test.cpp.
#include <nlohmann/json.hpp>

#include "base/text.h"
#include "report/render/render.h"
#include "report/result/issues.h"

namespace korvel {

std::string RenderGitlab(const Report& report) {
  using Json = nlohmann::ordered_json;
  Json json = Json::array();
  const Issues issues(report);
  for (const Issue& issue : issues.all()) {
    std::string body;
    for (const std::string& line : DetailsOf(issue)) body += "- " + MarkdownText(line) + "\n";
    const std::string path = ServicePath(issue.location.file);
    // Every entry needs a line, also that of an image.
    const std::size_t line = issue.location.begin ? issue.location.begin->line : 1;
    const std::size_t end = issue.location.begin ? issue.location.end.line : 1;
    json.push_back(
        {{"description", issue.summary},
         {"check_name", issue.rule},
         {"fingerprint", issue.fingerprint},
         {"severity", issue.waived ? "info" : "major"},
         {"categories", {"Compatibility"}},
         {"content", {{"body", body}}},
         {"location", {{"path", path.empty() ? issue.location.file : path}, {"lines", {{"begin", line}, {"end", end}}}}}});
  }
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace korvel
