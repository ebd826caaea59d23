// Compiled schema libraries: written to a file as they lie in memory, mapped and used in place. docs/formats/image.md describes
// the bytes.
//
// An image from outside is not trusted: nothing of it is used before all of it is verified. The checksum finds what was damaged
// on the way; it proves nothing about who wrote the image, so a block is verified whether or not its checksum is right.
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

// First bytes of every image, of no schema file in text form. Stored in images: do not change.
inline constexpr std::string_view kImageMagic = "QMXIMAGE";
// Version of the format that is written and read. Raised with every change of the header or of a record of qmx_types.h.
inline constexpr std::uint32_t kImageVersion = 1;
// Bytes of the header in front of the block. A multiple of 8, so that the block of a mapped file is aligned.
inline constexpr std::size_t kImageHeaderSize = 64;

// What an image may ask of its reader.
struct Limits {
  std::uint64_t max_bytes = kMaxFileBytes;  // of the whole image, its header included
  int max_depth = kMaxNesting;              // levels of nested structures; more than kMaxNesting counts as kMaxNesting
};

// What is wrong with an image or block.
struct VerifyError {
  std::string part;      // "header: block size", "library: ptrMetas", "meta 2, entry 5: ptrName"; positions count from 0
  std::uint64_t offset;  // of the part, in bytes from the start of what was given: the image or the block
  std::string reason;    // "is 7; allowed: ...", one line
};

// The error as one line: "meta 2, entry 5: ptrName at byte 1234 is 7; allowed: ...".
std::string Describe(const VerifyError& error);

// Checks bytes [0, size) of a library so that every qmx_get_... operation and every rule stays inside them and comes to an end.
//
// Checked: sizes and counts without overflow; every list where its meta has it, no two sharing a byte; every text inside its
// meta, with an end, no two of a kind sharing a byte; names present; an entry's own offset and a meta's; counts by, key members
// and columns that are entries of the same meta, counts by earlier ones; how often members and columns repeat long names; types
// known, composite ones a meta of that kind, without cycles and at most limits.max_depth levels deep; unit sizes; the table of
// metas by name, which must be what the builder makes of the names under the seed that the library gives. NOT checked: whether
// names are legal or differ, ids differ, versions, counts and attributes make sense, and bytes that nothing uses; that is the
// business of the reader of schema files and of the rules.
//
// One pass over the block, linear in `size` whatever stands there; beside it a table of a sixtieth of the size and up to 48 bytes
// for each meta. Throws nothing but std::bad_alloc. Returns nullopt, or the first fault.
std::optional<VerifyError> Verify(const void* block, std::size_t size, const Limits& limits = {});

// Whether a file that begins with these bytes (kImageMagic.size() are enough) is meant as an image.
bool IsImage(std::string_view bytes);

// The image of a library. The same library gives the same bytes, and so do equal libraries.
std::string WriteImage(const Metalib& metalib);

// An image that was opened.
struct ImageResult {
  std::optional<Metalib> metalib;  // set if and only if the image is right
  VerifyError error;  // else what is wrong; offsets count from the start of the image; part "file": it cannot be read
};

// Takes an image over from memory: bytes [0, size) of `bytes`. The library lies in them, so they are kept while it lives.
// REQUIRES: `bytes` is aligned to 8 bytes, as memory from new[] is.
ImageResult LoadImage(std::unique_ptr<char[]> bytes, std::size_t size, const Limits& limits = {});

// Maps an image from a file, all of it from the first byte on, and uses it in place; the descriptor may be closed afterwards. The
// library is read-only: writing to a record ends the process.
//
// While the library lives the file must stay as it is: replacing it by a rename is fine, writing into it is not. Where it becomes
// shorter the next access ends the process with SIGBUS unless the program handles that; other changes are seen unverified.
ImageResult MapImage(int fd, const Limits& limits = {});
ImageResult MapImage(const std::string& path, const Limits& limits = {});

}  // namespace qmx
