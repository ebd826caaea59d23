// Escapes text for Markdown. Tested by tests/report/markdown_text_test.cpp.
#include "base/markdown_text.h"

#include <algorithm>

#include "base/characters.h"
#include "base/one_line.h"

namespace korvel {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsWord(char c) {
  return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) >= 0x80;
}

// Whether the character at `at` has no special meaning wherever the text is used. Doubtful ones are escaped.
bool IsPlain(std::string_view text, std::size_t at) {
  const char c = text[at];
  const char before = at == 0 ? ' ' : text[at - 1];
  const char after = at + 1 == text.size() ? ' ' : text[at + 1];
  const auto is_number_so_far = [&] { return std::ranges::all_of(text.substr(0, at), IsDigit); };
  switch (c) {
    case ' ':
    case ',':
    case ';':
    case '?':
    case '\'':
    case '"':
    case '(':
      return true;
    case '/':
    case '-':
    case '=':
    case '>':
    case '%':
      return at > 0;  // begins a command, a list, a heading, a quotation, a reference
    case ')':
      return !is_number_so_far();  // "1)" begins a list
    case '.':
      return !is_number_so_far() && !text.substr(0, at).ends_with("www");  // "www." begins a link
    case ':':
      return after == ' ' || after == '\'';  // "://" makes a link, ":100:" a picture
    case '!':
      return after == ' ';  // "![" begins an image, "!1" a reference
    case '_':
      return IsWord(before) && IsWord(after);  // emphasis begins and ends at words
    default:
      return IsWord(c);
  }
}

std::string EscapeForMarkdown(std::string_view text, bool is_code) {
  std::string markdown;
  const std::string valid = ValidUtf8(OneLine(text));
  for (std::size_t at = 0; at < valid.size(); ++at) {
    const char c = valid[at];
    const std::string reference = "&#" + std::to_string(static_cast<int>(static_cast<unsigned char>(c))) + ";";
    if (IsPlain(valid, at) || (is_code && (c == '.' || c == ':'))) {
      markdown += c;
    } else if (!is_code && (c == '@' || c == '#')) {
      markdown += "<code>" + reference + "</code>";  // even a reference would notify a user or link to an issue
    } else {
      markdown += reference;
    }
  }
  return markdown;
}

}  // namespace

// A character reference is never markup, in any parser; parsers differ about backslashes.
std::string MarkdownText(std::string_view text) { return EscapeForMarkdown(text, false); }

std::string MarkdownCode(std::string_view text) { return "<code>" + EscapeForMarkdown(text, true) + "</code>"; }

std::string MarkdownBlock(std::string_view language, std::string_view lines) {
  std::size_t longest = 0;
  std::size_t run = 0;
  for (const char c : lines) longest = std::max(longest, run = c == '`' ? run + 1 : 0);
  const std::string fence(std::max<std::size_t>(longest + 1, 3), '`');
  return fence + std::string(language) + "\n" + ValidUtf8(lines) + fence + "\n";
}

}  // namespace korvel
