// The rule book for people at a terminal. Held by tests/tool/explain_test.cpp.
#include <algorithm>

#include "rule_docs/book_format.h"

namespace korvel {
namespace {

constexpr std::size_t kWidth = 100;

std::string Padded(const std::string& text, std::size_t width) {
  return text + std::string(std::max(width, text.size() + 1) - text.size(), ' ');
}

std::string CodesText(const std::vector<int>& codes) {
  std::string text;
  for (const int code : codes) text += (text.empty() ? "" : ", ") + NameOfCode(code);
  return text;
}

std::string Paragraph(const std::string& title, const char* text) { return "\n" + title + "\n" + Wrapped(text, kWidth, "  "); }

std::string File(const std::string& title, const std::string& text) {
  std::string indented;
  for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
    indented += "  " + text.substr(at, text.find('\n', at) + 1 - at);
  }
  return "\n" + title + "\n" + indented;
}

std::string ExampleText(const RulePage& page) {
  const RuleExample& example = page.example;
  std::string text = File("old.xml", OldText(example)) + File("new.xml", NewText(example)) + "\n$ " + CallOf(example) + "\n  " +
                     NameOfCode(example.code) + "\n  " + example.answer + "\n";
  if (HasInstead(page)) text += File("new.xml as it would be allowed", InsteadText(example));
  return text;
}

std::string Rules() {
  std::string text;
  for (const RefusalRow* row : AllRefusals()) {
    text += Padded(row->id, 26) + Padded(NumbersOf(CodesOf(*FindPage(row->id))), 9) + row->summary + "\n";
  }
  return text;
}

std::string Codes() {
  std::string text;
  for (const CodePage& page : AllCodes()) {
    text += Padded(std::to_string(page.code), 5) + Padded(ResultCodeName(page.code), 46) +
            (page.returned ? "" : "never returned by this checker") + "\n";
    while (text.ends_with(" \n")) text.erase(text.size() - 2, 1);
  }
  return text;
}

std::string Rule(const RulePage& page) {
  const RefusalRow& row = *FindRow(page.id);
  std::string text =
      std::string(row.id) + ": " + row.summary + "\n" + "  code  " + CodesText(CodesOf(page)) + "\n  text  " + row.text + "\n";
  if (page.replaced_by != nullptr) {
    text += std::string("  The text stands in the log alone; callers get that of ") + page.replaced_by + ".\n";
  }
  text += Paragraph("What it protects", page.protects) + Paragraph("What is allowed instead", page.allowed);
  return text + (HasExample(page) ? ExampleText(page) : Paragraph("Why there is no example", page.unheard));
}

std::string Code(const CodePage& page) {
  std::string text = NameOfCode(page.code) + "\n" + Wrapped(page.meaning, kWidth, "  ");
  if (!page.returned) return text + "  Never returned by this checker.\n";
  if (!page.rules.empty()) text += "\nReturned with\n";
  for (const RefusalRow* row : page.rules) text += "  " + Padded(row->id, 26) + row->summary + "\n";
  return text;
}

}  // namespace

const BookFormat kBookText{"text", Rules, Codes, Rule, Code};

}  // namespace korvel
