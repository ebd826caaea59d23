// Finds the nearest word by the number of single-byte edits. Tested by tests/qmx/text_test.cpp.
#include "base/did_you_mean.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "base/text.h"

namespace korvel {
namespace {

constexpr std::size_t kMaxCandidates = 1000;
constexpr std::size_t kMaxWord = 64;

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

using Row = std::array<std::size_t, kMaxWord + 1>;

// Edits that turn `a` into `b`, or `limit` + 1 if there are more: a byte added, left out, replaced or swapped with the next one.
// Only the band of `limit` cells around the diagonal can contribute, so nothing else is computed. REQUIRES: both at most
// kMaxWord bytes long.
std::size_t Distance(std::string_view a, std::string_view b, std::size_t limit) {
  const std::size_t too_far = limit + 1;
  const auto same = [&](std::size_t i, std::size_t j) { return Lower(a[i - 1]) == Lower(b[j - 1]); };
  Row before{}, above{}, row{};
  for (std::size_t j = 0; j <= b.size(); ++j) above[j] = std::min(j, too_far);
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row.fill(too_far);
    row[0] = std::min(i, too_far);
    const std::size_t last = std::min(b.size(), i + limit);
    for (std::size_t j = i > limit ? i - limit : 1; j <= last; ++j) {
      row[j] = std::min({above[j - 1] + (same(i, j) ? 0 : 1), above[j] + 1, row[j - 1] + 1, too_far});
      const bool is_swap = i > 1 && j > 1 && same(i, j - 1) && same(i - 1, j);
      if (is_swap) row[j] = std::min(row[j], before[j - 2] + 1);
    }
    before = above;
    above = row;
  }
  return above[b.size()];
}

}  // namespace

std::string DidYouMean(std::string_view word, std::span<const std::string_view> candidates) {
  if (word.empty() || word.size() > kMaxWord) return "";
  std::size_t limit = word.size() == 1 ? 0 : word.size() <= 5 ? 1 : 2;
  std::string_view nearest;
  for (const std::string_view candidate : candidates.first(std::min(candidates.size(), kMaxCandidates))) {
    const std::size_t longer = std::max(word.size(), candidate.size());
    const std::size_t shorter = std::min(word.size(), candidate.size());
    if (shorter == 0 || longer > kMaxWord || longer - shorter > limit) continue;
    const std::size_t distance = Distance(word, candidate, limit);
    if (distance > limit) continue;
    nearest = candidate;
    if (distance == 0) break;
    limit = distance - 1;
  }
  return nearest.empty() ? "" : " (did you mean " + Quote(nearest) + "?)";
}

}  // namespace korvel
