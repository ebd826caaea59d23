// Finds the command of a call and runs it. Tested by tests/tool/usage_test.cpp.
#include "tool/cli/command.h"

#include <algorithm>
#include <optional>

#include "base/did_you_mean.h"
#include "base/input_error.h"
#include "base/text.h"
#include "tool/cli/arguments.h"
#include "tool/io/exit.h"
#include "tool/io/output.h"

namespace korvel::tool {
namespace {

int RunCommand(const Command& command, const std::vector<std::string>& words) {
  const std::string name = command.name;
  ArgumentList arguments;
  const std::function<int()> run = command.declare(arguments);
  const auto fail = [&](const InputError* error) { arguments.Fail({command.name, words, error}); };
  try {
    if (const std::optional<std::string> help = Parse({command.name, command.summary}, arguments, words)) {
      WriteStandardOutput(AsProducer(*help));
      return kAllAllowed;
    }
    return run();
  } catch (const InputError& error) {
    fail(&error);
    throw;
  } catch (const UsageError& error) {
    fail(nullptr);
    throw InputError{{ToolMessage(name + ": " + OneLine(error.what)), "Try 'korvelcheck " + name + " --help'."}};
  } catch (...) {
    fail(nullptr);
    throw;
  }
}

}  // namespace

std::span<const Command* const> Commands() {
  static constexpr const Command* kCommands[] = {
      &kCheckCommand,  &kSuggestCommand, &kHistoryCommand,    &kLintCommand,     &kDiffCommand,
      &kLayoutCommand, &kRulesCommand,   &kExplainCommand,    &kWaiveCommand,    &kWaiversCommand,
      &kCompatCommand, &kValuesCommand,  &kSameCommand,       &kSortlistCommand, &kCompileCommand,
      &kDumpCommand,   &kLspCommand,     &kCompletionCommand, &kManCommand,      &kHelpCommand,
  };
  return kCommands;
}

std::string HelpOfProgram() {
  std::string text =
      "korvelcheck: check schema changes of the Korvel table store\n\n"
      "Usage: korvelcheck COMMAND [OPTIONS] FILES\n\n"
      "  korvelcheck check old.xml new.xml               compare two schema files\n"
      "  korvelcheck check --against git:origin/main     compare all schema files of a project\n\n"
      "Commands:\n";
  for (const Command* command : Commands()) {
    const std::string name = command->name;
    text += "  " + name + std::string(12 - name.size(), ' ') + command->summary + "\n";
  }
  return text +
         "\n'korvelcheck COMMAND --help' shows the options of a command, 'korvelcheck --version' the version.\n"
         "Exit codes: 0 all allowed, 1 something refused, 2 usage or input error, 3 internal error.\n";
}

const Command& FindCommand(const std::string& name) {
  std::vector<std::string_view> known;
  for (const Command* command : Commands()) {
    if (name == command->name) return *command;
    known.emplace_back(command->name);
  }
  throw InputError{{ToolMessage("unknown command " + Quote(name) + DidYouMean(name, known)), "Try 'korvelcheck --help'."}};
}

std::string HelpOf(const Command& command) {
  ArgumentList arguments;
  static_cast<void>(command.declare(arguments));
  return Parse({command.name, command.summary}, arguments, {"--help"}).value();
}

int RunCommandLine(const std::vector<std::string>& arguments) {
  if (arguments.empty()) throw InputError{{ToolMessage("a command is missing"), "Try 'korvelcheck --help'."}};
  const std::string& first = arguments.front();
  if (first == "--help" || first == "-h") {
    WriteStandardOutput(AsProducer(HelpOfProgram()));
    return kAllAllowed;
  }
  if (first == "--version") {
    WriteStandardOutput(AsProducer("korvelcheck " KORVEL_VERSION "\n"));
    return kAllAllowed;
  }
  return RunCommand(FindCommand(first), {arguments.begin() + 1, arguments.end()});
}

std::vector<Argument> ArgumentsOf(const Command& command) {
  ArgumentList arguments;
  arguments.Add({.names = kHelpNames, .value = "", .description = kHelpDescription, .set = nullptr});
  static_cast<void>(command.declare(arguments));  // what would run it owns what the arguments set
  return arguments.all();
}

bool TakesFiles(const Command& command) {
  const std::vector<Argument> arguments = ArgumentsOf(command);
  return std::ranges::any_of(arguments, [](const Argument& one) { return !one.IsOption() && one.TakesFile(); });
}

std::vector<std::string> WordsOf(const Command& command) {
  return command.words == nullptr ? std::vector<std::string>() : command.words();
}

}  // namespace korvel::tool
