// The completion of zsh. Tested by tests/tool/completion_test.cpp.
#include "tool/cli/command.h"
#include "tool/cli/completion.h"

namespace korvel::tool {
namespace {

constexpr char kHead[] = R"(#compdef korvelcheck
# Completion of korvelcheck for zsh, made by `korvelcheck completion zsh`.

_korvelcheck() {
  local curcontext="$curcontext" state
  local -a line commands
  _arguments -C '(- *)'{-h,--help}'[show help]' '(- *)--version[tell the version]' '1:command:->command' '*::argument:->argument'
  case $state in
  command)
    commands=(
)";

// Works both as a file of $fpath and when it is read by `source`.
constexpr char kTail[] = R"(    esac
    ;;
  esac
}

if [[ $funcstack[1] == _korvelcheck ]]; then
  _korvelcheck "$@"
else
  compdef _korvelcheck korvelcheck
fi
)";

std::string QuoteForZsh(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) c == '\'' ? quoted += "'\\''" : quoted += c;
  return quoted + "'";
}

// Behind the option's name: "[description]:FILE:_files".
std::string Meaning(const Argument& argument) {
  std::string text = "[" + EscapeWith(argument.description, "[]\\", "\\") + "]";
  if (argument.value.empty()) return text;
  const std::vector<std::string> choices = argument.Choices();
  const std::string action = !choices.empty() ? "(" + Join(choices) + ")" : argument.TakesFile() ? "_files" : "";
  return text + ":" + (choices.empty() ? EscapeWith(argument.value, ":\\", "\\") : "value") + ":" + action;
}

// One line for each name of an option; a name excludes the other ones, and itself unless it may be given again.
std::string OptionLines(const Argument& argument) {
  std::string text;
  for (const std::string& name : argument.Names()) {
    const std::string joint = argument.value.empty() ? "" : name.starts_with("--") ? "=" : "+";
    const std::string before = argument.is_repeated ? "*" : "(" + Join(argument.Names()) + ")";
    text += "        " + QuoteForZsh(before + name + joint + Meaning(argument)) + " \\\n";
  }
  return text;
}

std::string CommandCase(const Command& command) {
  std::string text = std::string("    ") + command.name + ")\n      _arguments \\\n";
  const std::vector<std::string> words = WordsOf(command);
  for (const Argument& argument : ArgumentsOf(command)) {
    if (argument.IsOption()) {
      text += OptionLines(argument);
      continue;
    }
    const std::string action = words.empty() ? TakesFiles(command) ? "_files" : "" : "(" + Join(words) + ")";
    text += "        " + QuoteForZsh((argument.is_repeated ? "*:" : ":") + argument.Names().front() + ":" + action) + " \\\n";
  }
  text.erase(text.size() - 3, 2);  // of the last line
  return text + "      ;;\n";
}

}  // namespace

std::string ZshCompletion() {
  std::string text = kHead;
  for (const Command* command : Commands()) {
    text += "      " + QuoteForZsh(std::string(command->name) + ":" + command->summary) + "\n";
  }
  text += "    )\n    _describe -t commands command commands\n    ;;\n  argument)\n    case $words[1] in\n";
  for (const Command* command : Commands()) text += CommandCase(*command);
  return text + kTail;
}

}  // namespace korvel::tool
