// Tested by tests/report/line_fix_test.cpp.
#include "report/result/line_fix.h"

#include <algorithm>
#include <utility>

#include "analysis/suggest/element_text.h"
#include "base/characters.h"

namespace korvel {
namespace {

// Services refuse longer suggestions, and nobody reads them.
constexpr std::size_t kMaxLines = 50;
constexpr std::size_t kMaxBytes = 20'000;

// Whether a service shows and applies the text as it is.
bool IsPlainText(std::string_view text) {
  for (std::string_view rest = text; !rest.empty();) {
    const auto [length, code] = FirstCharacter(rest);
    if (length == 0 || (IsHidden(code) && code != '\n' && code != '\t')) return false;
    rest.remove_prefix(length);
  }
  return true;
}

// Whether a line begins with '/', after blanks: a command to GitLab, which looks for them in some blocks of code, too.
bool HasCommand(std::string_view text) {
  bool begins_line = true;
  for (const char c : text) {
    if (begins_line && c == '/') return true;
    begins_line = c == '\n' || (begins_line && (c == ' ' || c == '\t'));
  }
  return false;
}

LineFix Problem(const char* problem) {
  LineFix fix;
  fix.problem = problem;
  return fix;
}

// Null for none.
const char* ProblemOf(std::string_view text) {
  if (!text.ends_with('\n')) return "it changes the last line of the file, which has no line end";
  if (text.size() > kMaxBytes) return "it is too long";
  if (!IsPlainText(text)) return "it contains characters that the service may change, or lines that end in CR LF";
  return HasCommand(text) ? "it contains a line that the service may take for a command" : nullptr;
}

}  // namespace

LineStarts::LineStarts(std::string_view text) : text_(text) {
  for (std::size_t begin = 0; begin < text.size();) {
    begins_.push_back(begin);
    const std::size_t end = text.find('\n', begin);
    begin = end == std::string_view::npos ? text.size() : end + 1;
  }
}

std::size_t LineStarts::LineAt(std::size_t offset) const {
  const auto next = std::ranges::upper_bound(begins_, offset);
  return static_cast<std::size_t>(next - begins_.begin()) - 1;
}

// The fixed bytes of these lines.
std::string LineStarts::TextOf(std::size_t first, std::size_t last, const std::vector<Replacement>& fix) const {
  const std::size_t begin = Begin(first);
  std::vector<Replacement> parts = fix;
  for (Replacement& part : parts) {
    part.span.begin -= begin;
    part.span.end -= begin;
  }
  return ApplyReplacements(text_.substr(begin, Begin(last + 1) - begin), parts);
}

LineFix LineStarts::Fixed(const std::vector<Replacement>& fix) const {
  const qmx::Span end = fix.back().span;
  const std::size_t first = LineAt(fix.front().span.begin);
  std::size_t last = LineAt(end.end > end.begin ? end.end - 1 : end.end);
  if (last - first >= kMaxLines) return Problem("it changes lines that are far apart");
  std::string text = TextOf(first, last, fix);
  while (!text.ends_with('\n') && last + 1 < begins_.size()) text = TextOf(first, ++last, fix);
  if (const char* const problem = ProblemOf(text)) return Problem(problem);
  return {first + 1, last + 1, std::move(text)};
}

}  // namespace korvel
