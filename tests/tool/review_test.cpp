// Reviews: the blocks of code make the change allowed, the commands waive the findings, and the summary stays short.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "tool_test.h"

namespace tool_test {
namespace {

using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr std::size_t kMaxBody = 65'536;  // of GitHub

class ReviewTest : public ToolTest {
 protected:
  json Review(const std::vector<std::string>& files, int exit_code, const std::vector<std::string>& options = {},
              const std::string& format = "github-review") const {
    std::vector<std::string> arguments = {"check", "--format", format};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.insert(arguments.end(), files.begin(), files.end());
    const Outcome outcome = Korvelcheck(arguments);
    EXPECT_EQ(outcome.exit_code, exit_code) << outcome.err;
    const json review = json::parse(outcome.out);
    EXPECT_EQ(review["exit_code"], exit_code);
    return review;
  }
};

// The lines of a text, with their ends.
std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line + "\n");
  return lines;
}

// The text after a person has applied the suggestion.
std::string Applied(const std::string& text, const json& suggestion) {
  const std::vector<std::string> lines = Lines(text);
  const std::vector<std::string> block = Lines(suggestion["block"]);
  std::string applied;
  for (std::size_t i = 1; i < suggestion["start_line"]; ++i) applied += lines[i - 1];
  for (std::size_t i = 1; i + 1 < block.size(); ++i) applied += block[i];
  for (std::size_t i = suggestion["line"]; i < lines.size(); ++i) applied += lines[i];
  return applied;
}

TEST_F(ReviewTest, AppliedSuggestionIsAllowed) {
  const json review = Review({"old.xml", "wide.xml"}, 1);
  EXPECT_EQ(review["verdict"], "refused");
  ASSERT_EQ(review["comments"].size(), 1u);
  const json& comment = review["comments"][0];
  EXPECT_EQ(comment["line"], 2);
  EXPECT_THAT(comment["path"].get<std::string>(), EndsWith("wide.xml"));
  ASSERT_THAT(comment["suggestion"]["block"].get<std::string>(), StartsWith("```suggestion\n"));
  Write("fixed.xml", Applied(Read("wide.xml"), comment["suggestion"]));
  EXPECT_NE(Read("fixed.xml"), Read("wide.xml"));
  EXPECT_TRUE(Review({"old.xml", "fixed.xml"}, 0)["comments"].empty());
}

TEST_F(ReviewTest, CommandWaivesTheFinding) {
  const std::string body = Review({"old.xml", "wide.xml"}, 1)["body"];
  const std::size_t begin = body.find("korvelcheck waive ") + std::string("korvelcheck ").size();
  std::istringstream words(body.substr(begin, body.find(" --reason", begin) - begin));
  std::vector<std::string> command{std::istream_iterator<std::string>(words), {}};
  for (const char* word : {"--reason", "empty", "--until", "2999-01-01"}) command.emplace_back(word);
  EXPECT_EQ(Korvelcheck(command).exit_code, 0);
  const json review = Review({"old.xml", "wide.xml"}, 0);
  EXPECT_TRUE(review["comments"].empty()) << "waived findings need no comment";
  EXPECT_THAT(review["body"].get<std::string>(), HasSubstr("### korvelcheck: refused (all waived)"));
  EXPECT_THAT(review["body"].get<std::string>(), Not(HasSubstr("korvelcheck waive")));
}

TEST_F(ReviewTest, CommandNamesTheBaselines) {
  std::filesystem::create_directory(PathOf("a base"));
  std::filesystem::copy_file(PathOf("old.xml"), PathOf("a base/s.xml"));
  std::filesystem::copy_file(PathOf("wide.xml"), PathOf("s.xml"));
  const json review = Review({"s.xml"}, 1, {"--against", "./a base"});
  EXPECT_THAT(review["body"].get<std::string>(), HasSubstr(" --against './a base' --reason"));
}

