// Which memory the calls of a thread share. Held by tests/linear/linear_test.cpp.
#include "common/call_memory.h"

#include <new>

namespace korvel {
namespace {

thread_local CallMemory* current = nullptr;

// Where it stands: neither on a stack that rules descend on nor asked of the heap.
alignas(CallMemory) thread_local std::array<std::byte, sizeof(CallMemory)> place;

}  // namespace

CallMemory::Scope::Scope() : memory_(current), is_outermost_(memory_ == nullptr) {
  if (!is_outermost_) return;
  memory_ = new (place.data()) CallMemory;  // not (): its first piece needs no zeros
  current = memory_;
}

CallMemory::Scope::~Scope() {
  if (!is_outermost_) return;
  current = nullptr;
  memory_->~CallMemory();
}

}  // namespace korvel
