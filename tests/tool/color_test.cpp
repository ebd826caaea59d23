// --color: when a text report is colored. Without its escape sequences, it is the report without colors.
#include <gmock/gmock.h>

#include <regex>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr char kEscape[] = "\x1b";

std::string WithoutColors(const std::string& text) { return std::regex_replace(text, std::regex("\x1b\\[[0-9;]*m"), ""); }

class ColorTest : public ToolTest {
 protected:
  // Every kind of line: a warning, a shared refusal with a suggestion, a new table, an unchanged one.
  ColorTest() {
    const auto shop = [](int version, const std::string& price, const std::string& refer, const std::string& more) {
      return Library(version, {"<meta name=\"item\"><entry name=\"price\" type=\"" + price + "\"/></meta>",
                               Table({.fields = "<entry name=\"a\" type=\"item\"/>"}),
                               Table({.name = "carts", .fields = "<entry name=\"a\" type=\"item\"/>"}),
                               Table({.name = "lists",
                                      .fields = "<entry name=\"n\" type=\"uint32\"/><entry name=\"l\" "
                                                "type=\"uint32\" count=\"4\"" +
                                                refer + "/>"}),
                               Table({.name = "users"}), more});
    };
    Write("v1.xml", shop(5, "int64", " refer=\"n\"", ""));
    Write("v2.xml", shop(6, "int32", "", Table({.name = "zones"})));
    Write("v3.xml", shop(7, "int8", "", Table({.name = "zones"})));
  }

  std::string Out(const std::vector<std::string>& arguments, const std::vector<std::string>& more = {}) const {
    return Korvelcheck(Joined(arguments, more)).out;
  }
};

TEST_F(ColorTest, OnlyTheEscapeSequencesDiffer) {
  Write("broken.xml", "<metalib");
  for (const std::vector<std::string>& call : std::vector<std::vector<std::string>>{
           {"check", "v1.xml", "v2.xml"},
           {"check", "v1.xml", "v2.xml", "-v"},
           {"check", "v1.xml", "v2.xml", "-q"},
           {"compat", "v1.xml", "v2.xml"},
           {"lint", "v1.xml", "broken.xml"},
           {"history", "v1.xml", "v2.xml", "v3.xml"},
           {"history", "v1.xml", "v2.xml", "v3.xml", "-v"},
           {"history", "v1.xml", "v2.xml", "v3.xml", "-q"},
       }) {
    const std::string plain = Out(call);
    const std::string colored = Out(call, {"--color", "always"});
    EXPECT_THAT(plain, Not(HasSubstr(kEscape)));
    EXPECT_THAT(colored, HasSubstr(kEscape));
    EXPECT_EQ(WithoutColors(colored), plain);
  }
}

TEST_F(ColorTest, ColorsAreRestrained) {
  EXPECT_THAT(Out({"check", "v1.xml", "v2.xml", "-v", "--color", "always"}),
              AllOf(HasSubstr("verdict: \x1b[31mrefused\x1b[0m\n\x1b[1mv2.xml:3:1\x1b[0m: \x1b[31mrefused\x1b[0m: table orders"),
                    HasSubstr("\x1b[33mwarning\x1b[0m [advice.refer-changed]"),
                    HasSubstr("\x1b[1mv2.xml:6:1\x1b[0m: \x1b[32munchanged\x1b[0m: table users\n"),
                    HasSubstr("\x1b[36mnew\x1b[0m: table zones")));
  EXPECT_THAT(Out({"history", "v1.xml", "v2.xml", "v3.xml", "--color", "always"}),
              HasSubstr("\n  table orders: \x1b[31mrefused\x1b[0m [field.size]"));
}

// The terminal of the tests has colors.
TEST_F(ColorTest, DependsOnTheTerminalByDefault) {
  const auto on_terminal = [&](const std::vector<std::string>& more, const std::vector<std::string>& environment) {
    return Korvelcheck(Call{.arguments = Joined({"check", "v1.xml", "v2.xml"}, more),
                            .output = Stream::kTerminal,
                            .environment = environment})
        .out;
  };
  EXPECT_THAT(on_terminal({}, {"TERM=xterm"}), HasSubstr(kEscape));
  EXPECT_THAT(on_terminal({"--color", "auto"}, {"TERM=xterm"}), HasSubstr(kEscape));
  EXPECT_THAT(on_terminal({"--color", "auto"}, {"TERM=xterm", "NO_COLOR=1"}), Not(HasSubstr(kEscape)));
  EXPECT_THAT(on_terminal({"--color", "never"}, {"TERM=xterm"}), Not(HasSubstr(kEscape)));
  EXPECT_THAT(on_terminal({"--color", "always"}, {"TERM=dumb", "NO_COLOR=1"}), HasSubstr(kEscape)) << "an option of the call";
}

TEST_F(ColorTest, FilesAreColoredOnRequestOnly) {
  static_cast<void>(Korvelcheck(Call{
      .arguments = {"check", "v1.xml", "v2.xml", "-o", "report"}, .output = Stream::kTerminal, .environment = {"TERM=xterm"}}));
  EXPECT_THAT(Read("report"), Not(HasSubstr(kEscape)));
  static_cast<void>(Out({"check", "v1.xml", "v2.xml", "-o", "report", "--color", "always"}));
  EXPECT_THAT(Read("report"), HasSubstr(kEscape));
}

TEST_F(ColorTest, OtherFormatsHaveNone) {
  for (const char* const format : {"json", "sarif", "junit", "github", "gitlab", "markdown", "html"}) {
    EXPECT_EQ(Out({"check", "v1.xml", "v2.xml", "--color", "always", "--format", format}),
              Out({"check", "v1.xml", "v2.xml", "--format", format}));
  }
}

// A name with an escape sequence of its own.
TEST_F(ColorTest, SchemasAddNoEscapeSequences) {
  const std::string name = "a&#27;[31mb";
  Write("image.xml", Library(5, {Table({.name = "orders", .attributes = name, .key_type = "uint64"})}));
  Write("wide.xml", Library(5, {Table({.name = "orders", .attributes = name + "c", .key_type = "uint32"})}));
  const std::string plain = Out({"check", "image.xml", "wide.xml"});
  EXPECT_THAT(plain, Not(HasSubstr(kEscape)));
  EXPECT_EQ(WithoutColors(Out({"check", "image.xml", "wide.xml", "--color", "always"})), plain);
}

TEST_F(ColorTest, OtherValuesAreUsageErrors) {
  const Outcome outcome = Korvelcheck({"check", "v1.xml", "v2.xml", "--color", "blue"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, HasSubstr("auto"));
}

}  // namespace
}  // namespace tool_test
