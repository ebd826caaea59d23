// Words of the command line and the codes they stand for.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace korvel {

struct Choice {
  const char* name;
  int code;
};

// The codes of table types and protocols are those that the checker takes.
inline constexpr Choice kTableTypes[] = {{"generic", 0}, {"list", 1}};
inline constexpr Choice kProtocols[] = {{"qmx", 1}, {"tlv", 2}};

inline std::optional<int> CodeOf(std::span<const Choice> choices, std::string_view name) {
  for (const Choice& choice : choices) {
    if (name == choice.name) return choice.code;
  }
  return std::nullopt;
}

// REQUIRES: one of the choices has the code.
inline const char* NameOf(std::span<const Choice> choices, int code) {
  const Choice* choice = choices.data();
  while (choice->code != code) ++choice;
  return choice->name;
}

// "generic|list"
inline std::string NamesOf(std::span<const Choice> choices) {
  std::string names;
  for (const Choice& choice : choices) names.append(names.empty() ? "" : "|").append(choice.name);
  return names;
}

}  // namespace korvel
