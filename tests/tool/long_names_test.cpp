// Names that people copy are shown as a whole, however long they are and however narrow the terminal is.
#include <gmock/gmock.h>

#include "project_repository.h"

namespace tool_test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class LongNamesTest : public ProjectTest {
 protected:
  LongNamesTest() {
    WriteSchema("uint32", kField);
    Commit("long names");
    WriteSchema("uint16", kField);
  }

  void WriteSchema(const std::string& type, const std::string& field) const {
    Write(file_, Library(5, {Table({.name = table_, .fields = "<entry name=\"" + field + "\" type=\"" + type + "\"/>"})}));
  }

  // On a terminal of 20 columns.
  Outcome OnTerminal(const std::vector<std::string>& arguments) const {
    std::vector<std::string> environment = environment_;
    environment.insert(environment.end(), {"TERM=xterm", "COLUMNS=20", "NO_COLOR=1"});
    return Korvelcheck(Call{.arguments = arguments,
                            .launcher = {"/bin/sh", "-c", "stty cols 20 <&1; exec \"$0\" \"$@\""},
                            .output = Stream::kTerminal,
                            .environment = environment});
  }

  const std::string table_ = std::string(300, 't') + "_end";
  const std::string file_ = "schemas/" + std::string(120, 'f') + "_end.xml";
  static constexpr char kField[] = "field_with_31_letters_at_most_x";
};

TEST_F(LongNamesTest, ReportsShowThemWhole) {
  const std::vector<std::string> project = {"--against", "git:HEAD", file_};
  const std::string old_file = "git:HEAD:" + file_;
  for (const std::vector<std::string>& call : {Joined({"check", "-v"}, project),
                                               {"check", old_file, file_},
                                               {"compat", old_file, file_},
                                               Joined({"diff"}, project),
                                               {"diff", old_file, file_},
                                               Joined({"layout"}, project),
                                               {"layout", "schemas"},
                                               {"history", "--git", file_},
                                               {"history", old_file, file_}}) {
    const Outcome outcome = OnTerminal(call);
    EXPECT_LT(outcome.exit_code, 2) << call.front() << outcome.err;
    EXPECT_THAT(outcome.out, AllOf(HasSubstr(table_), HasSubstr(file_), HasSubstr(kField), Not(HasSubstr("..."))))
        << call.front();
  }
  const std::string lint = OnTerminal({"lint", "-v", file_}).out;
  EXPECT_THAT(lint, AllOf(HasSubstr(table_), HasSubstr(file_), Not(HasSubstr("..."))));
  EXPECT_THAT(Run({"suggest", "--against", "git:HEAD"}).out, HasSubstr("--- " + file_ + "\n"));
  EXPECT_THAT(OnTerminal({"compile", file_, "-o", "out", "schemas/users.xml"}).out, HasSubstr(file_ + " -> out/schemas/"));
}

TEST_F(LongNamesTest, WaiversShowThemWhole) {
  const std::string json = Run({"check", "--against", "git:HEAD", file_, "--format", "json"}).out;
  const std::string before = "\"fingerprint\": \"";
  const std::string fingerprint = json.substr(json.find(before) + before.size(), 16);
  const std::vector<std::string> waive = {"waive",    fingerprint, "--against", "git:HEAD",
                                          "--reason", "r",         "--until",   "2026-12-31"};
  ASSERT_EQ(Run(waive).exit_code, 0);
  const Outcome waivers = OnTerminal({"waivers", "--against", "git:HEAD"});
  EXPECT_THAT(waivers.out, AllOf(HasSubstr(table_), HasSubstr(file_), HasSubstr(kField)));
  std::string project = Read("korvelcheck.toml");
  project.replace(project.find("2026-12-31"), 10, "2025-12-31");
  Write("korvelcheck.toml", project);
  EXPECT_THAT(OnTerminal({"check", "--against", "git:HEAD"}).out,
              AllOf(HasSubstr("the waiver of 'field.size' in table '" + table_ + "'"), HasSubstr("file '" + file_ + "'")));
}

// Regression: names of more than 60 bytes were cut.
TEST_F(LongNamesTest, MessagesShowThemWhole) {
  const std::string known = std::string(60, 'n') + "abc";
  Write("one.xml", Library(5, {Table({.name = known})}));
  EXPECT_THAT(Run({"layout", "one.xml", "--table", std::string(60, 'n') + "abd"}).err,
              HasSubstr("(did you mean '" + known + "'?)"));
  Write("schemas/copy.xml", Read(file_));
  EXPECT_THAT(Run({"lint"}).out, HasSubstr("table '" + table_ + "' is also declared at "));
  Write(file_, Library(1, {Table({.name = table_, .attributes = "TableType=LIST;ListNum=x"})}));
  Commit("broken");
  EXPECT_THAT(Run({"suggest", "--against", "git:HEAD", file_}).err, HasSubstr("table '" + table_ + "' stays refused"));
  Write("korvelcheck.toml", "[schemas]\npaths = ['schemas/*.xml']\n[tables.\"" + table_ + "x\"]\ntype = 'list'\n");
  EXPECT_THAT(Run({"check", "--against", "git:HEAD"}).err, HasSubstr("[tables.'" + table_ + "x'] is for a table"));
}

}  // namespace
}  // namespace tool_test
