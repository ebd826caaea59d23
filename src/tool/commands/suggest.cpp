// suggest: NEW with its refused changes mended. Held by tests/tool/suggest_test.cpp.
#include "analysis/suggest/suggest.h"

#include <unistd.h>

#include "base/file_descriptor.h"
#include "base/input_error.h"
#include "base/one_line.h"
#include "base/quote.h"
#include "base/unified_diff.h"
#include "project/load_inputs.h"
#include "project/project.h"
#include "schema/schema_file.h"
#include "schema/selection.h"
#include "schema/source.h"
#include "tool/cli/command.h"
#include "tool/io/refused.h"

namespace korvel::tool {
namespace {

std::vector<TableQuestion> QuestionsOf(const Pair& pair, const Options& options) {
  std::vector<TableQuestion> questions;
  for (const std::string& table : SelectTables(pair, options.tables).compared) {
    questions.push_back({table, ResolveSettings(GivenFor(options, table), pair.first, table)});
  }
  return questions;
}

// In the text of the file where that can be, else in one that is written anew.
SchemaSuggestion Suggest(const Input& old_input, const Input& new_input, const std::vector<TableQuestion>& questions) {
  if (new_input.text) {
    SchemaSuggestion suggestion = SuggestSchema(old_input, new_input, questions);
    if (suggestion.is_rewritten) return suggestion;
  }
  // What SchemaFile writes it has read again.
  return SuggestSchema(old_input, *SourceOfText(new_input.name, SchemaFile(new_input)), questions);
}

[[noreturn]] void RefuseAll(const Input& new_input, const std::vector<TableRefusal>& refused) {
  Refused reasons;
  for (const TableRefusal& one : refused) {
    const std::string rule = one.verdict.rule.empty() ? "" : " [" + one.verdict.rule + "]";
    reasons.lines.push_back(OneLine(new_input.name + ": error: there is no suggestion: table " + Quote(one.table) +
                                    " stays refused" + rule + " " + one.verdict.text));
    for (const std::string& suggestion : one.suggestions) reasons.lines.push_back("   " + OneLine(suggestion));
  }
  throw reasons;
}

void SayThatNothingChanges(const Input& input) {
  const std::string line = ToolMessage(OneLine(input.name) + ": nothing to change: every table compared is allowed") + "\n";
  static_cast<void>(WriteAll(STDERR_FILENO, line));  // there is nowhere left to complain
}

void RequireText(const Input& input, const Options& options) {
  if (input.text || options.whole_file) return;
  throw InputError{{ToolMessage(OneLine(input.name) + " is an image, which has no lines that could differ; allowed: --file")}};
}

std::string Make(const Options& options) {
  const std::vector<Input> inputs = LoadInputs(options.inputs);
  const Input& new_input = inputs.back();
  RequireText(new_input, options);
  const std::vector<TableQuestion> questions = QuestionsOf({inputs.front(), new_input}, options);
  const SchemaSuggestion suggestion = Suggest(inputs.front(), new_input, questions);
  for (const Input& input : inputs) RequireUnchanged(input);
  if (!suggestion.refused.empty()) RefuseAll(new_input, suggestion.refused);
  const bool is_same = new_input.text && suggestion.text == new_input.text->bytes;
  if (is_same) SayThatNothingChanges(new_input);
  if (options.whole_file) return suggestion.text;
  return UnifiedDiff(OneLine(new_input.name), new_input.text->bytes, OneLine(new_input.name), suggestion.text);
}

}  // namespace

const Command kSuggestCommand{
    .name = "suggest",
    .summary = "write NEW with its refused changes mended, as a difference or a file",
    .first = {"OLD", "old"},
    .second = {"NEW", "new"},
    .options = kTableOption | kCreatedAsOption | kSettingOptions | kSuggestOptions,
    .make = Make,
};

}  // namespace korvel::tool
