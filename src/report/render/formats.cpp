// The list of report formats.
#include "report/render/render.h"

namespace korvel {
namespace {

// A format without colors.
template <std::string (*render)(const Report&)>
std::string Plain(const Report& report, bool /*color*/) {
  return render(report);
}

}  // namespace

std::span<const Format> Formats() {
  static constexpr Format kFormats[] = {
      {"text", RenderText},
      {"json", Plain<RenderJson>, true},
      {"sarif", Plain<RenderSarif>, true},
      {"junit", Plain<RenderJunit>},
      {"github", Plain<RenderGithub>},
      {"gitlab", Plain<RenderGitlab>},
      {"markdown", Plain<RenderMarkdown>},
      {.name = "html", .render = Plain<RenderHtml>, .shows_sources = true},
  };
  return kFormats;
}

}  // namespace korvel
