// Draws a progress bar. Tested by tests/tool/progress_test.cpp.
#include "tool/io/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "base/file_descriptor.h"

namespace korvel::tool {
namespace {

constexpr std::size_t kBarWidth = 30;      // characters
constexpr char kClearLine[] = "\r\x1b[K";  // moves to the start of the line and clears it

bool UnderstandsClearLine(int fd) {
  const char* const terminal = std::getenv("TERM");
  return ::isatty(fd) == 1 && (terminal == nullptr || std::string_view(terminal) != "dumb");
}

// A longer line would wrap, and the rest of it would stay.
bool IsTooNarrow(int fd, const std::string& line) {
  struct winsize size {};
  return ::ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col != 0 && line.size() >= size.ws_col;
}

}  // namespace

Progress::Progress(int fd, std::size_t total, std::string what, std::chrono::milliseconds delay)
    : fd_(fd),
      on_terminal_(UnderstandsClearLine(fd)),
      total_(total),
      what_(std::move(what)),
      delay_(delay),
      next_(Clock::now() + delay) {}

Progress::~Progress() {
  if (drawn_) static_cast<void>(WriteAll(fd_, kClearLine));
}

void Progress::Step() {
  const std::scoped_lock lock(mutex_);
  ++done_;
  if (!on_terminal_) return;
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + std::min(kBetweenDrawings, delay_);
  const std::string line = Line();
  if (IsTooNarrow(fd_, line)) return;
  drawn_ = true;
  static_cast<void>(WriteAll(fd_, kClearLine + line));
}

std::string Progress::Line() const {
  const std::size_t filled = total_ == 0 ? kBarWidth : kBarWidth * std::min(done_, total_) / total_;
  return "[" + std::string(filled, '#') + std::string(kBarWidth - filled, ' ') + "] " + std::to_string(done_) + " of " +
         std::to_string(total_) + " " + what_;
}

}  // namespace korvel::tool
