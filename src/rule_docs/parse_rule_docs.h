// Reads the Markdown pages of docs/rules. Their form is fixed: docs/formats/rule-pages.md.
#pragma once

#include "rule_docs/rule_doc_files.h"
#include "rule_docs/rule_docs.h"

namespace korvel {

struct ParsedRuleDoc {
  RuleDoc doc;        // up to the fault; doc.row is null if the file is not named after its rule
  std::string fault;  // the first: "docs/rules/field-size.md:3: expected ..., found ..."; "" = none
};

// The text of the file must outlive the result.
// Checked: the file name, the headings and their order, that id, summary, text and code names are those of the catalog, that
// paragraphs and code blocks are complete. Not checked: whether the example is true.
ParsedRuleDoc ParseRuleDoc(const RuleDocFile& file);

struct ParsedCodeDocs {
  std::vector<CodeDoc> codes;  // all, 0 first; without their rules
  std::string fault;
};

// Checked: that each code is in one of the two tables, once and with its name.
ParsedCodeDocs ParseCodeDocs(const RuleDocFile& file);

}  // namespace korvel
