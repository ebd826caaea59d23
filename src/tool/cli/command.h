// The commands of the program, each in a file of its own.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "report/result/report.h"
#include "schema/input.h"
#include "tool/cli/options.h"

namespace korvel::tool {

// Which files and options a command takes beside its one or two files and the options of output and log.
enum OptionSet : unsigned {
  kTableOption = 1,      // --table
  kDstTableOption = 2,   // --dst-table
  kCreatedAsOption = 4,  // --created-as
  kSettingOptions = 8,   // the other settings of a table
  kNeedsOutput = 16,     // --output must be given
  kManyInputs = 32,      // any number of files like the first
  kSecondIsOptional = 64,
  kTextOrJson = 128,       // --format text|json, of a command that makes its own text
  kTakesWord = 256,        // the first argument is a word and no file
  kRuleDocOption = 512,    // --format of rule pages
  kCodesOption = 1024,     // --codes
  kFindingsOption = 2048,  // --max-findings
  kAgainstOption = 4096,   // --against, with any number of files or directories in the place of the two files
  kSuggestOptions = 8192,  // --diff, --file
  kHistoryOption = 16384,  // --git
  kWaiverOptions = 32768,  // --reason, --until and --project
};

// What help and reports call an input file.
struct InputName {
  const char* argument;  // "OLD"
  const char* role;      // "old"; of a word, what it may be
};

inline constexpr InputName kNoInput{nullptr, nullptr};

// What a command found out, and what it is about.
struct CommandResult {
  std::vector<Input> inputs;
  Report report;
  std::vector<std::shared_ptr<Input>> kept = {};  // more sources of the report; may hold null
};

// What a command says that has a report of its own.
struct TextResult {
  std::string text;
  bool refused;  // something was refused
};

struct Command {
  const char* name;
  const char* summary;
  InputName first;   // kNoInput: takes no files
  InputName second;  // kNoInput: none
  unsigned options;  // OptionSet, joined
  // One of the three. All throw InputError.
  //
  // Asks the checker. `log` is never null.
  CommandResult (*run)(const Command& command, const Options& options, LPVESKCATEGORYINST log) = nullptr;
  // Makes the bytes of a file.
  std::string (*make)(const Options& options) = nullptr;
  // Asks the checker, too.
  TextResult (*tell)(const Command& command, const Options& options) = nullptr;
  // With kTakesWord: words that it takes, for completions. Null where they cannot be listed.
  std::vector<std::string> (*words)() = nullptr;
};

extern const Command kCheckCommand;
extern const Command kCompatCommand;
extern const Command kValuesCommand;
extern const Command kSameCommand;
extern const Command kSortlistCommand;
extern const Command kLintCommand;
extern const Command kCompileCommand;
extern const Command kDumpCommand;
extern const Command kSuggestCommand;
extern const Command kLayoutCommand;
extern const Command kDiffCommand;
extern const Command kRulesCommand;
extern const Command kExplainCommand;
extern const Command kCompletionCommand;
extern const Command kManCommand;
extern const Command kWaiveCommand;
extern const Command kHistoryCommand;

// In the order in which help shows them: what people ask every day first.
std::span<const Command* const> Commands();

// Null for an unknown name.
const Command* FindCommand(std::string_view name);

// Whether the settings of a project count for the command.
inline bool UsesProject(const Command& command) { return (command.options & (kCreatedAsOption | kSettingOptions)) != 0; }

// The answer of the command without tables yet, about the files read.
CommandResult StartResult(const Command& command, std::vector<Input> inputs);

}  // namespace korvel::tool
