// Tested by tests/memory/tool_memory_test.cpp and tests/tool/abrupt_end_test.cpp.
#include "tool/io/exit.h"

#include <unistd.h>

#include <atomic>
#include <exception>
#include <initializer_list>
#include <new>
#include <string_view>

#include "base/file_descriptor.h"
#include "base/text.h"

namespace korvel::tool {
namespace {

std::atomic_flag is_ending;
std::atomic<const char*> incomplete_file;

// Several threads may get here: the first one prints, the others wait for the end.
void WaitUnlessFirst() {
  while (is_ending.test_and_set()) ::pause();
}

[[noreturn]] void End() {
  if (const char* const path = incomplete_file) ::unlink(path);
  ::_exit(kInternalError);
}

void Print(std::string_view text) { static_cast<void>(WriteAll(STDERR_FILENO, text)); }

// Allocates nothing. If a function throws although it is noexcept, the compiler may leave no exception to look at; in a library,
// memory ran out then.
[[noreturn]] void OnUncaught() {
  WaitUnlessFirst();
  try {
    if (std::current_exception() != nullptr) throw;
    Print("korvelcheck: out of memory, or an internal error\n");
  } catch (const std::bad_alloc&) {
    PrintOutOfMemory();
  } catch (const std::exception& fault) {
    for (const std::string_view part : {"korvelcheck: ", fault.what(), "\n"}) Print(part);
  } catch (...) {
    Print("korvelcheck: internal error\n");
  }
  End();
}

}  // namespace

void PrintErrors(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += OneLine(line) + "\n";
  Print(text);  // a failure cannot be reported anywhere
}

void PrintOutOfMemory() { Print("korvelcheck: out of memory\n"); }

void RemoveAtAbruptEnd(const char* path) { incomplete_file = path; }

void InstallTerminateHandler() { std::set_terminate(OnUncaught); }

}  // namespace korvel::tool
