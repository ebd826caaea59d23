// What can be typed, as data: what completions and the manual page are made of. It is asked of the declarations themselves.
#pragma once

#include <string>
#include <vector>

#include "tool/cli/command.h"

namespace korvel::tool {

struct Argument {
  std::vector<std::string> names;  // "-o", "--output"; the name alone of one that is no option: "OLD"
  std::string value;               // what an option takes: "FILE", "text|json"; empty for a flag and for what is no option
  std::string description;
  bool is_option = false;
  bool is_required = false;
  bool is_repeated = false;  // may be given again
};

// The arguments that a command takes, in the order of its help; --help is the first. In options.cpp, where they are declared.
std::vector<Argument> ArgumentsOf(const Command& command);

// The words of which an argument is one ("text|json"); empty for one that takes anything else.
std::vector<std::string> ChoicesOf(const Argument& argument);

// Whether an option takes the path of a file.
bool TakesFile(const Argument& argument);

// What a command takes besides options: files, one of these words, or nothing.
bool TakesFiles(const Command& command);
std::vector<std::string> WordsOf(const Command& command);

}  // namespace korvel::tool
