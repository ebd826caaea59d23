// Differences of texts, as written and as `patch` reads them.
#include "base/alignment.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "models.h"

namespace report_test {
namespace {

using korvel::UnifiedDiff;

TEST(UnifiedDiff, EqualTextsHaveNoDiff) { EXPECT_EQ(UnifiedDiff("a", "x\n", "b", "x\n"), ""); }

TEST(UnifiedDiff, HunkHasThreeLinesOfContext) {
  EXPECT_EQ(UnifiedDiff("old.xml", "1\n2\n3\n4\n5\n6\n7\n8\n9\n", "new.xml", "1\n2\n3\n4\n-\n6\n7\n8\n9\n"),
            "--- old.xml\n+++ new.xml\n@@ -2,7 +2,7 @@\n 2\n 3\n 4\n-5\n+-\n 6\n 7\n 8\n");
}

TEST(UnifiedDiff, DistantChangesHaveSeparateHunks) {
  const std::string diff = UnifiedDiff("a", "1\n2\n3\n4\n5\n6\n7\n8\n9\n", "b", "2\n3\n4\n5\n6\n7\n8\n9\n0\n");
  EXPECT_EQ(diff, "--- a\n+++ b\n@@ -1,4 +1,3 @@\n-1\n 2\n 3\n 4\n@@ -7,3 +6,4 @@\n 7\n 8\n 9\n+0\n");
}

TEST(UnifiedDiff, LastLineWithoutEndIsMarked) {
  EXPECT_EQ(UnifiedDiff("a", "1\n2", "b", "1\n3"),
            "--- a\n+++ b\n@@ -1,2 +1,2 @@\n 1\n-2\n\\ No newline at end of file\n+3\n\\ No newline at end of file\n");
}

TEST(UnifiedDiff, EmptyTextsAreEmptyRanges) {
  EXPECT_EQ(UnifiedDiff("a", "", "b", "1\n"), "--- a\n+++ b\n@@ -0,0 +1 @@\n+1\n");
  EXPECT_EQ(UnifiedDiff("a", "1\n2\n", "b", ""), "--- a\n+++ b\n@@ -1,2 +0,0 @@\n-1\n-2\n");
}

TEST(UnifiedDiff, NameWithBlanksEndsInATab) {
  EXPECT_TRUE(UnifiedDiff("my file", "1\n", "b", "2\n").starts_with("--- my file\t\n+++ b\n"));
}

class PatchTest : public testing::Test {
 protected:
  PatchTest() {
    std::string name = testing::TempDir() + "unified-diff-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) std::abort();
    directory_ = name;
  }
  ~PatchTest() override { std::filesystem::remove_all(directory_); }

  void Write(const std::string& file, const std::string& text) const {
    std::ofstream(directory_ / file, std::ios::binary) << text;
  }

  // The result of `patch` on the text.
  std::string Patched(const std::string& text, const std::string& diff) const {
    Write("file", text);
    Write("diff", diff);
    const std::string command = "cd '" + directory_.string() + "' && patch -p0 -s < diff";
    EXPECT_EQ(std::system(command.c_str()), 0) << diff;
    std::ifstream stream(directory_ / "file", std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

 private:
  std::filesystem::path directory_;
};

// Few distinct lines, so that most of them occur more than once; all kinds of line ends.
TEST_F(PatchTest, PatchRestoresTheNewTextOfRandomPairs) {
  const std::uint64_t seed = NumberFrom("KORVEL_SEED", 20261121);
  std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
  std::mt19937_64 random(seed);
  const std::string lines[] = {"a\n", "b\n", "c\r\n", "\n", "d\re\n", " f\n", "-g\n", "+h\n", "@@ -1 +1 @@\n", "i\n", "--- j\n"};
  const auto make = [&](std::size_t most) {
    std::string text;
    for (std::size_t i = random() % most + 1; i > 0; --i) text += lines[random() % std::size(lines)];
    if (random() % 4 == 0) text += "the end";
    return text;
  };
  for (int run = 0; run < 60; ++run) {
    const std::string old_text = make(40);
    const std::string new_text = random() % 2 == 0 ? make(40) : old_text.substr(0, old_text.size() / 2) + make(5) + old_text;
    ASSERT_EQ(Patched(old_text, UnifiedDiff("file", old_text, "file", new_text)), new_text) << "run " << run;
  }
}

}  // namespace
}  // namespace report_test
