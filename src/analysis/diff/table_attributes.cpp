// Splits, compares and changes table attributes. Tested by tests/report/table_attributes_test.cpp.
#include "analysis/diff/table_attributes.h"

#include <algorithm>
#include <utility>

#include "analysis/diff/attribute_spelling.h"
#include "analysis/diff/edit.h"
#include "base/text.h"

namespace korvel {
namespace {

using Pairs = std::vector<AttributePair>;

char LowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool IsSameKey(const AttributePair& a, const AttributePair& b) {
  if (!a.meant_key.empty() || !b.meant_key.empty()) return a.meant_key == b.meant_key;
  return std::ranges::equal(WithoutOuterSpaces(a.key), WithoutOuterSpaces(b.key), {}, LowerCase, LowerCase);
}

// The pair with the same key, or null.
const AttributePair* Find(const Pairs& pairs, const AttributePair& like) {
  const auto found = std::ranges::find_if(pairs, [&](const AttributePair& pair) { return IsSameKey(pair, like); });
  return found == pairs.end() ? nullptr : &*found;
}

bool HasUniqueKeys(const Pairs& pairs) {
  return std::ranges::all_of(pairs, [&](const AttributePair& pair) { return Find(pairs, pair) == &pair; });
}

std::string ValueOrEmpty(const std::optional<std::string>& text) { return text ? ValueText(*text) : ""; }

// The value, or the whole pair if the key of the other one is spelled differently. Both are parts of one text.
std::string ValueOf(const AttributePair& pair, const AttributePair& other) {
  const std::string_view whole(pair.key.data(), pair.span.end - pair.span.begin);
  return ValueText(pair.key == other.key ? pair.value : whole);
}

std::vector<AttributeChange> ComparePairs(const Pairs& old_pairs, const Pairs& new_pairs) {
  std::vector<AttributeChange> changes;
  for (const AttributePair& before : old_pairs) {
    const AttributePair* const after = Find(new_pairs, before);
    if (after != nullptr && after->key == before.key && after->value == before.value) continue;
    changes.push_back({std::string(WithoutOuterSpaces(before.key)), ValueOf(before, after == nullptr ? before : *after),
                       after == nullptr ? "" : ValueOf(*after, before), before.span,
                       after == nullptr ? qmx::Span() : after->span});
  }
  for (const AttributePair& after : new_pairs) {
    if (Find(old_pairs, after) == nullptr) {
      changes.push_back({std::string(WithoutOuterSpaces(after.key)), "", ValueText(after.value), {}, after.span});
    }
  }
  return changes;
}

}  // namespace

std::optional<Pairs> SplitAttributes(const std::optional<std::string>& text) {
  Pairs pairs;
  if (!text || text->empty()) return pairs;
  for (std::string_view rest = *text;;) {
    const std::string_view pair = rest.substr(0, rest.find(';'));
    const std::size_t sign = pair.find('=');
    if (sign == std::string_view::npos || pairs.size() == kMaxAttributePairs) return std::nullopt;
    if (WithoutOuterSpaces(pair.substr(0, sign)).empty()) return std::nullopt;
    const std::size_t begin = text->size() - rest.size();
    pairs.push_back({pair.substr(0, sign), pair.substr(sign + 1), {begin, begin + pair.size()}, MeantKey(pair)});
    if (pair.size() == rest.size()) break;
    rest.remove_prefix(pair.size() + 1);
  }
  return HasUniqueKeys(pairs) ? std::optional(std::move(pairs)) : std::nullopt;
}

std::vector<AttributeChange> CompareAttributes(const std::optional<std::string>& old_text,
                                               const std::optional<std::string>& new_text) {
  if (old_text == new_text) return {};
  const std::optional<Pairs> old_pairs = SplitAttributes(old_text);
  const std::optional<Pairs> new_pairs = SplitAttributes(new_text);
  std::vector<AttributeChange> changes;
  if (old_pairs && new_pairs) changes = ComparePairs(*old_pairs, *new_pairs);
  if (changes.empty()) changes.push_back({"", ValueOrEmpty(old_text), ValueOrEmpty(new_text), {}, {}});
  return changes;
}

std::optional<std::string> ChangeAttributes(const std::optional<std::string>& old_text,
                                            const std::optional<std::string>& new_text,
                                            const std::vector<std::string_view>& chosen_keys) {
  if (chosen_keys.empty()) return old_text;
  if (chosen_keys.size() == CompareAttributes(old_text, new_text).size()) return new_text;
  // Only changes of single keys can be chosen partially, so both texts split.
  const Pairs old_pairs = *SplitAttributes(old_text);
  const Pairs new_pairs = *SplitAttributes(new_text);
  const auto is_chosen = [&](std::string_view key) {
    return std::ranges::find(chosen_keys, WithoutOuterSpaces(key)) != chosen_keys.end();
  };
  std::string text;
  const auto add = [&text](const AttributePair& pair) {
    AppendPart(text, ";", pair.key);
    text.append("=").append(pair.value);
  };
  for (const AttributePair& pair : old_pairs) {
    const AttributePair* const after = Find(new_pairs, pair);
    if (!is_chosen(pair.key)) add(pair);
    if (is_chosen(pair.key) && after != nullptr) add(*after);
  }
  for (const AttributePair& pair : new_pairs) {
    if (Find(old_pairs, pair) == nullptr && is_chosen(pair.key)) add(pair);
  }
  return text.empty() ? std::nullopt : std::optional(text);
}

void SetAttribute(std::string& attributes, const std::string& key, const std::string& value) {
  const std::string pair = key + "=";
  std::size_t at = 0;
  while (attributes.compare(at, pair.size(), pair) != 0) {
    at = attributes.find(';', at);
    if (at == std::string::npos) return;
    ++at;
  }
  const std::size_t begin = at + pair.size();
  attributes.replace(begin, std::min(attributes.find(';', begin), attributes.size()) - begin, value);
}

}  // namespace korvel
