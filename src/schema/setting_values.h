// What settings of a table may be, on the command line and in a project file.
#pragma once

#include <optional>
#include <string_view>

namespace korvel {

inline constexpr char kAllowedVersion[] = "numbers joined by dots, like 3.29.0";
inline constexpr char kAllowedListNum[] = "0 to 2147483647";

// Whether `text` is numbers joined by dots.
bool IsVersion(std::string_view text);

// A number of slots.
std::optional<int> ParseCount(std::string_view text);

}  // namespace korvel
