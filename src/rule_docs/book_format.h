// The rule book in the forms in which it is read.
#pragma once

#include <span>
#include <string>

#include "rule_docs/rule_book.h"

namespace korvel {

struct BookFormat {
  const char* name;
  std::string (*rules)();                     // all rules
  std::string (*codes)();                     // all result codes
  std::string (*rule)(const RulePage& page);  // one of them
  std::string (*code)(const CodePage& page);
};

// For people, the default.
extern const BookFormat kBookText;
// For programs: one JSON object each.
extern const BookFormat kBookJson;
// The pages of docs/rules.
extern const BookFormat kBookMarkdown;

std::span<const BookFormat* const> BookFormats();

// What the forms share.

// "-3 ERROR_VALUE_FIELD"
std::string NameOfCode(int code);

// "-3, -1"
std::string NumbersOf(const std::vector<int>& codes);

// "korvelcheck check old.xml new.xml --type list"
std::string CallOf(const RuleExample& example);

// The file of docs/rules that has a rule's page: "primary-key-size.md".
std::string PageFile(std::string_view rule_id);

// Blanks between words become line ends where a line would be longer than `width` bytes. Each line stands behind `indent`.
std::string Wrapped(std::string_view text, std::size_t width, std::string_view indent = "");

// All codes, 0 first.
std::vector<CodePage> AllCodes();

}  // namespace korvel
