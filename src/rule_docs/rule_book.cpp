// The book as a whole: lookups, and the schema files of its examples. What the pages say stands in rule_book_*.cpp, a family a
// file, and code_book.cpp. Held by tests/report/rule_book_test.cpp, tests/tool/explain_test.cpp and
// tests/cases/catalogue_test.cpp.
#include "rule_docs/rule_book.h"

#include <algorithm>

#include "rule_docs/rule_book_parts.h"

namespace korvel {
namespace {

std::vector<RulePage> Collect() {
  std::vector<RulePage> pages;
  for (const auto& family : {ArgumentPages(), LibraryPages(), KeyPages(), IndexPages(), FieldPages(), TlvFieldPages(),
                             FieldSetPages(), FieldNamePages(), KindPages(), LengthPages()}) {
    pages.insert(pages.end(), family.begin(), family.end());
  }
  return pages;
}

// The lines of a text, each behind a number of blanks.
std::string Indented(std::string_view text, std::size_t blanks) {
  std::string indented;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    indented.append(blanks, ' ').append(line).append("\n");
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  return indented;
}

std::string SchemaText(const ExampleSchema& schema, int usual_version) {
  const int version = schema.version == 0 ? usual_version : schema.version;
  std::string text = "<metalib name=\"shop\" version=\"" + std::to_string(version) + "\" protocol=\"" + schema.protocol +
                     "\">\n" + Indented(schema.structures, 2);
  if (schema.table != nullptr) {
    const std::string attributes = schema.attributes;
    text += "  <meta name=\"orders\"" + (attributes.empty() ? "" : " customattr=\"" + attributes + "\"") + ">\n" +
            Indented(schema.table, 4) + "  </meta>\n";
  }
  return text + "</metalib>\n";
}

}  // namespace

std::span<const RulePage> AllPages() {
  static const std::vector<RulePage> pages = Collect();
  return pages;
}

const RulePage* FindPage(std::string_view rule_id) {
  for (const RulePage& page : AllPages()) {
    if (rule_id == page.id) return &page;
  }
  return nullptr;
}

const RefusalRow* FindRow(std::string_view rule_id) {
  for (const RefusalRow* row : AllRefusals()) {
    if (rule_id == row->id) return row;
  }
  return nullptr;
}

std::vector<int> CodesOf(const RulePage& page) {
  if (page.codes.front() == 0) return {FindRow(page.id)->code};
  return {page.codes.begin(), std::find(page.codes.begin(), page.codes.end(), 0)};
}

bool HasExample(const RulePage& page) { return page.unheard == nullptr; }

bool HasInstead(const RulePage& page) { return HasExample(page) && page.example.instead.table != nullptr; }

std::string OldText(const RuleExample& example) { return SchemaText(example.old_schema, 1); }

std::string NewText(const RuleExample& example) { return SchemaText(example.new_schema, 2); }

std::string InsteadText(const RuleExample& example) { return SchemaText(example.instead, 2); }

}  // namespace korvel
