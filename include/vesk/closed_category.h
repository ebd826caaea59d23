// A log category to which nothing is written, for callers that want no log: without a category, a call with a server version
// fails. Header only; needs no logging library.
#pragma once

#include "vesk/vesk_category.h"

namespace vesk {

class ClosedCategory {
 public:
  ClosedCategory() = default;
  ClosedCategory(const ClosedCategory&) = delete;
  ClosedCategory& operator=(const ClosedCategory&) = delete;

  // Borrowed: valid as long as this object lives. Threads may share it: it is only read.
  LPVESKCATEGORYINST handle() { return &category_; }

 private:
  int low_ = 0;  // below every priority, so the checker never calls vesk_category_can_write
  VESKCATEGORYINST category_{nullptr, &low_};
};

}  // namespace vesk
