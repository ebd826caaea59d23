// Compares results with golden files.
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

// Expects that the file contains `actual`. If KORVEL_UPDATE_GOLDENS is set, writes the file instead.
inline void ExpectGolden(const std::filesystem::path& path, const std::string& actual) {
  if (std::getenv("KORVEL_UPDATE_GOLDENS") != nullptr) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << actual;
    return;
  }
  EXPECT_EQ(ReadGolden(path), actual) << path;
}

// Expects that the directory contains no file whose name is not `known`: a golden that no test reads would become wrong
// unnoticed.
inline void ExpectNoOtherGoldens(const std::filesystem::path& directory, const std::set<std::string>& known) {
  for (const auto& file : std::filesystem::directory_iterator(directory)) {
    EXPECT_TRUE(known.contains(file.path().filename().string())) << file.path() << " is read by no test";
  }
}

}  // namespace test_support
