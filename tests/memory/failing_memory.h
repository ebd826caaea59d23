// Makes a chosen allocation of the program fail, in C++ code and in C code.
#pragma once

#include <atomic>
#include <functional>

namespace memory {

enum class Failing {
  kOne,   // one allocation
  kRest,  // it and all that follow
};

// Lets `count` allocations succeed, then makes them fail as `failing` says. Sets `failed` at the first failure.
void FailAfter(long count, Failing failing, std::atomic<bool>& failed);

// Ends the failures.
void FailNever();

// Adds to the number of failures that the program prints when it ends.
void CountFailures(long count);

// Runs `work` repeatedly, each time with a later allocation failing, until no allocation is left: with the next one, or with
// every `step`-th. Returns the number of failures.
//
// `work` must end normally or with std::bad_alloc; any other end fails the test. `work` must not report test failures itself.
long FailEach(const std::function<void()>& work, long step = 1);

}  // namespace memory
