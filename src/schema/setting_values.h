// The values that settings of a table may have, on the command line and in a project file.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/text.h"

namespace korvel {

// A word and its code.
struct NamedCode {
  const char* name;
  int code;
};

// Codes as in the checker's interface (common/modify_table.h).
inline constexpr NamedCode kTableTypes[] = {{"generic", 0}, {"list", 1}};
inline constexpr NamedCode kProtocols[] = {{"qmx", 1}, {"tlv", 2}};

// What fails a call: refusals alone, or warnings, too.
inline constexpr int kFailOnWarning = 1;
inline constexpr NamedCode kFailOn[] = {{"refused", 0}, {"warning", kFailOnWarning}};

inline constexpr char kAllowedVersion[] = "numbers joined by dots, like 3.29.0";
inline constexpr char kAllowedListNum[] = "0 to 2147483647";
inline constexpr char kAllowedMaxFindings[] = "1 to 2147483647";

// The code of a name; nullopt for an unknown name.
std::optional<int> CodeOf(std::span<const NamedCode> codes, std::string_view name);

// REQUIRES: one of the rows has the code.
const char* NameOf(std::span<const NamedCode> codes, int code);

// "generic|list"
inline std::string NamesOf(std::span<const NamedCode> codes) { return Join(codes, "|", &NamedCode::name); }

// Whether `text` is a server version: numbers joined by dots.
bool IsVersion(std::string_view text);

// A number of list slots, 0 to 2147483647; nullopt if `text` is not such a number.
std::optional<int> ParseCount(std::string_view text);

// How many findings a report lists, 1 to 2147483647; nullopt if `text` is not such a number.
std::optional<std::size_t> ParseMaxFindings(std::string_view text);

}  // namespace korvel
