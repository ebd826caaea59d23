#include "expected_text.h"

#include <string_view>
#include <vector>

#include "base/text.h"
#include "case_analysis.h"
#include "case_files.h"
#include "case_run.h"
#include "common/result_codes.h"
#include "report/result/text_ranges.h"

namespace cases {
namespace {

using korvel::Edit;
using korvel::EditStatus;
using korvel::Finding;
using korvel::OneLine;

std::string CodeText(int code) {
  const char* name = ResultCodeName(code);
  return std::to_string(code) + " " + (name == nullptr ? "(no result code)" : name);
}

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

std::string OperationsBlock(const Case& input) {
  std::string out = "# Operations\n";
  for (const OperationResult& result : RunOperations(input)) {
    out += result.operation + " " + (result.code ? CodeText(*result.code) : "not called: a side lacks the table") + "\n";
    out += "  " + Quoted(result.text) + "\n";
    for (const std::string& line : result.log) out += "  " + line + "\n";
  }
  return out;
}

std::string_view StatusText(EditStatus status) {
  switch (status) {
    case EditStatus::kAllowed:
      return "allowed";
    case EditStatus::kRefused:
      return "refused";
    case EditStatus::kBlocked:
      return "blocked";
    case EditStatus::kNotChecked:
      return "not checked";
  }
  return "";
}

// "META.ITEM", "META" or "".
std::string ElementOf(const Edit& edit) { return edit.item.empty() ? edit.meta : edit.meta + "." + edit.item; }

// "KIND META.ITEM"
std::string EditName(const Edit& edit) {
  const std::string element = ElementOf(edit);
  return std::string(korvel::NameOf(edit.kind)) + (element.empty() ? "" : " " + OneLine(element));
}

std::string ValueOrNone(const std::string& value) { return value.empty() ? "none" : OneLine(value); }

// "KIND META.ITEM: OLD VALUE -> NEW VALUE"
std::string EditText(const Edit& edit) {
  return EditName(edit) + ": " + ValueOrNone(edit.before) + " -> " + ValueOrNone(edit.after);
}

std::string PathsOf(const Edit& edit) {
  if (edit.paths == std::vector<std::string>{ElementOf(edit)}) return "";
  std::string out;
  for (const std::string& path : edit.paths) out += "  path: " + ValueOrNone(path) + "\n";
  if (edit.path_count > edit.paths.size()) out += "  paths: " + std::to_string(edit.path_count) + "\n";
  return out;
}

std::string ResultText(int code, const std::string& text) {
  return code == 0 ? "allowed" : CodeText(code) + " " + Quoted(OneLine(text));
}

std::string EditsBlock(const Analysis& analysis) {
  const korvel::Changes& changes = analysis.changes;
  const std::vector<Edit>& edits = changes.edits;
  std::string out = "# Edits\n";
  for (std::size_t i = 0; i < edits.size(); ++i) {
    out += std::string(StatusText(changes.status[i])) + " " + EditText(edits[i]) + "\n" + PathsOf(edits[i]);
    for (const std::size_t needed : analysis.needs[i]) out += "  needs: " + EditName(edits[needed]) + "\n";
  }
  out += "allowed together: " + ResultText(changes.allowed_together.code, changes.allowed_together.text) + "\n";
  return changes.stopped ? out + "stopped at the maximum number of findings\n" : out;
}

// "LINE:COLUMN `source text`"
std::string LocationText(qmx::LineColumn begin, std::string_view source_text) {
  return std::to_string(begin.line) + ":" + std::to_string(begin.column) + " `" + OneLine(source_text) + "`";
}

std::string LocationText(const korvel::Location& location) {
  const std::optional<korvel::TextRange> range = korvel::FindTextRanges({location}).front();
  if (!range) return "none";
  const auto [begin, end] = range->span;
  return LocationText(range->begin.value(), location.source->text.value().Bytes().substr(begin, end - begin));
}

std::string FixText(const korvel::Replacement& replacement, std::string_view bytes) {
  const auto [begin, end] = replacement.span;
  const qmx::LineColumn position = korvel::FindPositions(bytes, {begin}).front();
  return LocationText(position, bytes.substr(begin, end - begin)) + " -> `" + OneLine(replacement.text) + "`";
}

std::string FindingText(const Finding& finding, const Analysis& analysis) {
  std::string out = "[" + finding.verdict.rule + "] " + CodeText(finding.verdict.code) + "\n";
  out += "  " + Quoted(OneLine(finding.verdict.text)) + "\n";
  for (const std::size_t edit : finding.edits) out += "  edit: " + EditName(analysis.changes.edits[edit]) + "\n";
  if (finding.edits.empty()) out += "  edit: none\n";
  out += "  path: " + ValueOrNone(finding.path) + "\n";
  out += "  old: " + LocationText(finding.old_location) + "\n";
  out += "  new: " + LocationText(finding.new_location) + "\n";
  out += "  suggestion: " + ValueOrNone(finding.suggestion) + "\n";
  out += std::string("  has fix: ") + (finding.has_fix ? "yes" : "no") + "\n";
  for (const korvel::Replacement& replacement : finding.fix) {
    out += "  fix: " + FixText(replacement, analysis.new_source->text.value().Bytes()) + "\n";
  }
  if (finding.fix.empty()) out += "  fix: none\n";
  return out + "  fingerprint: " + finding.fingerprint + "\n";
}

std::string FindingsBlock(const Analysis& analysis) {
  std::string out = "# Findings\n";
  for (const Finding& finding : analysis.changes.findings) out += FindingText(finding, analysis);
  return out + (analysis.changes.findings.empty() ? "none\n" : "");
}

// The refusals that hide a warning until they are waived.
std::string RefusalsOf(const Finding& finding, const korvel::Changes& changes) {
  std::string out;
  for (const std::size_t refusal : finding.refusals) {
    const Finding& hiding = changes.findings[refusal];
    for (const std::size_t edit : hiding.edits) {
      out += "  hidden by: [" + hiding.verdict.rule + "] " + EditName(changes.edits[edit]) + "\n";
    }
  }
  return out;
}

std::string AdviceText(const Finding& finding, const Edit& edit) {
  std::string out = std::string(korvel::WordOf(finding.level)) + " [" + finding.verdict.rule + "]\n";
  out += "  edit: " + EditText(edit) + "\n" + PathsOf(edit);
  out += "  old: " + LocationText(finding.old_location) + "\n";
  out += "  new: " + LocationText(finding.new_location) + "\n";
  out += "  suggestion: " + ValueOrNone(finding.suggestion) + "\n";
  return out + "  fingerprint: " + finding.fingerprint + "\n";
}

std::string AdviceBlock(const Analysis& analysis) {
  const korvel::Advice& advice = analysis.advice;
  if (advice.findings.empty()) return "";
  std::string out = "# Warnings and notes\n";
  for (const Finding& finding : advice.findings) {
    out += AdviceText(finding, advice.edits[finding.edits.front()]) + RefusalsOf(finding, analysis.changes);
  }
  return out + "\n";
}

std::string SelfResult(const qmx::Metalib& library, const Settings& settings) {
  const OperationResult result = RunMainCheck(library.get(), library.get(), settings);
  return ResultText(result.code.value(), result.text);
}

std::string SelfBlock(const Case& input) {
  return "# Each schema against itself\nold: " + SelfResult(input.old_lib, input.settings) +
         "\nnew: " + SelfResult(input.new_lib, input.settings) + "\n";
}

}  // namespace

std::string ExpectedText(const std::string& name) {
  const Case input = Load(name);
  const Analysis analysis = Analyze(name, input.settings);
  return OperationsBlock(input) + "\n" + EditsBlock(analysis) + "\n" + FindingsBlock(analysis) + "\n" + AdviceBlock(analysis) +
         SelfBlock(input);
}

}  // namespace cases
