// What can be typed at an offset of a schema file: elements, attributes and values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "lsp/outline.h"
#include "schema/reserved_fields.h"

namespace korvel::lsp {

// What the text does not tell. Everything is optional.
struct CompletionFacts {
  std::optional<std::int32_t> baseline_version;  // of the library
  ReservedFields used;                           // the names and ids of entries in the baseline and before, by structure
};

enum class CompletionKind { kElement, kAttribute, kChoice, kNumber, kSimpleType, kStructure, kEntry };

struct CompletionItem {
  std::string label;
  CompletionKind kind = CompletionKind::kElement;
  std::string detail;
  std::string documentation;
  std::string insert_text;  // plain, as it is written in the file
  std::string snippet;      // the same with tab stops ("$1", "$0"); empty without any
  std::string sort_key;     // items are listed in the order of these texts, byte by byte
};

// More items would only make an editor slow.
inline constexpr std::size_t kMaxCompletions = 1000;

struct Completions {
  qmx::Span replace;                  // what an item replaces
  std::vector<CompletionItem> items;  // in the order of their sort keys
  bool is_incomplete = false;         // further items begin with what has been typed: ask again after the next key
};

// Everything that is allowed at the offset, whatever has been typed of it: editors filter by that. Only if that is more than
// kMaxCompletions, items that do not begin with what has been typed are left out. Linear.
Completions CompletionsAt(const Outline& outline, std::size_t offset, const CompletionFacts& facts);

}  // namespace korvel::lsp
