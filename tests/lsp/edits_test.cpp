// Random edits of a document as the protocol sends them, compared with the same edits of a UTF-16 string.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "lsp/documents.h"

namespace lsp_test {
namespace {

using Json = nlohmann::json;

constexpr unsigned kSeed = 20261123;
constexpr int kEdits = 20'000;
constexpr std::size_t kMaxSize = 200;  // of a text in code units; a longer one begins anew

const std::vector<std::u16string> kPieces = {u"a",    u"<x>",    u"\r\n",       u"\r", u"\n",
                                             u"\n\n", u"\u20AC", u"\U0001F697", u"",   u"\u00E9 "};

bool IsHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

std::string Utf8(const std::u16string& text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t character = text[i];
    if (IsHighSurrogate(text[i])) {
      character = 0x10000 + ((character - 0xD800) << 10) + (text[i + 1] - 0xDC00U);
      ++i;
    }
    const int more = character < 0x80 ? 0 : character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    constexpr unsigned char kLeads[] = {0, 0xC0, 0xE0, 0xF0};
    bytes += static_cast<char>(kLeads[more] | (character >> (6 * more)));
    for (int j = more - 1; j >= 0; --j) bytes += static_cast<char>(0x80 | ((character >> (6 * j)) & 0x3F));
  }
  return bytes;
}

// The offset of a position, limited to its line and to the text.
std::size_t OffsetOf(const std::u16string& text, std::size_t line, std::size_t character) {
  std::size_t begin = 0;
  for (std::size_t i = 0; i < line; ++i) {
    const std::size_t end = text.find_first_of(u"\r\n", begin);
    if (end == std::u16string::npos) return text.size();
    begin = end + (text.compare(end, 2, u"\r\n") == 0 ? 2 : 1);
  }
  const std::size_t end = std::min(text.find_first_of(u"\r\n", begin), text.size());
  const std::size_t offset = std::min(begin + character, end);
  return offset < text.size() && IsLowSurrogate(text[offset]) ? offset - 1 : offset;
}

class Random {
 public:
  std::size_t Below(std::size_t limit) { return std::uniform_int_distribution<std::size_t>(0, limit - 1)(engine_); }
  // Often beyond the text.
  Json Position() { return {{"line", Below(12)}, {"character", Below(9)}}; }
  const std::u16string& Piece() { return kPieces[Below(kPieces.size())]; }

 private:
  std::mt19937 engine_{kSeed};
};

// Applies the change to the reference.
void Apply(const Json& change, const std::u16string& piece, std::u16string& text) {
  const auto offset = [&](const char* end) {
    const Json& at = change.at("range").at(end);
    return OffsetOf(text, at.at("line"), at.at("character"));
  };
  const std::size_t begin = offset("start");
  text.replace(begin, std::max(begin, offset("end")) - begin, piece);
}

TEST(EditsTest, GiveTheSameTextAsInAString) {
  std::cout << "seed " << kSeed << "\n";
  Random random;
  korvel::lsp::Documents documents;
  documents.Open({{"uri", "untitled:1"}, {"version", 0}, {"text", ""}});
  std::u16string text;
  for (int i = 1; i <= kEdits; ++i) {
    Json changes = Json::array();
    if (text.size() > kMaxSize) {
      text.clear();
      changes.push_back({{"text", ""}});
    }
    for (std::size_t left = 1 + random.Below(3); left > 0; --left) {
      const std::u16string& piece = random.Piece();
      changes.push_back({{"range", {{"start", random.Position()}, {"end", random.Position()}}}, {"text", Utf8(piece)}});
      Apply(changes.back(), piece, text);
    }
    documents.Change({{"textDocument", {{"uri", "untitled:1"}, {"version", i}}}, {"contentChanges", changes}});
    ASSERT_EQ(documents.Find("untitled:1")->text.bytes(), Utf8(text)) << "edit " << i << ": " << changes;
  }
}

}  // namespace
}  // namespace lsp_test
