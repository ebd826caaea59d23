// Tested by tests/report/formats_test.cpp.
#include "report/render/markdown_items.h"

#include "base/text.h"

namespace korvel {

const char* StatusOf(const Issue& issue) {
  if (issue.waived) return "waived";
  const bool is_error_of_project = issue.table == nullptr && issue.level == Level::kRefused;
  return is_error_of_project ? "error" : WordOf(issue.level);
}

std::string LocationCode(const Issue& issue, const ServicePaths& paths) {
  return issue.location.file.empty() ? "" : MarkdownCode(ToText(issue.location, &paths));
}

std::string More(std::size_t all, std::size_t shown, const char* what) {
  return all <= shown ? "" : "\n" + std::to_string(all - shown) + " more " + what + ".\n";
}

}  // namespace korvel
