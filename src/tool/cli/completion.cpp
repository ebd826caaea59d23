// completion: what lets a shell complete commands, options and their values. Held by tests/tool/completion_test.cpp.
#include "tool/cli/completion.h"

#include "base/did_you_mean.h"
#include "base/input_error.h"
#include "base/quote.h"
#include "tool/cli/command.h"

namespace korvel::tool {
namespace {

struct Shell {
  const char* name;
  std::string (*make)();
};

constexpr Shell kShells[] = {{"bash", BashCompletion}, {"zsh", ZshCompletion}, {"fish", FishCompletion}};

std::vector<std::string> Words() {
  std::vector<std::string> words;
  for (const Shell& shell : kShells) words.emplace_back(shell.name);
  return words;
}

std::string Make(const Options& options) {
  std::vector<std::string_view> names;
  for (const Shell& shell : kShells) {
    if (options.word == shell.name) return shell.make();
    names.emplace_back(shell.name);
  }
  throw InputError{{ToolMessage("completion: unknown shell " + Quote(options.word) + DidYouMean(options.word, names) +
                                "; allowed: bash, zsh, fish")}};
}

}  // namespace

std::string Spaced(const std::vector<std::string>& words, const char* between) {
  std::string text;
  for (const std::string& word : words) text.append(text.empty() ? "" : between).append(word);
  return text;
}

std::string Escaped(const std::string& text, const std::string& characters, const std::string& escape) {
  std::string escaped;
  for (const char c : text) escaped.append(characters.find(c) == std::string::npos ? "" : escape).append(1, c);
  return escaped;
}

const Command kCompletionCommand{
    .name = "completion",
    .summary = "write what lets a shell complete korvelcheck's commands and options",
    .first = {"SHELL", "bash, zsh or fish"},
    .second = kNoInput,
    .options = kTakesWord,
    .make = Make,
    .words = Words,
};

}  // namespace korvel::tool
