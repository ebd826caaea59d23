// Draws a bar. Held by tests/tool/progress_test.cpp.
#include "tool/progress.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

#include "tool/file_descriptor.h"

namespace korvel::tool {
namespace {

constexpr std::size_t kBarWidth = 30;      // characters
constexpr char kClearLine[] = "\r\x1b[K";  // to the start of the line, which is emptied

}  // namespace

Progress::Progress(int fd, std::size_t total, std::string what, std::chrono::milliseconds delay)
    : fd_(fd),
      on_terminal_(::isatty(fd) == 1),
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
  drawn_ = true;
  static_cast<void>(WriteAll(fd_, kClearLine + Line()));
}

std::string Progress::Line() const {
  const std::size_t filled = total_ == 0 ? kBarWidth : kBarWidth * std::min(done_, total_) / total_;
  return "[" + std::string(filled, '#') + std::string(kBarWidth - filled, ' ') + "] " + std::to_string(done_) + " of " +
         std::to_string(total_) + " " + what_;
}

}  // namespace korvel::tool
