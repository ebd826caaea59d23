// Where text goes that is written piece by piece, so that a large document is never in memory as a whole.
#pragma once

#include <functional>
#include <string_view>

namespace korvel {

// Called with each piece, in order. May throw; then no more is written.
using TextSink = std::function<void(std::string_view text)>;

}  // namespace korvel
