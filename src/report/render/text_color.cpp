// Tested by tests/report/formats_test.cpp and tests/tool/text_report_test.cpp.
#include "report/render/text_color.h"

#include <cstddef>

namespace korvel {

const char* ColorOf(Status status) {
  constexpr const char* kColors[] = {kGreen, kRed, kCyan};
  return kColors[static_cast<std::size_t>(status)];
}

const char* ColorOf(OverallVerdict verdict) {
  constexpr const char* kColors[] = {kGreen, kRed, kYellow, kRed, kYellow};
  return kColors[static_cast<std::size_t>(verdict)];
}

const char* ColorOf(const Finding& finding) {
  if (finding.level == Level::kNote) return kCyan;
  return finding.waiver || finding.level == Level::kWarning ? kYellow : kRed;
}

const char* ColorOf(const ProjectFinding& finding) {
  return finding.level == ProjectFinding::Level::kError && !finding.waiver ? kRed : kYellow;
}

std::string Colored(const std::string& text, const char* color, bool wanted) {
  return wanted ? std::string("\x1b[") + color + "m" + text + "\x1b[0m" : text;
}

}  // namespace korvel
