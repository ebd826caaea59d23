// Computes ids and versions from the text and the baseline. Tested by tests/lsp/completion_test.cpp.
#include "lsp/suggested_number.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "lsp/symbols.h"

namespace korvel::lsp {
namespace {

using Kind = qmx::ElementId::Kind;

constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();

std::optional<std::int32_t> OneAbove(std::optional<std::int32_t> number) {
  return number && *number < kHighest ? std::optional(*number + 1) : std::nullopt;
}

ElementIndex LibraryOf(const Outline& outline) {
  const auto found = std::ranges::find_if(outline.elements(), [](const Element& element) { return element.Is(Kind::kMetalib); });
  return found == outline.elements().end() ? kNoElement : static_cast<ElementIndex>(found - outline.elements().begin());
}

const UsedFields* UsedIn(const Outline& outline, ElementIndex structure, const CompletionFacts& facts) {
  const auto found = facts.used.find(outline.ValueOf(structure, "name"));
  return found == facts.used.end() ? nullptr : &found->second;
}

std::optional<std::int32_t> NextId(const Outline& outline, const NumberPlace& place, const CompletionFacts& facts) {
  std::int32_t highest = 0;
  for (const ElementIndex entry : ItemsOf(outline, place.parent, Kind::kEntry)) {
    if (entry != place.element) highest = std::max(highest, NumberOf(outline, entry, "id").value_or(0));
  }
  const UsedFields* const used = UsedIn(outline, place.parent, facts);
  if (used != nullptr && !used->ids.empty()) highest = std::max(highest, *used->ids.rbegin());
  return OneAbove(highest);
}

std::optional<std::int32_t> NewEntryVersion(const Outline& outline, const NumberPlace& place, const CompletionFacts& facts) {
  const UsedFields* const used = UsedIn(outline, place.parent, facts);
  const bool is_new =
      used == nullptr || place.element == kNoElement || !used->names.contains(outline.ValueOf(place.element, "name"));
  if (!is_new) return std::nullopt;
  const ElementIndex library = LibraryOf(outline);
  const auto current = library == kNoElement ? std::nullopt : NumberOf(outline, library, "version");
  return std::max(current, OneAbove(facts.baseline_version));
}

}  // namespace

std::optional<std::int32_t> NumberOf(const Outline& outline, ElementIndex element, std::string_view attribute) {
  const std::string value = outline.ValueOf(element, attribute);
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
  const bool is_number = error == std::errc() && end == value.data() + value.size() && number >= 0;
  return is_number ? std::optional(number) : std::nullopt;
}

bool IsTlv(const Outline& outline) {
  const ElementIndex library = LibraryOf(outline);
  return library != kNoElement && outline.HasValue(library, "protocol", "TLV");
}

bool UsesIds(const Outline& outline, ElementIndex structure, const CompletionFacts& facts) {
  const UsedFields* const used = UsedIn(outline, structure, facts);
  if (IsTlv(outline) || (used != nullptr && !used->ids.empty())) return true;
  return std::ranges::any_of(ItemsOf(outline, structure, Kind::kEntry),
                             [&](ElementIndex entry) { return outline.FindAttribute(entry, "id") != nullptr; });
}

std::optional<std::int32_t> SuggestedNumber(const Outline& outline, const NumberPlace& place, qmx::Attribute attribute,
                                            const CompletionFacts& facts) {
  const bool is_version = attribute == qmx::Attribute::kVersion;
  if (is_version && place.kind == Kind::kMetalib) return OneAbove(facts.baseline_version);
  if (place.kind != Kind::kEntry || place.parent == kNoElement) return std::nullopt;
  if (is_version) return NewEntryVersion(outline, place, facts);
  return attribute == qmx::Attribute::kId ? NextId(outline, place, facts) : std::nullopt;
}

}  // namespace korvel::lsp
