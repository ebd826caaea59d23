// Ways to fail open: situations in which a call has not compared what it should have. None of them may read as allowed.
#include <gmock/gmock.h>

#include <functional>
#include <nlohmann/json.hpp>

#include "project_repository.h"

namespace tool_test {
namespace {

namespace fs = std::filesystem;

// A project with the committed files schemas/{orders,users,deep/items}.xml, and its tools.
class Repository : public ProjectTest {
 public:
  using ProjectTest::Commit;
  using ProjectTest::Git;
  using ProjectTest::GitIn;
  using ProjectTest::PathOf;
  using ProjectTest::Read;
  using ProjectTest::ReplaceGit;
  using ProjectTest::Run;
  using ProjectTest::Schema;
  using ProjectTest::Write;

  void Remove(const std::string& file) const { fs::remove(PathOf(file)); }
  void SelectOnly(const std::string& keys) const { Write("korvelcheck.toml", "[schemas]\n" + keys + "\n"); }

 private:
  void TestBody() override {}
};

constexpr char kBroken[] = "<metalib name=\"m\" version=\"1\">\n";
constexpr char kNoReport[] = "no report";

struct Row {
  const char* situation;
  std::function<void(Repository& at)> prepare;
  std::vector<std::string> arguments;  // of check
  int exit_code;
  const char* verdict;  // of the report under -o
  const char* directory = "";
};

const Row kRows[] = {
    // The baseline
    {"EmptyBaseline",
     [](Repository& at) {
       at.Git({"hash-object", "-w", "-t", "tree", "/dev/null"});
     },
     {"--allow-new", "--against", "git:4b825dc642cb6eb9a060e54bf8d69288fbee4904"},
     2,
     "incomplete"},
    {"EmptyDirectoryAsBaseline",
     [](Repository& at) { fs::create_directory(at.PathOf("none")); },
     {"--allow-new", "--against", "none"},
     2,
     "incomplete"},
    {"OrphanedBaseline",
     [](Repository& at) {
       at.Git({"checkout", "-q", "--orphan", "other"});
       at.Git({"rm", "-q", "-r", "-f", "."});
       at.Write("readme", "text");
       at.Commit("orphan");
       at.Git({"checkout", "-q", "main"});
     },
     {"--allow-new", "--against", "git:other"},
     2,
     "incomplete"},
    {"MergeBaseOfAnOrphan",
     [](Repository& at) {
       at.Git({"checkout", "-q", "--orphan", "other"});
       at.Commit("orphan");
       at.Git({"checkout", "-q", "main"});
     },
     {"--allow-new", "--against", "git:other..."},
     2,
     "incomplete"},
    {"WrongBaseline",
     [](Repository& at) {
       fs::create_directories(at.PathOf("elsewhere/schemas"));
       at.Write("elsewhere/schemas/zones.xml", Repository::Schema("zones"));
     },
     {"--allow-new", "--against", "elsewhere"},
     1,
     "refused"},
    {"UnknownRevision", nullptr, {"--allow-new", "--against", "git:nope"}, 2, "incomplete"},
    {"RevisionThatAShallowCloneLacks",
     [](Repository& at) {
       at.Commit("second");
       at.Git({"clone", "-q", "--depth=1", "file://" + at.PathOf("").string(), "clone"});
     },
     {"--allow-new", "--against", "git:HEAD~1"},
     2,
     "incomplete",
     "clone"},
    {"SameCommitOnBothSides", nullptr, {"--allow-new", "--default-against", "git:HEAD"}, 0, "unchanged"},
    {"SameCommitAsMergeBase", nullptr, {"--allow-new", "--against", "git:HEAD..."}, 0, "unchanged"},
    {"DirectoryComparedWithItself", nullptr, {"--allow-new", "--against", "."}, 2, "incomplete"},
    {"TreeOfTheSameCommit", nullptr, {"--allow-new", "--against", "git:HEAD^{tree}"}, 0, "unchanged"},
    // What is selected
    {"PatternThroughALink",
     [](Repository& at) {
       fs::create_directory_symlink("schemas", at.PathOf("link"));
       at.SelectOnly("paths = [\"schemas/**/*.xml\", \"link/*.xml\"]");
     },
     {"--allow-new", "--against", "git:HEAD"},
     2,
     "incomplete"},
    {"NarrowedPaths",
     [](Repository& at) { at.SelectOnly("paths = [\"schemas/*.xml\"]"); },
     {"--allow-new", "--against", "git:HEAD"},
     2,
     "incomplete"},
    {"NewExclude",
     [](Repository& at) { at.SelectOnly("paths = [\"schemas/**/*.xml\"]\nexclude = [\"**/items.xml\"]"); },
     {"--allow-new", "--against", "git:HEAD"},
     2,
     "incomplete"},
    {"NarrowedPathsWithPath",
     [](Repository& at) { at.SelectOnly("paths = [\"schemas/*.xml\"]"); },
     {"--allow-new", "--against", "git:HEAD", "schemas"},
     2,
     "incomplete"},
    {"PatternMovedWithChangedFile",
     [](Repository& at) {
       fs::rename(at.PathOf("schemas"), at.PathOf("tables"));
       at.Write("tables/orders.xml", Repository::Schema("orders", "uint32"));
       at.SelectOnly("paths = [\"tables/**/*.xml\"]");
     },
     {"--allow-new", "--against", "git:HEAD", "tables/orders.xml"},
     1,
     "refused"},
    {"FileDeletedWithItsPattern",
     [](Repository& at) {
       fs::remove_all(at.PathOf("schemas/deep"));
       at.SelectOnly("paths = [\"schemas/*.xml\"]");
     },
     {"--allow-new", "--against", "git:HEAD", "schemas"},
     1,
     "refused"},
    {"RepairedAndNoLongerSelected",
     [](Repository& at) {
       at.Write("schemas/deep/items.xml", kBroken);
       at.Commit("second");
       at.Write("schemas/deep/items.xml", Repository::Schema("items"));
       at.SelectOnly("paths = [\"schemas/*.xml\"]");
     },
     {"--allow-new", "--against", "git:HEAD"},
     2,
     "incomplete"},
    {"BrokenProjectFileOfTheBaseline",
     [](Repository& at) {
       at.Write("korvelcheck.toml", "[schemas\n");
       at.Commit("second");
       at.SelectOnly("paths = [\"schemas/*.xml\"]");
     },
     {"--allow-new", "--against", "git:HEAD"},
     2,
     "incomplete"},
    {"PatternWithoutFiles",
     [](Repository& at) { at.SelectOnly("paths = [\"schema/*.xml\"]"); },
     {"--allow-new", "--against", "git:HEAD"},
     2,
     "incomplete"},
    {"UnknownPath", nullptr, {"--allow-new", "--against", "git:HEAD", "scheams"}, 2, "incomplete"},
    {"UnknownTable", nullptr, {"--allow-new", "--against", "git:HEAD", "--table", "oders"}, 2, "incomplete"},
    {"AllTablesAreNew",
     [](Repository& at) { at.Write("new.xml", Repository::Schema("new")); },
     {"--against", "git:HEAD", "new.xml"},
     2,
     "incomplete"},
    {"AllowNewWithNothingCompared",
     [](Repository& at) { at.Write("new.xml", Repository::Schema("new")); },
     {"--allow-new", "--against", "git:HEAD", "new.xml"},
     0,
     "nothing-compared"},
    {"FileWithoutTables",
     [](Repository& at) {
       at.Write("new.xml",
                "<metalib name=\"m\" version=\"1\"><meta name=\"a\"><entry name=\"b\" type=\"int8\"/></meta></metalib>");
     },
     {"--allow-new", "--against", "git:HEAD", "new.xml"},
     2,
     "incomplete"},
    // Files
    {"BrokenNewFile",
     [](Repository& at) { at.Write("schemas/orders.xml", kBroken); },
     {"--against", "git:HEAD"},
     2,
     "incomplete"},
    {"BrokenOldFile",
     [](Repository& at) {
       at.Write("schemas/orders.xml", kBroken);
       at.Commit("second");
       at.Write("schemas/orders.xml", Repository::Schema("orders", "uint32"));
     },
     {"--against", "git:HEAD"},
     1,
     "refused"},
    {"FileBrokenOnBothSides",
     [](Repository& at) {
       at.Write("schemas/orders.xml", kBroken);
       at.Commit("second");
     },
     {"--against", "git:HEAD"},
     2,
     "incomplete"},
    {"BrokenAddedFile", [](Repository& at) { at.Write("schemas/new.xml", kBroken); }, {"--against", "git:HEAD"}, 2, "incomplete"},
    {"BrokenDeletedFile",
     [](Repository& at) {
       at.Write("schemas/orders.xml", kBroken);
       at.Commit("second");
       at.Remove("schemas/orders.xml");
     },
     {"--against", "git:HEAD"},
     1,
     "refused"},
    {"UnreadableFile",
     [](Repository& at) {
       fs::create_symlink("orders.xml", at.PathOf("schemas/link.xml"));
       at.Commit("second");
     },
     {"--against", "git:HEAD"},
     2,
     "incomplete"},
    {"DeletedTable",
     [](Repository& at) {
       at.Write("schemas/orders.xml", Library(5, {Table({.name = "a"}), Table({.name = "b"})}));
       at.Commit("second");
       at.Write("schemas/orders.xml", Library(5, {Table({.name = "a"})}));
     },
     {"--allow-new", "--against", "git:HEAD"},
     1,
     "refused"},
    {"DeletedFile",
     [](Repository& at) { at.Remove("schemas/orders.xml"); },
     {"--allow-new", "--against", "git:HEAD"},
     1,
     "refused"},
    {"MovedAndChangedFile",
     [](Repository& at) {
       at.Remove("schemas/orders.xml");
       at.Write("schemas/deep/moved.xml", Repository::Schema("orders", "uint32"));
     },
     {"--allow-new", "--against", "git:HEAD"},
     1,
     "refused"},
    {"DeletedFileWithAnIgnoredCopy",
     [](Repository& at) {
       at.Write(".gitignore", "copy.xml\n");
       at.Commit("second");
       fs::rename(at.PathOf("schemas/orders.xml"), at.PathOf("schemas/copy.xml"));
     },
     {"--allow-new", "--against", "git:HEAD"},
     1,
     "refused"},
    {"DirectoryThatBecameARepository",
     [](Repository& at) {
       at.GitIn("schemas/deep", {"init", "-q"});
     },
     {"--allow-new", "--against", "git:HEAD"},
     2,
     "incomplete"},
    {"ChangeUnderAWaivedPreexistingRefusal",
     [](Repository& at) {
       const auto legacy = [](const std::string& type) {
         return Library(5, {Table({.name = "orders", .attributes = "TableType=BAD", .key_type = type})});
       };
       at.Write("schemas/orders.xml", legacy("uint64"));
       at.Write("korvelcheck.toml",
                "[schemas]\npaths = [\"schemas/**/*.xml\"]\n[[waivers]]\nrule = \"table.attributes\"\ntable = \"orders\"\npath = "
                "\"orders\"\nchange = \"pre-existing\"\nfile = \"schemas/orders.xml\"\nreason = \"r\"\nuntil = 2999-01-31\n");
       at.Commit("second");
       at.Write("schemas/orders.xml", legacy("uint32"));
     },
     {"--allow-new", "--against", "git:HEAD"},
     1,
     "refused"},
    {"BrokenFileOfTwo",
     [](Repository& at) { at.Write("broken.xml", kBroken); },
     {"schemas/users.xml", "broken.xml"},
     2,
     "incomplete"},
    {"MissingFileOfTwo", nullptr, {"schemas/users.xml", "missing.xml"}, 2, "incomplete"},
    // The call
    {"BrokenProjectFile",
     [](Repository& at) { at.Write("korvelcheck.toml", "[schemas\n"); },
     {"--against", "git:HEAD"},
     2,
     "incomplete"},
    {"NoGit", [](Repository& at) { at.ReplaceGit("exit 127"); }, {"--against", "git:HEAD"}, 2, "incomplete"},
    {"NoRepository", [](Repository& at) { fs::remove_all(at.PathOf(".git")); }, {"--against", "git:HEAD"}, 2, "incomplete"},
    {"NothingToCompareWith", nullptr, {}, 2, kNoReport},
    {"UnknownOption", nullptr, {"--against", "git:HEAD", "--alow-new"}, 2, kNoReport},
    {"InvalidValue", nullptr, {"--against", "git:HEAD", "--max-findings", "0"}, 2, kNoReport},
};

class FailOpenTest : public testing::TestWithParam<Row> {};

// The report of an earlier call, without findings, is under -o.
TEST_P(FailOpenTest, IsNotAllowed) {
  const Row& row = GetParam();
  Repository at;
  if (row.prepare) row.prepare(at);
  const std::string directory = row.directory;
  const std::string file = (directory.empty() ? "" : directory + "/") + "report.json";
  at.Write(file, "[]\n");
  std::vector<std::string> arguments = {"check", "--format", "json", "-o", "report.json"};
  arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
  const Outcome outcome = at.Run(arguments, directory);
  EXPECT_EQ(outcome.exit_code, row.exit_code) << outcome.err;
  std::string verdict = kNoReport;
  if (fs::exists(at.PathOf(file))) verdict = nlohmann::json::parse(at.Read(file))["verdict"];
  EXPECT_EQ(verdict, row.verdict) << outcome.err;
  EXPECT_NE(verdict, "allowed");
}

INSTANTIATE_TEST_SUITE_P(All, FailOpenTest, testing::ValuesIn(kRows),
                         [](const auto& row) { return std::string(row.param.situation); });

inline void PrintTo(const Row& row, std::ostream* out) { *out << row.situation; }

}  // namespace
}  // namespace tool_test
