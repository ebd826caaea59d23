// The commands of the program, each in a file of src/tool/commands.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tool/cli/arguments.h"

namespace korvel::tool {

struct Command {
  const char* name;
  const char* summary;  // imperative
  // Declares the arguments of the command. The result runs it, after the arguments were set, and returns the exit code; it throws
  // UsageError, InputError and NothingAllowed.
  std::function<int()> (*declare)(ArgumentList& arguments);
  // The words that the first argument may be, for completion; null if it is a file, or if there is no such list.
  std::vector<std::string> (*words)() = nullptr;
};

// `declare` of a command whose options are a struct with AddTo(ArgumentList&).
template <class Options, int (*kRun)(const Options& options)>
std::function<int()> Declare(ArgumentList& arguments) {
  const auto options = std::make_shared<Options>();
  options->AddTo(arguments);
  return [options] { return kRun(*options); };
}

extern const Command kCheckCommand;
extern const Command kSuggestCommand;
extern const Command kHistoryCommand;
extern const Command kLintCommand;
extern const Command kLspCommand;
extern const Command kDiffCommand;
extern const Command kLayoutCommand;
extern const Command kRulesCommand;
extern const Command kExplainCommand;
extern const Command kWaiveCommand;
extern const Command kWaiversCommand;
extern const Command kCompatCommand;
extern const Command kValuesCommand;
extern const Command kSameCommand;
extern const Command kSortlistCommand;
extern const Command kCompileCommand;
extern const Command kDumpCommand;
extern const Command kCompletionCommand;
extern const Command kManCommand;
extern const Command kHelpCommand;

// In the order in which help shows them: everyday commands first.
std::span<const Command* const> Commands();

// Throws InputError for an unknown name.
const Command& FindCommand(const std::string& name);

// The help of the program, and of one command.
std::string HelpOfProgram();
std::string HelpOf(const Command& command);

// Runs the command line behind the program's name: a command, --help or --version. Returns the exit code. Throws InputError, also
// for wrong usage, and whatever the command throws.
int RunCommandLine(const std::vector<std::string>& arguments);

// The arguments that a command takes; --help is the first.
std::vector<Argument> ArgumentsOf(const Command& command);

// Whether the positional arguments of a command are files.
bool TakesFiles(const Command& command);

// The words that the first argument of a command may be; empty if there is no such list.
std::vector<std::string> WordsOf(const Command& command);

// The completion scripts of the shells.
std::string BashCompletion();
std::string ZshCompletion();
std::string FishCompletion();

}  // namespace korvel::tool
