// Spreads independent work over the cores. Held by tests/report/parallel_test.cpp.
#include "base/parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace korvel {
namespace {

// The fault of the lowest piece of work.
class FirstFault {
 public:
  void Note(std::size_t piece) {
    const std::scoped_lock lock(mutex_);
    if (fault_ != nullptr && piece > piece_) return;
    piece_ = piece;
    fault_ = std::current_exception();
  }

  void Rethrow() const {
    if (fault_ != nullptr) std::rethrow_exception(fault_);
  }

 private:
  std::mutex mutex_;
  std::size_t piece_ = 0;
  std::exception_ptr fault_;
};

}  // namespace

void ForEach(std::size_t count, std::size_t threads, const std::function<void(std::size_t)>& work) {
  std::atomic<std::size_t> next = 0;
  FirstFault fault;
  const auto take_what_is_left = [&] {
    for (std::size_t i = next++; i < count; i = next++) {
      try {
        work(i);
      } catch (...) {
        fault.Note(i);
      }
    }
  };
  std::vector<std::jthread> helpers;
  const std::size_t wanted = std::min({threads, count, std::size_t{std::thread::hardware_concurrency()}});
  try {
    while (helpers.size() + 1 < wanted) helpers.emplace_back(take_what_is_left);
  } catch (const std::system_error&) {
    // This thread does what is left.
  }
  take_what_is_left();
  helpers.clear();
  fault.Rethrow();
}

}  // namespace korvel
