// Lists the known attributes. Tested by tests/report/attribute_spelling_test.cpp, which compares the list with the checker.
#include "analysis/diff/attribute_spelling.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "base/did_you_mean.h"
#include "base/limits.h"
#include "base/text.h"
#include "schema/setting_values.h"

namespace korvel {
namespace {

constexpr std::string_view kKeys[] = {"TableType", "ListNum", "SortRule", "DataProtocol"};
constexpr std::string_view kTypeWords[] = {"GENERIC", "LIST", "SORTLIST"};
constexpr std::string_view kRuleWords[] = {"INSC", "DESC"};
constexpr std::string_view kProtocolWords[] = {"QMX", "TLV"};

// The values of each key; without words, a number.
constexpr std::span<const std::string_view> kValues[] = {kTypeWords, {}, kRuleWords, kProtocolWords};

// The part of a pair before its first '='.
std::string_view KeyPart(std::string_view pair) { return pair.substr(0, pair.find('=')); }

std::string_view ValuePart(std::string_view pair) { return pair.substr(std::min(KeyPart(pair).size() + 1, pair.size())); }

// REQUIRES: a known key.
std::span<const std::string_view> ValuesOf(std::string_view key) { return kValues[std::ranges::find(kKeys, key) - kKeys]; }

bool IsValue(std::string_view key, std::string_view value) {
  const std::span<const std::string_view> words = ValuesOf(key);
  if (words.empty()) return ParseCount(value).value_or(0) > 0;
  return std::ranges::find(words, value) != words.end();
}

std::string WithoutSpaces(std::string_view text) {
  std::string without(text);
  std::erase(without, ' ');
  return without;
}

}  // namespace

std::string_view WithoutOuterSpaces(std::string_view text) {
  const std::size_t begin = std::min(text.find_first_not_of(' '), text.size());
  return text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

bool IsKnownAttribute(std::string_view pair) {
  const std::string_view key = KeyPart(pair);
  return std::ranges::find(kKeys, key) != std::end(kKeys) && IsValue(key, ValuePart(pair));
}

std::string_view MeantKey(std::string_view pair) { return Nearest(WithoutOuterSpaces(KeyPart(pair)), kKeys); }

std::optional<std::string> CorrectedAttribute(std::string_view pair) {
  const std::string_view key = MeantKey(pair);
  if (key.empty() || IsKnownAttribute(pair)) return std::nullopt;
  const std::string_view bare = WithoutOuterSpaces(ValuePart(pair));
  const std::string_view value = IsValue(key, bare) ? bare : Nearest(bare, ValuesOf(key));
  if (value.empty()) return std::nullopt;
  return std::string(key).append("=").append(value);
}

std::optional<std::string> CorrectedAttributes(std::string_view text) {
  if (std::ranges::count(text, ';') >= static_cast<std::ptrdiff_t>(kMaxAttributePairs)) return std::nullopt;
  std::string corrected;
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view pair = rest.substr(0, rest.find(';'));
    if (!WithoutOuterSpaces(pair).empty()) AppendPart(corrected, ";", CorrectedAttribute(pair).value_or(std::string(pair)));
    rest.remove_prefix(std::min(pair.size() + 1, rest.size()));
  }
  return corrected == text ? std::nullopt : std::optional(corrected);
}

std::string AttributeSuggestion(std::string_view pair) {
  if (WithoutOuterSpaces(pair).empty()) return "remove the extra ';'";
  if (const std::optional<std::string> corrected = CorrectedAttribute(pair)) {
    return "write " + QuoteWhole(*corrected) + (WithoutSpaces(pair) == *corrected ? ", without spaces" : "");
  }
  const std::string key(MeantKey(pair));
  if (key.empty()) return "remove it; known attributes are " + Join(kKeys, ", ");
  const std::span<const std::string_view> words = ValuesOf(key);
  return "give " + key + (words.empty() ? " a number: 1 to 2147483647" : " one of these values: " + Join(words, ", "));
}

}  // namespace korvel
