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
      {.name = "json", .render = Plain<RenderJson>, .shows_fixes = true, .shows_allowed_changes = true},
      {.name = "sarif", .render = Plain<RenderSarif>, .shows_fixes = true},
      {"junit", Plain<RenderJunit>},
      {"github", Plain<RenderGithub>},
      {"gitlab", Plain<RenderGitlab>},
      {"markdown", Plain<RenderMarkdown>},
      {.name = "html", .render = Plain<RenderHtml>, .shows_allowed_changes = true, .shows_sources = true},
  };
  return kFormats;
}

}  // namespace korvel
