// Which memory the calls of a thread share. Held by tests/linear/linear_test.cpp.
#include "common/call_memory.h"

#include <new>

namespace korvel {
namespace {

thread_local CallMemory* current = nullptr;

// Where the first one stands: neither on a stack that rules descend on nor asked of the heap.
alignas(CallMemory) thread_local std::array<std::byte, sizeof(CallMemory)> place;

}  // namespace

CallMemory::Scope::Scope() : Scope(current == nullptr ? nullptr : current->object_) {}

CallMemory::Scope::Scope(const void* object) : interrupted_(current), memory_(current) {
  if (current != nullptr && current->object_ == object) return;
  memory_ = current == nullptr ? new (place.data()) CallMemory(object) : new CallMemory(object);
  current = memory_;
}

CallMemory::Scope::~Scope() {
  if (memory_ == interrupted_) return;
  current = interrupted_;
  if (interrupted_ == nullptr) {
    memory_->~CallMemory();
  } else {
    delete memory_;
  }
}

}  // namespace korvel
