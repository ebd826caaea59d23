// Tested by tests/lsp/features_test.cpp.
#include "lsp/report_pages.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "base/file_descriptor.h"
#include "base/paths.h"
#include "base/text.h"

namespace korvel::lsp {
namespace {

[[noreturn]] void Fail(int error, const std::string& path) {
  throw std::system_error(error, std::generic_category(), "cannot write " + path);
}

// The longest beginning of a name that a page may have. Does not cut characters.
std::string Shortened(const std::string& name) {
  std::size_t end = 0;
  while (end < name.size()) {
    const std::size_t length = std::max(std::size_t{1}, Utf8Length(std::string_view(name).substr(end)));
    if (end + length > kMaxPageName) break;
    end += length;
  }
  return name.substr(0, end);
}

}  // namespace

ReportPages::~ReportPages() {
  std::error_code ignored;
  if (!directory_.empty()) std::filesystem::remove_all(directory_, ignored);
}

const std::string& ReportPages::NameFor(const std::string& path) {
  const auto [known, is_new] = names_.try_emplace(path);
  if (!is_new) return known->second;
  const std::string name = Shortened(FileNameOf(path));
  std::string page = name + ".html";
  const auto is_page = [&](const auto& one) { return one.second == page; };
  for (int number = 2; std::ranges::any_of(names_, is_page); ++number) page = name + "-" + std::to_string(number) + ".html";
  return known->second = page;
}

std::string ReportPages::Write(const std::string& path, const std::string& page) {
  if (directory_.empty()) {
    std::string name = (std::filesystem::temp_directory_path() / "korvelcheck-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) Fail(errno, name);
    directory_ = name;
  }
  std::string file = (directory_ / NameFor(path)).string();
  const FileDescriptor output(::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  if (!output.IsOpen()) Fail(errno, file);
  if (const int error = WriteAll(output.get(), page); error != 0) Fail(error, file);
  return file;
}

}  // namespace korvel::lsp
