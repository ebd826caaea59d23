// Handles SIGBUS. Held by tests/tool/image_test.cpp.
#include "tool/shrunk_file.h"

#include <unistd.h>

#include <atomic>
#include <csignal>
#include <string_view>

#include "tool/exit_code.h"
#include "tool/file_descriptor.h"

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

void EndOnShrunkFile() {
  struct sigaction action {};
  action.sa_handler = OnBusError;
  ::sigaction(SIGBUS, &action, nullptr);
}

}  // namespace korvel::tool
