// The linker replaces malloc, calloc and realloc by these functions (--wrap), in our own objects and in static libraries; the
// operators serve C++. They fail only after FailAfter.
#include "memory/failing_memory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

constexpr long kNever = -1;
std::atomic<long> left = kNever;  // allocations until one fails
std::atomic<bool> is_rest = false;
std::atomic<bool>* has_failed = nullptr;

bool Fails() {
  if (left.load() == kNever) return false;
  if (left.load() > 0 && left.fetch_sub(1) > 0) return false;
  if (!is_rest) left = kNever;  // the code that handles the failure may allocate
  *has_failed = true;
  return true;
}

// Prints the number of failures.
class Total : public testing::Environment {
 public:
  void TearDown() override { std::printf("%ld allocations failed on purpose\n", count); }
  long count = 0;
};
Total* const total = static_cast<Total*>(testing::AddGlobalTestEnvironment(new Total));

}  // namespace

// Names of the linker: __real_X is X itself, and calls of X go to __wrap_X.
void* RealMalloc(std::size_t size) __asm__("__real_malloc");
void* RealCalloc(std::size_t count, std::size_t size) __asm__("__real_calloc");
void* RealRealloc(void* block, std::size_t size) __asm__("__real_realloc");
void* WrappedMalloc(std::size_t size) __asm__("__wrap_malloc");
void* WrappedCalloc(std::size_t count, std::size_t size) __asm__("__wrap_calloc");
void* WrappedRealloc(void* block, std::size_t size) __asm__("__wrap_realloc");

void* WrappedMalloc(std::size_t size) { return Fails() ? nullptr : RealMalloc(size); }
void* WrappedCalloc(std::size_t count, std::size_t size) { return Fails() ? nullptr : RealCalloc(count, size); }
void* WrappedRealloc(void* block, std::size_t size) { return Fails() ? nullptr : RealRealloc(block, size); }

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Fails() ? nullptr : RealMalloc(size == 0 ? 1 : size);
}
void* operator new(std::size_t size) {
  void* const block = operator new(size, std::nothrow);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace memory {

void FailAfter(long count, Failing failing, std::atomic<bool>& failed) {
  failed = false;
  has_failed = &failed;
  is_rest = failing == Failing::kRest;
  left = count;
}

void FailNever() { left = kNever; }

void CountFailures(long count) { total->count += count; }

long FailEach(const std::function<void()>& work, long step) {
  std::atomic<bool> failed = false;
  for (long count = 0;; ++count) {
    bool ended = false;
    FailAfter(count * step, Failing::kOne, failed);
    try {
      work();
    } catch (const std::bad_alloc&) {
      ended = true;
    }
    FailNever();
    if (!failed) {
      EXPECT_FALSE(ended) << "std::bad_alloc without a failed allocation";
      CountFailures(count);
      return count;
    }
  }
}

}  // namespace memory
