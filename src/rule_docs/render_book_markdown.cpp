// The rule book as the pages of docs/rules, which `make docs` writes. Held by tests/tool/explain_test.cpp.
#include "rule_docs/book_format.h"

namespace korvel {
namespace {

constexpr std::size_t kWidth = 130;
constexpr char kMade[] = "<!-- Made by `make docs` from src/report/book/rule_book_*.cpp and src/common/refusals.h. -->\n\n";

std::string Sentence(std::string text) {
  if (text.front() >= 'a' && text.front() <= 'z') text.front() = static_cast<char>(text.front() - 'a' + 'A');
  return text + ".";
}

std::string Paragraph(const std::string& text) { return "\n" + Wrapped(text, kWidth); }

std::string Fenced(const std::string& language, const std::string& text) { return "\n```" + language + "\n" + text + "```\n"; }

std::string LinkTo(std::string_view rule_id) { return "[" + std::string(rule_id) + "](" + PageFile(rule_id) + ")"; }

std::string CodesText(const std::vector<int>& codes) {
  std::string text;
  for (const int code : codes) text += (text.empty() ? "`" : ", `") + NameOfCode(code) + "`";
  return text;
}

std::string ExampleText(const RulePage& page) {
  const RuleExample& example = page.example;
  std::string text = "\n## An example\n\n`old.xml`\n" + Fenced("xml", OldText(example)) + "\n`new.xml`\n" +
                     Fenced("xml", NewText(example)) +
                     Paragraph("`" + CallOf(example) + "` answers `" + NameOfCode(example.code) + "`:") +
                     Fenced("text", std::string(example.answer) + "\n");
  if (HasInstead(page)) text += "\n`new.xml` as it would be allowed\n" + Fenced("xml", InsteadText(example));
  return text;
}

std::string Rule(const RulePage& page) {
  const RefusalRow& row = *FindRow(page.id);
  std::string text = kMade + std::string("# ") + row.id + "\n" + Paragraph(Sentence(row.summary)) +
                     Paragraph("Returned as " + CodesText(CodesOf(page)) + " ([result codes](result-codes.md)), with the text") +
                     Fenced("text", std::string(row.text) + "\n");
  if (page.replaced_by != nullptr) {
    text += Paragraph("This text stands in the log alone. Callers get that of " + LinkTo(page.replaced_by) + ".");
  }
  text += "\n## What it protects\n" + Paragraph(page.protects) + "\n## What is allowed instead\n" + Paragraph(page.allowed);
  return text + (HasExample(page) ? ExampleText(page) : "\n## Why there is no example\n" + Paragraph(page.unheard));
}

std::string Rules() {
  std::string text = kMade + std::string("# Rules\n") +
                     Paragraph(
                         "Every refusal of the checker, in its own order: what it protects, what is allowed instead, and a "
                         "smallest example. `korvelcheck explain RULE` prints the same. The numbers are explained on the page "
                         "of [result codes](result-codes.md).") +
                     "\n| rule | code | refused because |\n|---|---|---|\n";
  for (const RefusalRow* row : AllRefusals()) {
    text += "| " + LinkTo(row->id) + " | " + NumbersOf(CodesOf(*FindPage(row->id))) + " | " + row->summary + " |\n";
  }
  return text;
}

std::string Meaning(const CodePage& page) {
  std::string text = page.meaning;
  if (!page.returned) return text + " Never returned by this checker.";
  for (const RefusalRow* row : page.rules) text += (row == page.rules.front() ? " With " : ", ") + LinkTo(row->id);
  return page.rules.empty() ? text : text + ".";
}

std::string Code(const CodePage& page) { return "## " + NameOfCode(page.code) + "\n" + Paragraph(Meaning(page)); }

std::string Codes() {
  std::string text = kMade + std::string("# Result codes\n") +
                     Paragraph(
                         "What the operations of the checker return. The numbers and names are shared with other programs of "
                         "the store, so not all of them are returned here.");
  for (const CodePage& page : AllCodes()) text += "\n" + Code(page);
  return text;
}

}  // namespace

const BookFormat kBookMarkdown{"markdown", Rules, Codes, Rule, Code};

}  // namespace korvel
