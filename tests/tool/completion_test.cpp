// completion: what each shell offers at the end of a line, found with the scripts complete.*.
#include <gmock/gmock.h>

#include <sstream>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;

struct Shell {
  const char* name;
  std::vector<std::string> start;  // before the script
};

void PrintTo(const Shell& shell, std::ostream* out) { *out << shell.name; }

class CompletionTest : public ToolTest, public testing::WithParamInterface<Shell> {
 protected:
  // What the shell offers at the end of a line, sorted.
  std::vector<std::string> Offers(const std::string& line) {
    const std::string script = std::string(KORVEL_SOURCE_DIR "/tests/tool/complete.") + GetParam().name;
    Call call{.arguments = {line}};
    call.launcher = GetParam().start;
    call.launcher.push_back(script);
    call.environment = {"PATH=/usr/bin:/bin", "HOME=" + PathOf("").string(), "TERM=dumb", "LC_ALL=C"};
    const Outcome outcome = Korvelcheck(call);
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_EQ(outcome.err, "");
    std::filesystem::remove_all(PathOf("zsh"));
    std::istringstream lines(outcome.out);
    std::vector<std::string> offers;
    std::string offer;
    std::getline(lines, offer);
    EXPECT_EQ(offer, "> " + line);
    while (std::getline(lines, offer)) offers.push_back(offer);
    return offers;
  }

  void SetUp() override {
    if (!std::filesystem::exists(GetParam().start.front())) GTEST_SKIP() << GetParam().name << " is not installed";
  }
};

TEST_P(CompletionTest, OffersCommands) {
  EXPECT_THAT(Offers("korvelcheck ch"), ElementsAre("check"));
  EXPECT_THAT(Offers("korvelcheck "), IsSupersetOf(CommandNames()));
  EXPECT_THAT(Offers("korvelcheck --v"), ElementsAre("--version"));
}

TEST_P(CompletionTest, OffersTheOptionsOfTheCommand) {
  EXPECT_THAT(Offers("korvelcheck check --ty"), ElementsAre("--type"));
  EXPECT_THAT(Offers("korvelcheck check old.xml --list"), ElementsAre("--list-num"));
  EXPECT_THAT(Offers("korvelcheck same --ty"), IsEmpty());
}

TEST_P(CompletionTest, OffersTheWordsThatAnOptionTakes) {
  EXPECT_THAT(Offers("korvelcheck check --type "), ElementsAre("generic", "list"));
  EXPECT_THAT(Offers("korvelcheck check old.xml --log-level w"), ElementsAre("warn"));
  EXPECT_THAT(Offers("korvelcheck check --type=l"), ElementsAre(testing::AnyOf("list", "--type=list")));
}

TEST_P(CompletionTest, OffersNothingForFreeText) { EXPECT_THAT(Offers("korvelcheck check --table o"), IsEmpty()); }

TEST_P(CompletionTest, OffersFiles) {
  Write("with blank.xml", "");
  EXPECT_THAT(Offers("korvelcheck check ol"), ElementsAre("old.xml"));
  // zsh lists the name a second time, as it would be inserted.
  EXPECT_THAT(Offers("korvelcheck check old.xml w"), IsSupersetOf({"wide.xml", "with blank.xml"}));
  EXPECT_THAT(Offers("korvelcheck lint old.xml wide.xml s"), ElementsAre("same.xml"));
  EXPECT_THAT(Offers("korvelcheck check -o s"), ElementsAre("same.xml"));
  EXPECT_THAT(Offers("korvelcheck rules "), Not(Contains("old.xml")));
}

TEST_P(CompletionTest, OffersTheWordsThatACommandTakes) {
  EXPECT_THAT(Offers("korvelcheck completion "), ElementsAre("bash", "fish", "zsh"));
  EXPECT_THAT(Offers("korvelcheck explain primary-key.si"), ElementsAre("primary-key.size", "primary-key.size-tlv"));
  EXPECT_THAT(Offers("korvelcheck explain ERROR_EX"),
              ElementsAre("ERROR_EXCEED_MESSAGE_MAX_RECURSION_DEPTH", "ERROR_EXIST_TABLE"));
}

std::string Name(const testing::TestParamInfo<Shell>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(All, CompletionTest,
                         testing::Values(Shell{"bash", {"/usr/bin/bash", "--norc"}}, Shell{"zsh", {"/usr/bin/zsh", "-f"}},
                                         Shell{"fish", {"/usr/bin/fish", "--no-config"}}),
                         Name);

class CompletionCommandTest : public ToolTest {};

TEST_F(CompletionCommandTest, RefusesOtherShells) {
  ExpectInputError(Korvelcheck({"completion", "csh"}),
                   "korvelcheck: completion: unknown shell 'csh' (did you mean 'zsh'?); allowed: bash, zsh, fish\n");
  ExpectInputError(Korvelcheck({"completion"}),
                   "korvelcheck: completion: SHELL is required\nTry 'korvelcheck completion --help'.\n");
}

}  // namespace
}  // namespace tool_test
