// Tests the reader that gives the memory of a file back while it is parsed: it accepts the same files as ReadXml, with the same
// library and the same locations.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "qmx/qmx_metalib_kernel.h"
#include "qmx/qmx_xml.h"
#include "qmx_xml/parsed_pages.h"

namespace {

using Kind = qmx::ElementId::Kind;

const auto kPage = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
constexpr std::size_t kMuch = std::size_t{600} << 10;  // bytes; more than several releases need

std::optional<qmx::SchemaWithoutText> ReadAndRelease(std::string_view text) {
  qmx::XmlBuffer buffer(std::max<std::size_t>(text.size(), 1));
  std::ranges::copy(text, buffer.data());
  return buffer.ReadAndRelease(text.size());
}

void ExpectSameOffset(const qmx::SourceMap& map, const qmx::SourceMap& expected, const qmx::ElementId& id) {
  ASSERT_EQ(map.Find(id), expected.Find(id)) << static_cast<int>(id.kind) << " " << id.meta << " " << id.item << " " << id.column;
}

void ExpectSameOffsets(const qmx::SourceMap& map, const qmx::SourceMap& expected) {
  ExpectSameOffset(map, expected, {Kind::kMetalib});
  // One more of each kind than there are.
  for (std::uint32_t meta = 0;; ++meta) {
    for (const Kind kind : {Kind::kMeta, Kind::kPrimaryKey, Kind::kSplittableKey}) ExpectSameOffset(map, expected, {kind, meta});
    for (std::uint32_t i = 0;; ++i) {
      ExpectSameOffset(map, expected, {Kind::kEntry, meta, i});
      if (!expected.Find({Kind::kEntry, meta, i})) break;
    }
    for (std::uint32_t i = 0;; ++i) {
      ExpectSameOffset(map, expected, {Kind::kIndex, meta, i});
      for (std::uint32_t column = 0; expected.Find({Kind::kColumn, meta, i, column}); ++column) {
        ExpectSameOffset(map, expected, {Kind::kColumn, meta, i, column});
      }
      if (!expected.Find({Kind::kIndex, meta, i})) break;
    }
    if (!expected.Find({Kind::kMeta, meta})) break;
  }
}

void ExpectSamePosition(const qmx::LineColumn& position, const qmx::LineColumn& expected) {
  EXPECT_EQ(position.line, expected.line);
  EXPECT_EQ(position.column, expected.column);
}

// Expects that both readers give the same result. Returns whether they accept the text.
bool ExpectSame(std::string_view text) {
  const qmx::ReadResult expected = qmx::ReadXml(text);
  const std::optional<qmx::SchemaWithoutText> schema = ReadAndRelease(text);
  EXPECT_EQ(schema.has_value(), expected.schema.has_value());
  if (!schema || !expected.schema) return false;
  const qmx::Metalib& library = expected.schema->metalib;
  EXPECT_EQ(schema->metalib.size(), library.size());
  if (schema->metalib.size() == library.size()) {
    EXPECT_EQ(std::memcmp(schema->metalib.get(), library.get(), library.size()), 0);
  }
  ExpectSameOffsets(schema->source_map, expected.schema->source_map);
  EXPECT_EQ(schema->metas.size(), static_cast<std::size_t>(qmx_get_meta_num(library.get())));
  qmx::LineCounter lines(text);
  for (std::uint32_t i = 0; i < schema->metas.size(); ++i) {
    const qmx::TagRange& tag = schema->metas[i];
    EXPECT_EQ(tag.span.begin, expected.schema->source_map.Find({Kind::kMeta, i}));
    EXPECT_EQ(text[tag.span.end - 1], '>');
    ExpectSamePosition(tag.begin, lines.At(tag.span.begin));
    ExpectSamePosition(tag.end, lines.At(tag.span.end));
  }
  return true;
}

std::string Library(const std::string& metas) { return "<metalib name=\"m\" version=\"1\">\n" + metas + "</metalib>\n"; }

std::string Entry(std::size_t number, const std::string& end = "\n") {
  return "    <entry name=\"field_" + std::to_string(number) + "\" type=\"int32\" desc=\"größer &gt; 大\"/>" + end;
}

// Tables of a few fields, with a key and an index each, and their lines ended by `end`.
std::string Tables(std::size_t bytes, const std::string& end = "\n") {
  std::string text;
  for (std::size_t i = 0; text.size() < bytes; ++i) {
    text += "  <meta" + std::string(i % 3 == 0 && !end.empty() ? end : " ") + "name=\"table_" + std::to_string(i) + "\"" +
            std::string(i % 50, ' ') + ">" + end;
    for (std::size_t field = 0; field < i % 7 + 1; ++field) text += Entry(field, end);
    text += "<primarykey entries=\"field_0\"/><index name=\"by\"><column entry=\"field_0\"/></index></meta>" + end;
  }
  return text;
}

TEST(Release, GivesTheSameSchema) { EXPECT_TRUE(ExpectSame(Library(Tables(kMuch)))); }

// The tags of open elements, whose names the parser still needs, lie at every offset of a page, and across its ends.
TEST(Release, KeepsOpenElementsWhereverTheyLie) {
  const std::string tables = Tables(std::size_t{200} << 10);
  for (std::size_t shift = 0; shift < kPage + 100; shift += 61) {
    SCOPED_TRACE(shift);
    ASSERT_TRUE(ExpectSame("<!--" + std::string(shift, '.') + "-->" + Library(tables)));
  }
}

TEST(Release, OfOneLargeMeta) {
  std::string entries, columns;
  for (std::size_t i = 0; i < 12'000; ++i) {
    entries += Entry(i);
    columns += "<column\nentry=\"field_" + std::to_string(i) + "\"/>";
  }
  ASSERT_GT(std::min(entries.size(), columns.size()), std::size_t{300} << 10);
  for (std::size_t shift = 0; shift < kPage; shift += kPage / 16 + 1) {
    const std::string head = "<meta name=\"t\"" + std::string(shift, ' ') + ">";
    ASSERT_TRUE(ExpectSame(
        Library(head + entries + "<index name=\"i\">" + columns + "</index>\n</meta><meta name=\"u\">" + Entry(0) + "</meta>")));
  }
}

TEST(Release, CountsEveryKindOfLineEnd) {
  for (const std::string end : {"\r\n", "\r", " "}) EXPECT_TRUE(ExpectSame(Library(Tables(kMuch, end))));
  EXPECT_TRUE(ExpectSame("\xEF\xBB\xBF" + Library(Tables(kMuch))));
  EXPECT_TRUE(ExpectSame("\xEF\xBB\xBF<metalib name=\"m\" version=\"1\">" + Tables(kMuch, "") + "</metalib>"));
}

TEST(Release, OfLongTagsAndComments) {
  const std::string much(kMuch, 'a');
  const std::string table = "<meta name=\"t\"><entry name=\"a\" type=\"int8\"/></meta>\n";
  const std::string last = "<meta name=\"u\"><entry name=\"a\" type=\"int8\"/></meta>\n";
  EXPECT_TRUE(ExpectSame(Library(table + "<!--" + much + "-->" + last)));
  EXPECT_TRUE(ExpectSame("<!--" + much + "-->\n" + Library(table + last) + "<!--" + much + "-->"));
  EXPECT_TRUE(ExpectSame(Library(table + std::string(kMuch, '\n') + last)));
  EXPECT_TRUE(
      ExpectSame(Library(table + "<meta name=\"v\" desc=\"" + much + "\"><entry name=\"a\" type=\"int8\"/></meta>" + last)));
  EXPECT_TRUE(ExpectSame("<metalib name=\"m\" version=\"1\"" + std::string(kMuch, ' ') + ">" + table + last + "</metalib>"));
}

// The place of the error decides how much was given back before it.
TEST(Release, FindsErrorsEverywhere) {
  const std::string tables = Tables(kMuch);
  const std::string valid = Library(tables);
  for (const std::string error : {"<a/>", "</meta>", "text", "&nobody;", "\x01", "<<<<<<< HEAD", "<meta name=\"table_0\">"}) {
    for (const unsigned percent : {0U, 1U, 30U, 70U, 99U}) {
      const std::size_t at = valid.find("<meta", valid.size() / 100 * percent);
      EXPECT_FALSE(ExpectSame(valid.substr(0, at) + error + valid.substr(at))) << error << " at " << at;
    }
  }
  EXPECT_FALSE(ExpectSame(valid.substr(0, valid.size() / 2)));
  EXPECT_FALSE(ExpectSame(valid + "<metalib/>"));
  EXPECT_FALSE(ExpectSame("<?xml version=\"1.1\"?>" + valid));
  EXPECT_FALSE(ExpectSame("<!DOCTYPE metalib>" + valid));
  EXPECT_FALSE(ExpectSame(std::string("\xFE\xFF", 2) + valid));
  EXPECT_FALSE(ExpectSame(Library(tables + "<meta name=\"t\"><entry name=\"a\" type=\"nobody\"/></meta>")));
}

TEST(Release, OfExamplesAndCases) {
  std::size_t accepted = 0;
  for (const char* const directory : {"examples", "tests/cases", "tests/tool", "tests/fuzz/corpus/xml"}) {
    for (const auto& file : std::filesystem::recursive_directory_iterator(std::string(KORVEL_SOURCE_DIR "/") + directory)) {
      const bool is_schema = file.path().extension() == ".xml" || std::string_view(directory).starts_with("tests/fuzz");
      if (!file.is_regular_file() || !is_schema) continue;
      SCOPED_TRACE(file.path());
      std::ifstream stream(file.path(), std::ios::binary);
      accepted += ExpectSame(std::string(std::istreambuf_iterator<char>(stream), {})) ? 1 : 0;
    }
  }
  EXPECT_GE(accepted, 300u);
}

// --- ParsedPages ---

// Bytes that are all 'x', at the start of a page plus `shift`.
class Bytes {
 public:
  explicit Bytes(std::size_t pages, std::size_t shift = 0)
      : size_(pages * kPage),
        memory_(static_cast<char*>(::mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))),
        begin_(memory_ + shift) {
    std::memset(memory_, 'x', size_);
  }
  Bytes(const Bytes&) = delete;
  Bytes& operator=(const Bytes&) = delete;
  ~Bytes() { ::munmap(memory_, size_); }

