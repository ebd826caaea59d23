// Inputs: files, standard input, and everything that is not a schema.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <thread>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class InputTest : public ToolTest {};

TEST_F(InputTest, StandardInputCanBeOldOrNew) {
  const std::string old_text = Read("old.xml");
  ExpectVerdicts(Korvelcheck(Call{.arguments = {"check", "-", "wide.xml"}, .input = old_text}), 1, kWideFinding);
  const Outcome outcome = Korvelcheck(Call{.arguments = {"check", "wide.xml", "-"}, .input = old_text});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("\n<stdin>:2:52: refused [primary-key.size] "));
}

TEST_F(InputTest, LocatesErrorsInStandardInput) {
  ExpectInputError(Korvelcheck(Call{.arguments = {"lint", "-"}, .input = ""}),
                   "<stdin>:1:1: error: the file is empty; allowed: exactly one 'metalib'\n");
}

TEST_F(InputTest, ClosedStandardInputIsAnError) {
  ExpectInputError(Korvelcheck(Call{.arguments = {"lint", "-"}, .input_closed = true}),
                   "korvelcheck: <stdin>: cannot be read: Bad file descriptor\n");
}

// A file opened next would get the number of the closed stream, and the report would go there.
TEST_F(InputTest, ClosedStandardInputDoesNotHarmFiles) {
  ExpectOutcome(Korvelcheck(Call{.arguments = {"check", "old.xml", "same.xml"}, .input_closed = true}), 0, kAllowedReport, "");
}

TEST_F(InputTest, ReportsFaultsOfBothFiles) {
  std::filesystem::create_directory(PathOf("sub"));
  ExpectInputError(Korvelcheck({"check", "missing.xml", "sub"}),
                   "korvelcheck: missing.xml: No such file or directory\n"
                   "korvelcheck: sub: is a directory; allowed: a file, or '-' for standard input\n");
}

TEST_F(InputTest, RefusesEmptyPath) {
  ExpectInputError(Korvelcheck({"check", "", "same.xml"}), "korvelcheck: '': No such file or directory\n");
}

TEST_F(InputTest, ReportsDanglingAndCircularLinks) {
  std::filesystem::create_symlink("nowhere", PathOf("dangling.xml"));
  std::filesystem::create_symlink("circle.xml", PathOf("circle.xml"));
  ExpectInputError(Korvelcheck({"check", "dangling.xml", "circle.xml"}),
                   "korvelcheck: dangling.xml: No such file or directory\n"
                   "korvelcheck: circle.xml: Too many levels of symbolic links\n");
}

// It can be opened but not read: the error comes with the first read.
TEST_F(InputTest, ReportsReadErrors) {
  ExpectInputError(Korvelcheck({"lint", "/proc/self/mem"}), "korvelcheck: /proc/self/mem: cannot be read: Input/output error\n");
}

TEST_F(InputTest, RefusesTooLargeFileWithoutReadingIt) {
  { const std::ofstream create(PathOf("large.xml")); }
  ASSERT_EQ(::truncate(PathOf("large.xml").c_str(), (off_t{1} << 30) + 1), 0);
  ExpectInputError(Korvelcheck({"lint", "large.xml"}),
                   "korvelcheck: large.xml: is too large; allowed: at most 1073741824 bytes\n");
}

TEST_F(InputTest, ReadsNamedPipe) {
  ASSERT_EQ(::mkfifo(PathOf("pipe.xml").c_str(), 0600), 0);
  const std::string text = Library(5, {Table({.fields = "<!--" + std::string(300000, '.') + "-->"})});
  std::thread writer([&] { Write("pipe.xml", text); });
  const Outcome outcome = Korvelcheck({"lint", "pipe.xml", "-v"});
  writer.join();
  ExpectOutcome(outcome, 0,
                "verdict: allowed\npipe.xml:2:1: allowed: table orders\n"
                "0 tables refused, 1 allowed; 1 compared, 0 new, 0 removed\n",
                "");
}

TEST_F(InputTest, SchemaErrorsOfBothFilesAreShown) {
  Write("one.xml", "<metalib name=\"m\" version=\"1\">\n  <meta/>\n  <meta name=\"a\"><entry name=\"b\"/></meta>\n</metalib>\n");
  Write("two.xml", "<metalib name=\"m\" version=\"1\">\n</meta>\n");
  const Outcome outcome = Korvelcheck({"check", "one.xml", "two.xml"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, StartsWith("one.xml:2:3: error: "));
  EXPECT_THAT(outcome.err, HasSubstr("\none.xml:3:18: error: "));
  EXPECT_THAT(outcome.err, HasSubstr("\ntwo.xml:2:3: error: "));
}

TEST_F(InputTest, RefusesBinaryFiles) {
  Write("program.bin", std::string("\x7f"
                                   "ELF\x02\x01\x01\0\0\0\0\0\0\0\0\0\x03\0\x3e\0",
                                   20));
  Write("noise.bin", std::string("\xff\xfe\x80\x00\xc0\xaf", 6));
  Write("byte.xml", "x");
  Write("cut.xml", Read("old.xml").substr(0, 100));
  for (const std::string file : {"program.bin", "noise.bin", "byte.xml", "cut.xml"}) {
    const Outcome outcome = Korvelcheck({"check", file, "same.xml"});
    EXPECT_EQ(outcome.exit_code, 2) << file;
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, StartsWith(file + ":"));
    EXPECT_THAT(outcome.err, HasSubstr(": error: "));
  }
}

