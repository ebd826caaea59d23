// The list of commands.
#include "tool/cli/command.h"

#include <cstddef>
#include <utility>

namespace korvel::tool {

std::span<const Command* const> Commands() {
  static constexpr const Command* kCommands[] = {
      &kCheckCommand,    &kSuggestCommand, &kHistoryCommand, &kLintCommand,       &kDiffCommand,   &kLayoutCommand,
      &kRulesCommand,    &kExplainCommand, &kWaiveCommand,   &kCompatCommand,     &kValuesCommand, &kSameCommand,
      &kSortlistCommand, &kCompileCommand, &kDumpCommand,    &kCompletionCommand, &kManCommand,
  };
  return kCommands;
}

const Command* FindCommand(std::string_view name) {
  for (const Command* command : Commands()) {
    if (name == command->name) return command;
  }
  return nullptr;
}

CommandResult StartResult(const Command& command, std::vector<Input> inputs) {
  CommandResult answer{std::move(inputs), {}};
  answer.report.command = command.name;
  const bool pair = command.second.role != nullptr;
  for (std::size_t i = 0; i < answer.inputs.size(); ++i) {
    answer.report.inputs.push_back({pair && i == 1 ? command.second.role : command.first.role, &answer.inputs[i]});
  }
  return answer;
}

}  // namespace korvel::tool
