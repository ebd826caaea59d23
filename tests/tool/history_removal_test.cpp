// Histories of files that were deleted, or moved in a way that git does not follow.
#include <gmock/gmock.h>

#include "history_repository.h"

namespace tool_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class RemovedFileTest : public HistoryVerdictTest {
 protected:
  static constexpr const char* kFormats[] = {"text", "json", "sarif", "junit", "github", "gitlab", "markdown", "html"};

  static Json FileOf(const Json& json, const std::string& file) {
    for (const Json& one : json["files"]) {
      if (one["file"] == file) return one;
    }
    return nullptr;
  }
  static std::vector<std::string> VersionsOf(const Json& file) {
    std::vector<std::string> names;
    for (const Json& version : file["versions"]) {
      names.push_back(version["name"].get<std::string>() + (version["removed"].get<bool>() ? " removed" : ""));
    }
    return names;
  }
  // Every format says so, and the call fails.
  void ExpectRemoved(const std::vector<std::string>& arguments, const std::string& file) const {
    for (const char* const format : kFormats) {
      const Outcome outcome = History(arguments, format);
      EXPECT_EQ(outcome.exit_code, 1) << format << outcome.err;
      EXPECT_THAT(outcome.out, HasSubstr(file)) << format;
      EXPECT_THAT(outcome.out, HasSubstr("library.table")) << format;
    }
    const Json json = Parsed(History(arguments, "json"));
    EXPECT_EQ(json["verdict"], "refused");
    const Json removed = FileOf(json, file);
    ASSERT_TRUE(removed.is_object()) << json["files"];
    EXPECT_EQ(removed["steps"].back()["tables"][0]["removed"], true);
    EXPECT_EQ(removed["versions"].back()["removed"], true);
  }
  void ExpectAllowed(const std::vector<std::string>& arguments) const {
    const Outcome outcome = History(arguments);
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    EXPECT_THAT(outcome.out, testing::StartsWith("verdict: allowed\n"));
  }
};

// The histories of the project did not mention the file, and were allowed.
TEST_F(RemovedFileTest, HistoryOfAProjectRefusesADeletedFile) {
  const std::string first = StartProject();
  const std::string removal = CommitRemoval("s/b.xml");
  Git({"tag", "v2"});
  for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
           {}, {"--git", "s"}, {"--from", "v1"}, {"--from", "v1", "s"}, {"--tags", "v*"}, {"--tags", "v*", "s"}}) {
    ExpectRemoved(arguments, "s/b.xml");
  }
  EXPECT_THAT(VersionsOf(FileOf(Parsed(History({}, "json")), "s/b.xml")),
              ElementsAre("git:" + first + ":s/b.xml", "git:" + removal + ":s/b.xml removed"));
  EXPECT_THAT(VersionsOf(FileOf(Parsed(History({"--tags", "v*"}, "json")), "s/b.xml")),
              ElementsAre("git:v1:s/b.xml", "git:v2:s/b.xml removed"));
  const std::string text = History({}).out;
  EXPECT_THAT(text, HasSubstr("\n  commit " + removal + " removed s/b.xml\n"));
  EXPECT_THAT(text, HasSubstr("-> git:" + removal + ":s/b.xml: refused\n"));
  EXPECT_THAT(History({}, "markdown").out, HasSubstr("deleted: s/b.xml"));
}

TEST_F(RemovedFileTest, WorkTreeMayHaveDeletedTheFile) {
  StartProject();
  std::filesystem::remove(PathOf("s/b.xml"));
  ExpectRemoved({}, "s/b.xml");
  ExpectRemoved({"--from", "v1"}, "s/b.xml");
  EXPECT_THAT(History({}).out, HasSubstr("\n  the work tree no longer has the file\n"));
}

TEST_F(RemovedFileTest, WholeDirectoryMayBeDeleted) {
  StartProject();
  std::filesystem::remove_all(PathOf("s"));
  Commit("remove");
  ExpectRemoved({"--git", "s"}, "s/b.xml");
  ExpectRemoved({"--from", "v1", "s"}, "s/a.xml");
}

TEST_F(RemovedFileTest, NamedFileMayBeDeleted) {
  StartProject();
  CommitRemoval("s/b.xml");
  ExpectRemoved({"--git", "s/b.xml"}, "s/b.xml");
  ExpectRemoved({"--from", "v1", "s/b.xml"}, "s/b.xml");
}

