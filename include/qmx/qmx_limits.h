// Limits for schema files and images. docs/limits.md gives the reason for each and the error text. Limits of reports are in
// base/limits.h, limits of the checker next to its rules.
#pragma once

#include <cstddef>

namespace qmx {

// --- Schema files and images ---

// Largest schema file or image, in bytes.
inline constexpr std::size_t kMaxFileBytes = std::size_t{1} << 30;
// Maximum number of metas in a library.
inline constexpr std::size_t kMaxMetas = 1'000'000;
// Maximum number of entries in a meta.
inline constexpr std::size_t kMaxEntries = 1'000'000;
// Maximum number of members in a primary key (tagQMXMeta::nPrimayKeyMemberNum has 16 bits).
inline constexpr std::size_t kMaxPrimaryKeyMembers = 32767;
// Maximum nesting of composite entries; the entries of the table itself are at level 1.
inline constexpr int kMaxNesting = 128;

// --- Schema files ---

// Maximum number of bytes before the outermost element: an endless stream of comments is refused early.
inline constexpr std::size_t kMaxPrologBytes = std::size_t{1} << 20;
// Maximum nesting of elements. A valid file has four levels; elements that are refused as a whole may contain others.
inline constexpr std::size_t kMaxElementDepth = 64;
// Longest name of a library, meta, entry or index, in bytes. The checker has its own limit for names of fields.
inline constexpr std::size_t kMaxNameBytes = 65'535;
// Longest value of any other stored attribute, in bytes.
inline constexpr std::size_t kMaxAttributeBytes = std::size_t{16} << 20;
// Maximum number of errors reported for one library; the others are left out.
inline constexpr std::size_t kMaxErrors = 1000;

// --- Images ---

// Maximum total length of the entry names that key members and columns refer to, as a multiple of the block size. A member takes
// 16 bytes, no matter how long its name is, but a rule reads the whole name: a small image must not cause much work.
inline constexpr std::size_t kMaxRepeatedNames = 16;

}  // namespace qmx
