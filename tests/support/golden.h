// Compares what was made with a file that someone has read.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace test_support {

inline std::string ReadGolden(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.good()) << path << " is missing; 'make goldens' writes it";
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// With KORVEL_UPDATE_GOLDENS set, writes the file instead.
inline void ExpectGolden(const std::filesystem::path& path, const std::string& actual) {
  if (std::getenv("KORVEL_UPDATE_GOLDENS") != nullptr) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << actual;
    return;
  }
  EXPECT_EQ(ReadGolden(path), actual) << path;
}

// A golden that no test reads would go bad unseen. `known` are the names of files in the directory.
inline void ExpectNoOtherGoldens(const std::filesystem::path& directory, const std::set<std::string>& known) {
  for (const auto& file : std::filesystem::directory_iterator(directory)) {
    EXPECT_TRUE(known.contains(file.path().filename().string())) << file.path() << " is read by no test";
  }
}

}  // namespace test_support
