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
std::atomic<IncompleteFile*> incomplete_files;

// Several threads may get here: the first one prints, the others wait for the end.
void WaitUnlessFirst() {
  while (is_ending.test_and_set()) ::pause();
}

[[noreturn]] void End() {
  IncompleteFile::RemoveAll();
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

IncompleteFile::IncompleteFile(const char* path) : path_(path), next_(incomplete_files) { incomplete_files = this; }

IncompleteFile::~IncompleteFile() {
  if (incomplete_files == this) {
    incomplete_files = next_;
    return;
  }
  for (IncompleteFile* file = incomplete_files; file != nullptr; file = file->next_) {
    if (file->next_ == this) file->next_ = next_;
  }
}

void IncompleteFile::RemoveAll() {
  for (const IncompleteFile* file = incomplete_files; file != nullptr; file = file->next_) ::unlink(file->path_);
}

void InstallTerminateHandler() { std::set_terminate(OnUncaught); }

}  // namespace korvel::tool
