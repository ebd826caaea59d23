// Symbolic links among the files of a project. Who adds files to a repository must not make the program read others, whose
// content might appear in a public log.
#include "schema/file_below.h"

#include <gmock/gmock.h>

#include <atomic>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <thread>

#include "base/input_error.h"
#include "project_repository.h"

namespace tool_test {
namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;
using testing::Not;

constexpr char kIsLink[] = ": is a symbolic link; allowed: a file, or any link with --follow-symlinks\n";

class LinkTest : public ProjectTest {
 protected:
  LinkTest() { Write("secret", "s3cret\n"); }

  void Link(const std::string& target, const std::string& path) const { fs::create_symlink(target, PathOf(path)); }

  static void ExpectNoSecret(const Outcome& outcome) {
    EXPECT_THAT(outcome.out, Not(HasSubstr("s3cret")));
    EXPECT_THAT(outcome.err, Not(HasSubstr("s3cret")));
  }
};

// Regression: the link was followed, and the beginning of its target was in the log.
TEST_F(LinkTest, IsAFaultOfItsFile) {
  Link("../secret", "schemas/link.xml");
  const Outcome outcome = Against();
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_EQ(outcome.err, std::string("korvelcheck: schemas/link.xml") + kIsLink);
  EXPECT_THAT(outcome.out, HasSubstr("schemas/link.xml: error [schema.unreadable] is a symbolic link\n"));
  EXPECT_THAT(outcome.out, HasSubstr("3 compared"));
  ExpectNoSecret(outcome);
}

TEST_F(LinkTest, EveryLinkThatIsSelectedIsAFault) {
  struct Case {
    const char* description;
    std::function<void()> arrange;
    std::vector<std::string> paths;
  };
  const Case kCases[] = {
      {"to a schema", [this] { Link("orders.xml", "schemas/link.xml"); }, {}},
      {"absolute", [this] { Link(PathOf("secret"), "schemas/link.xml"); }, {}},
      {"to nothing", [this] { Link("nowhere", "schemas/link.xml"); }, {}},
      {"to itself", [this] { Link("link.xml", "schemas/link.xml"); }, {}},
      {"to a directory", [this] { Link("deep", "schemas/link.xml"); }, {}},
      {"to a device", [this] { Link("/dev/zero", "schemas/link.xml"); }, {}},
      {"in place of a schema",
       [this] {
         fs::rename(PathOf("schemas/orders.xml"), PathOf("orders.xml"));
         Link("../orders.xml", "schemas/orders.xml");
       },
       {}},
      {"in a directory that is named", [this] { Link("../secret", "schemas/link.xml"); }, {"schemas"}},
      // Hooks and scripts name the files that others changed.
      {"that is named", [this] { Link("../secret", "schemas/link.xml"); }, {"schemas/link.xml"}},
  };
  for (const auto& [description, arrange, paths] : kCases) {
    Git({"stash", "-q", "--include-untracked"});
    Git({"stash", "drop", "-q"});
    Write("secret", "s3cret\n");
    arrange();
    const Outcome outcome = Against(Joined({"--allow-new", "--format", "json"}, paths));
    EXPECT_EQ(outcome.exit_code, 2) << description;
    EXPECT_THAT(outcome.err, HasSubstr("is a symbolic link")) << description;
    EXPECT_THAT(outcome.out, HasSubstr("\"verdict\": \"incomplete\"")) << description;
    ExpectNoSecret(outcome);
  }
}

TEST_F(LinkTest, ExcludedLinkIsNoFault) {
  Link("../secret", "schemas/link.xml");
  Write("korvelcheck.toml", "[schemas]\npaths = [\"schemas/**/*.xml\"]\nexclude = [\"schemas/link.xml\"]\n");
  EXPECT_EQ(Against().exit_code, 0);
}

TEST_F(LinkTest, IsFollowedOnRequest) {
  Write("copy", Schema("copy"));
  Link("../copy", "schemas/link.xml");
  const std::vector<std::string> follow = {"--follow-symlinks", "--format", "json"};
  EXPECT_THAT(Tables(Against(follow)), testing::Contains("schemas/link.xml: copy new"));
  EXPECT_EQ(Against(follow).exit_code, 0);
  // Links to directories are not searched.
  Link("deep", "schemas/other.xml");
  EXPECT_EQ(Against(follow).exit_code, 0);
  Link("nowhere", "schemas/dangling.xml");
  const Outcome dangling = Against(follow);
  EXPECT_EQ(dangling.exit_code, 2);
  EXPECT_EQ(dangling.err, "korvelcheck: schemas/dangling.xml: No such file or directory\n");
}

// Its target may lie outside of the commit.
TEST_F(LinkTest, InACommitIsNotFollowed) {
  Link("orders.xml", "schemas/link.xml");
  Commit("second");
  for (const bool is_replaced : {false, true}) {
    if (is_replaced) fs::remove(PathOf("schemas/link.xml"));
    if (is_replaced) Write("schemas/link.xml", Schema("orders"));
    const Outcome outcome = Against({"--follow-symlinks"});
    EXPECT_EQ(outcome.exit_code, 2);
    EXPECT_EQ(outcome.err,
              "korvelcheck: git:HEAD:schemas/link.xml: is a symbolic link in that commit; allowed: a file\n"
              "korvelcheck: schemas/link.xml: cannot be compared with git:HEAD:schemas/link.xml\n");
  }
}

// As for git, the files below it are deleted.
TEST_F(LinkTest, InPlaceOfADirectoryDeletesItsFiles) {
  fs::rename(PathOf("schemas/deep"), PathOf("deep"));
  Link("../deep", "schemas/deep");
  const Outcome outcome = Against({"--format", "json"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(Tables(outcome), testing::Contains("git:HEAD:schemas/deep/items.xml: items refused removed"));
}

TEST_F(LinkTest, InADirectoryAsBaseline) {
  fs::create_directory(PathOf("released"));
  fs::copy(PathOf("schemas"), PathOf("released/schemas"), fs::copy_options::recursive);
  fs::rename(PathOf("released/schemas/users.xml"), PathOf("released/users"));
  Link("../users", "released/schemas/users.xml");
  const Outcome outcome = Run({"check", "--against", "released"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(outcome.err, HasSubstr(std::string("korvelcheck: released/schemas/users.xml") + kIsLink));
  EXPECT_EQ(Run({"check", "--against", "released", "--follow-symlinks"}).exit_code, 0);
  // The baseline itself may be a link: the call names it.
  fs::rename(PathOf("released/users"), PathOf("users"));
  fs::remove(PathOf("released/schemas/users.xml"));
  fs::rename(PathOf("users"), PathOf("released/schemas/users.xml"));
  Link("released", "newest");
  EXPECT_EQ(Run({"check", "--against", "newest"}).exit_code, 0);
}

TEST_F(LinkTest, NestedProjectFile) {
  Write("other.toml", "s3cret = true\n");
  Link("../../other.toml", "schemas/deep/korvelcheck.toml");
  for (const std::vector<std::string>& call :
       {std::vector<std::string>{"check", "--against", "git:HEAD"}, {"lint", "schemas/deep/items.xml"}}) {
    const Outcome outcome = Run(call);
    EXPECT_EQ(outcome.exit_code, 2);
    EXPECT_EQ(outcome.err, std::string("korvelcheck: schemas/deep/korvelcheck.toml") + kIsLink);
    ExpectNoSecret(outcome);
    Write("other.toml", "[defaults]\nlist-num = 5\n");
    EXPECT_EQ(Run(Joined(call, {"--follow-symlinks"})).exit_code, 0);
    Write("other.toml", "s3cret = true\n");
  }
}

TEST_F(LinkTest, InAHistory) {
  Write("schemas/orders.xml", Schema("orders") + "<!-- second -->\n");
  Commit("second");
  fs::remove(PathOf("schemas/orders.xml"));
  Link("../secret", "schemas/orders.xml");
  const Outcome outcome = Run({"history", "--git", "schemas/orders.xml"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_EQ(outcome.err, std::string("korvelcheck: schemas/orders.xml") + kIsLink);
  EXPECT_THAT(outcome.out, HasSubstr("0 of 1 step refused"));
  ExpectNoSecret(outcome);
  Write("secret", Schema("orders"));
  EXPECT_EQ(Run({"history", "--git", "schemas/orders.xml", "--follow-symlinks"}).exit_code, 0);
  // What is committed is not followed either.
  Commit("third");
  const Outcome committed = Run({"history", "--git", "schemas/orders.xml"});
  EXPECT_EQ(committed.exit_code, 2);
  EXPECT_THAT(committed.err, HasSubstr(":schemas/orders.xml: is a symbolic link in that commit; allowed: a file\n"));
}

// A path such as /dev/stdin is a link.
TEST_F(LinkTest, OfTwoNamedFilesIsFollowed) {
  Link("schemas/orders.xml", "link.xml");
  EXPECT_EQ(Run({"lint", "link.xml"}).exit_code, 0);
  EXPECT_EQ(Run({"check", "link.xml", "schemas/orders.xml"}).exit_code, 0);
}

// --- Reading below a directory ---

std::string ReadBelow(const fs::path& directory, const std::string& path) {
  try {
    return std::string(korvel::ReadAll(korvel::OpenBelow(directory, path, "NAME", korvel::Links::kRefuse)).View());
  } catch (const korvel::InputError& error) {
    return error.lines.front();
  }
}

TEST_F(LinkTest, DirectoryBetweenMustNotBeALink) {
  Link("schemas", "link");
  EXPECT_EQ(ReadBelow(PathOf("link"), "orders.xml"), Schema("orders"));
  EXPECT_EQ(ReadBelow(PathOf(""), "link/orders.xml"), "korvelcheck: NAME: is below a symbolic link; allowed: a directory");
  EXPECT_EQ(ReadBelow(PathOf(""), "schemas/orders.xml/none"), "korvelcheck: NAME: Not a directory");
  EXPECT_EQ(ReadBelow(PathOf(""), "none/orders.xml"), "korvelcheck: NAME: No such file or directory");
}

// A check of each part before the file is opened by its path would lose this race.
TEST_F(LinkTest, IsNotReadIfItReplacesAFileMeanwhile) {
  fs::create_directory(PathOf("real"));
  fs::create_directory(PathOf("other"));
  Write("real/file", "own\n");
  Write("other/file", "s3cret\n");
  std::atomic<bool> is_done = false;
  std::thread writer([&] {
    for (std::size_t i = 0; !is_done; ++i) {
      fs::remove(PathOf("next"));
      if (i % 2 == 0) fs::create_symlink("../secret", PathOf("next"));
      if (i % 2 == 1) std::ofstream(PathOf("next")) << "own\n";
      fs::rename(PathOf("next"), PathOf("real/file"));
      fs::rename(PathOf("real"), PathOf("moved"));
      fs::create_symlink("other", PathOf("real"));
      fs::remove(PathOf("real"));
      fs::rename(PathOf("moved"), PathOf("real"));
    }
  });
  std::size_t own = 0;
  // The writer may be interrupted for a long time.
  for (int i = 0; i < 5000 || (own == 0 && i < 5000000); ++i) {
    const std::string text = ReadBelow(PathOf(""), "real/file");
    EXPECT_THAT(text, Not(HasSubstr("s3cret")));
    own += text == "own\n" ? 1 : 0;
  }
  is_done = true;
  writer.join();
  EXPECT_GT(own, 0u);
}

}  // namespace
}  // namespace tool_test
