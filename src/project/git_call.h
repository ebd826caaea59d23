// Single runs of the git program.
#pragma once

#include <string>
#include <vector>

namespace korvel {

struct GitResult {
  int status = 0;     // exit code
  std::string out;    // standard output
  std::string error;  // its first error: one line, escaped
};

// Runs git to its end; `argument` is the word of the command line that needs it. Throws InputError if git cannot be started.
GitResult RunGit(const std::vector<std::string>& arguments, const std::string& argument);

// The standard output of a run that must succeed: throws InputError with git's error otherwise.
std::string GitOutput(const std::vector<std::string>& arguments, const std::string& argument);

// The id of the object that a revision such as "v1^{commit}" names, or "".
std::string FindObject(const std::string& revision, const std::string& argument);

// The command that fetches the rest of the history of a shallow clone. It sets FETCH_HEAD, so if the revision is FETCH_HEAD, it
// names the commit.
std::string FetchAllCommand(const std::string& revision, const std::string& argument);

// Whether the clone is shallow.
bool IsShallow(const std::string& argument);

// Throws InputError: "korvelcheck: ARGUMENT: REASON".
[[noreturn]] void RefuseArgument(const std::string& argument, const std::string& reason);

// Throws InputError for a revision that git does not find, with the reason and what would help.
[[noreturn]] void RefuseRevision(const std::string& revision, const std::string& argument);

// The first complaint among the lines of a program's standard error.
std::string FirstComplaint(const std::string& text);

// From now on, git fails where it would use the network, as for an object that a partial clone lacks, or ask for a password. For
// a program with one thread.
void KeepGitOffline();

// The parts between the separators, the last of which ends the text.
std::vector<std::string> SplitAt(const std::string& text, char separator);

}  // namespace korvel
