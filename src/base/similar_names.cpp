// Tested by tests/qmx/text_test.cpp.
#include "base/similar_names.h"

#include <algorithm>
#include <array>

namespace korvel {
namespace {

constexpr std::size_t kMaxEdits = 2;
constexpr std::size_t kBytesPerEdit = 4;  // of a word

bool IsUpper(char c) { return c >= 'A' && c <= 'Z'; }
bool IsLower(char c) { return c >= 'a' && c <= 'z'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
// Bytes of characters outside of ASCII are letters.
bool IsLetter(char c) { return IsUpper(c) || IsLower(c) || static_cast<unsigned char>(c) >= 0x80; }
bool IsSeparator(char c) { return !IsLetter(c) && !IsDigit(c); }

char Lower(char c) { return IsUpper(c) ? static_cast<char>(c - 'A' + 'a') : c; }
bool SameLetter(char a, char b) { return Lower(a) == Lower(b); }

using Row = std::array<std::size_t, kMaxComparedWord + 1>;

// Takes the next word from the front of a name, without separators: "userName_07" has the words "user", "Name" and "07". Empty at
// the end of the name.
std::string_view TakeWord(std::string_view& name) {
  name.remove_prefix(static_cast<std::size_t>(std::ranges::find_if_not(name, IsSeparator) - name.begin()));
  std::size_t end = name.empty() ? 0 : 1;
  while (end < name.size() && !IsSeparator(name[end]) && IsDigit(name[end]) == IsDigit(name[end - 1]) &&
         !(IsLower(name[end - 1]) && IsUpper(name[end]))) {
    ++end;
  }
  const std::string_view word = name.substr(0, end);
  name.remove_prefix(end);
  return word;
}

// Whether two names are equal apart from case and what is skipped.
template <class IsSkipped>
bool AreEqualWithout(IsSkipped is_skipped, std::string_view a, std::string_view b) {
  auto i = a.begin();
  auto j = b.begin();
  while (true) {
    i = std::find_if_not(i, a.end(), is_skipped);
    j = std::find_if_not(j, b.end(), is_skipped);
    if (i == a.end() || j == b.end()) return i == a.end() && j == b.end();
    if (!SameLetter(*i++, *j++)) return false;
  }
}

std::string_view WithoutZeros(std::string_view number) {
  return number.substr(std::min(number.find_first_not_of('0'), number.size()));
}

// The words without what they have in common at both ends.
void StripCommon(std::string_view& a, std::string_view& b) {
  const auto front = static_cast<std::size_t>(std::ranges::mismatch(a, b, SameLetter).in1 - a.begin());
  a.remove_prefix(front);
  b.remove_prefix(front);
  while (!a.empty() && !b.empty() && SameLetter(a.back(), b.back())) {
    a.remove_suffix(1);
    b.remove_suffix(1);
  }
}

// The edits between two words; nullopt if there are more than `limit` or too many for words of this length.
std::optional<std::size_t> WordDistance(std::string_view a, std::string_view b, std::size_t limit) {
  if (a.empty() || b.empty()) return std::nullopt;
  if (IsDigit(a.front()) || IsDigit(b.front())) {
    return WithoutZeros(a) == WithoutZeros(b) ? std::optional<std::size_t>(0) : std::nullopt;
  }
  limit = std::min(limit, std::max(a.size(), b.size()) / kBytesPerEdit);
  StripCommon(a, b);
  if (std::max(a.size(), b.size()) > kMaxComparedWord) return std::nullopt;
  const std::size_t distance = EditDistance(a, b, limit);
  return distance <= limit ? std::optional(distance) : std::nullopt;
}

}  // namespace

// Only the band of `limit` cells around the diagonal can contribute, so nothing else is computed.
std::size_t EditDistance(std::string_view a, std::string_view b, std::size_t limit) {
  const std::size_t too_far = limit + 1;
  const auto same = [&](std::size_t i, std::size_t j) { return SameLetter(a[i - 1], b[j - 1]); };
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

std::optional<std::size_t> SpellingDistance(std::string_view a, std::string_view b) {
  if (AreEqualWithout(IsSeparator, a, b)) return 0;
  std::size_t edits = 0;
  while (true) {
    const std::string_view word = TakeWord(a);
    const std::string_view other = TakeWord(b);
    if (word.empty() && other.empty()) return edits;
    const std::optional<std::size_t> distance = WordDistance(word, other, kMaxEdits - edits);
    if (!distance) return std::nullopt;
    edits += *distance;
  }
}

bool HaveSameLetters(std::string_view a, std::string_view b) {
  return AreEqualWithout([](char c) { return !IsLetter(c); }, a, b);
}

}  // namespace korvel
