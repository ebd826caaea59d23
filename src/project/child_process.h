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

// A program gave no output for too long and was ended, or was not started because of that.
struct SilenceError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Starts a program with pipes at its standard input and output. Its messages are in English, whatever the locale is.
class ChildProcess {
 public:
  // From now on, a program that is read and gives no output for this long is ended: Read and ReadAll throw SilenceError. For as
  // long again, so does the constructor, so that other programs are not waited for, too. -1 ms: no limit, as at the start. Not
  // while other threads use programs.
  static void LimitSilence(std::chrono::milliseconds limit);

  // Looks the first word up in PATH. Throws std::system_error if it cannot be started, and SilenceError.
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
