// Tested by tests/rule_docs/parse_rule_docs_test.cpp.
#include "rule_docs/rule_doc_files.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "rule_docs/page_reader.h"

namespace korvel {
namespace {

constexpr std::string_view kCodeLabel = "[Result code](result-codes.md): ";
constexpr std::string_view kCodesLabel = "[Result codes](result-codes.md): ";

bool Skip(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

// Skips the number of a result code.
std::optional<int> SkipNumber(std::string_view& text) {
  int code = 1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), code);
  if (error != std::errc() || code > 0 || code <= -kResultCodeCount) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return code;
}

// Skips "`-3 ERROR_VALUE_FIELD`" at the start of `text`.
std::optional<int> SkipCode(std::string_view& text) {
  if (!Skip(text, "`")) return std::nullopt;
  const std::optional<int> code = SkipNumber(text);
  const bool has_name = code && Skip(text, " ") && Skip(text, ResultCodeName(*code)) && Skip(text, "`");
  return has_name ? code : std::nullopt;
}

std::vector<int> TakeCodes(PageReader& page) {
  std::string_view line = page.Line();
  const bool several = Skip(line, kCodesLabel);
  bool is_list = several || Skip(line, kCodeLabel);
  std::vector<int> codes;
  while (is_list && (codes.empty() || !line.empty())) {
    is_list = codes.empty() || Skip(line, ", ");
    const std::optional<int> code = SkipCode(line);
    is_list = is_list && code.has_value();
    codes.push_back(code.value_or(0));
  }
  if (!is_list || several != (codes.size() > 1)) page.Fail("'" + std::string(kCodeLabel) + "`CODE NAME`'");
  page.TakeLine();
  return codes;
}

// The rule of a line that says whose text callers get; "" if the line says something else, and then it is not taken.
std::string TakeReplacedBy(PageReader& page) {
  std::string_view line = page.Line();
  if (!Skip(line, "Log only: ")) return "";
  for (const RefusalRow* row : AllRefusals()) {
    if (line != "callers get the text of " + LinkToRule(row->id) + ".") continue;
    page.TakeLine();
    return row->id;
  }
  page.Fail("'Log only: callers get the text of [RULE](FILE).'");
  return "";
}

// "`CALL` reports `CODE NAME`:"
void TakeCall(PageReader& page, RuleDocExample& example) {
  std::string_view line = page.Line();
  const bool starts = Skip(line, "`");
  example.call = line.substr(0, line.find('`'));
  line.remove_prefix(std::min(example.call.size(), line.size()));
  const std::optional<int> code = Skip(line, "` reports ") ? SkipCode(line) : std::nullopt;
  if (!starts || !example.call.starts_with("korvelcheck ") || !code || line != ":") {
    page.Fail("'`korvelcheck ...` reports `CODE NAME`:'");
  }
  example.code = code.value_or(0);
  page.TakeLine();
}

// "`CALL` reports a warning."
void TakeCallWithLevel(PageReader& page, std::string_view level, RuleDocExample& example) {
  std::string_view line = page.Line();
  const bool starts = Skip(line, "`");
  example.call = line.substr(0, line.find('`'));
  line.remove_prefix(std::min(example.call.size(), line.size()));
  const std::string rest = std::string("` reports ") + (level == kFaultLevel ? "an " : "a ") + std::string(level) + ".";
  if (!starts || !example.call.starts_with("korvelcheck ") || line != rest) page.Fail("'`korvelcheck ..." + rest + "'");
  page.TakeLine();
}

RuleDocExample TakeExample(PageReader& page, std::string_view level) {
  RuleDocExample example;
  page.TakeLine("`old.xml`:");
  example.old_schema = page.TakeBlock("xml");
  page.TakeLine("`new.xml`:");
  example.new_schema = page.TakeBlock("xml");
  if (!level.empty()) {
    TakeCallWithLevel(page, level, example);
  } else {
    TakeCall(page, example);
    example.answer = page.TakeBlock("text");
    if (!example.answer.empty()) example.answer.pop_back();  // the line end
  }
  if (page.AtEnd()) return example;
  page.TakeLine(level.empty() ? "## Allowed `new.xml`" : "## Better `new.xml`");
  example.allowed_schema = page.TakeBlock("xml");
  return example;
}

// Leaves the row null if the file is not named after the rule of the heading.
void TakeRule(PageReader& page, std::string_view file_name, RuleDoc& doc) {
  std::string_view heading = page.Line();
  const bool is_heading = Skip(heading, "# ");
  const AdviceRule* const advice = is_heading ? FindAdvice(heading) : nullptr;
  const RefusalRow* const fault = is_heading ? FindFaultRule(heading) : nullptr;
  const ProjectRule* const project = is_heading ? FindProjectRule(heading) : nullptr;
  const RefusalRow* const row = is_heading ? FindRule(heading) : nullptr;
  if (row == nullptr || file_name != RuleDocFileName(row->id)) {
    page.Fail("'# RULE', the rule that the file is named after");
    return;
  }
  page.TakeLine();
  doc.row = row;
  doc.advice = advice;
  if (advice != nullptr) doc.level = WordOf(advice->level);
  if (fault != nullptr) doc.level = kFaultLevel;
  if (project != nullptr) doc.level = project->level;
}

void TakeHead(PageReader& page, RuleDoc& doc) {
  page.TakeLine(SentenceOf(doc.row->summary));
  if (!doc.level.empty()) {
    page.TakeLine("Level: " + std::string(doc.level));
    return;
  }
  doc.codes = TakeCodes(page);
  page.TakeLine("Message:");
  page.Expect("```text");
  page.Expect(doc.row->text);
  page.TakeLine("```");
  doc.replaced_by = TakeReplacedBy(page);
}

void TakeSections(PageReader& page, RuleDoc& doc) {
  page.TakeLine(doc.level.empty() ? "## What it protects" : "## What goes wrong");
  doc.protects = page.TakeParagraph();
  page.TakeLine(doc.level.empty() ? "## Allowed instead" : "## What to do instead");
  doc.allowed = page.TakeParagraph();
  if (page.Line() == "## No example") {
    page.TakeLine();
    doc.no_example_reason = page.TakeParagraph();
  } else {
    page.TakeLine("## Example");
    doc.example = TakeExample(page, doc.level);
  }
}

// "| -3 | ERROR_VALUE_FIELD | A field changed. |", in one of the two tables of result codes.
void TakeCodeRow(PageReader& page, bool returned, std::vector<CodeDoc>& codes) {
  std::string_view line = page.Line();
  const std::optional<int> code = Skip(line, "| ") ? SkipNumber(line) : std::nullopt;
  const bool has_name = code && Skip(line, " | `") && Skip(line, ResultCodeName(*code)) && Skip(line, "` | ");
  if (!has_name || !line.ends_with(". |")) {
    page.Fail("'| CODE | `NAME` | MEANING. |'");
  } else if (CodeDoc& doc = codes[static_cast<std::size_t>(-*code)]; !doc.meaning.empty()) {
    page.Fail("a code that has no row yet");
  } else {
    doc.returned = returned;
    doc.meaning = line.substr(0, line.size() - 2);
    std::erase(doc.meaning, '`');
  }
}

void TakeCodeTable(PageReader& page, bool returned, std::vector<CodeDoc>& codes) {
  page.Expect("| Code | Name | Meaning |");
  page.Expect("|---|---|---|");
  while (!page.AtEnd() && !page.Line().empty()) {
    TakeCodeRow(page, returned, codes);
    page.Expect(page.Line());
  }
  page.EndElement();
}

}  // namespace

ParsedRuleDoc ParseRuleDoc(const RuleDocFile& file) {
  PageReader page(file);
  RuleDoc doc;
  doc.page = file.text;
  TakeRule(page, file.name, doc);
  if (doc.row != nullptr) {
    TakeHead(page, doc);
    TakeSections(page, doc);
    page.TakeEnd();
  }
  return {std::move(doc), page.fault()};
}

ParsedCodeDocs ParseCodeDocs(const RuleDocFile& file) {
  PageReader page(file);
  std::vector<CodeDoc> codes(kResultCodeCount);
  for (int code = 0; code > -kResultCodeCount; --code) codes[static_cast<std::size_t>(-code)].code = code;
  page.TakeLine("# Result codes");
  page.TakeParagraph();
  page.TakeLine("## Returned by the checker");
  TakeCodeTable(page, true, codes);
  page.TakeLine("## Never returned by the checker");
  page.TakeParagraph();
  TakeCodeTable(page, false, codes);
  for (const CodeDoc& doc : codes) {
    if (doc.meaning.empty()) page.Fail("a row for `" + CodeWithName(doc.code) + "`");
  }
  page.TakeEnd();
  return {std::move(codes), page.fault()};
}

}  // namespace korvel
