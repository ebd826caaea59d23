// Commands that a GitHub workflow turns into annotations, one a line. Held by tests/report/formats_test.cpp.
#include <algorithm>

#include "base/characters.h"
#include "report/render/render.h"
#include "report/result/issues.h"

namespace korvel {
namespace {

// As the runner undoes it: '%' and line ends everywhere, ':' and ',' in properties. Other control characters of a path stay
// escaped.
std::string Escaped(std::string_view text, bool is_property) {
  std::string escaped;
  for (const char c : text) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    const bool is_special = c == '%' || byte < 0x20 || byte == 0x7f || (is_property && (c == ':' || c == ','));
    is_special ? escaped.append({'%', kDigits[byte >> 4U], kDigits[byte & 0xfU]}) : escaped.append(1, c);
  }
  return escaped;
}

std::string Property(const char* name, const std::string& value) {
  return std::string(name) + "=" + Escaped(ValidUtf8(value), true);
}

// The last column that is marked; end columns may be given only where the mark stays on its line.
std::string LocationProperties(const TextRange& place) {
  const std::string path = ServicePath(place.file);
  if (path.empty()) return "";
  std::string text = Property("file", path) + ",";
  if (!place.begin) return text;
  const auto& [line, column] = *place.begin;
  text += "line=" + std::to_string(line) + ",endLine=" + std::to_string(place.end.line) + ",";
  if (line != place.end.line) return text;
  return text + "col=" + std::to_string(column) + ",endColumn=" + std::to_string(std::max(column + 1, place.end.column) - 1) +
         ",";
}

std::string Command(const Issue& issue) {
  std::string message = issue.text;
  for (const std::string& line : DetailsOf(issue)) message += "\n" + line;
  return std::string("::") + (issue.waived ? "notice " : "error ") + LocationProperties(issue.place) +
         Property("title", "korvelcheck: " + issue.rule) + "::" + Escaped(ValidUtf8(message), false) + "\n";
}

}  // namespace

std::string RenderGithub(const Report& report) {
  const Summary summary = Summarize(report);
  std::string message = std::string("verdict: ") + WordOf(VerdictOf(summary)) + RemarkOn(summary) + "\n" + ToText(summary);
  for (const FileNote& note : report.files) message += "\n" + ToText(note);
  std::string text = "::notice title=korvelcheck::" + Escaped(ValidUtf8(message), false) + "\n";
  const Issues issues(report);
  for (const Issue& issue : issues.all()) text += Command(issue);
  return text;
}

}  // namespace korvel
