// For tests of permissions, which do not apply to root.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tool_test {

// A launcher with which file permissions apply to the program; empty for most users. nullopt if there is none.
std::optional<std::vector<std::string>> Unprivileged();

}  // namespace tool_test
