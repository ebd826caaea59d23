// Runs the built program as a process of its own.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace tool_test {

struct Outcome {
  int exit_code = -1;  // -1: ended by a signal
  std::string out;     // standard output
  std::string err;     // standard error
  int signal = 0;      // that ended it; 0: none
  long peak_kb = 0;    // peak resident memory, of the process or of one that it waited for; at least that of the test
};

// Where a stream of the process goes.
enum class Stream {
  kCaptured,
  kClosed,      // the process starts without the stream
  kFull,        // a device without space
  kReaderGone,  // a pipe whose reader is closed
  kTerminal,    // captured through a terminal
};

struct Call {
  std::vector<std::string> arguments;
  std::string directory = {};                 // working directory
  std::vector<std::string> launcher = {};     // a program and arguments that starts what follows; empty = none
  std::string input = {};                     // standard input
  bool input_closed = false;                  // the process starts without standard input
  Stream output = Stream::kCaptured;          // standard output
  std::vector<std::string> environment = {};  // "NAME=value"; only the settings of the sanitizers are passed on in addition
  std::function<void(pid_t)> meanwhile = {};  // called after the process, or its launcher, has started
};

// The arguments `first`, then `more`.
std::vector<std::string> Joined(std::vector<std::string> first, const std::vector<std::string>& more);

Outcome RunProgram(const Call& call);

}  // namespace tool_test
