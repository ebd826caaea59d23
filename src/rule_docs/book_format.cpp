// What the forms of the rule book share. Held by tests/report/rule_book_test.cpp.
#include "rule_docs/book_format.h"

#include <algorithm>

namespace korvel {

std::span<const BookFormat* const> BookFormats() {
  static constexpr const BookFormat* kFormats[] = {&kBookText, &kBookJson, &kBookMarkdown};
  return kFormats;
}

std::string NameOfCode(int code) { return std::to_string(code) + " " + ResultCodeName(code); }

std::string NumbersOf(const std::vector<int>& codes) {
  std::string text;
  for (const int code : codes) text += (text.empty() ? "" : ", ") + std::to_string(code);
  return text;
}

std::string CallOf(const RuleExample& example) {
  const std::string options = example.options;
  return std::string("korvelcheck ") + example.command + " old.xml new.xml" + (options.empty() ? "" : " ") + options;
}

std::string PageFile(std::string_view rule_id) {
  std::string file(rule_id);
  std::replace(file.begin(), file.end(), '.', '-');
  return file + ".md";
}

std::string Wrapped(std::string_view text, std::size_t width, std::string_view indent) {
  std::string wrapped;
  std::size_t column = 0;  // behind the last word; 0: no line is begun
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

std::vector<CodePage> AllCodes() {
  std::vector<CodePage> codes;
  for (int code = 0; code > -kResultCodeCount; --code) codes.push_back(FindCode(code));
  return codes;
}

}  // namespace korvel
