// The list of report formats.
#include "report/render/render.h"

namespace korvel {
namespace {

// A format without colors that is rendered as a whole.
template <std::string (*render)(const Report&)>
void Whole(const Report& report, bool /*color*/, const TextSink& sink) {
  sink(render(report));
}

// A format without colors that is written piece by piece.
template <void (*write)(const Report&, const TextSink&)>
void Pieces(const Report& report, bool /*color*/, const TextSink& sink) {
  write(report, sink);
}

void WriteText(const Report& report, bool color, const TextSink& sink) { sink(RenderText(report, color)); }

}  // namespace

std::string Format::Render(const Report& report, bool color) const {
  std::string text;
  write(report, color, [&](std::string_view piece) { text += piece; });
  return text;
}

std::span<const Format> Formats() {
  static constexpr Format kFormats[] = {
      {"text", WriteText},
      {.name = "json", .write = Pieces<WriteJson>, .shows_fixes = true, .shows_allowed_changes = true},
      {.name = "sarif", .write = Pieces<WriteSarif>, .shows_fixes = true},
      {"junit", Pieces<WriteJunit>},
      {"github", Whole<RenderGithub>},
      {"gitlab", Pieces<WriteGitlab>},
      {"markdown", Whole<RenderMarkdown>},
      {.name = "html", .write = Whole<RenderHtml>, .shows_allowed_changes = true, .shows_sources = true},
      {.name = "github-review", .write = Pieces<WriteGithubReview>, .shows_fixes = true},
      {.name = "gitlab-review", .write = Pieces<WriteGitlabReview>, .shows_fixes = true},
  };
  return kFormats;
}

}  // namespace korvel
