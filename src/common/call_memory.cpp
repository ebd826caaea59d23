// Which memory the calls of a thread share. Held by tests/linear/linear_test.cpp.
#include "common/call_memory.h"

namespace korvel {
namespace {

thread_local CallMemory* current = nullptr;

}  // namespace

CallMemory::Scope::Scope() : memory_(current) {
  if (memory_ != nullptr) return;
  memory_ = &own_.emplace();
  current = memory_;
}

CallMemory::Scope::~Scope() {
  if (own_.has_value()) current = nullptr;
}

}  // namespace korvel
