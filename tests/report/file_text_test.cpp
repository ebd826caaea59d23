// Texts that are read again when they are needed.
#include "schema/file_text.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "base/input_error.h"
#include "report/result/text_ranges.h"
#include "schema/input.h"

namespace report_test {
namespace {

using korvel::Input;
using korvel::LoadFile;
using korvel::Texts;

constexpr char kModified[] = "was modified while it was read; try again";

// A schema file that is large enough not to be kept.
class FileTextTest : public testing::Test {
 protected:
  FileTextTest() : path_(testing::TempDir() + "file_text_" + std::to_string(::getpid()) + ".xml") { Write(text_); }
  ~FileTextTest() override { std::filesystem::remove(path_); }

  void Write(const std::string& text) const { std::ofstream(path_, std::ios::binary | std::ios::trunc) << text; }

  std::string FaultOf(const Input& input) const {
    try {
      input.text->Bytes();
      return "";
    } catch (const korvel::InputError& fault) {
      EXPECT_EQ(fault.lines.size(), 1u);
      return fault.lines.front();
    }
  }

  std::string Modified() const { return "korvelcheck: " + path_ + ": " + kModified; }

  const std::string path_;
  const std::string text_ =
      "<metalib name=\"m\" version=\"1\">\n<!--" + std::string(korvel::kLargeText, '.') +
      "-->\n  <meta name=\"a\"><entry name=\"k\" type=\"int8\"/></meta>\n"
      "  <meta\n name=\"b\"><entry name=\"k\" type=\"int8\"/><primarykey entries=\"k\"/></meta>\n</metalib>\n";
};

TEST_F(FileTextTest, ReadsLargeFilesAgain) {
  const Input input = LoadFile(path_);
  EXPECT_FALSE(input.text->file->IsInMemory());
  EXPECT_EQ(input.text->Bytes(), text_);
  EXPECT_TRUE(input.text->file->IsInMemory());
  Write("");
  EXPECT_EQ(input.text->Bytes(), text_);
}

TEST_F(FileTextTest, KeepsSmallAndShownTexts) {
  EXPECT_TRUE(LoadFile(path_, Texts::kShown).text->file->IsInMemory());
  Write("<metalib name=\"m\" version=\"1\"><meta name=\"a\"><entry name=\"k\" type=\"int8\"/></meta></metalib>");
  EXPECT_TRUE(LoadFile(path_).text->file->IsInMemory());
}

TEST_F(FileTextTest, CopiesShareTheText) {
  const Input input = LoadFile(path_);
  const Input copy = input;
  EXPECT_EQ(copy.text->Bytes().data(), input.text->Bytes().data());
}

TEST_F(FileTextTest, RefusesOtherBytes) {
  std::string other = text_;
  other[other.find("....")] = ',';
  for (const std::string& text : {other, text_ + "\n", text_.substr(0, text_.size() - 1), std::string()}) {
    Write(text_);
    const Input input = LoadFile(path_);
    Write(text);
    EXPECT_EQ(FaultOf(input), Modified());
    EXPECT_FALSE(input.text->file->IsInMemory());
    Write(text_);
    EXPECT_EQ(FaultOf(input), "");
  }
}

TEST_F(FileTextTest, RefusesAnotherKindOfFile) {
  const Input input = LoadFile(path_);
  std::filesystem::remove(path_);
  EXPECT_EQ(FaultOf(input), Modified());
  ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
  EXPECT_EQ(FaultOf(input), Modified());
  std::filesystem::remove(path_);
  std::filesystem::create_directory(path_);
  EXPECT_EQ(FaultOf(input), Modified());
}

// Only the bytes count: a file may be replaced by a copy.
TEST_F(FileTextTest, AcceptsTheSameBytesInAnotherFile) {
  const Input input = LoadFile(path_);
  std::filesystem::rename(path_, path_ + ".old");
  Write(text_);
  std::filesystem::remove(path_ + ".old");
  EXPECT_EQ(input.text->Bytes(), text_);
}

TEST_F(FileTextTest, ThreadsReadItOnce) {
  const Input input = LoadFile(path_);
  std::vector<const char*> bytes(8);
  std::vector<std::thread> threads;
  for (const char*& own : bytes) threads.emplace_back([&] { own = input.text->Bytes().data(); });
  for (std::thread& thread : threads) thread.join();
  for (const char* const own : bytes) EXPECT_EQ(own, bytes.front());
}

TEST_F(FileTextTest, LocatesMetasWithoutIt) {
  const Input input = LoadFile(path_);
  const Input kept = LoadFile(path_, Texts::kShown);
  for (const std::string meta : {"a", "b"}) {
    const auto range = korvel::FindTextRanges({DeclaredAt(input, meta)}).at(0);
    const auto expected = korvel::FindTextRanges({DeclaredAt(kept, meta)}).at(0);
    ASSERT_TRUE(range && expected && range->begin);
    EXPECT_EQ(range->file, expected->file);
    EXPECT_EQ(range->begin->line, expected->begin->line);
    EXPECT_EQ(range->begin->column, expected->begin->column);
    EXPECT_EQ(range->end.line, expected->end.line);
    EXPECT_EQ(range->end.column, expected->end.column);
    EXPECT_EQ(range->span.begin, expected->span.begin);
    EXPECT_EQ(range->span.end, expected->span.end);
  }
  EXPECT_FALSE(input.text->file->IsInMemory());
}

TEST_F(FileTextTest, OtherLocationsReadIt) {
  const Input input = LoadFile(path_);
  const korvel::Location type{&input, {qmx::ElementId::Kind::kEntry, 1, 0}, "type"};
  const auto ranges = korvel::FindTextRanges({DeclaredAt(input, "b"), type});
  EXPECT_EQ(ranges[0]->line, "  <meta");
  EXPECT_EQ(ranges[1]->begin->line, 5u);
  EXPECT_EQ(ranges[1]->line.substr(ranges[1]->begin->column - 1, 4), "int8");
  EXPECT_TRUE(input.text->file->IsInMemory());
}

}  // namespace
}  // namespace report_test
