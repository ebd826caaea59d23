// Tested by tests/tool/usage_test.cpp and completion_test.cpp.
#include "tool/cli/arguments.h"

#include <algorithm>
#include <utility>

namespace korvel::tool {
namespace {

std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  for (std::size_t at = 0; at <= text.size(); at += parts.back().size() + 1) {
    parts.emplace_back(text.substr(at, text.find(separator, at) - at));
  }
  return parts;
}

bool IsWord(const std::string& text) {
  return !text.empty() && text.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-") == std::string::npos;
}

}  // namespace

std::vector<std::string> Argument::Names() const { return Split(names, ','); }

std::vector<std::string> Argument::Choices() const {
  std::vector<std::string> words = Split(value, '|');
  return std::ranges::all_of(words, IsWord) ? words : std::vector<std::string>();
}

// What begins with a format is no name of a file.
bool Argument::TakesFile() const {
  return value.find('=') == std::string::npos &&
         (value.find("FILE") != std::string::npos || value.find("DIR") != std::string::npos);
}

Argument& ArgumentList::Add(Argument argument) {
  arguments_.push_back(std::move(argument));
  return arguments_.back();
}

Argument& ArgumentList::AddPositional(const char* name, const char* value, std::vector<std::string>& values,
                                      std::string description) {
  const auto set = [&values](const std::string& given) {
    values.push_back(given);
    return std::string();
  };
  return Add({.names = name, .value = value, .description = std::move(description), .set = set});
}

Argument& ArgumentList::AddFlag(const char* names, bool& is_given, std::string description) {
  const auto set = [&is_given](const std::string&) {
    is_given = true;
    return std::string();
  };
  return Add({.names = names, .value = "", .description = std::move(description), .set = set});
}

Argument& ArgumentList::AddText(const char* names, const char* value, std::optional<std::string>& text, std::string description) {
  const auto set = [&text](const std::string& given) {
    text = given;
    return std::string();
  };
  return Add({.names = names, .value = value, .description = std::move(description), .set = set});
}

Argument& ArgumentList::AddChoice(const char* names, std::span<const NamedCode> choices, std::function<void(int code)> set,
                                  std::string description) {
  const auto take = [choices, set = std::move(set)](const std::string& word) {
    const std::optional<int> code = CodeOf(choices, word);
    if (!code) return NamesOf(choices);
    set(*code);
    return std::string();
  };
  return Add({.names = names, .value = NamesOf(choices), .description = std::move(description), .set = take});
}

}  // namespace korvel::tool
