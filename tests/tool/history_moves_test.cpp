// Histories of files whose earlier or later paths the call does not select.
#include <gmock/gmock.h>

#include "history_repository.h"

namespace tool_test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

class HistoryMovesTest : public HistoryVerdictTest {
 protected:
  void Move(const std::string& from, const std::string& to) const {
    fs::create_directories(PathOf(to).parent_path());
    fs::rename(PathOf(from), PathOf(to));
  }
};

// --- Earlier paths ---

// A named file was compared with none of its earlier states, although the history of its directory has them.
TEST_F(HistoryMovesTest, NamedFileContinuesRemovedFiles) {
  const std::string first = CommitFile("d/a.xml", Schema("a"));
  Git({"tag", "v1"});
  CommitRemoval("d/a.xml");
  CommitFile("d/b.xml", Schema("a", kNote));
  Git({"tag", "v2"});
  CommitRemoval("d/b.xml");
  CommitFile("e/e.xml", Schema("a", kNote, "uint32"));
  Git({"tag", "v3"});
  for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
           {"--git", "e/e.xml"}, {"--git", "e"}, {"--from", first, "e/e.xml"}, {"--tags", "v*", "e/e.xml"}}) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const Outcome outcome = History(arguments);
    EXPECT_EQ(outcome.exit_code, 1) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("[primary-key.size]"));
    EXPECT_THAT(outcome.out, HasSubstr("\n  d/b.xml continues d/a.xml: "));
    EXPECT_THAT(outcome.out, HasSubstr("\n  e/e.xml continues d/b.xml: "));
    const Json json = Parsed(History(arguments, "json"));
    ASSERT_EQ(json["files"].size(), 1u);
    EXPECT_EQ(json["files"][0]["file"], "e/e.xml");
    EXPECT_EQ(json["files"][0]["versions"].size(), 3u);
  }
}

TEST_F(HistoryMovesTest, NamedFileDoesNotContinueOtherFiles) {
  CommitFile("d/a.xml", Schema("a"));
  CommitFile("d/moved.xml", Schema("e"));
  CommitRemoval("d/a.xml");
  Move("d/moved.xml", "z/moved.xml");
  Commit("move");
  CommitFile("d/e.xml", Schema("e", "", "uint32"));
  CommitFile("d/e.xml", Schema("e", kNote, "uint32"));
  const Outcome outcome = History({"--git", "d/e.xml"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.out;
  EXPECT_THAT(outcome.out, Not(HasSubstr("continues")));
}

// The note did not say which of the joined files it is about.
TEST_F(HistoryMovesTest, NoteAboutTagsNamesTheFile) {
  CommitFile("d/a.xml", Schema("a"));
  Git({"tag", "v1"});
  CommitRemoval("d/a.xml");
  Git({"tag", "v2"});
  CommitFile("d/e.xml", Schema("a", kNote));
  Git({"tag", "v3"});
  const Outcome outcome = History({"--tags", "v*", "d"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.out;
  EXPECT_THAT(outcome.out, HasSubstr("\n  d/a.xml: not in v2, v3\n"));
  EXPECT_THAT(outcome.out, HasSubstr("\n  d/e.xml: not in v1, v2\n"));
}

// --- Later paths ---

class MovedAwayTest : public HistoryMovesTest {
 protected:
  MovedAwayTest() {
    CommitFile("schemas/orders.xml", Schema("orders"));
    CommitFile("schemas/users.xml", Schema("users"));
    Git({"tag", "v1"});
    CommitFile("schemas/users.xml", Schema("users", kNote));
    CommitFile("schemas/orders.xml", Schema("orders", kNote));
    Move("schemas/orders.xml", "old/orders.xml");
  }
  void ExpectEnd(const std::vector<std::string>& arguments, const std::string& mover) const {
    const Outcome outcome = History(arguments);
    EXPECT_EQ(outcome.exit_code, 0) << outcome.out << outcome.err;
    EXPECT_THAT(outcome.out,
                HasSubstr("\n  " + mover +
                          " moved schemas/orders.xml to old/orders.xml, which is not selected: the history ends here\n"));
    EXPECT_THAT(outcome.out, Not(HasSubstr("removed")));
  }
};

// The tables were removed, and the call failed.
TEST_F(MovedAwayTest, FileIsNotRemoved) {
  const std::string commit = "commit " + Commit("move").substr(0, 7);
  Git({"tag", "v2"});
  ExpectEnd({"--git", "schemas"}, commit);
  ExpectEnd({"--git", "schemas/orders.xml"}, commit);
  ExpectEnd({"--from", "v1", "schemas"}, commit);
  EXPECT_EQ(History({"--tags", "v*", "schemas"}).exit_code, 0);
  EXPECT_THAT(History({"--git", "schemas"}, "json").out, HasSubstr("to old/orders.xml, which is not selected"));
  EXPECT_THAT(History({"--git", "schemas"}, "html").out, HasSubstr("to old/orders.xml, which is not selected"));
}

TEST_F(MovedAwayTest, WorkTreeMayMoveTheFile) {
  Git({"add", "-A"});
  ExpectEnd({"--git", "schemas"}, "the work tree");
}

// A copy that is no schema, or has another suffix, is not the file.
TEST_F(MovedAwayTest, FileWithAnotherSuffixIsRemoved) {
  Move("old/orders.xml", "old/orders.txt");
  Commit("move");
  const Outcome outcome = History({"--git", "schemas"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("[library.table]"));
}

TEST_F(MovedAwayTest, FileWithOneVersionSaysWhereItWent) {
  CommitFile("schemas/one.xml", Schema("one"));
  Move("schemas/one.xml", "old/one.xml");
  const std::string commit = Commit("move").substr(0, 7);
  ExpectRefused({"history", "--git", "schemas/one.xml"}, "korvelcheck: schemas/one.xml: was moved to old/one.xml by commit " +
                                                             commit + "; allowed: a file or directory that exists\n");
}

// --- Files that never were schemas ---

// A deleted file that is no schema made the history of its directory incomplete for good.
TEST_F(HistoryMovesTest, DeletedFileThatNeverWasASchemaIsLeftOut) {
  CommitFile("d/a.xml", Schema("a"));
  CommitFile("d/pom.xml", "<project/>");
  CommitRemoval("d/pom.xml");
  CommitFile("d/a.xml", Schema("a", kNote));
  const Outcome outcome = History({"--git", "d"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, Not(HasSubstr("pom.xml")));
  EXPECT_EQ(History({"--git", "d", "d/pom.xml"}).exit_code, 2);
}

TEST_F(HistoryMovesTest, DeletedFileThatWasMeantAsASchemaStays) {
  CommitFile("d/a.xml", Schema("a"));
  CommitFile("d/b.xml", "<metalib name=\"b\"");
  CommitRemoval("d/b.xml");
  CommitFile("d/a.xml", Schema("a", kNote));
  EXPECT_EQ(History({"--git", "d"}).exit_code, 2);
}

TEST_F(HistoryMovesTest, OnlyFilesThatNeverWereSchemasAreAnError) {
  CommitFile("d/pom.xml", "<project/>");
  CommitRemoval("d/pom.xml");
  const Outcome outcome = History({"--git", "d"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(outcome.err, HasSubstr("no selected file was ever a schema; allowed: a file with at least two versions"));
}

}  // namespace
}  // namespace tool_test
