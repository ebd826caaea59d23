// Finds the nearest word by the number of single-byte edits. Tested by tests/qmx/text_test.cpp.
#include "base/did_you_mean.h"

#include <algorithm>
#include <cstddef>

#include "base/similar_names.h"
#include "base/text.h"

namespace korvel {
namespace {

constexpr std::size_t kMaxCandidates = 1000;

}  // namespace

std::string_view Nearest(std::string_view word, std::span<const std::string_view> candidates) {
  if (word.empty() || word.size() > kMaxComparedWord) return "";
  std::size_t limit = word.size() == 1 ? 0 : word.size() <= 5 ? 1 : 2;
  std::string_view nearest;
  for (const std::string_view candidate : candidates.first(std::min(candidates.size(), kMaxCandidates))) {
    const std::size_t longer = std::max(word.size(), candidate.size());
    const std::size_t shorter = std::min(word.size(), candidate.size());
    if (shorter == 0 || longer > kMaxComparedWord || longer - shorter > limit) continue;
    const std::size_t distance = EditDistance(word, candidate, limit);
    if (distance > limit) continue;
    nearest = candidate;
    if (distance == 0) break;
    limit = distance - 1;
  }
  return nearest;
}

std::string DidYouMean(std::string_view word, std::span<const std::string_view> candidates) {
  const std::string_view nearest = Nearest(word, candidates);
  return nearest.empty() ? "" : " (did you mean " + QuoteWhole(nearest) + "?)";
}

}  // namespace korvel
