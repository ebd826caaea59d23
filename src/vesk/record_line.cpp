// Formats the line of a record. log_category.cpp adds the time and writes it. Tested by tests/vesk/record_line_test.cpp.
#include "vesk/record_line.h"

#include <algorithm>
#include <cstddef>

#include "base/characters.h"
#include "vesk/vesk_event.h"

namespace vesk {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

// The escape used in text and in JSON; null if the character has none.
const char* ShortEscape(char c) {
  switch (c) {
    case '\\':
      return "\\\\";
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      return nullptr;
  }
}

// The texts of most records are readable ASCII: one look at a byte decides.
bool IsPlain(char c) { return c >= ' ' && c <= '~' && c != '\\' && c != '"' && c != '#'; }

// Appends `text`, by `append_special(rest)` where a character is not plain. It returns the number of bytes that it has appended.
template <typename AppendSpecial>
void AppendAll(std::string& out, std::string_view text, AppendSpecial append_special) {
  while (!text.empty()) {
    const auto plain = static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), IsPlain) - text.begin());
    out += text.substr(0, plain);
    text.remove_prefix(plain);
    if (!text.empty()) text.remove_prefix(append_special(text));
  }
}

void AppendText(std::string& out, std::string_view text) {
  AppendAll(out, text, [&out](std::string_view rest) -> std::size_t {
    const char* const escape = ShortEscape(rest.front());
    if (escape == nullptr) return korvel::AppendShown(out, rest);
    out += escape;
    return 1;
  });
}

void AppendJsonString(std::string& out, std::string_view text) {
  out += '"';
  AppendAll(out, text, [&out](std::string_view rest) -> std::size_t {
    const auto [length, code_point] = korvel::FirstCharacter(rest);
    if (length == 0) {
      out += kReplacement;
      return 1;
    }
    if (const char* const escape = ShortEscape(rest.front())) {
      out += escape;
    } else if (code_point == '"') {
      out += "\\\"";
    } else if (korvel::IsHidden(code_point) || korvel::BeginsLogCommand(rest)) {
      korvel::AppendJsonEscape(out, code_point);
    } else {
      out += rest.substr(0, length);
    }
    return length;
  });
  out += '"';
}

}  // namespace

std::string_view PriorityName(int priority) {
  if (priority <= VESK_PRIORITY_ERROR) return "ERROR";
  return priority <= VESK_PRIORITY_WARN ? "WARN" : "INFO";
}

std::string TextLine(const Record& record) {
  std::string out(PriorityName(record.priority));
  out += ' ';
  AppendText(out, record.file);
  out += ':' + std::to_string(record.line) + ' ';
  AppendText(out, record.function);
  out += ": ";
  AppendText(out, record.message);
  return out;
}

std::string JsonMembers(const Record& record) {
  std::string out = "\"priority\":" + std::to_string(record.priority) + ",\"level\":";
  AppendJsonString(out, PriorityName(record.priority));
  out += ",\"file\":";
  AppendJsonString(out, record.file);
  out += ",\"line\":" + std::to_string(record.line) + ",\"function\":";
  AppendJsonString(out, record.function);
  out += ",\"message\":";
  AppendJsonString(out, record.message);
  return out;
}

}  // namespace vesk
