// Signals that must not end the program now.
#pragma once

#include <csignal>

namespace korvel::tool {

// Blocks the signals that end a program, for example while a temporary file exists, which would be left behind. A signal that
// arrives in the meantime ends the program after the life of this. Ignored signals stay ignored.
class BlockedSignals {
 public:
  BlockedSignals();
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;
  ~BlockedSignals();

  // Whether a signal will end the program.
  bool IsPending() const;

 private:
  sigset_t blocked_{};
  sigset_t before_{};
};

}  // namespace korvel::tool