TEST_F(ReviewTest, BlockOfGitlabCountsTheLinesAboveAndBelow) {
  const json comment = Review({"old.xml", "wide.xml"}, 1, {}, "gitlab-review")["comments"][0];
  EXPECT_THAT(comment["suggestion"]["block"].get<std::string>(), StartsWith("```suggestion:-1+0\n<metalib "));
  const std::string lines = "<metalib name=\"l\" version=\"2\" protocol=\"QMX\"><meta name=\"t\">\n<entry name=\"uid\" type=\"";
  const std::string end = "\"/>\n<entry name=\"a\" type=\"int8\"/>\n<primarykey entries=\"uid\"/></meta></metalib>\n";
  Write("a.xml", lines + "uint32" + end);
  Write("b.xml", lines + "uint64" + end);
  const json below = Review({"a.xml", "b.xml"}, 1, {}, "gitlab-review")["comments"][0];
  EXPECT_EQ(below["line"], 2);
  EXPECT_THAT(below["suggestion"]["block"].get<std::string>(), StartsWith("```suggestion:-1+"));
  EXPECT_EQ(below["suggestion"]["start_line"], 1);
  EXPECT_GT(below["suggestion"]["line"], 2);
}

TEST_F(ReviewTest, SummaryOfManyTablesIsShort) {
  std::vector<std::string> old_tables, new_tables;
  for (int i = 0; i < 500; ++i) {
    const std::string name = "table_" + std::string(60, 'x') + std::to_string(i);
    old_tables.push_back(Table({.name = name, .key_type = "uint64"}));
    new_tables.push_back(Table({.name = name, .key_type = "uint32"}));
  }
  Write("many_old.xml", Library(5, old_tables));
  Write("many_new.xml", Library(6, new_tables));
  const json review = Review({"many_old.xml", "many_new.xml"}, 1);
  const std::string body = review["body"];
  EXPECT_LT(body.size(), kMaxBody);
  EXPECT_THAT(body, HasSubstr("| 500 | refused | <code>primary-key.size</code> |"));
  EXPECT_THAT(body, HasSubstr("480 more findings are not shown here"));
  EXPECT_EQ(review["comments"].size(), 500u);
}

// The longest names, which are even longer as Markdown.
TEST_F(ReviewTest, LongNamesAreLeftOut) {
  const std::string directory = std::string(200, '[');
  std::string path;
  for (int depth = 0; depth < 15; ++depth) path += directory + "/";
  std::filesystem::create_directories(PathOf(path));
  std::filesystem::copy_file(PathOf("wide.xml"), PathOf(path + "wide.xml"));
  const json review = Review({"old.xml", path + "wide.xml"}, 1);
  EXPECT_LT(review["body"].get<std::string>().size(), kMaxBody);
  EXPECT_THAT(review["body"].get<std::string>(), HasSubstr("its names are too long"));
  EXPECT_LT(review["comments"][0]["body"].get<std::string>().size(), 10'000u);
}

TEST_F(ReviewTest, FaultIsNoAllowedResult) {
  std::filesystem::create_directory(PathOf("base"));
  std::filesystem::create_directory(PathOf("s"));
  for (const char* const file : {"good.xml", "broken.xml"}) {
    std::filesystem::copy_file(PathOf("old.xml"), PathOf(std::string("base/") + file));
    std::filesystem::copy_file(PathOf("old.xml"), PathOf(std::string("s/") + file));
  }
  Write("s/broken.xml", "<metalib>\n");
  for (const std::vector<std::string>& files : {std::vector<std::string>{"s"}, {"none"}}) {
    const json review = Review(files, 2, {"--against", "./base"});
    EXPECT_EQ(review["verdict"], "incomplete");
    EXPECT_THAT(review["body"].get<std::string>(), StartsWith("<!-- korvelcheck -->\n### korvelcheck: incomplete ("));
    EXPECT_THAT(review["body"].get<std::string>(), HasSubstr("<b>error</b>"));
  }
}

}  // namespace
}  // namespace tool_test
