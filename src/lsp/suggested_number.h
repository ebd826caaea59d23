// Numbers that a new entry or library needs.
#pragma once

#include <cstdint>
#include <optional>

#include "lsp/completion.h"
#include "lsp/outline.h"

namespace korvel::lsp {

// The element whose attribute gets the number. The element may not be there yet.
struct NumberPlace {
  qmx::ElementId::Kind kind;
  ElementIndex element;  // kNoElement for one that is yet to be written
  ElementIndex parent;
};

// - `version` of the library: one above the baseline.
// - `id` of an entry: the lowest above all ids that its structure has or had.
// - `version` of an entry that the baseline does not have: that of the library, but at least one above the baseline.
// Nullopt for other attributes, without what the number depends on, and above the highest number that is allowed.
std::optional<std::int32_t> SuggestedNumber(const Outline& outline, const NumberPlace& place, qmx::Attribute attribute,
                                            const CompletionFacts& facts);

// Whether the entries of a structure have ids, or must have them.
bool UsesIds(const Outline& outline, ElementIndex structure, const CompletionFacts& facts);

// Whether the protocol of the library is TLV, in which every entry has an id.
bool IsTlv(const Outline& outline);

// The value of an attribute that is a number; nullopt if it is absent or none.
std::optional<std::int32_t> NumberOf(const Outline& outline, ElementIndex element, std::string_view attribute);

}  // namespace korvel::lsp
