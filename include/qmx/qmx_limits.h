// What schema files and images may ask of their reader. docs/limits.md says why each is as it is, and what is said above it; what
// reports leave out stands in report/text/limits.h, and limits of the checker beside its rules.
#pragma once

#include <cstddef>

namespace qmx {

// --- Schema files and images ---

// Largest schema file or image, in bytes.
inline constexpr std::size_t kMaxFileBytes = std::size_t{1} << 30;
// Most metas of a library.
inline constexpr std::size_t kMaxMetas = 1'000'000;
// Most entries of a meta.
inline constexpr std::size_t kMaxEntries = 1'000'000;
// Most members a primary key can have (tagQMXMeta::nPrimayKeyMemberNum has 16 bits).
inline constexpr std::size_t kMaxPrimaryKeyMembers = 32767;
// How deep composite entries may nest: a table's own entries stand at level 1.
inline constexpr int kMaxNesting = 128;

// --- Schema files ---

// Longest name of a library, meta, entry or index, in bytes. The checker has a limit of its own for names of fields.
inline constexpr std::size_t kMaxNameBytes = 65'535;
// Longest value of any other attribute that is kept, in bytes.
inline constexpr std::size_t kMaxAttributeBytes = std::size_t{16} << 20;
// Most errors that are reported for one library; the rest are left out.
inline constexpr std::size_t kMaxErrors = 1000;

// --- Images ---

// Bytes of entries' names that key members and columns may stand for, as a multiple of the size of the block. A member takes 16
// bytes however long its name is, yet a rule looks at all of the name: a few bytes of image must not make much work.
inline constexpr std::size_t kMaxRepeatedNames = 16;

}  // namespace qmx
