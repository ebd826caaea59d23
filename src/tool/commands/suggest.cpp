// Tested by tests/tool/suggest_test.cpp.
#include "analysis/suggest/suggest.h"

#include "base/alignment.h"
#include "base/input_error.h"
#include "base/text.h"
#include "project/input_projects.h"
#include "project/load_inputs.h"
#include "project/project.h"
#include "schema/input.h"
#include "schema/selection.h"
#include "schema/source.h"
#include "tool/cli/command.h"
#include "tool/cli/option_groups.h"
#include "tool/commands/pair_notes.h"
#include "tool/io/exit.h"

namespace korvel::tool {
namespace {

struct SuggestArguments {
  InputFiles inputs;
  TableSelection selection;
  TableSettings settings;
  OutputOption output;
  bool whole_file = false;
  bool is_diff = false;  // the default

  void AddTo(ArgumentList& arguments) {
    inputs.AddPairTo(arguments, "OLD", "NEW");
    selection.AddTo(arguments);
    settings.AddTo(arguments);
    settings.AddProjectTo(arguments);
    output.AddTo(arguments);
    arguments.AddFlag("--file", whole_file, "print the whole fixed schema file");
    arguments.AddFlag("--diff", is_diff, "print a unified diff from NEW to the fixed version (default)").excludes = "--file";
  }
};

std::vector<TableQuestion> QuestionsOf(const Pair& pair, const SuggestArguments& arguments, const Project* project) {
  std::vector<TableQuestion> questions;
  for (const std::string& table : SelectTables(pair, arguments.selection.tables).compared) {
    const PartialSettings given = GivenFor(arguments.settings.given, project, table);
    questions.push_back({table, ResolveSettings(given, pair.first, table)});
  }
  return questions;
}

// Edits the text of the file if possible; else writes a new one.
SchemaSuggestion Suggest(const Input& old_input, const Input& new_input, const std::vector<TableQuestion>& questions) {
  if (new_input.text) {
    SchemaSuggestion suggestion = SuggestSchema(old_input, new_input, questions);
    if (suggestion.is_rewritten) return suggestion;
  }
  // SchemaFile has checked that its text can be read.
  return SuggestSchema(old_input, *SourceOfText(new_input.name, SchemaFile(new_input)), questions);
}

[[noreturn]] void RefuseAll(const Input& new_input, const SchemaSuggestion& suggestion) {
  NothingAllowed reasons;
  for (const TableRefusal& one : suggestion.refused) {
    const std::string rule = one.verdict.rule.empty() ? "" : " [" + one.verdict.rule + "]";
    reasons.lines.push_back(OneLine(PathText(new_input.name) + ": error: no suggestion: table " + Quote(one.table) +
                                    " stays refused" + rule + " " + one.verdict.text));
    for (const std::string& line : one.suggestions) reasons.lines.push_back("   " + OneLine(line));
  }
  if (suggestion.reached_work_limit) {
    reasons.lines.emplace_back("   the search reached its limit for one call; use --table to search for one table at a time");
  }
  throw reasons;
}

void PrintNothingToFix(const Input& input) {
  PrintErrors({ToolMessage(OneLine(input.name) + ": nothing to fix: every table that was compared is allowed")});
}

void RequireText(const Input& input, bool whole_file) {
  if (input.text || whole_file) return;
  throw InputError{{ToolMessage(OneLine(input.name) + " is an image, which has no lines to compare; allowed: --file")}};
}

int Run(const SuggestArguments& arguments) {
  const std::optional<Project> project = arguments.settings.ReadProject();
  RequireDistinctFiles(arguments.inputs.paths, arguments.output);
  const std::vector<Input> inputs = LoadInputs(arguments.inputs.paths);
  const Input& new_input = inputs.back();
  RequireText(new_input, arguments.whole_file);
  PrintPairNotes("suggest", {inputs.front(), new_input}, arguments.inputs.paths);
  ProjectSet projects(project ? &*project : nullptr, arguments.settings.SearchesProjects());
  const InputProject nearest = InputProjects(projects, arguments.settings.links()).Of(arguments.inputs.paths.back());
  const std::vector<TableQuestion> questions = QuestionsOf({inputs.front(), new_input}, arguments, nearest.project);
  const SchemaSuggestion suggestion = Suggest(inputs.front(), new_input, questions);
  // A table that stays refused, often for a reason of its own, does not withhold the suggestions for the others.
  if (!suggestion.is_changed && !suggestion.refused.empty()) RefuseAll(new_input, suggestion);
  if (!suggestion.is_changed && new_input.text) PrintNothingToFix(new_input);
  const std::string name = PathText(new_input.name);
  arguments.output.Write(arguments.whole_file ? suggestion.text
                                              : UnifiedDiff(name, new_input.text->Bytes(), name, suggestion.text));
  if (!suggestion.refused.empty()) RefuseAll(new_input, suggestion);
  return kAllAllowed;
}

}  // namespace

const Command kSuggestCommand{"suggest", "print a fixed version of NEW, as a patch or a whole file",
                              Declare<SuggestArguments, Run>};

}  // namespace korvel::tool
