// Limits that keep time and output finite for every input. docs/limits.md lists them.
#pragma once

#include <cstddef>

namespace korvel {

// Findings that a report lists, and findings of a table after which the search stops, unless a call sets another limit.
inline constexpr std::size_t kMaxFindings = 1000;
// Parts of models (PartsOf) that a call visits to search suggestions, and as many to make fixes. In the search, each run of the
// checker visits all parts of a table.
inline constexpr std::size_t kMaxWork = 10'000'000;
// Paths from a table to a structure that an edit lists.
inline constexpr std::size_t kMaxPaths = 8;
// Other tables and paths that each finding lists. Of findings with more that are the same, only the first lists them.
inline constexpr std::size_t kMaxAlso = 8;
// Key=value pairs of a table's attributes that are compared one by one: more than any table has.
inline constexpr std::size_t kMaxAttributePairs = 64;
// Fields inside structures that the layout of one table lists: the number of nested fields can be exponential. The table's own
// fields are always listed. A structure is expanded with all of its fields or not at all.
inline constexpr std::size_t kMaxInnerFields = 10'000;
// Characters of a source line that are shown.
inline constexpr std::size_t kMaxSnippet = 160;
// Bytes that a call writes to its log, besides the line that says so. With a log, the checker visits a structure that logs once
// for each path to it, and the number of paths can be exponential.
inline constexpr std::size_t kMaxLogBytes = std::size_t{64} << 20;

}  // namespace korvel
