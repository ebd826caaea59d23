// Compiled schema libraries: written to a file in their memory layout, read and used in place. docs/formats/image.md describes
// the bytes.
//
// An image from outside is not trusted: it is verified completely before any of it is used. The checksum detects accidental
// damage; it does not prove who wrote the image, so a block is verified even if its checksum is right.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "qmx/qmx_builder.h"
#include "qmx/qmx_limits.h"
#include "qmx/qmx_types.h"

namespace qmx {

// First bytes of every image. No schema file in text form begins like this. Stored in images: do not change.
inline constexpr std::string_view kImageMagic = "QMXIMAGE";
// Version of the format, for reading and writing. Raised with every change of the header or of a record in qmx_types.h.
inline constexpr std::uint32_t kImageVersion = 1;
// Bytes of the header in front of the block. A multiple of 8, so that the block is aligned if the image is.
inline constexpr std::size_t kImageHeaderSize = 64;

// Limits for images that are read.
struct Limits {
  std::uint64_t max_bytes = kMaxFileBytes;  // of the whole image, including its header
  int max_depth = kMaxNesting;              // levels of nested structures; values above kMaxNesting count as kMaxNesting
};

// What is wrong with an image or block.
struct VerifyError {
  std::string part;      // "header: block size", "library: ptrMetas", "meta 2, entry 5: ptrName"; positions count from 0
  std::uint64_t offset;  // of the part, in bytes from the start of the input: the image or the block
  std::string reason;    // "is 7; allowed: ...", one line
};

// The error as one line: "meta 2, entry 5: ptrName at byte 1234 is 7; allowed: ...".
std::string Describe(const VerifyError& error);

// Checks bytes [0, size) of a library, so that every qmx_get_... operation and every rule stays inside them and terminates.
//
// Checked: sizes and counts without overflow; at least one entry in each meta; lists in the place that their meta requires,
// without overlaps; texts inside their meta, terminated, texts of one kind without overlaps; names present; the stored own
// offsets of entries and metas; counters, key members and columns are entries of the same meta, and a counter precedes the entry
// that it counts; how often members and columns repeat long names; known types, composite types refer to a meta of that kind,
// without cycles and at most limits.max_depth levels deep; unit sizes; the hash table of metas, which must equal the one that the
// builder makes of the names under the seed of the library. NOT checked: whether names are legal or unique, ids unique, versions,
// counts and attributes meaningful, and bytes that nothing uses; the reader of schema files and the rules check these.
//
// One pass over the block, linear in `size` for every input. Memory: a table of one sixtieth of the size and up to 48 bytes for
// each meta. Throws nothing but std::bad_alloc. Returns nullopt, or the first fault.
std::optional<VerifyError> Verify(const void* block, std::size_t size, const Limits& limits = {});

// Whether a file that begins with these bytes is an image, valid or not. kImageMagic.size() bytes are enough.
bool IsImage(std::string_view bytes);

// The image of a library. Equal libraries give equal bytes. The library is not verified: what Verify refuses (a meta without
// entries, for example, which the builder accepts) cannot be loaded again.
std::string WriteImage(const Metalib& metalib);

// The result of opening an image.
struct ImageResult {
  std::optional<Metalib> metalib;  // set if and only if the image is valid
  VerifyError error;  // otherwise what is wrong; offsets count from the start of the image; part "file": it cannot be read
};

// Opens an image in memory: bytes [0, size) of `bytes`, which the library keeps and uses in place. REQUIRES: `bytes` is aligned
// to 8 bytes, as memory from new[] is.
ImageResult LoadImage(std::unique_ptr<char[]> bytes, std::size_t size, const Limits& limits = {});

// Reads an image from a file, from its first byte to its last, into memory of its own; the descriptor may be closed afterwards. A
// file that is written to at the same time is read as it was, as it becomes, or as a mixture that is refused: what is verified
// cannot change any more, which is why the file is not mapped.
ImageResult ReadImage(int fd, const Limits& limits = {});
ImageResult ReadImage(const std::string& path, const Limits& limits = {});

}  // namespace qmx
