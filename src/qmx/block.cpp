// Grows and releases the block of a library. The memory comes from malloc because realloc lets the system move the pages of a
// large block instead of copying them: the block never exists twice.
#include "qmx/block.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>
#include <utility>

namespace qmx {
namespace {

constexpr std::size_t kFirstCapacity = 4096;

char* Resized(char* bytes, std::size_t capacity) {
  void* resized = std::realloc(bytes, capacity);
  if (resized == nullptr) throw std::bad_alloc();
  return static_cast<char*>(resized);
}

}  // namespace

Block::Block() : bytes_(Resized(nullptr, kFirstCapacity)), size_(kHeaderSize), capacity_(kFirstCapacity) {
  new (bytes_) tagQMXMetaLib{};
}

Block::~Block() { std::free(bytes_); }

std::int64_t Block::Grow(std::size_t size) {
  constexpr std::size_t kMaxSize = std::numeric_limits<std::int64_t>::max() / 2;
  if (size > kMaxSize - size_) throw std::bad_alloc();
  const std::size_t end = size_ + (size + 7) / 8 * 8;
  if (end > capacity_) {
    const std::size_t capacity = std::max(end, capacity_ + capacity_ / 2);
    bytes_ = Resized(bytes_, capacity);
    capacity_ = capacity;
  }
  return static_cast<std::int64_t>(std::exchange(size_, end) - kHeaderSize);
}

std::int64_t Block::AppendBytes(std::string_view bytes) {
  const std::int64_t offset = Grow(bytes.size());
  std::fill(std::copy(bytes.begin(), bytes.end(), data() + offset), bytes_ + size_, '\0');
  return offset;
}

Metalib Block::Finish() {
  Header().iDataSize = static_cast<std::int64_t>(size_ - kHeaderSize);
  bytes_ = Resized(bytes_, size_);
  std::shared_ptr<void> owner(std::exchange(bytes_, nullptr), std::free);
  auto* const library = static_cast<LPQMXMETALIB>(owner.get());
  return Metalib(std::move(owner), library, size_);
}

}  // namespace qmx
