// The list of formats.
#include "report/render.h"

namespace korvel::report {

std::span<const Format> Formats() {
  static constexpr Format kFormats[] = {
      {"text", RenderText},
      {"json", [](const Report& report, bool) { return RenderJson(report); }},
  };
  return kFormats;
}

}  // namespace korvel::report
