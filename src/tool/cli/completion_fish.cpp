// The completion of fish. Tested by tests/tool/completion_test.cpp.
#include "tool/cli/command.h"
#include "tool/cli/completion.h"

namespace korvel::tool {
namespace {

constexpr char kHead[] = R"(# Completion of korvelcheck for fish, made by `korvelcheck completion fish`.

complete -c korvelcheck -n __fish_use_subcommand -f
complete -c korvelcheck -n __fish_use_subcommand -s h -l help -d 'show help'
complete -c korvelcheck -n __fish_use_subcommand -l version -d 'tell the version'
)";

std::string QuoteForFish(const std::string& text) { return "'" + EscapeWith(text, "'\\", "\\") + "'"; }

std::string OptionLine(const std::string& start, const Argument& argument) {
  std::string text = start;
  for (const std::string& name : argument.Names()) {
    text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
  }
  const std::vector<std::string> choices = argument.Choices();
  if (!choices.empty()) {
    text += " -x -a " + QuoteForFish(Join(choices));
  } else if (!argument.value.empty()) {
    text += argument.TakesFile() ? " -r -F" : " -x";
  }
  return text + " -d " + QuoteForFish(argument.description) + "\n";
}

std::string CommandLines(const Command& command) {
  const std::string name = command.name;
  const std::string start = "complete -c korvelcheck -n '__fish_seen_subcommand_from " + name + "'";
  std::string text =
      "\ncomplete -c korvelcheck -n __fish_use_subcommand -f -a " + name + " -d " + QuoteForFish(command.summary) + "\n";
  const std::vector<std::string> words = WordsOf(command);
  if (!words.empty()) text += start + " -f -a " + QuoteForFish(Join(words)) + "\n";
  if (words.empty() && !TakesFiles(command)) text += start + " -f\n";
  for (const Argument& argument : ArgumentsOf(command)) {
    if (argument.IsOption()) text += OptionLine(start, argument);
  }
  return text;
}

}  // namespace

std::string FishCompletion() {
  std::string text = kHead;
  for (const Command* command : Commands()) text += CommandLines(*command);
  return text;
}

}  // namespace korvel::tool
