// Tested by tests/tool/usage_test.cpp.
#include "tool/cli/command.h"
#include "tool/cli/option_groups.h"
#include "tool/io/exit.h"

namespace korvel::tool {
namespace {

struct HelpArguments {
  std::vector<std::string> commands;
  OutputOption output;

  void AddTo(ArgumentList& arguments) {
    arguments.AddPositional("COMMAND", "", commands, "a command; default: list all commands");
    output.AddTo(arguments);
  }
};

std::vector<std::string> CommandNames() {
  std::vector<std::string> names;
  for (const Command* command : Commands()) names.emplace_back(command->name);
  return names;
}

int Run(const HelpArguments& arguments) {
  arguments.output.Write(arguments.commands.empty() ? HelpOfProgram() : HelpOf(FindCommand(arguments.commands.front())));
  return kAllAllowed;
}

}  // namespace

const Command kHelpCommand{"help", "show the options of a command", Declare<HelpArguments, Run>, CommandNames};

}  // namespace korvel::tool
