// The completion of bash. Tested by tests/tool/completion_test.cpp.
#include <algorithm>
#include <iterator>

#include "tool/cli/command.h"
#include "tool/cli/completion.h"

namespace korvel::tool {
namespace {

// Words and options hold no blanks and nothing that bash would expand.
constexpr char kHead[] = R"(# Completion of korvelcheck for bash, made by `korvelcheck completion bash`.

_korvelcheck_words() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current"); }

_korvelcheck_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -f -- "$current")
}

_korvelcheck() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command= i
  COMPREPLY=()
  # bash takes the '=' of --option=value for a word of its own.
  if [[ $current == = ]]; then
    current=
  elif [[ $previous == = ]]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  for ((i = 1; i < COMP_CWORD; ++i)); do
    if [[ ${COMP_WORDS[i]} != -* ]]; then
      command=${COMP_WORDS[i]}
      break
    fi
  done
  case $command in
)";

constexpr char kTail[] = R"(  esac
}

complete -F _korvelcheck korvelcheck
)";

// "    -o | --output) _korvelcheck_files ;;"; empty for a flag, behind which anything may follow.
std::string ValueCase(const Argument& argument) {
  if (argument.value.empty()) return "";
  std::string text = "    ";
  for (const std::string& name : argument.Names()) text += (name == argument.Names().front() ? "" : " | ") + name;
  const std::vector<std::string> choices = argument.Choices();
  if (!choices.empty()) return text + ") _korvelcheck_words '" + Join(choices) + "' ;;\n";
  return text + (argument.TakesFile() ? ") _korvelcheck_files ;;\n" : ") ;;\n");
}

std::string CommandCase(const Command& command) {
  std::string text = std::string("  ") + command.name + ")\n    case $previous in\n";
  std::vector<std::string> options;
  for (const Argument& argument : ArgumentsOf(command)) {
    if (!argument.IsOption()) continue;
    text += ValueCase(argument);
    std::ranges::move(argument.Names(), std::back_inserter(options));
  }
  text += "    *)\n      case $current in\n      -*) _korvelcheck_words '" + Join(options) + "' ;;\n";
  const std::vector<std::string> words = WordsOf(command);
  if (!words.empty()) text += "      *) _korvelcheck_words '" + Join(words) + "' ;;\n";
  if (TakesFiles(command)) text += "      *) _korvelcheck_files ;;\n";
  return text + "      esac\n      ;;\n    esac\n    ;;\n";
}

}  // namespace

std::string BashCompletion() {
  std::vector<std::string> names;
  for (const Command* command : Commands()) names.emplace_back(command->name);
  names.insert(names.end(), {"--help", "--version"});
  std::string text = kHead + std::string("  '') _korvelcheck_words '") + Join(names) + "' ;;\n";
  for (const Command* command : Commands()) text += CommandCase(*command);
  return text + kTail;
}

}  // namespace korvel::tool
