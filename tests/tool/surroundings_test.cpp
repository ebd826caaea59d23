// Unusual environments and limits: the result is the usual one, or an error that names the cause.
#include <gmock/gmock.h>

#include "base/text.h"
#include "tool_test.h"
#include "unprivileged.h"

namespace tool_test {
namespace {

using testing::AnyOf;
using testing::HasSubstr;

class SurroundingsTest : public ToolTest {
 protected:
  // Runs the program after some lines of a shell script, in which it is "$0" "$@".
  Outcome Behind(const std::string& shell, const std::vector<std::string>& arguments) const {
    return Korvelcheck(Call{.arguments = arguments, .launcher = {"/bin/sh", "-c", shell}});
  }
  static std::string Limited(const std::string& limit) { return "ulimit " + limit + " && exec \"$0\" \"$@\""; }
};

TEST_F(SurroundingsTest, WorksInDeletedDirectory) {
  const std::string lost = "mkdir lost && cd lost && rmdir ../lost && exec \"$0\" \"$@\"";
  const Outcome outcome = Behind(lost, {"check", PathOf("old.xml"), PathOf("same.xml")});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  ExpectInputError(Behind(lost, {"check", "old.xml", "same.xml"}),
                   "korvelcheck: old.xml: No such file or directory\nkorvelcheck: same.xml: No such file or directory\n");
  const Outcome written = Behind(lost, {"check", PathOf("old.xml"), PathOf("same.xml"), "-o", "report"});
  ExpectOutcome(written, 3, "", "korvelcheck: cannot write report: No such file or directory\n");
}

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = korvel::Utf8Length(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

// Formats for programs are UTF-8; text shows the name as it is.
TEST_F(SurroundingsTest, AcceptsNamesThatAreNotUtf8) {
  const std::string odd = "o\xffld\xc3.xml";
  std::filesystem::copy_file(PathOf("wide.xml"), PathOf(odd));
  EXPECT_THAT(Korvelcheck({"check", "old.xml", odd}).out, HasSubstr("\no\\xffld\\xc3.xml:2:1: refused: table orders"));
  for (const char* const format :
       {"text", "json", "sarif", "junit", "github", "gitlab", "markdown", "html", "github-review", "gitlab-review"}) {
    const Outcome outcome = Korvelcheck({"check", "old.xml", odd, "--format", format});
    EXPECT_EQ(outcome.exit_code, 1) << outcome.err;
    EXPECT_TRUE(IsUtf8(outcome.out)) << format;
  }
  EXPECT_EQ(Korvelcheck({"check", "old.xml", odd, "-o", odd + "\xfe"}).exit_code, 1);
  EXPECT_EQ(Verdicts(Read(odd + "\xfe")).substr(0, 17), "verdict: refused\n");
  for (const std::vector<std::string>& wrong : {std::vector<std::string>{"lint", "none\xff"},
                                                {"check\xff"},
                                                {"lint", "old.xml", "--format", "\xff"},
                                                {"lint", "old.xml", "--\xff"},
                                                {"explain", "\xff"},
                                                {"check", "old.xml", "wide.xml", "--table", "\xff"},
                                                {"check", "git:\xff:old.xml", "wide.xml"}}) {
    const Outcome outcome = Korvelcheck(wrong);
    EXPECT_EQ(outcome.exit_code, 2) << outcome.out;
    EXPECT_NE(outcome.err, "");
    EXPECT_TRUE(IsUtf8(outcome.err)) << outcome.err;
  }
}

// Such a file never ends: reading stops after its first bytes.
TEST_F(SurroundingsTest, RefusesEndlessFileThatIsNotASchema) {
  ExpectInputError(Korvelcheck({"lint", "/dev/zero"}), "/dev/zero:1:1: error: a zero byte; allowed: text in UTF-8\n");
  const Outcome outcome = Behind("yes 'no schema' | \"$0\" \"$@\"", {"lint", "-"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(outcome.err, testing::StartsWith("<stdin>:1:1: error: not XML: the file does not begin with '<'; allowed"));
}

// Regression: such a stream was read up to the maximum size of a file.
TEST_F(SurroundingsTest, RefusesEndlessComments) {
  const Outcome outcome = Behind("yes '<!-- x -->' | \"$0\" \"$@\"", {"lint", "-"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_EQ(outcome.err, "<stdin>:1:1: error: more than 1048576 bytes before the outermost element; allowed: at most 1048576\n");
}

TEST_F(SurroundingsTest, ReportsFileWithoutReadPermission) {
  std::filesystem::permissions(PathOf("old.xml"), std::filesystem::perms::none);
  const auto launcher = Unprivileged();
  if (!launcher) GTEST_SKIP() << "root may read every file";
  ExpectInputError(Korvelcheck(Call{.arguments = {"check", "old.xml", "same.xml"}, .launcher = *launcher}),
                   "korvelcheck: old.xml: Permission denied\n");
}

// A table with nested structures, the innermost of which has a field of this type.
std::string Nested(int structures, const std::string& innermost) {
  std::vector<std::string> metas;
  std::string type = innermost;
  for (int i = 0; i < structures; ++i) {
    metas.push_back("<meta name=\"s" + std::to_string(i) + "\"><entry name=\"a\" type=\"" + type + "\"/></meta>");
    type = "s" + std::to_string(i);
  }
  metas.push_back(Table({.fields = "<entry name=\"deep\" id=\"2\" type=\"" + type + "\"/>"}));
  return Library(5, metas);
}

// Structures have the maximum depth, lists of the project file are deeper.
TEST_F(SurroundingsTest, NeedsOnlyASmallStack) {
  if (KORVEL_SANITIZED) GTEST_SKIP() << "sanitizers need more stack";
  Write("deep.xml", Nested(127, "int32"));
  Write("changed.xml", Nested(127, "int16"));
  Write("deeper.xml", Nested(128, "int32"));
  Write("list.toml", "a = " + std::string(100'000, '['));
  struct Call {
    std::vector<std::string> arguments;
    int exit_code;
  };
  const Call kCalls[] = {
      {{"check", "deep.xml", "changed.xml", "--format", "json"}, 1},
      {{"check", "deep.xml", "changed.xml", "--format", "html"}, 1},
      {{"suggest", "deep.xml", "changed.xml"}, 0},
      {{"history", "deep.xml", "changed.xml"}, 1},
      {{"diff", "deep.xml", "changed.xml"}, 0},
      {{"layout", "deep.xml"}, 0},
      {{"compile", "deep.xml", "-o", "deep.qmb"}, 0},
      {{"lint", "deep.qmb"}, 0},
      {{"lint", "deeper.xml"}, 2},
      {{"check", "old.xml", "same.xml", "--project", "list.toml"}, 2},
  };
  for (const auto& [arguments, exit_code] : kCalls) {
    const Outcome outcome = Behind(Limited("-s 256"), arguments);  // KiB
    EXPECT_EQ(outcome.exit_code, exit_code) << testing::PrintToString(arguments) << outcome.signal << outcome.err;
  }
}

TEST_F(SurroundingsTest, NeedsOnlyFewOpenFiles) {
  std::filesystem::create_directory(PathOf("base"));
  for (int i = 0; i < 100; ++i) {
    const std::string name = "p" + std::to_string(i) + ".xml";
    std::filesystem::copy_file(PathOf("old.xml"), PathOf(name));
    std::filesystem::copy_file(PathOf("old.xml"), PathOf("base") / name);
  }
  Write("korvelcheck.toml", "[schemas]\npaths = [\"p*.xml\"]\n");
  const Outcome outcome = Behind(Limited("-n 16"), {"check", "--against", "base"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("0 tables refused, 200 allowed (0 changed, 200 unchanged); 200 compared"));
}

// From the minimum memory in which the program starts up to enough memory.
TEST_F(SurroundingsTest, ReportsOutOfMemoryAtEveryLimit) {
  if (KORVEL_SANITIZED) GTEST_SKIP() << "sanitizers need address space";
  std::vector<std::string> old_tables;
  std::vector<std::string> new_tables;
  for (int i = 0; i < 2000; ++i) {
    const std::string name = "t" + std::to_string(i);
    old_tables.push_back(Table({.name = name}));
    new_tables.push_back(Table({.name = name, .fields = "<entry name=\"more\" id=\"2\" type=\"int32\" version=\"6\"/>"}));
  }
  Write("old.xml", Library(5, old_tables));
  Write("new.xml", Library(6, new_tables));
  const std::vector<std::string> check = {"check", "old.xml", "new.xml", "-o", "report"};
  const std::vector<std::string> inputs = Files();
  Write("report", "old");
  const std::vector<std::string> files = Files();
  bool has_read_arguments = false;
  int reported = 0;
  for (int limit = 2 << 10;; limit += 512) {  // KiB
    ASSERT_LT(limit, 4 << 20) << "no limit is enough";
    const std::string limited = Limited("-v " + std::to_string(limit));
    if (Behind(limited, {"--version"}).exit_code != 0) continue;  // the program could not be loaded, or not even the shell
    Write("report", "old");
    const Outcome outcome = Behind(limited, check);
    if (outcome.exit_code == 0) break;
    ASSERT_EQ(outcome.exit_code, 3) << limit << " " << outcome.signal << outcome.err;
    ASSERT_THAT(outcome.err, AnyOf("korvelcheck: out of memory\n", "korvelcheck: out of memory, or an internal error\n"));
    // The old report is discarded, unless memory ran out before -o was read, or where nothing can be done any more.
    const bool is_discarded = Files() == inputs;
    const bool must_discard = has_read_arguments && outcome.err == "korvelcheck: out of memory\n";
    ASSERT_TRUE(is_discarded || (!must_discard && Files() == files)) << limit;
    has_read_arguments = has_read_arguments || is_discarded;
    reported += is_discarded ? 1 : 0;
  }
  EXPECT_EQ(Files(), files);
  EXPECT_GT(reported, 3);
  EXPECT_THAT(Read("report"), HasSubstr("0 tables refused, 2000 allowed"));
}

}  // namespace
}  // namespace tool_test
