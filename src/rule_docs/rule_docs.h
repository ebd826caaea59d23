// The documentation page of each rule and of each result code, as data.
//
// The source is docs/rules/*.md, which the build embeds; the pages are parsed on first use, so a command that needs none pays
// nothing. Id, code, text and summary belong to the catalog (common/catalog.h). Pages repeat them for their readers, and the
// parser reports a page that differs. Every example is run through the checker by tests/tool/explain_test.cpp.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/catalog.h"
#include "common/result_codes.h"
#include "rule_docs/advice.h"
#include "rule_docs/fault_rules.h"
#include "rule_docs/project_rules.h"

namespace korvel {

// A minimal pair of schema files that the rule refuses or advises against, or that has the fault.
struct RuleDocExample {
  std::string old_schema;      // the text of old.xml
  std::string new_schema;      // the text of new.xml
  std::string call;            // "korvelcheck check old.xml new.xml --type list"
  int code = 0;                // what the call reports; 0 for advice and faults
  std::string answer;          // the checker's text that it reports; "" for advice and faults
  std::string allowed_schema;  // the text of a new.xml that is allowed, or without advice or fault; "" = there is no alternative
};

// Texts are plain: without the backticks of the page.
struct RuleDoc {
  const RefusalRow* row = nullptr;     // of the catalog
  const AdviceRule* advice = nullptr;  // of the catalog of advice; null for others
  std::string_view level;              // "error", "warning" or "note"; "" for a refusal
  std::string_view page;               // the Markdown file, byte for byte
  std::vector<int> codes;              // returned with the rule's text; the rule's own code first
  std::string replaced_by;             // the rule whose text callers get, while this rule's text is only logged; "" = none
  std::string protects;                // what the rule protects, and why; of others, what goes wrong
  std::string allowed;                 // what is allowed instead; of others, what to do instead
  std::optional<RuleDocExample> example;
  std::string no_example_reason;  // why no pair of schema files triggers the rule; "" = there is an example
};

// The row of that id in any of the catalogs, or null.
const RefusalRow* FindRule(std::string_view id);

// The pages of all refusals, in the order of the catalog.
std::span<const RuleDoc> AllRuleDocs();

// The pages of all advice, likewise.
std::span<const RuleDoc> AllAdviceDocs();

// The pages of all faults, likewise.
std::span<const RuleDoc> AllFaultDocs();

// The pages of all rules about project files, likewise.
std::span<const RuleDoc> AllProjectDocs();

// Null if `rule_id` is the id of none of them.
const RuleDoc* FindRuleDoc(std::string_view rule_id);

// Where the pages of all rules are published, with a slash at the end, and where that of one rule is.
std::string RulePagesUrl();
std::string RulePageUrl(std::string_view rule_id);

struct CodeDoc {
  int code = 0;
  std::string meaning;
  bool returned = false;                 // by an operation of the checker
  std::vector<const RefusalRow*> rules;  // with which it is returned, in the order of the catalog
};

// All result codes, 0 first.
std::span<const CodeDoc> AllCodeDocs();

// REQUIRES: ResultCodeName(code) is not null.
const CodeDoc& FindCodeDoc(int code);

}  // namespace korvel
