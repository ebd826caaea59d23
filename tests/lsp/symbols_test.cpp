// Tests which declarations names stand for, and the tree of a file.
#include "lsp/symbols.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "lsp/marked_text.h"
#include "lsp/schema_files.h"

namespace {

using korvel::lsp::DeclarationOf;
using korvel::lsp::DocumentSymbol;
using korvel::lsp::DocumentSymbolsOf;
using korvel::lsp::Outline;
using korvel::lsp::ReferencesTo;
using korvel::lsp::Symbol;
using korvel::lsp::SymbolAt;
using lsp_test::InMeta;
using lsp_test::MarkedText;

// The text with the declaration of the symbol at the mark in {} and its references in []; "none" without a symbol.
std::string Marked(const MarkedText& at) {
  const Outline outline(at.text);
  const std::optional<Symbol> symbol = SymbolAt(outline, at.offset);
  if (!symbol) return "none";
  std::vector<qmx::Span> spans = ReferencesTo(outline, *symbol, true);
  std::string marked = at.text;
  std::ranges::reverse(spans);
  for (const qmx::Span& span : spans) {
    const bool is_declaration = span.begin == DeclarationOf(outline, *symbol).begin;
    marked.insert(span.end, is_declaration ? "}" : "]").insert(span.begin, is_declaration ? "{" : "[");
  }
  return marked;
}

std::string MarkedInMeta(const std::string& marked) { return Marked(InMeta(marked)); }

std::string ExpectedInMeta(const std::string& text) {
  return "<metalib name='m' version='7'><meta name='orders'>" + text + "</meta></metalib>";
}

TEST(SymbolsTest, FindsReferencesToEntry) {
  const std::string expected = ExpectedInMeta(
      "<primarykey entries='[n] uid'/><entry name='{n}' type='int8'/><entry name='uid' type='n' refer='[n]'/>"
      "<splittablekey entries=' uid\n[n] '/><index name='n'><column entry='[n]'/><column entry='uid'/></index>");
  const std::string keys = "<primarykey entries='n uid'/>";
  const std::string entries = "<entry name='n' type='int8'/><entry name='uid' type='n' refer='n'/>";
  const std::string rest = "<splittablekey entries=' uid\nn '/><index name='n'><column entry='n'/><column entry='uid'/></index>";
  EXPECT_EQ(MarkedInMeta("<primarykey entries='|n uid'/>" + entries + rest), expected);
  EXPECT_EQ(MarkedInMeta(keys + "<entry name='n|' type='int8'/><entry name='uid' type='n' refer='n'/>" + rest), expected);
  EXPECT_EQ(MarkedInMeta(keys + "<entry name='n' type='int8'/><entry name='uid' type='n' refer='|n'/>" + rest), expected);
  EXPECT_EQ(MarkedInMeta(keys + entries +
                         "<splittablekey entries=' uid\nn| '/><index name='n'><column entry='n'/>"
                         "<column entry='uid'/></index>"),
            expected);
  EXPECT_EQ(MarkedInMeta(keys + entries +
                         "<splittablekey entries=' uid\nn '/><index name='n'><column entry='|n'/>"
                         "<column entry='uid'/></index>"),
            expected);
}

TEST(SymbolsTest, FindsReferencesToStructure) {
  EXPECT_EQ(Marked(MarkedText(
                "<metalib><meta name='a'><entry name='item' type='item'/></meta><meta name='it|em'>"
                "<entry name='x' type='int8'/></meta><meta name='b'><entry name='y' type='&#105;tem'/></meta></metalib>")),
            "<metalib><meta name='a'><entry name='item' type='[item]'/></meta><meta name='{item}'>"
            "<entry name='x' type='int8'/></meta><meta name='b'><entry name='y' type='[&#105;tem]'/></meta></metalib>");
}

TEST(SymbolsTest, FindsLibraryAndIndexWithoutReferences) {
  EXPECT_EQ(Marked(MarkedText("<metalib name='m|'/>")), "<metalib name='{m}'/>");
  EXPECT_EQ(MarkedInMeta("<entry name='i' type='i'/><index name='|i'><column entry='i'/></index>"),
            ExpectedInMeta("<entry name='i' type='i'/><index name='{i}'><column entry='i'/></index>"));
}

TEST(SymbolsTest, ResolvesToFirstDeclaration) {
  EXPECT_EQ(MarkedInMeta("<entry name='a' type='int8'/><entry name='a' type='int8'/><primarykey entries='a|'/>"),
            ExpectedInMeta("<entry name='{a}' type='int8'/><entry name='a' type='int8'/><primarykey entries='[a]'/>"));
  EXPECT_EQ(MarkedInMeta("<entry name='a' type='int8'/><entry name='|a' type='int8'/><primarykey entries='a'/>"),
            ExpectedInMeta("<entry name='a' type='int8'/><entry name='{a}' type='int8'/><primarykey entries='a'/>"));
}

TEST(SymbolsTest, EntriesOfOtherStructuresAreOthers) {
  EXPECT_EQ(Marked(MarkedText("<metalib><meta name='t'><entry name='|a'/><primarykey entries='a'/></meta>"
                              "<meta name='u'><entry name='a'/><primarykey entries='a'/></meta></metalib>")),
            "<metalib><meta name='t'><entry name='{a}'/><primarykey entries='[a]'/></meta>"
            "<meta name='u'><entry name='a'/><primarykey entries='a'/></meta></metalib>");
}

TEST(SymbolsTest, EntriesOfInnerStructuresAreOthers) {
  EXPECT_EQ(Marked(MarkedText("<meta name='t'><entry name='|a'/><meta name='u'><primarykey entries='a'/></meta></meta>")),
            "<meta name='t'><entry name='{a}'/><meta name='u'><primarykey entries='a'/></meta></meta>");
}

TEST(SymbolsTest, SimpleTypesAreNoSymbols) {
  EXPECT_EQ(Marked(MarkedText("<metalib><meta name='int8'><entry name='a' type='in|t8'/></meta></metalib>")), "none");
  EXPECT_EQ(Marked(MarkedText("<metalib><meta name='i|nt8'><entry name='a' type='int8'/></meta></metalib>")),
            "<metalib><meta name='{int8}'><entry name='a' type='int8'/></meta></metalib>");
}

TEST(SymbolsTest, OtherPlacesAndUnknownNamesAreNoSymbols) {
  EXPECT_EQ(MarkedInMeta("<entry name='a' type='un|known'/>"), "none");
  EXPECT_EQ(MarkedInMeta("<entry name='a' desc='|a'/>"), "none");
  EXPECT_EQ(MarkedInMeta("<entry na|me='a'/>"), "none");
  EXPECT_EQ(MarkedInMeta("<entry name='a'/>|"), "none");
  EXPECT_EQ(MarkedInMeta("<primarykey entries='|'/>"), "none");
  EXPECT_EQ(MarkedInMeta("<other name='|a'/>"), "none");
  EXPECT_EQ(MarkedInMeta("<primarykey name='|a'/>"), "none");
}

TEST(SymbolsTest, NamesTheStructureOfAnEntry) {
  const MarkedText at = InMeta("<entry name='a'/><index name='i'><column entry='|a'/></index>");
  EXPECT_EQ(SymbolAt(Outline(at.text), at.offset)->structure, "orders");
}

TEST(SymbolsTest, WorksInBrokenText) {
  EXPECT_EQ(Marked(MarkedText("<meta name='t'><entry name='a' type='int8'/><primarykey entries='|a b\n<entry name=")),
            "<meta name='t'><entry name='{a}' type='int8'/><primarykey entries='[a] b\n<entry name=");
}

std::string Shown(const std::vector<DocumentSymbol>& symbols, const std::string& indent = "") {
  std::string shown;
  for (const DocumentSymbol& symbol : symbols) {
    shown += indent + symbol.name + ": " + symbol.detail + "\n" + Shown(symbol.children, indent + "  ");
  }
  return shown;
}

TEST(SymbolsTest, ListsTheTreeOfAFile) {
  EXPECT_EQ(Shown(DocumentSymbolsOf(Outline(lsp_test::Examples().back()))),
            "mall: version 5, protocol QMX\n"
            "  item: structure\n"
            "    sku: string(32), id 1\n"
            "    price: int64, id 2, version 4\n"
            "  orders: table\n"
            "    uid: uint64, id 1\n"
            "    zone: uint32, id 2\n"
            "    n_items: uint32, id 3\n"
            "    items: item[100], id 4\n"
            "    note: string(256), id 5, version 5\n"
            "    primarykey: uid zone\n"
            "    splittablekey: uid\n"
            "    by_zone: zone descending, uid\n");
}

TEST(SymbolsTest, ListsTheTreeOfBrokenText) {
  EXPECT_EQ(Shown(DocumentSymbolsOf(Outline("<entry name='lost'/><meta name='t' kind='union'><entry name=''"))),
            "t: union\n  entry: \n");
  EXPECT_EQ(Shown(DocumentSymbolsOf(Outline("<metalib name='m'><meta name='a'/></metalib><meta name='b'/>"))),
            "m: \n  a: structure\nb: structure\n");
}

}  // namespace