  char* begin() const { return begin_; }

  // A letter for each page: 'x' if it is as it was, '0' if it was given back.
  std::string Pages() const {
    std::string pages;
    for (const char* page = memory_; page < memory_ + size_; page += kPage) {
      const auto count = static_cast<std::size_t>(std::count(page, page + kPage, 'x'));
      pages += count == kPage ? 'x' : count == 0 ? '0' : '?';
    }
    return pages;
  }

 private:
  std::size_t size_;
  char* memory_;
  char* begin_;
};

TEST(ParsedPages, GivesWholePagesBack) {
  const Bytes bytes(8);
  qmx::ParsedPages pages(bytes.begin());
  pages.Release(kPage - 1, {0, 0, 0});
  EXPECT_EQ(bytes.Pages(), "xxxxxxxx");
  pages.Release(3 * kPage + 1, {0, 0, 0});
  EXPECT_EQ(bytes.Pages(), "x00xxxxx");
  pages.Release(7 * kPage, {0, 0, 0});
  EXPECT_EQ(bytes.Pages(), "x000000x");
}

TEST(ParsedPages, KeepsPagesOfTags) {
  const Bytes bytes(8);
  qmx::ParsedPages pages(bytes.begin());
  pages.Release(5 * kPage, {3 * kPage - 1, 0, kPage * 4});  // the first one ends in page 3
  EXPECT_EQ(bytes.Pages(), "x0xxxxxx");
  pages.Release(8 * kPage, {3 * kPage - 1, 0, 6 * kPage + 5});
  EXPECT_EQ(bytes.Pages(), "x0xxx0x0");
}

TEST(ParsedPages, LeavesWhatIsBeforeTheBytes) {
  const Bytes bytes(4, 100);
  qmx::ParsedPages(bytes.begin()).Release(3 * kPage, {kPage, kPage, kPage});
  EXPECT_EQ(bytes.Pages(), "xx0x");
}

TEST(ParsedPages, IsDueAfterMuch) {
  const Bytes bytes(64);
  qmx::ParsedPages pages(bytes.begin());
  EXPECT_FALSE(pages.IsDue(kPage));
  EXPECT_TRUE(pages.IsDue(64 * kPage));
  pages.Release(60 * kPage, {0, 0, 0});
  EXPECT_FALSE(pages.IsDue(64 * kPage));
}

}  // namespace
