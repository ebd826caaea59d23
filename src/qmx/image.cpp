// Writes and opens images. The contents of the block are verified in image_verify.cpp.
// Tested by tests/qmx/image_test.cpp.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "base/text.h"
#include "qmx/checksum.h"
#include "qmx/image_header.h"

namespace qmx {
namespace {

using korvel::Quote;

using Fault = std::optional<VerifyError>;

Fault HeaderFault(const char* field, std::size_t offset, std::string reason) {
  return VerifyError{std::string("header: ") + field, offset, std::move(reason)};
}

template <class Number>
Fault WrongNumber(const char* field, std::size_t offset, Number found, Number allowed) {
  return HeaderFault(field, offset, "is " + std::to_string(found) + "; allowed: " + std::to_string(allowed));
}

const char* NameOfByteOrder(bool is_own) {
  const bool little = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
  return little == is_own ? "little-endian" : "big-endian";
}

Fault WrongByteOrder(std::uint32_t found) {
  const std::string is = found == kForeignByteOrder ? NameOfByteOrder(false) : "unknown (" + std::to_string(found) + ")";
  return HeaderFault("byte order", offsetof(ImageHeader, byte_order),
                     "is " + is + "; allowed: " + NameOfByteOrder(true) + ", that of this machine");
}

Fault WrongBlockSize(const ImageHeader& header, std::uint64_t size_after_header) {
  const char* what = header.block_size > size_after_header ? "the image is truncated" : "bytes follow the end of the image";
  return HeaderFault("block size", offsetof(ImageHeader, block_size),
                     "is " + std::to_string(header.block_size) + "; allowed: " + std::to_string(size_after_header) +
                         ", the number of bytes after the header; " + what);
}

// Each field is checked before the ones whose meaning depends on it.
Fault CheckHeader(const ImageHeader& header, std::uint64_t size_after_header) {
  const std::string_view magic(header.magic, sizeof(header.magic));
  if (magic != kImageMagic) {
    return HeaderFault("magic", 0, "is " + Quote(magic) + "; allowed: " + Quote(kImageMagic));
  }
  if (header.byte_order != kByteOrder) return WrongByteOrder(header.byte_order);
  if (header.version != kImageVersion) {
    return WrongNumber("format version", offsetof(ImageHeader, version), header.version, kImageVersion);
  }
  if (header.header_size != kImageHeaderSize) {
    return WrongNumber("header size", offsetof(ImageHeader, header_size), header.header_size, std::uint32_t{kImageHeaderSize});
  }
  if (header.reserved != 0) {
    return WrongNumber("reserved", offsetof(ImageHeader, reserved), header.reserved, std::uint32_t{0});
  }
  for (const std::uint64_t& word : header.reserved_2) {
    const auto offset = static_cast<std::size_t>(reinterpret_cast<const char*>(&word) - header.magic);
    if (word != 0) return WrongNumber("reserved", offset, word, std::uint64_t{0});
  }
  if (header.block_size != size_after_header) return WrongBlockSize(header, size_after_header);
  return std::nullopt;
}

Fault CheckImage(const char* bytes, std::uint64_t size, const Limits& limits) {
  if (size > limits.max_bytes) {
    return VerifyError{"file", 0, "has " + std::to_string(size) + " bytes; allowed: at most " + std::to_string(limits.max_bytes)};
  }
  if (size < kImageHeaderSize) {
    return VerifyError{"header", size, "is truncated; allowed: " + std::to_string(kImageHeaderSize) + " bytes"};
  }
  const auto& header = *reinterpret_cast<const ImageHeader*>(bytes);
  if (Fault fault = CheckHeader(header, size - kImageHeaderSize)) return fault;
  const char* const block = bytes + kImageHeaderSize;
  const std::uint64_t checksum = Checksum(block, header.block_size);
  if (checksum != header.checksum) {
    return WrongNumber("checksum", offsetof(ImageHeader, checksum), header.checksum, checksum);
  }
  Fault fault = Verify(block, header.block_size, limits);
  if (fault) fault->offset += kImageHeaderSize;
  return fault;
}

// The library of an image, kept alive by `owner`.
ImageResult Open(std::shared_ptr<void> owner, std::size_t size, const Limits& limits) {
  char* const bytes = static_cast<char*>(owner.get());
  if (Fault fault = CheckImage(bytes, size, limits)) return {std::nullopt, std::move(*fault)};
  auto* const library = reinterpret_cast<LPQMXMETALIB>(bytes + kImageHeaderSize);
  return {Metalib(std::move(owner), library, size - kImageHeaderSize), {}};
}

// Large pages are faster to provide and to fill than small ones. The request is a hint, which may fail.
std::shared_ptr<void> Allocate(std::size_t size) {
  constexpr std::size_t kLargePage = std::size_t{2} << 20;
  const std::size_t unit = size < kLargePage ? alignof(std::max_align_t) : kLargePage;
  const std::size_t rounded = (size + unit - 1) / unit * unit;
  std::shared_ptr<void> memory(std::aligned_alloc(unit, rounded), std::free);
  if (memory == nullptr) throw std::bad_alloc();
  if (unit == kLargePage) static_cast<void>(::madvise(memory.get(), rounded, MADV_HUGEPAGE));
  return memory;
}

ImageResult CannotRead() { return {std::nullopt, {"file", 0, std::string("cannot be read: ") + std::strerror(errno)}}; }

}  // namespace

std::string Describe(const VerifyError& error) {
  return error.part + " at byte " + std::to_string(error.offset) + " " + error.reason;
}

bool IsImage(std::string_view bytes) { return bytes.starts_with(kImageMagic); }

ImageResult LoadImage(std::unique_ptr<char[]> bytes, std::size_t size, const Limits& limits) {
  return Open(std::shared_ptr<char[]>(std::move(bytes)), size, limits);
}

ImageResult ReadImage(int fd, const Limits& limits) {
  struct stat status {};
  if (::fstat(fd, &status) != 0) return CannotRead();
  const auto size = static_cast<std::size_t>(status.st_size);
  // A file that is refused by its size need not be read.
  if (size < kImageHeaderSize || size > limits.max_bytes) return {std::nullopt, *CheckImage(nullptr, size, limits)};
  std::shared_ptr<void> memory = Allocate(size);
  std::size_t count = 0;
  while (count < size) {
    const ssize_t got = ::pread(fd, static_cast<char*>(memory.get()) + count, size - count, static_cast<off_t>(count));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return CannotRead();
    if (got == 0) break;
    count += static_cast<std::size_t>(got);
  }
  return Open(std::move(memory), count, limits);
}

ImageResult ReadImage(const std::string& path, const Limits& limits) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return CannotRead();
  ImageResult result = ReadImage(fd, limits);
  ::close(fd);
  return result;
}

std::string WriteImage(const Metalib& metalib) {
  ImageHeader header{};
  kImageMagic.copy(header.magic, sizeof(header.magic));
  header.byte_order = kByteOrder;
  header.version = kImageVersion;
  header.header_size = kImageHeaderSize;
  header.block_size = metalib.size();
  header.checksum = Checksum(metalib.get(), metalib.size());
  std::string image;
  image.reserve(sizeof(header) + metalib.size());
  image.append(reinterpret_cast<const char*>(&header), sizeof(header));
  return image.append(reinterpret_cast<const char*>(metalib.get()), metalib.size());
}

}  // namespace qmx
