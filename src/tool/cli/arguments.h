// What a command takes, as data: the parser, the help, the completion scripts and the manual page read the same declarations.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/input_error.h"
#include "schema/setting_values.h"

namespace korvel::tool {

// Thrown for wrong usage of a command, by declarations and by commands. The caller of the command adds its name and a hint.
struct UsageError {
  std::string what;
};

struct Argument {
  const char* names;        // of an option, "-o,--output"; of a positional argument its name: "OLD"
  std::string value;        // what it takes: "FILE", "text|json"; empty for a flag and for a positional argument that is no file
  std::string description;  // one line
  // Called with each value, for a flag with "". Returns what is allowed if the value is not, else "".
  std::function<std::string(const std::string& value)> set;
  bool is_required = false;
  bool is_repeated = false;        // may be given several times
  const char* needs = nullptr;     // the option that must be given, too
  const char* excludes = nullptr;  // the option that must not be given, too

  bool IsOption() const { return names[0] == '-'; }
  // "-o", "--output"
  std::vector<std::string> Names() const;
  // The words that an option takes ("text|json"); empty if it takes anything else.
  std::vector<std::string> Choices() const;
  bool TakesFile() const;
};

// A call that ends without the result of its command.
struct Failure {
  const char* command;
  const std::vector<std::string>& words;  // behind the command's name
  const InputError* error;                // null for wrong usage and for internal errors
};

// The arguments of one command, in the order of its help. Declarations keep references to what they set. The returned argument is
// valid until the next declaration.
class ArgumentList {
 public:
  // A positional argument that appends to `values`. `value` is "FILE" if it is a path.
  Argument& AddPositional(const char* name, const char* value, std::vector<std::string>& values, std::string description);

  Argument& AddFlag(const char* names, bool& is_given, std::string description);

  // An option that takes any text.
  Argument& AddText(const char* names, const char* value, std::optional<std::string>& text, std::string description);

  // An option that takes one of several words; `set` gets the code of the word.
  Argument& AddChoice(const char* names, std::span<const NamedCode> choices, std::function<void(int code)> set,
                      std::string description);

  // Any other argument.
  Argument& Add(Argument argument);

  const std::vector<Argument>& all() const { return arguments_; }

  // What to do if the call fails, before the error is printed; it must not throw. Without it, nothing.
  void OnFailure(std::function<void(const Failure& failure)> call) { on_failure_ = std::move(call); }
  void Fail(const Failure& failure) const {
    if (on_failure_) on_failure_(failure);
  }

 private:
  std::function<void(const Failure& failure)> on_failure_;
  std::vector<Argument> arguments_;
};

// --- Reading the arguments, parse.cpp ---

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
