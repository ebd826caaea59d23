// Runs independent work on several threads.
#pragma once

#include <cstddef>
#include <functional>

namespace korvel {

// Calls `work(i)` once for every i in [0, count), on the calling thread and up to `threads` - 1 others, in no fixed order. Uses
// fewer threads if there are fewer cores or the system refuses to start them. Returns when all work is done. If calls throw, the
// others still run; then the exception of the lowest `i` is thrown.
void ForEach(std::size_t count, std::size_t threads, const std::function<void(std::size_t)>& work);

// Bytes of schemas above which the work on them takes much longer than starting a thread.
inline constexpr std::size_t kWorthAThread = std::size_t{256} << 10;

}  // namespace korvel
