// Memory that runs out on purpose: of everything that the program allocates, C++ and C alike, a chosen allocation fails.
#pragma once

#include <atomic>
#include <functional>

namespace memory {

enum class Failing {
  kOne,   // one allocation
  kRest,  // it and every one behind it
};

// After `count` more allocations, those fail that `failing` says; `failed` tells from then on that they do.
void FailAfter(long count, Failing failing, std::atomic<bool>& failed);

// Nothing fails any more.
void FailNever();

// Adds to the number of failures that the program prints at its end.
void CountFailures(long count);

// Runs `work` again and again, each time with the next allocation failing, until it needs no more. Returns how many failed.
//
// A failure ends the work with std::bad_alloc, or the work copes with it; anything else fails the test. `work` says nothing of
// its own while it runs.
long FailEach(const std::function<void()>& work);

}  // namespace memory
