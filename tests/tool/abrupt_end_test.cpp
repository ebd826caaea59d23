// A program that cannot go on, in several threads at once or while it writes a report.
#include "tool/io/exit.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace {

// Regression: several threads failed, and each printed the error.
[[noreturn]] void FailInEveryThread() {
  korvel::tool::InstallTerminateHandler();
  std::atomic<int> missing = 8;
  std::vector<std::jthread> threads;
  for (int i = missing; i > 0; --i) {
    threads.emplace_back([&missing] {
      for (--missing; missing > 0;) std::this_thread::yield();
      std::terminate();
    });
  }
  threads.clear();
  std::_Exit(0);
}

TEST(AbruptEnd, IsReportedOnce) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  for (int i = 0; i < 20; ++i) {
    ASSERT_EXIT(FailInEveryThread(), testing::ExitedWithCode(3), "^korvelcheck: out of memory, or an internal error\n$");
  }
}

[[noreturn]] void EndWhileWriting(const std::string& path) {
  korvel::tool::InstallTerminateHandler();
  const std::string complete = path + ".complete";
  const std::string other = path + ".other";
  const korvel::tool::IncompleteFile first(path.c_str());
  std::optional<korvel::tool::IncompleteFile> second(complete.c_str());
  const korvel::tool::IncompleteFile third(other.c_str());
  second.reset();
  std::terminate();
}

TEST(AbruptEnd, LeavesNoIncompleteFile) {
  const std::string path = std::filesystem::temp_directory_path() / "korvel_incomplete_report";
  for (const char* const suffix : {"", ".complete", ".other"}) std::ofstream(path + suffix) << "half of a report";
  EXPECT_EXIT(EndWhileWriting(path), testing::ExitedWithCode(3), "internal error");
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_FALSE(std::filesystem::exists(path + ".other"));
  EXPECT_TRUE(std::filesystem::remove(path + ".complete"));
}

}  // namespace