TEST_F(InputTest, OneFileCanBeOldAndNew) { EXPECT_EQ(Korvelcheck({"check", "old.xml", "old.xml"}).exit_code, 0); }

// Columns are counted in characters, even if all tables are on one line.
TEST_F(InputTest, LocationsFollowEachOther) {
  Write("line.xml", "<metalib name=\"m\" version=\"1\" desc=\"\xc3\xa4\xc3\xb6\">" + Table() + Table({.name = "users"}) + "\n " +
                        Table({.name = "zones"}) + "</metalib>");
  const std::size_t users_column = 41 + Table().size();
  ExpectOutcome(Korvelcheck({"lint", "line.xml", "-v"}), 0,
                "verdict: allowed\nline.xml:1:41: allowed: table orders\nline.xml:1:" + std::to_string(users_column) +
                    ": allowed: table users\nline.xml:2:2: allowed: table zones\n"
                    "0 tables refused, 3 allowed; 3 compared, 0 new, 0 removed\n",
                "");
}

// --- Files that are so large that their texts are not kept ---

std::string Padding(std::size_t size) { return "<!--" + std::string(size, '.') + "-->\n"; }

class LargeInputTest : public ToolTest {
 protected:
  static constexpr std::size_t kLarge = 300'000;  // bytes

  Outcome RunOnce(std::vector<std::string> arguments, const std::string& format) const {
    if (!format.empty()) arguments.insert(arguments.end(), {"--format", format});
    return Korvelcheck(arguments);
  }

  // Runs the call on the files, and again after each got a large comment behind its last line.
  void ExpectSameWhenLarge(const std::vector<std::string>& arguments, const std::string& format = "") const {
    SCOPED_TRACE(arguments.front() + " " + arguments.back() + " " + format);
    const std::vector<std::string> files = {"old.xml", "same.xml", "wide.xml", "more.xml"};
    std::vector<std::string> texts;
    for (const std::string& file : files) texts.push_back(Read(file));
    const Outcome small = RunOnce(arguments, format);
    for (std::size_t i = 0; i < files.size(); ++i) Write(files[i], texts[i] + Padding(kLarge));
    const Outcome large = RunOnce(arguments, format);
    for (std::size_t i = 0; i < files.size(); ++i) Write(files[i], texts[i]);
    EXPECT_NE(small.exit_code, 2) << small.err;
    ExpectOutcome(large, small.exit_code, small.out, small.err);
  }

  // Runs `check FILE pipe.xml`, and changes the file after it was read and before the pipe was.
  Outcome CheckWhileChanging(const std::string& file, const std::string& new_text, const std::string& tables) const {
    EXPECT_EQ(::mkfifo(PathOf("pipe.xml").c_str(), 0600), 0);
    std::thread writer([&] {
      std::ofstream pipe(PathOf("pipe.xml"), std::ios::binary);
      // More than a pipe can buffer: once it is written, the program has read the file.
      pipe << "<metalib name=\"mall\" version=\"6\">" << Padding(1'000'000) << std::flush;
      Write(file, new_text);
      pipe << tables << "</metalib>";
    });
    Outcome outcome = Korvelcheck({"check", file, "pipe.xml"});
    writer.join();
    std::filesystem::remove(PathOf("pipe.xml"));
    return outcome;
  }
};

TEST_F(LargeInputTest, GivesTheSameReports) {
  Write("more.xml",
        Library(6, {Table({.fields = "<entry name=\"more\" type=\"int8\" version=\"6\"/>"}), Table({.name = "users"})}));
  for (const std::string new_file : {"same.xml", "wide.xml", "more.xml"}) {
    for (const std::string format :
         {"text", "json", "sarif", "junit", "github", "gitlab", "markdown", "github-review", "gitlab-review"}) {
      ExpectSameWhenLarge({"check", "old.xml", new_file}, format);
    }
    for (const std::string format : {"text", "json"}) {
      ExpectSameWhenLarge({"diff", "old.xml", new_file}, format);
      ExpectSameWhenLarge({"layout", "old.xml", new_file}, format);
    }
    ExpectSameWhenLarge({"compat", "old.xml", new_file});
    ExpectSameWhenLarge({"lint", new_file});
    ExpectSameWhenLarge({"compile", "-o", "-", new_file});
    ExpectSameWhenLarge({"history", "old.xml", "same.xml", new_file});
  }
}

