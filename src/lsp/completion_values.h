// Values of attributes that can be typed at an offset.
#pragma once

#include <vector>

#include "lsp/completion.h"
#include "lsp/context.h"

namespace korvel::lsp {

// All values that the attribute at a place may have, without limit; for a list, names that it does not have yet. REQUIRES: the
// place is kAttributeValue.
std::vector<CompletionItem> ValuesAt(const Outline& outline, const Context& context, const CompletionFacts& facts);

// An item without texts that only few have. Its sort key keeps a list in order: by group, then by position.
CompletionItem ItemOf(CompletionKind kind, std::string_view label, std::size_t group, std::size_t position);

}  // namespace korvel::lsp
