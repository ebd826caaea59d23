// Tested by tests/tool/signal_test.cpp.
#include "tool/io/blocked_signals.h"

#include <algorithm>

namespace korvel::tool {
namespace {

constexpr int kSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

bool IsIgnored(int signal) {
  struct sigaction action {};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

BlockedSignals::BlockedSignals() {
  ::sigemptyset(&blocked_);
  for (const int signal : kSignals) {
    if (!IsIgnored(signal)) ::sigaddset(&blocked_, signal);  // an ignored one would become pending
  }
  ::sigprocmask(SIG_BLOCK, &blocked_, &before_);
}

BlockedSignals::~BlockedSignals() { ::sigprocmask(SIG_SETMASK, &before_, nullptr); }

bool BlockedSignals::IsPending() const {
  sigset_t pending;
  ::sigemptyset(&pending);
  ::sigpending(&pending);
  return std::ranges::any_of(kSignals, [&](int signal) {
    return ::sigismember(&blocked_, signal) == 1 && ::sigismember(&pending, signal) == 1 && ::sigismember(&before_, signal) == 0;
  });
}

}  // namespace korvel::tool
