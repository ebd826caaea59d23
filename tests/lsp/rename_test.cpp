// Tests renaming and which names are accepted.
#include "lsp/rename.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "lsp/marked_text.h"
#include "lsp/schema_files.h"
#include "qmx/qmx_xml.h"

namespace {

using korvel::lsp::FaultOfName;
using korvel::lsp::Outline;
using korvel::lsp::RenameEdits;
using korvel::lsp::Symbol;
using korvel::lsp::SymbolAt;
using korvel::lsp::TextEdit;
using lsp_test::InMeta;
using lsp_test::MarkedText;

std::string Edited(std::string text, std::vector<TextEdit> edits) {
  std::ranges::reverse(edits);
  for (const TextEdit& edit : edits) {
    text.replace(edit.span.begin, edit.span.end - edit.span.begin, edit.text);
  }
  return text;
}

// The text after the symbol at the mark got a new name, or why it cannot.
std::string Renamed(const MarkedText& at, const std::string& new_name) {
  const Outline outline(at.text);
  const std::optional<Symbol> symbol = SymbolAt(outline, at.offset);
  if (!symbol) return "no symbol";
  const std::string fault = FaultOfName(outline, *symbol, new_name);
  return fault.empty() ? Edited(at.text, RenameEdits(outline, *symbol, new_name)) : fault;
}

TEST(RenameTest, RenamesEntryEverywhere) {
  EXPECT_EQ(Renamed(MarkedText("<meta name='n'><primarykey entries='uid n'/><entry name=\"n\" type='int8'/>"
                               "<entry name='uid' type='n' refer='n'/><index name='n'><column entry='|n'/></index></meta>"),
                    "n_items"),
            "<meta name='n'><primarykey entries='uid n_items'/><entry name=\"n_items\" type='int8'/>"
            "<entry name='uid' type='n' refer='n_items'/><index name='n'><column entry='n_items'/></index></meta>");
}

TEST(RenameTest, EscapesForTheQuotesThatAreThere) {
  EXPECT_EQ(Renamed(MarkedText("<metalib><meta name='|t'><entry name='a' type=\"t\"/><entry name='b' type=t/></meta></metalib>"),
                    "a'<\"&"),
            "<metalib><meta name='a&apos;&lt;\"&amp;'><entry name='a' type=\"a'&lt;&quot;&amp;\"/>"
            "<entry name='b' type=\"a'&lt;&quot;&amp;\"/></meta></metalib>");
}

TEST(RenameTest, RenamesInBrokenText) {
  EXPECT_EQ(Renamed(MarkedText("<meta name='t'><entry name='a|' type=\n<primarykey entries=\"b a\n<entry"), "c"),
            "<meta name='t'><entry name='c' type=\n<primarykey entries=\"b c\n<entry");
}

TEST(RenameTest, AcceptsTheOldName) {
  const MarkedText at = InMeta("<entry name='|a' type='int8'/>");
  EXPECT_EQ(Renamed(at, "a"), at.text);
}

TEST(RenameTest, RefusesNamesThatTheReaderRefuses) {
  const MarkedText entry = InMeta("<entry name='|a' type='int8'/><entry name='b' type='int8'/><index name='i'/>");
  EXPECT_EQ(Renamed(entry, "b"), "there is another entry 'b' in meta 'orders'; allowed: unique names");
  EXPECT_EQ(Renamed(entry, ""), "the name is empty; allowed: 1 to 65535 bytes");
  EXPECT_EQ(Renamed(entry, std::string(65536, 'x')), "the name has 65536 bytes; allowed: at most 65535");
  EXPECT_EQ(Renamed(entry, "a\x01"), "the name is 'a\\x01'; allowed: characters of XML 1.0 in UTF-8");
  EXPECT_EQ(Renamed(entry, "a b"),
            "the name 'a b' contains white space, so no key could list it; allowed for an entry: no white space");
  EXPECT_NE(Renamed(entry, "i").find("<entry name='i'"), std::string::npos);
}

TEST(RenameTest, RefusesTakenNamesOfStructuresAndIndexes) {
  const MarkedText structure("<metalib name='m'><meta name='|a'/><meta name='b'/></metalib>");
  EXPECT_EQ(Renamed(structure, "b"), "there is another meta 'b' in this file; allowed: unique names");
  EXPECT_EQ(Renamed(structure, "int8"), "'int8' is a simple type; allowed for a meta: any other name");
  EXPECT_EQ(Renamed(structure, "m"), "<metalib name='m'><meta name='m'/><meta name='b'/></metalib>");
  EXPECT_EQ(Renamed(InMeta("<entry name='a'/><index name='|i'/><index name='j'/>"), "j"),
            "there is another index 'j' in meta 'orders'; allowed: unique names");
  EXPECT_EQ(Renamed(MarkedText("<metalib name='|m'/>"), "a b"), "<metalib name='a b'/>");
}

// For each symbol of the examples: the reader accepts the text with a new name, and nothing has the old one.
TEST(RenameTest, ReaderAcceptsRenamedExamples) {
  int renamed = 0;
  for (const std::string& text : lsp_test::Examples()) {
    const Outline outline(text);
    for (std::size_t offset = 0; offset < text.size(); ++offset) {
      const std::optional<Symbol> symbol = SymbolAt(outline, offset);
      if (!symbol || symbol->span.begin != offset) continue;
      const std::string changed = Edited(text, RenameEdits(outline, *symbol, "new_name"));
      const qmx::ReadResult read = qmx::ReadXml(changed);
      ASSERT_TRUE(read.errors.empty()) << read.errors.front().text << "\n" << changed;
      ++renamed;
    }
  }
  EXPECT_GT(renamed, 100);
}

}  // namespace
