// A file that becomes shorter under several threads at once.
#include "tool/io/exit.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
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

}  // namespace
