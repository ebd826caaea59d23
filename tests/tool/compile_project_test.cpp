// compile of several files: where their images are written, and what is not replaced.
#include <gmock/gmock.h>

#include "project_repository.h"

namespace tool_test {
namespace {

using testing::HasSubstr;

class CompileProjectTest : public ProjectTest {
 protected:
  std::string ImageOf(const std::string& file) const {
    EXPECT_EQ(Run({"compile", file, "-o", "one.qmb"}).exit_code, 0);
    return Read("one.qmb");
  }

  bool Exists(const std::string& path) const { return std::filesystem::exists(PathOf(path)); }
};

TEST_F(CompileProjectTest, WritesAnImageOfEachFile) {
  ExpectOutcome(Run({"compile", "-o", "out/images"}), 0,
                "schemas/deep/items.xml -> out/images/schemas/deep/items.qmb\n"
                "schemas/orders.xml -> out/images/schemas/orders.qmb\n"
                "schemas/users.xml -> out/images/schemas/users.qmb\n",
                "");
  EXPECT_EQ(Read("out/images/schemas/deep/items.qmb"), ImageOf("schemas/deep/items.xml"));
  EXPECT_EQ(Read("out/images/schemas/users.qmb"), ImageOf("schemas/users.xml"));
}

TEST_F(CompileProjectTest, PathsBeginInTheDirectoryOfTheProject) {
  ExpectOutcome(Run({"compile", "deep", "-o", "../out"}, "schemas"), 0, "deep/items.xml -> ../out/schemas/deep/items.qmb\n", "");
  ExpectOutcome(Run({"compile", "deep", "--no-project", "-o", "../out"}, "schemas"), 0,
                "deep/items.xml -> ../out/deep/items.qmb\n", "");
  ExpectOutcome(Run({"compile", "schemas/users.xml", "schemas/orders.xml", "-o", "out"}), 0,
                "schemas/users.xml -> out/schemas/users.qmb\nschemas/orders.xml -> out/schemas/orders.qmb\n", "");
  ExpectRefused({"compile", "../x", "schemas", "-o", "out"}, "korvelcheck: ../x: No such file or directory\n");
}

// Images of an earlier call are not compiled again.
TEST_F(CompileProjectTest, ReplacesTheImagesOfAnEarlierCall) {
  Write("korvelcheck.toml", "");
  const Outcome first = Run({"compile", "schemas", "-o", "schemas"});
  EXPECT_THAT(first.out, HasSubstr("schemas/users.xml -> schemas/schemas/users.qmb\n"));
  Write("schemas/users.xml", Schema("users", "uint32"));
  ExpectOutcome(Run({"compile", "schemas", "-o", "schemas"}), 0, first.out, "");
  EXPECT_EQ(Read("schemas/schemas/users.qmb"), ImageOf("schemas/users.xml"));
  // Also beside their schema files.
  for (int i = 0; i < 2; ++i) {
    EXPECT_THAT(Run({"compile", "schemas/deep", "-o", "."}).out, "schemas/deep/items.xml -> schemas/deep/items.qmb\n");
  }
}

TEST_F(CompileProjectTest, ReplacesNothingElse) {
  std::filesystem::create_directories(PathOf("out/schemas"));
  Write("out/schemas/users.qmb", Schema("users"));
  ExpectRefused(
      {"compile", "-o", "out"},
      "korvelcheck: out/schemas/users.qmb exists and is not an image; allowed: an image, an empty file or a new file\n");
  EXPECT_EQ(Read("out/schemas/users.qmb"), Schema("users"));
  EXPECT_FALSE(Exists("out/schemas/orders.qmb"));
  EXPECT_FALSE(Exists("out/schemas/deep"));
  ExpectRefused({"compile", "schemas/orders.xml", "-o", "schemas/users.xml"},
                "korvelcheck: schemas/users.xml exists and is not an image; allowed: an image, an empty file or a new file\n");
  EXPECT_EQ(Read("schemas/users.xml"), Schema("users"));
}

// An image of an earlier call is an input if the call names it.
TEST_F(CompileProjectTest, ReplacesNoInput) {
  ASSERT_EQ(Run({"compile", "schemas/users.xml", "schemas/orders.xml", "-o", "out"}).exit_code, 0);
  const std::string image = Read("out/schemas/users.qmb");
  Write("schemas/users.xml", Schema("users", "uint32"));
  const std::string error =
      "korvelcheck: out/schemas/users.qmb, the image of schemas/users.xml, would replace an input; nothing was written\n";
  ExpectRefused({"compile", "out/schemas/users.qmb", "schemas/users.xml", "-o", "out"}, error);
  std::filesystem::create_symlink("out/schemas/users.qmb", PathOf("link.qmb"));
  ExpectRefused({"compile", "link.qmb", "schemas/users.xml", "-o", "out"}, error);
  EXPECT_EQ(Read("out/schemas/users.qmb"), image);
  EXPECT_FALSE(Exists("out/out"));
}

TEST_F(CompileProjectTest, TwoFilesWithOneImageAreRefused) {
  Write("schemas/users.txt", Schema("users"));
  ExpectRefused(
      {"compile", "schemas/users.xml", "schemas/users.txt", "-o", "out"},
      "korvelcheck: schemas/users.xml and schemas/users.txt would have the same image, out/schemas/users.qmb; leave one "
      "of them out\n");
  EXPECT_FALSE(Exists("out"));
}

TEST_F(CompileProjectTest, RefusesFilesWithoutAPathInTheProject) {
  const std::string rest =
      ": has no path below the directory of the project file that its image could have; allowed with several files: those below "
      "it\n";
  ExpectRefused({"compile", "schemas", "git:HEAD:schemas/users.xml", "-o", "out"},
                "korvelcheck: git:HEAD:schemas/users.xml" + rest);
  const std::string outside = PathOf("").parent_path().string() + "_outside.xml";
  Write(outside, Schema("outside"));
  ExpectRefused({"compile", "schemas", outside, "-o", "out"}, "korvelcheck: " + outside + rest);
  std::filesystem::remove(outside);
}

TEST_F(CompileProjectTest, WritesNothingIfAFileHasAFault) {
  Write("schemas/users.xml", "<metalib>");
  EXPECT_EQ(Run({"compile", "-o", "out"}).exit_code, 2);
  EXPECT_FALSE(Exists("out"));
}

TEST_F(CompileProjectTest, WritesAllImagesOrNone) {
  std::filesystem::create_directories(PathOf("out/schemas/users.qmb"));
  const Outcome outcome = Run({"compile", "-o", "out"});
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, testing::EndsWith("/out/schemas/users.qmb: is not a regular file\n"));
  EXPECT_FALSE(Exists("out/schemas/orders.qmb"));
  EXPECT_FALSE(Exists("out/schemas/deep"));
}

TEST_F(CompileProjectTest, OneImageNeedsAFile) {
  ExpectRefused({"compile", "schemas/users.xml", "-o", "schemas"},
                "korvelcheck: compile: schemas is a directory; allowed with one file: a file\nTry 'korvelcheck compile "
                "--help'.\n");
  EXPECT_THAT(Run({"compile", "--help"}).out, HasSubstr("is standard output; with several files, a directory"));
}

TEST_F(CompileProjectTest, SeveralImagesNeedADirectory) {
  ExpectRefused({"compile", "-o", "-"},
                "korvelcheck: compile: several images are written to a directory; allowed: -o DIR\nTry 'korvelcheck compile "
                "--help'.\n");
  ExpectRefused({"compile", "-o", "schemas/users.xml"}, "korvelcheck: -o schemas/users.xml would replace an input\n");
  Write("file", "");
  ExpectRefused({"compile", "-o", "file"}, "korvelcheck: file: is not a directory; nothing was written\n");
}

}  // namespace
}  // namespace tool_test
