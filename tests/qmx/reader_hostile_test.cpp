// Tests the reader on hostile files: truncated, damaged, random, huge. It never crashes, never accepts an invalid file, and
// always reports the location.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <random>
#include <string>

#include "qmx/layout_check.h"
#include "qmx/qmx_metalib_kernel.h"
#include "qmx/qmx_xml.h"

namespace {

const std::string kSmall =
    "<?xml version='1.0' encoding='UTF-8'?>\n<!-- small -->\n<metalib name='m&amp;ä' version='1' protocol='TLV'>\n"
    "<meta name='t' customattr='TableType=GENERIC'><entry name='a' id='1' type='int32'/>"
    "<entry name='b' id='2' type='u' count='3' refer='a'/><primarykey entries='a'/><splittablekey entries='a'/>"
    "<index name='i'><column entry='a' desc='true'/></index></meta>\n"
    "<meta name='u' kind='union'><entry name='x' id='1' type='string' size='5'/></meta>\n</metalib>";

// Expects that every error is located inside the file and has one line.
void ExpectLocationsInside(const qmx::ReadResult& result, std::string_view text) {
  const auto lines = static_cast<std::size_t>(1 + std::ranges::count(text, '\n') + std::ranges::count(text, '\r'));
  for (const qmx::ReadError& error : result.errors) {
    EXPECT_GE(error.location.line, 1u);
    EXPECT_LE(error.location.line, lines);
    EXPECT_GE(error.location.column, 1u);
    EXPECT_LE(error.location.column, text.size() + 1);
    EXPECT_EQ(error.text.find_first_of("\n\r"), std::string::npos) << error.text;
  }
}

void ExpectRefused(std::string_view text) {
  const qmx::ReadResult result = qmx::ReadXml(text);
  EXPECT_FALSE(result.schema);
  EXPECT_FALSE(result.errors.empty());
  ExpectLocationsInside(result, text);
}

// Expects a library with a valid layout, or errors.
void ExpectVerdict(std::string_view text) {
  const qmx::ReadResult result = qmx::ReadXml(text);
  ASSERT_EQ(result.schema.has_value(), result.errors.empty());
  ExpectLocationsInside(result, text);
  if (!result.schema) return;
  EXPECT_EQ(layout::Faults(result.schema->metalib), std::vector<std::string>{});
}

TEST(Hostile, CompleteFileIsAccepted) { EXPECT_TRUE(qmx::ReadXml(kSmall).schema); }

TEST(Hostile, TruncatedAnywhere) {
  for (std::size_t size = 0; size < kSmall.size(); ++size) {
    SCOPED_TRACE(size);
    // In its own memory, so that a sanitizer detects reads after the end.
    ExpectRefused(std::string(kSmall.begin(), kSmall.begin() + static_cast<std::ptrdiff_t>(size)));
  }
}

TEST(Hostile, MissingBeginning) {
  for (std::size_t begin = 1; begin < kSmall.size(); ++begin) {
    SCOPED_TRACE(begin);
    const std::string rest = kSmall.substr(begin);
    // The declaration and the comment may be missing completely.
    const bool is_whole = rest.starts_with("\n<") || rest.starts_with("<!--") || rest.starts_with("<metalib");
    if (is_whole && rest.find("</metalib") > rest.find("<metalib")) {
      EXPECT_TRUE(qmx::ReadXml(rest).schema);
    } else {
      ExpectRefused(rest);
    }
  }
}

TEST(Hostile, EveryByteReplaced) {
  for (std::size_t at = 0; at < kSmall.size(); ++at) {
    for (const char byte : {'\0', '<', '>', '"', '\'', '&', ' ', '/', '\n', '\x80', '\xFF', 'Z'}) {
      std::string text = kSmall;
      text[at] = byte;
      ExpectVerdict(text);
    }
  }
}

TEST(Hostile, ZeroByteAnywhereIsReported) {
  for (std::size_t i = 0; i < kSmall.size(); ++i) {
    if ((static_cast<unsigned char>(kSmall[i]) & 0xC0) == 0x80)
      continue;  // inside a character: the error is about that character
    std::string text = kSmall;
    text.insert(i, 1, '\0');
    const qmx::ReadResult result = qmx::ReadXml(text);
    ASSERT_EQ(result.errors.size(), 1u) << i;
    EXPECT_EQ(result.errors[0].text, "a zero byte; allowed: text in UTF-8") << i;
    const qmx::LineColumn location = qmx::Locate(text, i);
    EXPECT_EQ(result.errors[0].location.line, location.line) << i;
    EXPECT_EQ(result.errors[0].location.column, location.column) << i;
  }
}

TEST(Hostile, EveryByteAlone) {
  for (int byte = 0; byte < 256; ++byte) ExpectRefused(std::string(1, static_cast<char>(byte)));
}

TEST(Hostile, RandomBytes) {
  std::mt19937 random(7);
  for (int round = 0; round < 500; ++round) {
    std::string text(1 + random() % 300, '\0');
    for (char& byte : text) byte = static_cast<char>(random());
    if (round % 2 == 0) text = "<metalib>" + text;
    ExpectRefused(text);
  }
}

TEST(Hostile, RandomPiecesOfSyntax) {
  const std::vector<std::string> pieces = {"<metalib name='m' version='1'>",
                                           "</metalib>",
                                           "<meta name='t'>",
                                           "</meta>",
                                           "<entry name='a' type='int8'/>",
                                           "<entry name='a' type='t'>",
                                           "</entry>",
                                           "<primarykey entries='a'/>",
                                           "<index name='i'>",
                                           "</index>",
                                           "<column entry='a'/>",
                                           "<column>",
                                           "</column>",
                                           "text",
                                           "&amp;",
                                           "<![CDATA[x]]>",
                                           "<!-- c -->",
                                           "<foo>",
                                           "</foo>"};
  std::mt19937 random(11);
  for (int round = 0; round < 2000; ++round) {
    std::string text = random() % 2 == 0 ? pieces.front() : "";
    for (auto count = random() % 12; count > 0; --count) text += pieces[random() % pieces.size()];
    ExpectVerdict(text);
  }
}

// Regression: the parser kept every open element in memory, 46 bytes for each byte of a file.
TEST(Hostile, StopsAtDeepElements) {
  std::string text = "<metalib name='m' version='1'>\n";
  for (int i = 0; i < 100'000; ++i) text += "<a>\n";
  const qmx::ReadResult result = qmx::ReadXml(text);
  ASSERT_EQ(result.errors.size(), 2u);
  EXPECT_EQ(result.errors[0].text, "unknown element 'a'; allowed in element 'metalib': meta");
  EXPECT_EQ(result.errors[1].text, "elements nest more than 64 levels deep; allowed: at most 64");
  EXPECT_EQ(result.errors[1].location.line, qmx::kMaxElementDepth + 1);
}

TEST(Hostile, MaximumDepthOfElementsIsNotTooDeep) {
  std::string begin = "<metalib name='m' version='1'>";
  std::string end = "</metalib>";
  for (std::size_t depth = 2; depth <= qmx::kMaxElementDepth; ++depth) {
    begin += "<a>";
    end.insert(0, "</a>");
  }
  EXPECT_EQ(qmx::ReadXml(begin + end).errors.size(), 1u);
  EXPECT_EQ(qmx::ReadXml(begin + "<a/>" + end).errors.size(), 2u);
}

constexpr char kLongProlog[] = "more than 1048576 bytes before the outermost element; allowed: at most 1048576";

// Regression: an endless stream of comments was read up to the maximum size of a file.
TEST(Hostile, LongProlog) {
  const std::string schema = "<metalib name='m' version='1'><meta name='t'><entry name='a' type='int8'/></meta></metalib>";
  const std::string comment(qmx::kMaxPrologBytes - 7, 'c');
  for (const std::string& prolog :
       {std::string(qmx::kMaxPrologBytes, '\n'), "<!--" + comment + "-->", "<?cc" + comment + "c?>"}) {
    ASSERT_EQ(prolog.size(), qmx::kMaxPrologBytes);
    EXPECT_TRUE(qmx::ReadXml(prolog + schema).schema);
    const qmx::ReadResult result = qmx::ReadXml(prolog + " " + schema);
    ASSERT_EQ(result.errors.size(), 1u);
    EXPECT_EQ(result.errors[0].text, kLongProlog);
    EXPECT_EQ(result.errors[0].location.line, 1u);
  }
}

// As the bytes of a stream come: each beginning of a file is accepted until it is certain that the file is refused.
TEST(Hostile, LongPrologIsRecognizedByItsBeginning) {
  for (const char* const piece : {"<!-- x -->\n", "<?x y?>\n", "<!-- -", " \n"}) {
    std::string text;
    while (text.size() <= qmx::kMaxPrologBytes) text += piece;
    EXPECT_TRUE(qmx::MayBeXml(text.substr(0, qmx::kMaxPrologBytes))) << piece;
    EXPECT_FALSE(qmx::MayBeXml(text + "<!-- ")) << piece;
  }
}

TEST(Hostile, DeepComposites) {
  std::string text = "<metalib name='m' version='1'>";
  for (int i = 0; i < 20'000; ++i) {
    text += "<meta name='m" + std::to_string(i) + "'><entry name='a' type='m" + std::to_string((i + 1) % 20'000) + "'/></meta>";
  }
  ExpectRefused(text + "</metalib>");
}

TEST(Hostile, ManyErrorsAreCounted) {
  std::string text = "<metalib name='m' version='1'>\n";
  for (int i = 0; i < 5000; ++i) text += "<x/>\n";
  const qmx::ReadResult result = qmx::ReadXml(text + "</metalib>");
  ASSERT_EQ(result.errors.size(), qmx::kMaxErrors + 1);
  EXPECT_EQ(result.errors.back().text, "too many errors; only the first 1000 found are shown");
  EXPECT_EQ(result.errors.back().location.line, 1001u);
}

TEST(Hostile, ManyErrorsInOneTag) {
  std::string text = "<metalib name='m' version='1' desc='" + std::string(100'000, 'd') + "'";
  for (int i = 0; i < 5000; ++i) text += " x" + std::to_string(i) + "=''";
  EXPECT_EQ(qmx::ReadXml(text + "/>").errors.size(), qmx::kMaxErrors + 1);
}

// The memory is reserved but never used: the size alone is refused.
TEST(Hostile, FileAboveOneGibibyte) {
  const std::size_t size = qmx::kMaxFileBytes + 1;
  void* memory = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(memory, MAP_FAILED);
  const qmx::ReadResult result = qmx::ReadXml({static_cast<const char*>(memory), size});
  munmap(memory, size);
  ASSERT_EQ(result.errors.size(), 1u);
  EXPECT_EQ(result.errors[0].text, "the file has 1073741825 bytes; allowed: at most 1073741824");
  EXPECT_EQ(result.errors[0].location.line, 1u);
}

// One meta with many entries, and equally many key members and columns.
std::string Wide(int entries) {
  std::string rows, names, columns;
  for (int i = 0; i < entries; ++i) {
    const std::string name = "a_rather_long_common_beginning_" + std::to_string(i);
    rows += "<entry name='" + name + "' type='uint8'" + (i > 0 ? " refer='a_rather_long_common_beginning_0'" : "") + "/>\n";
    names += name + " ";
    columns += "<column entry='" + name + "'/>\n";
  }
  return "<metalib name='m' version='1'><meta name='t'><splittablekey entries='" + names + "'/>" + rows + "<index name='i'>" +
         columns + "</index></meta></metalib>";
}

TEST(Hostile, WideMeta) {
  const qmx::ReadResult result = qmx::ReadXml(Wide(32'000));
  ASSERT_TRUE(result.schema);
  EXPECT_EQ(layout::Faults(result.schema->metalib), std::vector<std::string>{});
}

// A linear search for each counter among all composite entries would take too long.
TEST(Hostile, ManyCountsByCompositeEntries) {
  constexpr int kEntries = 300'000;
  std::string text = "<metalib name='m' version='1'><meta name='s'><entry name='x' type='int8'/></meta><meta name='t'>\n";
  for (int i = 0; i < kEntries; ++i) text += "<entry name='c" + std::to_string(i) + "' type='s'/>\n";
  const std::string last = "c" + std::to_string(kEntries - 1);
  for (int i = 0; i < kEntries; ++i) text += "<entry name='r" + std::to_string(i) + "' type='int8' refer='" + last + "'/>\n";
  const qmx::ReadResult result = qmx::ReadXml(text + "</meta></metalib>");
  ASSERT_EQ(result.errors.size(), qmx::kMaxErrors + 1);
  EXPECT_EQ(result.errors[0].text,
            "entry 'r0' refers to '" + last +
                "' of type 's'; allowed: an integer entry with count 1, declared before it in the same meta");
  EXPECT_EQ(result.errors[0].location.line, kEntries + 2u);
}

TEST(Hostile, LargeFile) {
  std::string text = "<metalib name='m' version='1'>";
  int metas = 0;
  for (; text.size() < 4'000'000; ++metas) {
    text += "<meta name='m" + std::to_string(metas) + "'>";
    for (int i = 0; i < 20; ++i) text += "<entry name='e" + std::to_string(i) + "' type='uint64' desc='some words'/>\n";
    text += "<primarykey entries='e0'/></meta>\n";
  }
  const qmx::ReadResult result = qmx::ReadXml(text + "</metalib>");
  ASSERT_TRUE(result.schema);
  EXPECT_EQ(qmx_get_meta_num(result.schema->metalib.get()), metas);
  EXPECT_EQ(layout::Faults(result.schema->metalib), std::vector<std::string>{});
}

}  // namespace
