// Recognizes a revision of git that a call gives without "git:", as if it were a path.
#pragma once

#include <string>
#include <vector>

namespace korvel {

// What to add to the error that a file does not exist, if git knows its name as a revision, or as a file of one: " (did you mean
// git:v1:./a.xml?)"; else "". `paths` are those of the call: one of them may be a file of the revision, too.
std::string HintForFile(const std::string& path, const std::vector<std::string>& paths);

// The same for a baseline: " (did you mean git:v1?)".
std::string HintForBaseline(const std::string& name);

// The same for a file or directory of a project: " (did you mean --against git:v1?)".
std::string HintForPath(const std::string& path);

}  // namespace korvel
