// A directory for the files of a test.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace capi_test {

class TemporaryDirectory {
 public:
  TemporaryDirectory() : path_((std::filesystem::temp_directory_path() / "capi_test.XXXXXX").string()) {
    if (::mkdtemp(path_.data()) == nullptr) std::abort();
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() { std::filesystem::remove_all(path_); }

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace capi_test
