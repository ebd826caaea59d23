// Limits the work of one call, so that its time stays finite for every input.
#pragma once

#include <cstddef>

#include "base/limits.h"

namespace korvel {

// Counts parts of models (PartsOf) that a call visits. The result depends on the order in which work is taken, so tables take it
// in the order of the report. Not for several threads at once.
class WorkLimit {
 public:
  explicit WorkLimit(std::size_t left = kMaxWork) : left_(left) {}

  // Whether so much work may be done; then it counts as done.
  bool Take(std::size_t work) {
    is_reached_ = is_reached_ || work > left_;
    if (work > left_) return false;
    left_ -= work;
    return true;
  }

  std::size_t left() const { return left_; }
  bool is_reached() const { return is_reached_; }  // whether work was refused

 private:
  std::size_t left_;
  bool is_reached_ = false;
};

// The search has its own limit, so that suggestions are the same with and without fixes.
struct SuggestionWork {
  WorkLimit search{};
  WorkLimit fixes{};

  bool is_reached() const { return search.is_reached() || fixes.is_reached(); }
};

}  // namespace korvel
