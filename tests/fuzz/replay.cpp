// Runs a target on the files of directories, without a fuzzer: the corpus as an ordinary test, with any compiler.
//
//   fuzz_NAME DIRECTORY...
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

// In memory of exactly the file's size, so that a sanitizer detects every access outside it.
void Run(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  const auto exact = std::make_unique<std::uint8_t[]>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), exact.get());
  std::printf("%s\n", path.filename().c_str());  // the last one is the one that fails
  std::fflush(stdout);
  LLVMFuzzerTestOneInput(exact.get(), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::filesystem::path> files;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i])) {
      if (entry.is_regular_file()) files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  if (files.empty()) {
    std::fprintf(stderr, "no files\n");
    return 1;
  }
  for (const std::filesystem::path& file : files) Run(file);
  std::printf("%zu files\n", files.size());
  return 0;
}
