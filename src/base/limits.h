// What reports leave out of large differences, so that no input makes them endless. docs/limits.md lists them.
#pragma once

#include <cstddef>

namespace korvel {

// Refused changes of a table that are looked for, when a call does not say otherwise.
inline constexpr std::size_t kMaxFindings = 1000;
// Parts that the search for ways out looks at: those a table reaches, each time it is asked about.
inline constexpr std::size_t kMaxWork = 10'000'000;
// Ways from a table to a structure that an edit lists.
inline constexpr std::size_t kMaxPaths = 8;
// Pairs of a table's attributes that are told one by one: more than any table has.
inline constexpr std::size_t kMaxAttributePairs = 64;
// Fields inside structures that the layout of one table lists: structures may nest in ways beyond number. The table's own fields
// are always listed. A structure is opened with all of its fields or not at all.
inline constexpr std::size_t kMaxInnerFields = 10'000;
// Characters of a source line that are shown.
inline constexpr std::size_t kMaxSnippet = 160;

}  // namespace korvel
