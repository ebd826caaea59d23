// Runs independent work on several threads. Tested by tests/report/parallel_test.cpp.
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

// The exception of the piece of work with the lowest number. Thread-safe.
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
  const auto work_until_done = [&] {
    for (std::size_t i = next++; i < count; i = next++) {
      try {
        work(i);
      } catch (...) {
        fault.Note(i);
      }
    }
  };
  std::vector<std::jthread> helpers;
  const std::size_t limit = std::min({threads, count, std::size_t{std::thread::hardware_concurrency()}});
  try {
    while (helpers.size() + 1 < limit) helpers.emplace_back(work_until_done);
  } catch (const std::system_error&) {
    // This thread does the rest.
  }
  work_until_done();
  helpers.clear();
  fault.Rethrow();
}

}  // namespace korvel
