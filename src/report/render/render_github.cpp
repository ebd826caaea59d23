// A report as commands that a GitHub workflow turns into annotations, one a line. Tested by tests/report/formats_test.cpp.
#include <algorithm>

#include "base/characters.h"
#include "report/render/render.h"
#include "report/result/issues.h"
#include "report/result/notes.h"
#include "report/result/service_path.h"
#include "report/result/words.h"

namespace korvel {
namespace {

void AppendPercent(std::string& escaped, std::string_view bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    escaped.append({'%', kDigits[byte >> 4U], kDigits[byte & 0xfU]});
  }
}

// Escapes what the runner unescapes: '%' and line ends everywhere, ':' and ',' in properties. Also escapes hidden characters and
// commands of the form "##[", which the runner leaves escaped. Bytes that are not UTF-8 become U+FFFD.
std::string EscapeForCommand(std::string_view text, bool is_property) {
  std::string escaped;
  const std::string valid = ValidUtf8(text);
  for (std::string_view rest = valid; !rest.empty();) {
    const auto [length, code] = FirstCharacter(rest);
    const bool is_special = code == '%' || (is_property && (code == ':' || code == ','));
    const std::string_view bytes = rest.substr(0, length);
    is_special || IsHidden(code) || BeginsLogCommand(rest) ? AppendPercent(escaped, bytes) : static_cast<void>(escaped += bytes);
    rest.remove_prefix(length);
  }
  return escaped;
}

std::string Property(const char* name, const std::string& value) {
  return std::string(name) + "=" + EscapeForCommand(value, true);
}

// `endColumn` is the last marked column; it is allowed only if the range ends on the line where it begins.
std::string LocationProperties(const TextRange& range, const ServicePaths& paths) {
  const std::string path = range.file.empty() ? "" : paths.Of(range.file);
  if (path.empty()) return "";
  std::string text = Property("file", path) + ",";
  if (!range.begin) return text;
  const auto& [line, column] = *range.begin;
  text += "line=" + std::to_string(line) + ",endLine=" + std::to_string(range.end.line) + ",";
  if (line != range.end.line) return text;
  return text + "col=" + std::to_string(column) + ",endColumn=" + std::to_string(std::max(column + 1, range.end.column) - 1) +
         ",";
}

const char* CommandOf(const Issue& issue) {
  if (issue.waived || issue.level == Level::kNote) return "notice";
  return issue.level == Level::kWarning ? "warning" : "error";
}

std::string Command(const Issue& issue, const ServicePaths& paths) {
  std::string message = issue.summary;
  for (const std::string& line : DetailsOf(issue, paths)) message += "\n" + line;
  return std::string("::") + CommandOf(issue) + " " + LocationProperties(issue.location, paths) +
         Property("title", "korvelcheck: " + issue.rule) + "::" + EscapeForCommand(message, false) + "\n";
}

}  // namespace

std::string RenderGithub(const Report& report) {
  const FoldedReport folded(report);
  const Summary summary = Summarize(folded);
  std::string message = std::string("verdict: ") + WordOf(VerdictOf(summary)) + RemarkOn(summary) + "\n" + ToText(summary);
  const Issues issues(folded);
  for (const std::string& line : NotesOf(report, &issues.paths())) message += "\n" + line;
  std::string text = "::notice title=korvelcheck::" + EscapeForCommand(message, false) + "\n";
  for (const Issue& issue : issues.all()) text += Command(issue, issues.paths());
  return text;
}

}  // namespace korvel
