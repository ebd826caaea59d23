// Tested by tests/rule_docs/rule_docs_test.cpp.
#include "rule_docs/rule_doc_format.h"

#include <algorithm>

#include "base/text.h"
#include "rule_docs/rule_doc_files.h"

namespace korvel {

std::span<const RuleDocFormat* const> RuleDocFormats() {
  static constexpr const RuleDocFormat* kFormats[] = {&kRuleDocText, &kRuleDocJson, &kRuleDocMarkdown};
  return kFormats;
}

std::string CodeWithName(int code) { return std::to_string(code) + " " + ResultCodeName(code); }

std::string CodeNumbers(const std::vector<int>& codes) {
  return Join(codes, ", ", [](int code) { return std::to_string(code); });
}

std::string SentenceOf(std::string_view summary) {
  std::string sentence = std::string(summary) + ".";
  if (sentence.front() >= 'a' && sentence.front() <= 'z') sentence.front() = static_cast<char>(sentence.front() - 'a' + 'A');
  return sentence;
}

std::string RuleDocFileName(std::string_view rule_id) {
  std::string file(rule_id);
  std::ranges::replace(file, '.', '-');
  return file + ".md";
}

std::string LinkToRule(std::string_view rule_id) { return "[" + std::string(rule_id) + "](" + RuleDocFileName(rule_id) + ")"; }

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
