// A file that becomes shorter under several threads at once, or while a report is written.
#include "tool/io/exit.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

// Regression: several threads read past the end of one image, and each printed the error.
[[noreturn]] void ReadPastTheEnd() {
  korvel::tool::InstallSigbusHandler();
  std::atomic<int> missing = 8;
  std::vector<std::jthread> threads;
  for (int i = missing; i > 0; --i) {
    threads.emplace_back([&missing] {
      for (--missing; missing > 0;) std::this_thread::yield();
      static_cast<void>(std::raise(SIGBUS));
    });
  }
  threads.clear();
  std::_Exit(0);
}

TEST(ShrunkFile, IsReportedOnce) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  for (int i = 0; i < 20; ++i) {
    ASSERT_EXIT(ReadPastTheEnd(), testing::ExitedWithCode(3), "^korvelcheck: a file became shorter while it was read\n$");
  }
}

[[noreturn]] void EndWhileWriting(const std::string& path) {
  korvel::tool::InstallSigbusHandler();
  korvel::tool::RemoveAtAbruptEnd(path.c_str());
  static_cast<void>(std::raise(SIGBUS));
  std::_Exit(0);
}

TEST(ShrunkFile, LeavesNoIncompleteFile) {
  const std::string path = std::filesystem::temp_directory_path() / "korvel_incomplete_report";
  std::ofstream(path) << "half of a report";
  EXPECT_EXIT(EndWhileWriting(path), testing::ExitedWithCode(3), "shorter");
  EXPECT_FALSE(std::filesystem::exists(path));
}

}  // namespace
