// The Markdown pages of docs/rules as the build embeds them (cmake/EmbedRuleDocs.cmake writes the source file), and their reader.
// The form of the pages is fixed: docs/formats/rule-pages.md.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "rule_docs/rule_docs.h"

namespace korvel {

struct RuleDocFile {
  std::string_view name;  // "primary-key-size.md"
  std::string_view text;
};

// One page a rule, by file name.
std::span<const RuleDocFile> RuleDocFiles();

// The page of the result codes.
const RuleDocFile& ResultCodesFile();

// The file of a rule's page: "primary-key-size.md" for "primary-key.size".
std::string RuleDocFileName(std::string_view rule_id);

// --- How pages write codes, summaries and rules ---

// "-3 ERROR_VALUE_FIELD"
std::string CodeWithName(int code);

// "A field's size was reduced." for the summary "a field's size was reduced".
std::string SentenceOf(std::string_view summary);

// "[field.size](field-size.md)"
std::string LinkToRule(std::string_view rule_id);

// --- The reader, parse_rule_docs.cpp ---

struct ParsedRuleDoc {
  RuleDoc doc;        // up to the fault; doc.row is null if the file is not named after its rule
  std::string fault;  // the first: "docs/rules/field-size.md:3: expected ..., found ..."; "" = none
};

// The text of the file must outlive the result.
// Checked: the file name, the headings and their order, that id, summary, text, level and code names are those of the catalog,
// that paragraphs and code blocks are complete. Not checked: whether the example is true.
ParsedRuleDoc ParseRuleDoc(const RuleDocFile& file);

struct ParsedCodeDocs {
  std::vector<CodeDoc> codes;  // all, 0 first; without their rules
  std::string fault;
};

// Checked: that each code is in one of the two tables, once and with its name.
ParsedCodeDocs ParseCodeDocs(const RuleDocFile& file);

}  // namespace korvel
