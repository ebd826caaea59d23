// The progress bar: only on a terminal, after a delay, cleared at the end.
#include "tool/io/progress.h"

#include <gmock/gmock.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

using korvel::tool::Progress;
using namespace std::chrono_literals;

// A terminal and its contents.
class Terminal {
 public:
  // No columns: a terminal of unknown size.
  explicit Terminal(std::uint16_t columns = 0) {
    winsize size{};
    size.ws_col = columns;
    EXPECT_EQ(::openpty(&screen_, &program_, nullptr, nullptr, &size), 0);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  ~Terminal() { ::close(screen_); }

  int fd() const { return program_; }

  // Ends the writing side.
  std::string Seen() {
    ::close(program_);
    std::string text;
    std::array<char, 4096> piece;
    for (ssize_t got = ::read(screen_, piece.data(), piece.size()); got > 0; got = ::read(screen_, piece.data(), piece.size())) {
      text.append(piece.data(), static_cast<std::size_t>(got));
    }
    return text;
  }

 private:
  int screen_ = -1;
  int program_ = -1;
};

TEST(Progress, IsDrawnOnATerminalAndClearedAtTheEnd) {
  Terminal terminal;
  {
    Progress progress(terminal.fd(), 4, "files", 0ms);
    for (int i = 0; i < 4; ++i) progress.Step();
  }
  const std::string seen = terminal.Seen();
  EXPECT_THAT(seen, testing::HasSubstr("\r\x1b[K[###############               ] 2 of 4 files"));
  EXPECT_THAT(seen, testing::HasSubstr("[##############################] 4 of 4 files"));
  EXPECT_THAT(seen, testing::EndsWith("\r\x1b[K"));
}

// Regression: a line that was too long wrapped, and its rest stayed on the screen.
TEST(Progress, IsDrawnWhereItFits) {
  for (const auto columns : {std::uint16_t{45}, std::uint16_t{46}}) {
    Terminal terminal(columns);
    {
      Progress progress(terminal.fd(), 4, "files", 0ms);
      for (int i = 0; i < 4; ++i) progress.Step();
    }
    EXPECT_EQ(terminal.Seen().empty(), columns == 45) << columns;
  }
}

TEST(Progress, IsNotDrawnOnADumbTerminal) {
  const char* const before = std::getenv("TERM");
  const std::string kept = before == nullptr ? "" : before;
  ::setenv("TERM", "dumb", 1);
  Terminal terminal;
  {
    Progress progress(terminal.fd(), 1, "files", 0ms);
    progress.Step();
  }
  before == nullptr ? ::unsetenv("TERM") : ::setenv("TERM", kept.c_str(), 1);
  EXPECT_EQ(terminal.Seen(), "");
}

TEST(Progress, IsNotDrawnBeforeTheDelay) {
  Terminal terminal;
  {
    Progress progress(terminal.fd(), 4, "files", 1h);
    for (int i = 0; i < 4; ++i) progress.Step();
  }
  EXPECT_EQ(terminal.Seen(), "");
}

TEST(Progress, IsDrawnOnlyOnATerminal) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  {
    Progress progress(ends[1], 4, "files", 0ms);
    for (int i = 0; i < 4; ++i) progress.Step();
  }
  ::close(ends[1]);
  char byte = 0;
  EXPECT_EQ(::read(ends[0], &byte, 1), 0);
  ::close(ends[0]);
}

}  // namespace
