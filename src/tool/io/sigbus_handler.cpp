// Handles SIGBUS. Held by tests/tool/image_test.cpp.
#include "tool/io/sigbus_handler.h"

#include <unistd.h>

#include <atomic>
#include <csignal>
#include <string_view>

#include "base/file_descriptor.h"
#include "tool/cli/exit_code.h"

namespace korvel::tool {
namespace {

std::atomic_flag is_said;

// Only what is safe wherever the program was interrupted. Several threads may be reading such a file: the first one speaks, and
// the others wait for the end.
extern "C" void OnBusError(int) {
  while (is_said.test_and_set()) ::pause();
  constexpr std::string_view kText = "korvelcheck: a file became shorter while it was read\n";
  static_cast<void>(WriteAll(STDERR_FILENO, kText));
  ::_exit(kFault);
}

}  // namespace

void InstallSigbusHandler() {
  struct sigaction action {};
  action.sa_handler = OnBusError;
  ::sigaction(SIGBUS, &action, nullptr);
}

}  // namespace korvel::tool
