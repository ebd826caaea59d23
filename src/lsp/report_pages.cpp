// Tested by tests/lsp/features_test.cpp.
#include "lsp/report_pages.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "base/file_descriptor.h"
#include "base/paths.h"

namespace korvel::lsp {
namespace {

[[noreturn]] void Fail(int error, const std::string& path) {
  throw std::system_error(error, std::generic_category(), "cannot write " + path);
}

}  // namespace

ReportPages::~ReportPages() {
  std::error_code ignored;
  if (!directory_.empty()) std::filesystem::remove_all(directory_, ignored);
}

std::string ReportPages::Write(const std::string& path, const std::string& page) {
  if (directory_.empty()) {
    std::string name = (std::filesystem::temp_directory_path() / "korvelcheck-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) Fail(errno, name);
    directory_ = name;
  }
  std::string file = (directory_ / (FileNameOf(path) + ".html")).string();
  const FileDescriptor output(::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  if (!output.IsOpen()) Fail(errno, file);
  if (const int error = WriteAll(output.get(), page); error != 0) Fail(error, file);
  return file;
}

}  // namespace korvel::lsp
