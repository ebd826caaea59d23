// Work on several threads: every item is done once, whatever the number of threads, and exceptions are like those of a loop.
#include "base/parallel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using korvel::ForEach;

class Parallel : public ::testing::TestWithParam<std::size_t> {};

TEST_P(Parallel, DoesEverythingOnce) {
  std::vector<std::atomic<int>> done(1000);
  ForEach(done.size(), GetParam(), [&](std::size_t i) { ++done[i]; });
  for (std::size_t i = 0; i < done.size(); ++i) EXPECT_EQ(done[i], 1) << i;
}

TEST_P(Parallel, NothingToDo) {
  ForEach(0, GetParam(), [](std::size_t) { FAIL(); });
}

TEST_P(Parallel, ThrowsFirstExceptionAfterAllWork) {
  std::atomic<int> done = 0;
  try {
    ForEach(100, GetParam(), [&](std::size_t i) {
      ++done;
      if (i % 10 == 7) throw std::runtime_error(std::to_string(i));
    });
    FAIL() << "nothing was thrown";
  } catch (const std::runtime_error& fault) {
    EXPECT_STREQ(fault.what(), "7");
  }
  EXPECT_EQ(done, 100);
}

INSTANTIATE_TEST_SUITE_P(Threads, Parallel, ::testing::Values(0, 1, 2, 16));

}  // namespace
