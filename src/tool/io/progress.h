// Shows the progress of long work on a terminal.
#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>

namespace korvel::tool {

// A line that is redrawn and finally cleared. Nothing is drawn before `delay` has passed, or if `fd` is not a terminal that is
// wide enough and not dumb.
class Progress {
 public:
  using Clock = std::chrono::steady_clock;

  static constexpr std::chrono::milliseconds kUsualDelay{1000};

  // `what` is counted: "files".
  Progress(int fd, std::size_t total, std::string what, std::chrono::milliseconds delay = kUsualDelay);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  // Counts one more item. May be called by several threads.
  void Step();

 private:
  std::string Line() const;

  static constexpr std::chrono::milliseconds kBetweenDrawings{100};

  std::mutex mutex_;
  int fd_;
  bool on_terminal_;
  std::size_t total_;
  std::size_t done_ = 0;
  std::string what_;
  std::chrono::milliseconds delay_;
  Clock::time_point next_;
  bool drawn_ = false;
};

}  // namespace korvel::tool
