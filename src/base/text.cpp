// Escapes text for people, shells, JSON and Markdown. Tested by tests/qmx/text_test.cpp, tests/report/characters_test.cpp,
// edit_test.cpp and markdown_text_test.cpp.
#include "base/text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "base/characters.h"

namespace korvel {
namespace {

// Bytes that stay as they are wherever they are: printable ASCII without '#'.
constexpr std::array<bool, 256> kIsPlain = [] {
  std::array<bool, 256> plain{};
  for (std::size_t byte = ' '; byte <= '~'; ++byte) plain[byte] = byte != '#';
  return plain;
}();

bool IsPlainByte(char c) { return kIsPlain[static_cast<unsigned char>(c)]; }

// --- OneLine and PathText ---

// Length in bytes of a blank at the start of the text: a space, or one of the others that programs skip at the start of a line.
std::size_t BlankLength(std::string_view text) {
  const auto [length, code] = FirstCharacter(text);
  const bool is_blank = code == ' ' || code == 0xA0 || code == 0x1680 || (code >= 0x2000 && code <= 0x200A) || code == 0x202F ||
                        code == 0x205F || code == 0x3000;
  return is_blank ? length : 0;
}

std::string_view WithoutBlanks(std::string_view text) {
  while (const std::size_t length = BlankLength(text)) text.remove_prefix(length);
  return text;
}

bool IsPlainLine(std::string_view text) {
  if (!std::ranges::all_of(text, IsPlainByte)) return false;
  const auto* const first = std::ranges::find_if_not(text, [](char c) { return c == ' '; });
  return text.end() - first < 2 || first[0] != ':' || first[1] != ':';
}

// --- ShellWord ---

bool IsShellPlain(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
         std::string_view("%+,-./:=@_").find(c) != std::string_view::npos;
}

// As a format of printf: every other byte is written as a number, in octal.
std::string PrintedWord(std::string_view text) {
  std::string word = "\"$(printf '";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const auto digit = [byte](unsigned shift) { return static_cast<char>('0' + (byte >> shift & 7U)); };
    IsShellPlain(c) && c != '%' && c != '-' ? word.append(1, c) : word.append({'\\', digit(6), digit(3), digit(0)});
  }
  return word + "')\"";
}

// --- EscapeInJson ---

// Appends the first character, and returns its length.
std::size_t AppendInJson(std::string& json, std::string_view text) {
  const Character first = FirstCharacter(text);
  if (IsHidden(first.code_point) || BeginsLogCommand(text)) {
    AppendJsonEscape(json, first.code_point);
  } else {
    json.append(text.substr(0, first.length));
  }
  return CharacterLength(text);
}

// --- Markdown ---

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsHexDigit(char c) { return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }
bool IsWord(char c) { return IsDigit(c) || IsLetter(c) || static_cast<unsigned char>(c) >= 0x80; }

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

// Whether the word characters at the end of the text begin with a letter: "GH" of "GH-1", but no part of a date.
bool EndsInName(std::string_view text) {
  std::size_t begin = text.size();
  while (begin > 0 && (IsWord(text[begin - 1]) || text[begin - 1] == '_')) --begin;
  return begin < text.size() && !IsDigit(text[begin]);
}

// ":100:", ":+1:"
bool BeginsWithPicture(std::string_view text) {
  const auto is_part = [](char c) { return IsWord(c) || c == '_' || c == '+' || c == '-'; };
  const auto* const end = std::ranges::find_if_not(text.substr(1), is_part);
  return end != text.end() && end != text.begin() + 1 && *end == ':';
}

// Whether services could turn a word, which has no blanks, into a link or a picture: "@user", "#12", "!12", "~label", "GH-1", the
// id of a commit, "www.", "://", ":100:".
bool IsReference(std::string_view word) {
  constexpr std::size_t kShortestId = 7;
  if (word.find_first_of("@#") != std::string_view::npos || word.find("://") != std::string_view::npos) return true;
  if (word.find("www.") != std::string_view::npos) return true;
  for (std::size_t at = 0; at < word.size(); ++at) {
    const std::string_view rest = word.substr(at);
    const char c = rest.front();
    const char after = rest.size() > 1 ? rest[1] : ' ';
    if ((c == '!' || c == '&' || c == '$') && IsDigit(after)) return true;
    if ((c == '%' || c == '~') && (IsWord(after) || after == '"')) return true;
    if (c == '-' && IsDigit(after) && EndsInName(word.substr(0, at))) return true;
    if (c == ':' && BeginsWithPicture(rest)) return true;
    const bool begins = IsHexDigit(c) && (at == 0 || !IsWord(word[at - 1]));
    if (!begins) continue;
    const auto* const end = std::ranges::find_if_not(rest, IsHexDigit);
    const auto length = static_cast<std::size_t>(end - rest.begin());
    if (length >= kShortestId && (end == rest.end() || !IsWord(*end))) return true;
    at += length - 1;
  }
  return false;
}

// The bytes of `text` from `begin` to `end`.
void AppendMarkdown(std::string& markdown, std::string_view text, std::size_t begin, std::size_t end, bool is_code) {
  for (std::size_t at = begin; at < end; ++at) {
    const char c = text[at];
    if (IsPlain(text, at) || (is_code && (c == '.' || c == ':'))) {
      markdown += c;
    } else {
      markdown += "&#" + std::to_string(static_cast<int>(static_cast<unsigned char>(c))) + ";";
    }
  }
}

std::string QuoteUpTo(std::size_t limit, std::string_view text) {
  std::string quoted = "'";
  std::size_t taken = 0;
  while (taken < text.size()) {
    std::string shown;
    const std::size_t length = AppendShown(shown, text.substr(taken));
    if (taken + length > limit) return quoted + "...'";
    quoted += shown;
    taken += length;
  }
  return quoted + "'";
}

}  // namespace

