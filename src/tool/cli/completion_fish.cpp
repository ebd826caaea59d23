// The completion of fish. Held by tests/tool/completion_test.cpp.
#include "tool/cli/completion.h"
#include "tool/cli/usage.h"

namespace korvel::tool {
namespace {

constexpr char kHead[] = R"(# Completion of korvelcheck for fish, made by `korvelcheck completion fish`.

complete -c korvelcheck -n __fish_use_subcommand -f
complete -c korvelcheck -n __fish_use_subcommand -s h -l help -d 'show help'
complete -c korvelcheck -n __fish_use_subcommand -l version -d 'tell the version'
)";

std::string Quoted(const std::string& text) { return "'" + Escaped(text, "'\\", "\\") + "'"; }

std::string OptionLine(const std::string& start, const Argument& argument) {
  std::string text = start;
  for (const std::string& name : argument.names) {
    text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
  }
  const std::vector<std::string> choices = ChoicesOf(argument);
  if (!choices.empty()) {
    text += " -x -a " + Quoted(Spaced(choices));
  } else if (!argument.value.empty()) {
    text += TakesFile(argument) ? " -r -F" : " -x";
  }
  return text + " -d " + Quoted(argument.description) + "\n";
}

std::string CommandLines(const Command& command) {
  const std::string name = command.name;
  const std::string start = "complete -c korvelcheck -n '__fish_seen_subcommand_from " + name + "'";
  std::string text = "\ncomplete -c korvelcheck -n __fish_use_subcommand -f -a " + name + " -d " + Quoted(command.summary) + "\n";
  const std::vector<std::string> words = WordsOf(command);
  if (!words.empty()) text += start + " -f -a " + Quoted(Spaced(words)) + "\n";
  if (words.empty() && !TakesFiles(command)) text += start + " -f\n";
  for (const Argument& argument : ArgumentsOf(command)) {
    if (argument.is_option) text += OptionLine(start, argument);
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
