// Single questions to the git program.
#pragma once

#include <string>
#include <vector>

namespace korvel {

struct GitAnswer {
  int status = 0;     // exit code
  std::string out;    // standard output
  std::string error;  // what it complained about: one line, shown as it may be shown
};

// Runs git to its end; `argument` is the word of the command line that needs it. Throws InputError if git cannot be started.
GitAnswer CallGit(const std::vector<std::string>& arguments, const std::string& argument);

// The same for a question that git must be able to answer: throws InputError with git's own words if it is not.
std::string AskGit(const std::vector<std::string>& arguments, const std::string& argument);

// Ends the call: "korvelcheck: ARGUMENT: REASON".
[[noreturn]] void RefuseArgument(const std::string& argument, const std::string& reason);

// Ends the call for a revision that git does not find, with the reason and what would help.
[[noreturn]] void RefuseRevision(const std::string& revision, const std::string& argument);

// The first complaint among the lines of a program's standard error.
std::string FirstComplaint(const std::string& text);

// What stands between the separators, the last of which ends the text.
std::vector<std::string> SplitAt(const std::string& text, char separator);

}  // namespace korvel
