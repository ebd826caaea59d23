// Tests of permissions, which do not hold for the administrator, as whom they may be run.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tool_test {

// What starts the program so that permissions of files hold for it: nothing for most users. nullopt where that cannot be had.
std::optional<std::vector<std::string>> Unprivileged();

}  // namespace tool_test
