// Formats the line of a record. log_category.cpp adds the time and writes it. Tested by tests/vesk/record_line_test.cpp.
#include "vesk/record_line.h"

#include <cstddef>

#include "vesk/vesk_event.h"

namespace vesk {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

unsigned char ByteAt(std::string_view text, std::size_t index) { return static_cast<unsigned char>(text[index]); }

// The form of the characters that begin with a given first byte. The range of the second byte excludes overlong forms, surrogates
// and everything above U+10FFFF; further bytes are always 0x80 to 0xBF.
struct Utf8Shape {
  unsigned char first_low, first_high;
  std::size_t length;
  unsigned char second_low, second_high;
};

constexpr Utf8Shape kUtf8Shapes[] = {
    {0x00, 0x7F, 1, 0x00, 0x00}, {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF},
    {0xE1, 0xEC, 3, 0x80, 0xBF}, {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF},
    {0xF0, 0xF0, 4, 0x90, 0xBF}, {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

bool HasShape(std::string_view text, const Utf8Shape& shape) {
  const unsigned char first = ByteAt(text, 0);
  if (first < shape.first_low || first > shape.first_high || text.size() < shape.length) return false;
  if (shape.length > 1 && (ByteAt(text, 1) < shape.second_low || ByteAt(text, 1) > shape.second_high)) return false;
  for (std::size_t i = 2; i < shape.length; ++i) {
    if ((ByteAt(text, i) & 0xC0U) != 0x80U) return false;
  }
  return true;
}

// The first UTF-8 character of a non-empty text; empty if the text does not begin with a valid one.
std::string_view FirstCharacter(std::string_view text) {
  for (const Utf8Shape& shape : kUtf8Shapes) {
    if (HasShape(text, shape)) return text.substr(0, shape.length);
  }
  return {};
}

// Control characters, including U+0080 to U+009F, and the two separators that readers may take for line ends.
bool BreaksALine(std::string_view character) {
  if (character.size() == 1) return ByteAt(character, 0) < 0x20 || character == "\x7F";
  if (character.size() == 2) return ByteAt(character, 0) == 0xC2 && ByteAt(character, 1) < 0xA0;
  return character == "\xE2\x80\xA8" || character == "\xE2\x80\xA9";
}

void AppendHex(std::string& out, std::string_view prefix, std::string_view bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    out += prefix;
    out += kDigits[ByteAt(bytes, i) >> 4U];
    out += kDigits[ByteAt(bytes, i) & 0xFU];
  }
}

// The escape used in text and in JSON; null if the character has none.
const char* ShortEscape(std::string_view character) {
  if (character == "\\") return "\\\\";
  if (character == "\n") return "\\n";
  if (character == "\r") return "\\r";
  if (character == "\t") return "\\t";
  return nullptr;
}

// Calls append(character, bytes) for each character; `character` is empty for an invalid byte.
template <typename Append>
void ForEachCharacter(std::string_view text, Append append) {
  while (!text.empty()) {
    const std::string_view character = FirstCharacter(text);
    const std::string_view bytes = character.empty() ? text.substr(0, 1) : character;
    append(character, bytes);
    text.remove_prefix(bytes.size());
  }
}

void AppendText(std::string& out, std::string_view text) {
  ForEachCharacter(text, [&out](std::string_view character, std::string_view bytes) {
    if (const char* escape = ShortEscape(character)) {
      out += escape;
    } else if (character.empty() || BreaksALine(character)) {
      AppendHex(out, "\\x", bytes);
    } else {
      out += character;
    }
  });
}

void AppendJsonString(std::string& out, std::string_view text) {
  out += '"';
  ForEachCharacter(text, [&out](std::string_view character, std::string_view bytes) {
    if (const char* escape = ShortEscape(character)) {
      out += escape;
    } else if (character == "\"") {
      out += "\\\"";
    } else if (character.empty()) {
      out += kReplacement;
    } else if (ByteAt(character, 0) < 0x20) {
      AppendHex(out, "\\u00", bytes);
    } else {
      out += character;
    }
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
