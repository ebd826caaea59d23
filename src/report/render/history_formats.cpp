// The list of formats of histories. Tested by tests/tool/history_format_test.cpp.
#include "report/render/render.h"

namespace korvel {
namespace {

using Prefix = std::optional<std::string>;

void WriteText(const Histories& histories, const Prefix& /*path_prefix*/, bool color, const TextSink& sink) {
  sink(RenderHistoryText(histories, color));
}

void WriteJson(const Histories& histories, const Prefix& /*path_prefix*/, bool /*color*/, const TextSink& sink) {
  WriteHistoryJson(histories, sink);
}

void WriteHtml(const Histories& histories, const Prefix& /*path_prefix*/, bool /*color*/, const TextSink& sink) {
  sink(RenderHistoryHtml(histories));
}

// A format of reports.
template <std::string_view const& name>
void WriteReport(const Histories& histories, const Prefix& path_prefix, bool color, const TextSink& sink) {
  Report report = ReportOf(histories);
  report.path_prefix = path_prefix;
  for (const Format& format : Formats()) {
    if (format.name == name) format.write(report, color, sink);
  }
}

constexpr std::string_view kSarif = "sarif", kJunit = "junit", kGithub = "github", kGitlab = "gitlab", kMarkdown = "markdown";

}  // namespace

std::span<const HistoryFormat> HistoryFormats() {
  static constexpr HistoryFormat kFormats[] = {
      {"text", WriteText},
      {"json", WriteJson},
      {"sarif", WriteReport<kSarif>},
      {"junit", WriteReport<kJunit>},
      {"github", WriteReport<kGithub>},
      {"gitlab", WriteReport<kGitlab>},
      {"markdown", WriteReport<kMarkdown>},
      {"html", WriteHtml, true},
  };
  return kFormats;
}

}  // namespace korvel
