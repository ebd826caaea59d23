// Tests what must hold of every text: everything ends, and all spans lie in the text and in each other.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "lsp/outline.h"
#include "lsp/schema_files.h"
#include "lsp/symbols.h"

namespace {

using korvel::lsp::DocumentSymbol;
using korvel::lsp::DocumentSymbolsOf;
using korvel::lsp::Element;
using korvel::lsp::ElementIndex;
using korvel::lsp::kNoElement;
using korvel::lsp::Outline;
using korvel::lsp::TagAttribute;
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

}  // namespace
