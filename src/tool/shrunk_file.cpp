// Handles SIGBUS. Held by tests/tool/image_test.cpp.
#include "tool/shrunk_file.h"

#include <unistd.h>

#include <csignal>
#include <string_view>

#include "tool/exit_code.h"
#include "tool/file_descriptor.h"

namespace korvel::tool {
namespace {

// Only what is safe wherever the program was interrupted.
extern "C" void OnBusError(int) {
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
