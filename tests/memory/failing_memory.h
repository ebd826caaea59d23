// Memory that runs out on purpose: of everything that the program allocates, C++ and C alike, a chosen allocation fails.
#pragma once

#include <functional>

namespace memory {

// Runs `work` again and again, each time with the next allocation failing, until it needs no more. Returns how many failed.
//
// A failure ends the work with std::bad_alloc, or the work copes with it; anything else fails the test. `work` says nothing of
// its own while it runs.
long FailEach(const std::function<void()>& work);

}  // namespace memory
