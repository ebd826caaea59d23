// Ends the program where no exception gets out. Held by tests/memory/tool_memory_test.cpp.
#include "tool/io/terminate_handler.h"

#include <unistd.h>

#include <atomic>
#include <exception>
#include <initializer_list>
#include <new>
#include <string_view>

#include "base/file_descriptor.h"
#include "tool/cli/exit_code.h"

namespace korvel::tool {
namespace {

std::atomic_flag is_said;

void Say(std::string_view text) { static_cast<void>(WriteAll(STDERR_FILENO, text)); }

// Nothing here allocates. Several threads may get here: the first one speaks, and the others wait for the end. Where a function
// breaks its promise not to throw, the compiler may leave no exception to look at; in a library it is memory then.
[[noreturn]] void OnUncaught() {
  while (is_said.test_and_set()) ::pause();
  try {
    if (std::current_exception() != nullptr) throw;
    Say("korvelcheck: out of memory, or an internal fault\n");
  } catch (const std::bad_alloc&) {
    SayOutOfMemory();
  } catch (const std::exception& fault) {
    for (const std::string_view part : {"korvelcheck: ", fault.what(), "\n"}) Say(part);
  } catch (...) {
    Say("korvelcheck: internal fault\n");
  }
  ::_exit(kFault);
}

}  // namespace

void SayOutOfMemory() { Say("korvelcheck: out of memory\n"); }

void InstallTerminateHandler() { std::set_terminate(OnUncaught); }

}  // namespace korvel::tool
