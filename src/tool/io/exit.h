// How a call ends: the exit codes, the exception for a result that is not an error but ends the call with code 1, and what
// happens when the program cannot go on: a line on standard error and kInternalError instead of a signal.
#pragma once

#include <string>
#include <vector>

namespace korvel::tool {

// Part of the interface: scripts depend on them.
enum ExitCode : int {
  kAllAllowed = 0,     // everything that was compared is allowed
  kSomeRefused = 1,    // a refusal that is not waived
  kInputError = 2,     // usage or input error
  kInternalError = 3,  // the result could not be written, memory ran out, or the program is wrong
};

// Thrown by a command that would print a schema, if the checker refuses every one it could print. main prints the lines on
// standard error and ends with kSomeRefused. Lines are whole, without newline.
struct NothingAllowed {
  std::vector<std::string> lines;
};

// Prints lines without line ends on standard error, each by OneLine: whatever they contain, each stays one line.
void PrintErrors(const std::vector<std::string>& lines);

// --- When the program cannot go on ---

// Prints on standard error that memory ran out. Allocates nothing.
void PrintOutOfMemory();

// A file that is not complete: it is removed if the program ends in one of the ways below during the life of this. The text must
// stay where it is. Not for several threads at once.
class IncompleteFile {
 public:
  explicit IncompleteFile(const char* path);
  IncompleteFile(const IncompleteFile&) = delete;
  IncompleteFile& operator=(const IncompleteFile&) = delete;
  ~IncompleteFile();

  // Removes all of them. Allocates nothing.
  static void RemoveAll();

 private:
  const char* path_;
  IncompleteFile* next_;
};

// From now on, an exception that nothing can catch (for example if memory runs out in a destructor) ends the program in this way.
void InstallTerminateHandler();

}  // namespace korvel::tool
