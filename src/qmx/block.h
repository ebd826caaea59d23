// The block of a library while it is written. It grows at its end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <string_view>

#include "qmx/qmx_builder.h"
#include "qmx/qmx_types.h"

namespace qmx {

// Offsets count from the start of the data area. Appending moves the block, so references into it do not outlive the next append.
class Block {
 public:
  Block();  // the header and an empty data area
  ~Block();
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;

  // Appends records with all members zero. Returns the offset of the first, or QMX_NO_REF for none.
  template <class Record>
  std::int64_t Append(std::size_t count) {
    static_assert(sizeof(Record) % 8 == 0);
    if (count == 0) return QMX_NO_REF;
    const std::int64_t first = Grow(count * sizeof(Record));
    for (std::size_t i = 0; i < count; ++i) new (data() + first + static_cast<std::int64_t>(i * sizeof(Record))) Record{};
    return first;
  }

  // Appends bytes, padded with zeros to a multiple of 8. Returns their offset.
  std::int64_t AppendBytes(std::string_view bytes);

  // REQUIRES: a record of that type was appended at that offset.
  template <class Record>
  Record& At(std::int64_t offset, std::size_t position = 0) {
    return *std::launder(reinterpret_cast<Record*>(data() + offset + static_cast<std::int64_t>(position * sizeof(Record))));
  }

  const char* Text(std::int64_t offset) const { return bytes_ + kHeaderSize + offset; }

  tagQMXMetaLib& Header() { return *std::launder(reinterpret_cast<tagQMXMetaLib*>(bytes_)); }

  // Releases the block as a library. The Block must not be used afterwards.
  Metalib Finish();

 private:
  static constexpr std::size_t kHeaderSize = offsetof(tagQMXMetaLib, data);

  char* data() { return bytes_ + kHeaderSize; }

  // Makes room for `size` bytes, rounded up to a multiple of 8, at the end. Returns the offset of the first.
  std::int64_t Grow(std::size_t size);

  char* bytes_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace qmx
