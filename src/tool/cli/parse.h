// Reads the arguments of a command.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tool/cli/arguments.h"

namespace korvel::tool {

inline constexpr char kHelpNames[] = "-h,--help";
inline constexpr char kHelpDescription[] = "Print this help message and exit";

struct CommandTitle {
  const char* name;
  const char* summary;
};

// Calls Argument::set for each value among the words, which stand behind the command's name. Returns the help if they request it.
// Throws UsageError.
std::optional<std::string> Parse(const CommandTitle& command, const ArgumentList& arguments,
                                 const std::vector<std::string>& words);

}  // namespace korvel::tool
