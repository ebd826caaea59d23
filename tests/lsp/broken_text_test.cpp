// Tests what must hold of every text: everything ends, and all spans lie in the text and in each other.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "lsp/completion.h"
#include "lsp/outline.h"
#include "lsp/rename.h"
#include "lsp/schema_files.h"
#include "lsp/symbols.h"

namespace {

using korvel::lsp::CompletionFacts;
using korvel::lsp::Completions;
using korvel::lsp::CompletionsAt;
using korvel::lsp::DocumentSymbol;
using korvel::lsp::DocumentSymbolsOf;
using korvel::lsp::Element;
using korvel::lsp::ElementIndex;
using korvel::lsp::kNoElement;
using korvel::lsp::Outline;
using korvel::lsp::RenameEdits;
using korvel::lsp::Symbol;
using korvel::lsp::SymbolAt;
using korvel::lsp::TagAttribute;
using korvel::lsp::TextEdit;
using lsp_test::ForEachBrokenExample;

bool IsInside(const qmx::Span& inner, const qmx::Span& outer) {
  return outer.begin <= inner.begin && inner.begin <= inner.end && inner.end <= outer.end;
}

bool AreInside(std::span<const TagAttribute> attributes, const qmx::Span& tag) {
  std::size_t end = tag.begin;
  for (const TagAttribute& attribute : attributes) {
    if (!IsInside(attribute.name(), {end, tag.end}) || !IsInside(attribute.value(), {attribute.name_end, tag.end})) return false;
    end = attribute.value_end;
  }
  return true;
}

bool IsNested(const Outline& outline, ElementIndex index) {
  const Element& element = outline.elements()[index];
  const bool is_outermost = element.parent == kNoElement;
  const qmx::Span outer = is_outermost ? qmx::Span{0, outline.text().size()} : outline.elements()[element.parent].whole();
  return IsInside(element.whole(), outer) && IsInside(element.tag(), element.whole()) &&
         IsInside(element.name(), element.tag()) && AreInside(outline.AttributesOf(index), element.tag());
}

TEST(BrokenTextTest, ElementsNest) {
  std::size_t elements = 0;
  ForEachBrokenExample([&](std::string_view text, std::size_t) {
    const Outline outline(text);
    for (ElementIndex i = 0; i < outline.elements().size(); ++i) ASSERT_TRUE(IsNested(outline, i)) << text << "\nelement " << i;
    elements += outline.elements().size();
  });
  EXPECT_GT(elements, 1'000'000U);
}

bool AreNested(const std::vector<DocumentSymbol>& symbols, const qmx::Span& outer) {
  return std::ranges::all_of(symbols, [&](const DocumentSymbol& symbol) {
    return IsInside(symbol.span, outer) && IsInside(symbol.name_span, symbol.span) && !symbol.name.empty() &&
           AreNested(symbol.children, symbol.span);
  });
}

TEST(BrokenTextTest, SymbolsNest) {
  ForEachBrokenExample([](std::string_view text, std::size_t at) {
    if (at % 4 != 0) return;
    ASSERT_TRUE(AreNested(DocumentSymbolsOf(Outline(text)), {0, text.size()})) << text;
  });
}

// Offsets near the one where the text is broken, and a few others.
std::vector<std::size_t> OffsetsNear(std::size_t at, std::size_t size) {
  std::vector<std::size_t> offsets;
  for (std::size_t offset = at < 2 ? 0 : at - 2; offset <= at + 2; ++offset) offsets.push_back(std::min(offset, size));
  for (std::size_t offset = at % 997; offset <= size; offset += 997) offsets.push_back(offset);
  return offsets;
}

TEST(BrokenTextTest, EditsAreInOrder) {
  std::size_t edits = 0;
  ForEachBrokenExample([&](std::string_view text, std::size_t at) {
    const Outline outline(text);
    for (const std::size_t offset : OffsetsNear(at, text.size())) {
      const std::optional<Symbol> symbol = SymbolAt(outline, offset);
      if (!symbol) continue;
      ASSERT_TRUE(IsInside({offset, offset}, symbol->span)) << text << "\noffset " << offset;
      std::size_t end = 0;
      for (const TextEdit& edit : RenameEdits(outline, *symbol, "name")) {
        ASSERT_TRUE(IsInside(edit.span, {end, text.size()})) << text << "\noffset " << offset;
        end = edit.span.end;
        ++edits;
      }
    }
  });
  EXPECT_GT(edits, 10'000U);
}

TEST(BrokenTextTest, CompletionsReplaceTheWordAtTheOffset) {
  CompletionFacts facts;
  facts.baseline_version = 5;
  facts.used["orders"] = {{"uid"}, {1}};
  std::size_t items = 0;
  ForEachBrokenExample([&](std::string_view text, std::size_t at) {
    const Outline outline(text);
    for (const std::size_t offset : OffsetsNear(at, text.size())) {
      const Completions completions = CompletionsAt(outline, offset, facts);
      ASSERT_TRUE(IsInside({offset, offset}, completions.replace)) << text << "\noffset " << offset;
      ASSERT_TRUE(IsInside(completions.replace, {0, text.size()})) << text << "\noffset " << offset;
      items += completions.items.size();
    }
  });
  EXPECT_GT(items, 100'000U);
}

}  // namespace
