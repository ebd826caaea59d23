// Diagnostics of broken texts: they are those that the program reports about a file with this text.
//
// A process of the program for every text would take too long. Most texts are compared with calls of the program in this process,
// against a directory, which needs no git; a sample of them with processes, against a commit. Both read the text from the disk.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "server_fixture.h"
#include "tool_report.h"

namespace lsp_test {
namespace {

constexpr std::size_t kStep = KORVEL_SANITIZED ? 16 : 1;  // of the texts

// Replaces a piece of the text.
struct Edit {
  std::size_t begin = 0;
  std::size_t size = 0;
  std::string text = {};
};

std::string Applied(std::string text, const Edit& edit) { return text.replace(edit.begin, edit.size, edit.text); }

// What replaces the byte at an offset.
std::string ReplacementAt(std::size_t offset) {
  static const std::vector<std::string> kReplacements = {"<", "\"", "x", "\xF0\x9F\x9A\x97", "\n",
                                                         "&", "\r", "0", "\xC3\xBF",         ">"};
  return kReplacements[offset % kReplacements.size()];
}

// Every prefix, every text without one byte, and every text with another byte; only each `step`-th of them. REQUIRES: `text` is
// ASCII.
std::vector<Edit> EditsOf(const std::string& text, std::size_t step) {
  std::vector<Edit> edits;
  for (std::size_t i = 0; i < text.size(); ++i) {
    edits.push_back({i, text.size() - i, ""});
    edits.push_back({i, 1, ""});
    edits.push_back({i, 1, ReplacementAt(i)});
  }
  std::vector<Edit> chosen;
  for (std::size_t i = 0; i < edits.size(); i += step) chosen.push_back(edits[i]);
  return chosen;
}

// The position of an offset in an ASCII text.
Json PositionAt(const std::string& text, std::size_t offset) {
  const std::string before = text.substr(0, offset);
  const auto line_begin = before.rfind('\n') + 1;
  return {{"line", std::count(before.begin(), before.end(), '\n')}, {"character", offset - line_begin}};
}

Json ChangeOf(const std::string& text, const Edit& edit) {
  return {{"range", {{"start", PositionAt(text, edit.begin)}, {"end", PositionAt(text, edit.begin + edit.size)}}},
          {"text", edit.text}};
}

std::string Example(const std::string& name) {
  std::ifstream stream(std::string(KORVEL_SOURCE_DIR) + "/examples/" + name, std::ios::binary);
  std::stringstream text;
  text << stream.rdbuf();
  EXPECT_FALSE(text.str().empty()) << name;
  return text.str();
}

// A file whose edits are compared with its old text.
struct EditedFile {
  std::string name = {};
  std::string old_example = {};
  std::string new_example = {};
  std::size_t step = 1;  // each step-th edit
};

class BrokenTexts : public ServerTest {
 protected:
  // Compares the diagnostics of each edit of a text with `report`, which is called after the edited text was written to the file.
  void CompareEach(const std::string& text, const std::vector<Edit>& edits, const std::function<std::string()>& report) {
    Write(kFile, text);
    client_.Open(Uri(kFile), text);
    for (const Edit& edit : edits) {
      const std::string edited = Applied(text, edit);
      // Undoes the last edit by the whole text, then edits a piece.
      client_.Notify("textDocument/didChange", {{"textDocument", {{"uri", Uri(kFile)}, {"version", ++version_}}},
                                                {"contentChanges", {{{"text", text}}, ChangeOf(text, edit)}}});
      const Json items = client_.Result("textDocument/diagnostic", {{"textDocument", {{"uri", Uri(kFile)}}}}).at("items");
      Write(kFile, edited);
      const Problems expected = ProblemsOfReport(Json::parse(report()), kFile, edited);
      ASSERT_EQ(ProblemsOf(items), expected) << "bytes " << edit.begin << "+" << edit.size << " -> '" << edit.text << "'";
    }
    client_.Close(Uri(kFile));
  }

  static constexpr char kFile[] = "shop.xml";

  Client client_;

 private:
  int version_ = 1;
};

class BrokenTextsTest : public BrokenTexts, public testing::WithParamInterface<EditedFile> {};

TEST_P(BrokenTextsTest, HaveTheDiagnosticsOfTheProgram) {
  std::filesystem::create_directory(PathOf("released"));
  Write("released/shop.xml", Example(GetParam().old_example));
  Write("korvelcheck.toml", Replaced(kProject, "git:HEAD", "released"));
  client_.Initialize();
  const std::string text = Example(GetParam().new_example);
  CompareEach(text, EditsOf(text, kStep * GetParam().step), [] { return CallProgram({"check", kFile, "--format", "sarif"}); });
}

INSTANTIATE_TEST_SUITE_P(Examples, BrokenTextsTest,
                         testing::Values(EditedFile{"Refused", "shop/v6.xml", "shop/v7-several-changes.xml"},
                                         EditedFile{"Allowed", "shop/v7.xml", "shop/v8.xml", 31},
                                         EditedFile{"OtherRecordFormat", "shop/v8.xml", "shop/v9-back-to-records.xml", 37},
                                         EditedFile{"OtherSchema", "game/v12.xml", "game/v13-reused-id.xml", 31}),
                         [](const auto& one) { return one.param.name; });

TEST_F(BrokenTexts, HaveTheDiagnosticsOfAProcess) {
  Write("shop.xml", Example("shop/v6.xml"));
  Commit("Replace the shop");
  client_.Initialize();
  const std::string text = Example("shop/v7-several-changes.xml");
  constexpr std::size_t kOfEach = 101;  // no multiple of the number of replacements
  CompareEach(text, EditsOf(text, kStep * kOfEach), [this] { return Run({"check", kFile, "--format", "sarif"}).out; });
}

}  // namespace
}  // namespace lsp_test