std::string OneLine(std::string_view text) {
  if (IsPlainLine(text)) return std::string(text);  // nearly every text
  std::string line;
  if (const std::string_view rest = WithoutBlanks(text); rest.starts_with("::")) {
    line.append(text.substr(0, text.size() - rest.size())).append("\\x3a");
    text = rest.substr(1);
  }
  while (!text.empty()) text.remove_prefix(AppendShown(line, text));
  return line;
}

std::string PathText(std::string_view path) {
  if (!path.empty() && IsWord(path.front()) && IsPlainLine(path)) return std::string(path);  // nearly every path
  const std::string_view start = WithoutBlanks(path);
  const bool is_special = path.starts_with('-') || start.starts_with("::") || start.starts_with("##");
  return OneLine(is_special ? "./" + std::string(path) : std::string(path));
}

std::string ShellWord(std::string_view text) {
  if (OneLine(text) != text) return PrintedWord(text);
  if (!text.empty() && std::ranges::all_of(text, IsShellPlain)) return std::string(text);
  std::string word = "'";
  for (const char c : text) c == '\'' ? word.append("'\\''") : word.append(1, c);
  return word + "'";
}

std::size_t Utf8Length(std::string_view text) { return FirstCharacter(text).length; }

std::string Quote(std::string_view text) { return QuoteUpTo(kMaxQuoted, text); }

std::string QuoteWhole(std::string_view text) { return QuoteUpTo(text.size(), text); }

std::string EscapeInJson(std::string json) {
  const auto is_plain = [](char c) { return IsPlainByte(c) || c == '\n'; };
  std::string escaped;
  for (std::string_view rest = json;;) {
    const auto length = static_cast<std::size_t>(std::ranges::find_if_not(rest, is_plain) - rest.begin());
    if (length == json.size()) return json;  // nearly every document
    escaped.append(rest.substr(0, length));
    rest.remove_prefix(length);
    if (rest.empty()) return escaped;
    rest.remove_prefix(AppendInJson(escaped, rest));
  }
}

std::string EscapeWith(std::string_view text, std::string_view characters, std::string_view escape) {
  std::string escaped;
  for (const char c : text) escaped.append(characters.find(c) == std::string_view::npos ? "" : escape).append(1, c);
  return escaped;
}

// A character reference is never markup, in any parser; parsers differ about backslashes.
std::string MarkdownText(std::string_view text) {
  const std::string line = OneLine(ValidUtf8(text));
  std::string markdown;
  for (std::size_t begin = 0; begin < line.size();) {
    const std::size_t end = std::min(line.find(' ', begin), line.size());
    const bool is_code = IsReference(std::string_view(line).substr(begin, end - begin));
    markdown += is_code ? "<code>" : "";
    AppendMarkdown(markdown, line, begin, end, is_code);
    markdown += is_code ? "</code>" : "";
    markdown.append(end < line.size() ? " " : "");
    begin = end + 1;
  }
  return markdown;
}

std::string MarkdownCode(std::string_view text) {
  const std::string line = OneLine(ValidUtf8(text));
  std::string markdown = "<code>";
  AppendMarkdown(markdown, line, 0, line.size(), true);
  return markdown + "</code>";
}

std::string MarkdownBlock(std::string_view language, std::string_view lines) {
  std::size_t longest = 0;
  std::size_t run = 0;
  for (const char c : lines) longest = std::max(longest, run = c == '`' ? run + 1 : 0);
  const std::string fence(std::max<std::size_t>(longest + 1, 3), '`');
  return fence + std::string(language) + "\n" + ValidUtf8(lines) + fence + "\n";
}

std::string Wrapped(std::string_view text, std::size_t width, std::string_view indent) {
  std::string wrapped;
  std::size_t column = 0;  // after the last word; 0 = at the start of a line
  while (!text.empty()) {
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(std::min(word.size() + 1, text.size()));
    const bool fits = column != 0 && column + 1 + word.size() <= width;
    if (column != 0) wrapped += fits ? " " : "\n";
    if (!fits) wrapped += indent;
    wrapped += word;
    column = (fits ? column + 1 : indent.size()) + word.size();
  }
  return wrapped + "\n";
}

}  // namespace korvel
