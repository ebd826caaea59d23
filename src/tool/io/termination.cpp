// Tested by tests/lsp/signal_test.cpp.
#include "tool/io/termination.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <system_error>

namespace korvel::tool {
namespace {

constexpr std::array kEndingSignals{SIGHUP, SIGINT, SIGTERM};

volatile std::sig_atomic_t signal_pipe = -1;

extern "C" void WriteToPipe(int /*signal*/) {
  const int error = errno;
  [[maybe_unused]] const ssize_t written = ::write(signal_pipe, "", 1);
  errno = error;
}

}  // namespace

TerminationSignals::TerminationSignals() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) throw std::system_error(errno, std::generic_category(), "no pipe");
  reading_.Reset(ends[0]);
  writing_.Reset(ends[1]);
  signal_pipe = ends[1];
  struct sigaction action {};
  action.sa_handler = WriteToPipe;
  action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
  for (std::size_t i = 0; i < kEndingSignals.size(); ++i) {
    ::sigaction(kEndingSignals[i], nullptr, &before_[i]);
    if (before_[i].sa_handler != SIG_IGN) ::sigaction(kEndingSignals[i], &action, nullptr);
  }
}

TerminationSignals::~TerminationSignals() {
  for (std::size_t i = 0; i < kEndingSignals.size(); ++i) ::sigaction(kEndingSignals[i], &before_[i], nullptr);
}

}  // namespace korvel::tool
