// What the arguments of commands take. Held by tests/tool/completion_test.cpp.
#include "tool/cli/usage.h"

#include <algorithm>

namespace korvel::tool {
namespace {

bool IsWord(const std::string& text) {
  return !text.empty() && text.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-") == std::string::npos;
}

}  // namespace

std::vector<std::string> ChoicesOf(const Argument& argument) {
  std::vector<std::string> words;
  for (std::size_t at = 0; at <= argument.value.size(); at += words.back().size() + 1) {
    words.push_back(argument.value.substr(at, argument.value.find('|', at) - at));
  }
  return std::all_of(words.begin(), words.end(), IsWord) ? words : std::vector<std::string>();
}

bool TakesFile(const Argument& argument) {
  return argument.value.find("FILE") != std::string::npos || argument.value.find("DIR") != std::string::npos;
}

bool TakesFiles(const Command& command) { return command.first.argument != nullptr && (command.options & kTakesWord) == 0; }

std::vector<std::string> WordsOf(const Command& command) {
  return command.words == nullptr ? std::vector<std::string>() : command.words();
}

}  // namespace korvel::tool
