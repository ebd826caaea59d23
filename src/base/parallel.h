// Spreads independent work over the cores.
#pragma once

#include <cstddef>
#include <functional>

namespace korvel {

// Calls `work(i)` once for every i in [0, count), each on the first of up to `threads` threads that is free, the caller's among
// them. Fewer cores, or a system that gives no more threads, make it slower and nothing else. Throws what the work of the lowest
// `i` threw, when all is done.
void ForEach(std::size_t count, std::size_t threads, const std::function<void(std::size_t)>& work);

// Bytes of schemas from which on work on them takes so much longer than starting a thread that the thread pays.
inline constexpr std::size_t kWorthAThread = std::size_t{256} << 10;

}  // namespace korvel