// Path and library were renamed by the commit that broke the schema: nothing was compared.
TEST_F(RemovedFileTest, FileThatCannotBeFollowedIsRemoved) {
  StartProject();
  std::filesystem::remove(PathOf("s/b.xml"));
  CommitFile("s/other.xml", Schema("other", "\n\n\n\n" + std::string(kNote) + "\n\n\n", "uint32"));
  ExpectRemoved({}, "s/b.xml");
  ExpectRemoved({"--from", "v1"}, "s/b.xml");
  EXPECT_EQ(FileOf(Parsed(History({}, "json")), "s/other.xml")["verdict"], "nothing-compared");
}

TEST_F(RemovedFileTest, FileIsFollowedIfALaterCommitAddsItElsewhere) {
  const std::string first = StartProject();
  CommitRemoval("s/b.xml");
  Git({"tag", "v2"});
  const std::string again = CommitFile("s/c.xml", Schema("b", kNote));
  Git({"tag", "v3"});
  ExpectAllowed({});
  ExpectAllowed({"--from", "v1"});
  ExpectAllowed({"--tags", "v*"});
  const Json json = Parsed(History({}, "json"));
  EXPECT_EQ(json["files"].size(), 2u);
  EXPECT_THAT(VersionsOf(FileOf(json, "s/c.xml")), ElementsAre("git:" + first + ":s/b.xml", "git:" + again + ":s/c.xml"));
  EXPECT_THAT(History({}).out, HasSubstr("\n  s/c.xml continues s/b.xml: both hold a library of the same name\n"));
  CommitFile("s/c.xml", Schema("b", kNote, "uint32"));
  const Outcome broken = History({});
  EXPECT_EQ(broken.exit_code, 1);
  EXPECT_THAT(broken.out, HasSubstr("primary-key.size"));
  EXPECT_THAT(broken.out, Not(HasSubstr("library.table")));
}

// A file that was there before is another one.
TEST_F(RemovedFileTest, EarlierFileDoesNotContinueADeletedOne) {
  StartProject();
  CommitFile("s/c.xml", Schema("b"));
  CommitRemoval("s/b.xml");
  ExpectRemoved({}, "s/b.xml");
}

TEST_F(RemovedFileTest, RenamedFileIsNotRemoved) {
  StartProject();
  std::filesystem::rename(PathOf("s/b.xml"), PathOf("s/c.xml"));
  ExpectAllowed({});
  Commit("move");
  Git({"tag", "v2"});
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{}, {"--git", "s"}, {"--from", "v1"}, {"--tags", "v*"}}) {
    ExpectAllowed(arguments);
    EXPECT_EQ(FileOf(Parsed(History(arguments, "json")), "s/b.xml"), nullptr);
  }
}

TEST_F(RemovedFileTest, FileOfTheLastTagIsNotRemoved) {
  StartProject();
  Git({"tag", "v2"});
  CommitRemoval("s/b.xml");
  ExpectAllowed({"--tags", "v*"});
}

TEST_F(RemovedFileTest, FileLeftOutByASparseCheckoutIsNotRemoved) {
  StartProject();
  Git({"sparse-checkout", "set", "--no-cone", "/korvelcheck.toml", "/s/a.xml"});
  ASSERT_FALSE(std::filesystem::exists(PathOf("s/b.xml")));
  ExpectAllowed({});
  ExpectAllowed({"--from", "v1"});
}

TEST_F(RemovedFileTest, NewFileIsCountedAsNotCompared) {
  StartProject();
  CommitFile("s/c.xml", Schema("c"));
  ExpectAllowed({"--from", "v1"});
  EXPECT_THAT(History({"--from", "v1"}).out, HasSubstr("\n0 of 3 files refused; 2 with a single version, not compared\n"));
  EXPECT_EQ(FileOf(Parsed(History({}, "json")), "s/c.xml")["verdict"], "nothing-compared");
}

TEST_F(RemovedFileTest, WaiverCoversTheRemoval) {
  StartProject();
  CommitRemoval("s/b.xml");
  Write("korvelcheck.toml", std::string(kProject) +
                                "[[waivers]]\nrule = \"library.table\"\ntable = \"b\"\npath = \"b\"\nchange = \"table removed\"\n"
                                "file = \"s/b.xml\"\nreason = \"never used\"\nuntil = 2999-01-01\n");
  const Outcome outcome = History({});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.out;
  EXPECT_THAT(outcome.out, testing::StartsWith("verdict: refused (all waived)\n"));
}

// If nothing of it could ever be read, the result is incomplete.
TEST_F(RemovedFileTest, UnreadableFileMayBeDeleted) {
  StartProject();
  CommitFile("s/c.xml", "<x");
  CommitRemoval("s/c.xml");
  const Outcome outcome = History({}, "json");
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_EQ(Parsed(outcome)["verdict"], "incomplete");
}

}  // namespace
}  // namespace tool_test
