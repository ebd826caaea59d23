// Tested by tests/tool/completion_test.cpp.
#include "base/did_you_mean.h"
#include "base/input_error.h"
#include "base/text.h"
#include "tool/cli/command.h"
#include "tool/cli/option_groups.h"
#include "tool/io/exit.h"

namespace korvel::tool {
namespace {

struct Shell {
  const char* name;
  std::string (*script)();
};

constexpr Shell kShells[] = {{"bash", BashCompletion}, {"zsh", ZshCompletion}, {"fish", FishCompletion}};

std::vector<std::string> Words() {
  std::vector<std::string> words;
  for (const Shell& shell : kShells) words.emplace_back(shell.name);
  return words;
}

struct CompletionArguments {
  std::vector<std::string> shells;
  OutputOption output;

  void AddTo(ArgumentList& arguments) {
    arguments.AddPositional("SHELL", "", shells, "bash, zsh or fish").is_required = true;
    output.AddTo(arguments);
  }
};

std::string ScriptFor(const std::string& name) {
  std::vector<std::string_view> names;
  for (const Shell& shell : kShells) {
    if (name == shell.name) return shell.script();
    names.emplace_back(shell.name);
  }
  throw InputError{
      {ToolMessage("completion: unknown shell " + Quote(name) + DidYouMean(name, names) + "; allowed: bash, zsh, fish")}};
}

int Run(const CompletionArguments& arguments) {
  arguments.output.Write(ScriptFor(arguments.shells.front()));
  return kAllAllowed;
}

}  // namespace

const Command kCompletionCommand{"completion", "generate a shell completion script", Declare<CompletionArguments, Run>, Words};

}  // namespace korvel::tool
