// What every refusal of the checker is for: the pages behind `korvelcheck rules`, `explain` and docs/rules.
//
// Ids, codes, texts and summaries are the catalogue's (common/refusals.h) and not written here again. What an example answers is
// data too, and held against the checker: tests/tool/explain_test.cpp asks about each.
#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/catalog.h"
#include "common/result_codes.h"

namespace korvel {

// A schema file with one table, `orders`.
struct ExampleSchema {
  const char* table = nullptr;   // what stands in the table, a line each; null: there is no such table
  const char* structures = "";   // metas in front of it, a line each
  const char* attributes = "";   // customattr of the table; "" = none
  const char* protocol = "QMX";  // of the library
  int version = 0;               // of the library; 0 = 1 for an old schema, 2 for a new one
};

// A smallest pair of schemas about which the checker says the rule's text.
struct RuleExample {
  const char* command = "check";  // of korvelcheck
  const char* options = "";       // as typed behind the two files
  ExampleSchema old_schema = {};
  ExampleSchema new_schema = {};
  ExampleSchema instead = {};  // a new schema that is allowed; without a table where none comes near
  int code = 0;                // what the command reports
  const char* answer = "";
};

struct RulePage {
  const char* id;        // of the catalogue
  const char* protects;  // what it protects and why
  const char* allowed;   // what may be done instead
  // What operations return with the text where that is not the row's code alone; 0 = no more.
  std::array<int, 4> codes = {};
  // The rule whose text takes the place of this one's, which then stands in the log alone. Null for a text that callers get.
  const char* replaced_by = nullptr;
  const char* unheard = nullptr;  // why no two schema files bring the text about. Null: there is an example
  RuleExample example = {};
};

// One page for each row of the catalogue, in no particular order.
std::span<const RulePage> AllPages();

// Null for an id that is none.
const RulePage* FindPage(std::string_view rule_id);
const RefusalRow* FindRow(std::string_view rule_id);

// The codes that operations return with the text of a page. REQUIRES: the page is one of the book.
std::vector<int> CodesOf(const RulePage& page);

bool HasExample(const RulePage& page);
bool HasInstead(const RulePage& page);
std::string OldText(const RuleExample& example);
std::string NewText(const RuleExample& example);
std::string InsteadText(const RuleExample& example);

// What a result code means.
struct CodePage {
  int code;
  const char* meaning;
  std::vector<const RefusalRow*> rules;  // those that it is returned with; in the order of the catalogue
  bool returned;                         // whether an operation of the checker returns it at all
};

// The page of a code. REQUIRES: ResultCodeName(code) is not null.
CodePage FindCode(int code);

}  // namespace korvel