TEST_F(LargeInputTest, IsFixedAsAWhole) {
  const Outcome small = Korvelcheck({"suggest", "--file", "old.xml", "wide.xml"});
  ASSERT_EQ(small.exit_code, 0) << small.err;
  for (const std::string file : {"old.xml", "wide.xml"}) Write(file, Read(file) + Padding(kLarge));
  const Outcome large = Korvelcheck({"suggest", "--file", "old.xml", "wide.xml"});
  EXPECT_TRUE(large.out == small.out + Padding(kLarge)) << large.err;
}

TEST_F(LargeInputTest, ReportsTheSameErrors) {
  for (const std::string error : {"<meta/>", "text", "</meta>", "&nobody;"}) {
    const std::string text = Library(5, {Table(), error, Table({.name = "users"})});
    Write("a.xml", text);
    const Outcome small = Korvelcheck({"lint", "a.xml"});
    Write("a.xml", text + Padding(kLarge));
    ExpectOutcome(Korvelcheck({"lint", "a.xml"}), 2, "", small.err);
  }
}

// A report would show lines of a file that was never checked.
TEST_F(LargeInputTest, RefusesFileThatChangesBeforeItIsShown) {
  const std::string refused = Table({.key_type = "uint32"});
  const std::string text = Library(5, {Padding(kLarge) + Table()});
  std::string other = text;
  other[other.find("....")] = ',';
  for (const std::string& changed : {other, text + "\n", text.substr(0, text.size() - 1), std::string()}) {
    Write("large.xml", text);
    ExpectOutcome(CheckWhileChanging("large.xml", changed, refused), 2, "",
                  "korvelcheck: large.xml: was modified while it was read; try again\n");
  }
  Write("large.xml", text);
  EXPECT_EQ(CheckWhileChanging("large.xml", text, refused).exit_code, 1);
}

// The same for a warning about an allowed change.
TEST_F(LargeInputTest, RefusesFileThatChangesBeforeItsWarningIsShown) {
  const std::string fields = "<entry name=\"n\" type=\"uint8\"/><entry name=\"a\" type=\"uint8\" count=\"4\"";
  const std::string counted = Table({.fields = fields + " refer=\"n\"/>"});
  const std::string fixed = Table({.fields = fields + "/>"});
  const std::string text = Library(5, {Padding(kLarge) + counted});
  Write("large.xml", text);
  ExpectOutcome(CheckWhileChanging("large.xml", text + "\n", fixed), 2, "",
                "korvelcheck: large.xml: was modified while it was read; try again\n");
  Write("large.xml", text);
  const Outcome outcome = CheckWhileChanging("large.xml", text, fixed);
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("\nlarge.xml:3:"));
  EXPECT_THAT(outcome.out, HasSubstr(": warning [advice.refer-changed] "));
}

// The verdict is about the bytes that were read.
TEST_F(LargeInputTest, FileMayChangeIfItIsNotShown) {
  const std::string text = Library(5, {Padding(kLarge) + Table()});
  Write("large.xml", text);
  ExpectOutcome(CheckWhileChanging("large.xml", "", Table()), 0,
                "verdict: allowed\n0 tables refused, 1 allowed (1 changed, 0 unchanged); 1 compared, 0 new, 0 removed\n", "");
}

// Standard input is read from where it is, and only once.
TEST_F(LargeInputTest, StandardInputMayBeALargeFile) {
  Write("large.xml", Library(5, {Padding(kLarge) + Table({.key_type = "uint32"})}));
  Write("small.xml", Library(5, {Table()}));
  const Outcome outcome = Korvelcheck(
      Call{.arguments = {"check", "small.xml", "-"}, .launcher = {"/bin/sh", "-c", "exec \"$0\" \"$@\" < large.xml"}});
  EXPECT_EQ(outcome.exit_code, 1) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("\n<stdin>:3:52: refused [primary-key.size] "));
}

// An unexpected failure is an internal error, never a verdict.
TEST_F(InputTest, OutOfMemoryIsAnInternalError) {
  if (KORVEL_SANITIZED) GTEST_SKIP() << "sanitizers need address space";
  { const std::ofstream create(PathOf("large.xml")); }
  ASSERT_EQ(::truncate(PathOf("large.xml").c_str(), off_t{900} << 20), 0);
  const Outcome outcome = Korvelcheck(Call{.arguments = {"lint", "large.xml"},

                                           .launcher = {"/bin/sh", "-c", "ulimit -v 100000; exec \"$0\" \"$@\""}});
  ExpectOutcome(outcome, 3, "", "korvelcheck: out of memory\n");
}
}  // namespace
}  // namespace tool_test
