// Tested by tests/tool/output_test.cpp and log_test.cpp.
#include "tool/commands/run_report.h"

#include <unistd.h>

#include <cstddef>
#include <stdexcept>
#include <utility>

#include "base/input_error.h"
#include "base/limits.h"
#include "project/check_tables.h"
#include "project/load_inputs.h"
#include "report/result/summary.h"
#include "tool/commands/pair_notes.h"
#include "tool/io/exit.h"
#include "vesk/closed_category.h"

namespace korvel::tool {
namespace {

// Null without --log.
std::unique_ptr<vesk::LogCategory> OpenLog(const LogOptions& options) {
  if (!options.is_open) return nullptr;
  std::string error;
  std::unique_ptr<vesk::LogCategory> log = vesk::LogCategory::Open(options.settings, error);
  if (log == nullptr) throw InputError{{ToolMessage(error)}};
  return log;
}

// Throws std::runtime_error if a record could not be written.
void ReportLog(const vesk::LogCategory& log) {
  if (const std::string failure = log.WriteFailure(); !failure.empty()) throw std::runtime_error(failure);
  if (!log.ReachedLimit()) return;
  PrintErrors({ToolMessage("the log stops after " + std::to_string(kMaxLogBytes) + " bytes; the report is complete")});
}

// Reads the texts that were not kept and that the report shows: if that fails, no part of the report may have been written.
void ReadShownTexts(const Report& report) {
  for (const TableResult& table : report.tables) {
    if (!ShowsSources(table)) continue;
    for (const Source* const source : {table.first, table.second}) {
      if (source != nullptr && source->text) source->text->Bytes();
    }
  }
}

}  // namespace

CommandResult LoadForReport(const char* command, const InputRoles& roles, const std::vector<std::string>& paths, Texts texts) {
  CommandResult result = LoadReadable(command, roles, paths, texts);
  if (!result.report.faults.empty()) throw ErrorOf(std::move(result.report.faults));
  return result;
}

CommandResult LoadReadable(const char* command, const InputRoles& roles, const std::vector<std::string>& paths, Texts texts,
                           const ReadFound& read_found) {
  LoadedInputs loaded = TryToLoadInputs(paths, texts, read_found);
  CommandResult result{.inputs = std::move(loaded.inputs), .paths = std::move(loaded.paths)};
  result.report.faults = std::move(loaded.faults);
  result.report.command = command;
  for (std::size_t i = 0; i < result.inputs.size(); ++i) {
    result.report.inputs.push_back({i == 0 ? roles.first : roles.second, &result.inputs[i]});
  }
  return result;
}

int RunReport(const ReportOptions& options, const std::vector<std::string>& inputs,
              const std::function<CommandResult(LPVESKCATEGORYINST log)>& check) {
  RequireOneStandardInput(inputs);
  RefuseOverlaps(inputs, options.AllOutputs(), options.log);
  const std::unique_ptr<vesk::LogCategory> log = OpenLog(options.log);
  vesk::ClosedCategory closed;
  // Never destroyed: the end of the process gives the memory of the schemas back faster.
  static std::vector<std::unique_ptr<CommandResult>>& results = *new std::vector<std::unique_ptr<CommandResult>>;
  CommandResult& result = *results.emplace_back(std::make_unique<CommandResult>(check(log ? log->handle() : closed.handle())));
  const std::vector<InputFault>& faults = result.report.faults;
  result.report.path_prefix = options.path_prefix;
  result.report.detail = options.detail.detail();
  AddSuggestions(result.report, options.AnyFormat(&Format::shows_fixes));
  if (log) log->Close();
  ReadShownTexts(result.report);
  for (const ReportFiles::File& file : options.files.files) {
    file.output.Write([&](const TextSink& sink) { Formats()[file.format].write(result.report, false, sink); });
  }
  if (!faults.empty() && result.report.tables.empty() && options.IsForPeople()) throw ErrorOf(faults);
  const bool is_colored = options.color.IsWanted(options.output);
  options.output.Write([&](const TextSink& sink) { options.format->write(result.report, is_colored, sink); });
  if (log) ReportLog(*log);
  const bool is_visible = options.IsForPeople() && ::isatty(STDOUT_FILENO) == 1;
  if (!faults.empty() && !is_visible) PrintErrors(LinesOf(faults));
  return ExitCodeOf(result.report);
}

int RunPairReport(const PairArguments& arguments, const PairCommand& command) {
  return RunReport(arguments.report, arguments.inputs.paths, [&](LPVESKCATEGORYINST log) {
    CommandResult result = LoadForReport(command.name, command.roles, arguments.inputs.paths, arguments.report.texts());
    if (command.project != nullptr) result.report.projects.push_back({command.project->file, 1});
    const Pair pair = PairOf(result.report);
    if (command.prints_notes && !arguments.report.log.IsOnStandardError())
      PrintPairNotes(command.name, pair, arguments.inputs.paths);
    const std::vector<std::string> tables = command.select(pair, arguments.selection.tables);
    CheckEachTable(result.report, tables, arguments.report.log.is_open,
                   [&](const std::string& table) { return command.check(pair, table, log); });
    return result;
  });
}

}  // namespace korvel::tool
