// Signals that ask a long-running command to end.
#pragma once

#include <array>
#include <csignal>

#include "base/file_descriptor.h"

namespace korvel::tool {

// Makes SIGHUP, SIGINT and SIGTERM readable instead of deadly, so that the command can clean up. The second of a kind ends the
// program at once, and ignored ones stay ignored. Other programs that are started get the usual effect. One at a time.
class TerminationSignals {
 public:
  // Throws std::system_error.
  TerminationSignals();
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;
  ~TerminationSignals();

  // A descriptor that is readable after a signal.
  int descriptor() const { return reading_.get(); }

 private:
  FileDescriptor reading_;
  FileDescriptor writing_;
  std::array<struct sigaction, 3> before_{};
};

}  // namespace korvel::tool
