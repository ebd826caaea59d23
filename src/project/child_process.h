// A child process, started without a shell.
#pragma once

#include <sys/types.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "base/file_descriptor.h"

namespace korvel {

// A program hung and was ended, or was not started because one hung before.
struct OutputTimeoutError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Starts a program with pipes at its standard input and output. Its messages are in English, whatever the locale is.
class ChildProcess {
 public:
  // Limits how long a program may give no output while it is read: then it is ended, and Read and ReadAll throw. For the same
  // time afterwards, the constructor throws without starting anything, so that a series of calls waits only once. -1 ms: no
  // limit, as at the start. REQUIRES: no other thread uses a ChildProcess.
  static void SetOutputTimeout(std::chrono::milliseconds timeout);

  // Looks the first word up in PATH. Throws std::system_error if it cannot be started, or OutputTimeoutError.
  explicit ChildProcess(const std::vector<std::string>& command);
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  // Ends the program if it is still running.
  ~ChildProcess();

  // Returns false if the program no longer reads.
  bool Write(std::string_view text);
  // Waits for `capacity` bytes and returns the number read: fewer only at the end of the output.
  std::size_t Read(char* to, std::size_t capacity);
  // Waits for the end of the output.
  std::string ReadAll();
  // Waits for the program. Returns its exit code, or 128 plus the signal that ended it.
  int Wait();
  // Its standard error so far.
  std::string ErrorText() const;

 private:
  // Reads the next piece of the output. Returns false at its end.
  bool ReadAhead();
  // Returns when there is output, or its end.
  void WaitForOutput();
  void End();

  std::string name_;
  std::array<char, std::size_t{16} << 10> piece_ = {};
  std::string_view ahead_;  // the part of it that was not returned yet
  FileDescriptor errors_;
  FileDescriptor input_{-1};
  FileDescriptor output_{-1};
  pid_t process_ = -1;
};

}  // namespace korvel
