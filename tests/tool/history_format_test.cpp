// The formats of history: each lists every refused change of every step.
#include <gmock/gmock.h>

#include <cstdlib>

#include <nlohmann/json.hpp>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::HasSubstr;
using testing::Not;

class HistoryFormatTest : public ToolTest {
 protected:
  // v2 narrows the key, v3 also removes a field.
  HistoryFormatTest() {
    const std::string note = "<entry name=\"note\" id=\"2\" type=\"uint32\"/>";
    Write("v1.xml", Library(5, {Table({.fields = note})}));
    Write("v2.xml", Library(5, {Table({.key_type = "uint32", .fields = note})}));
    Write("v3.xml", Library(5, {Table({.key_type = "uint32"})}));
  }
  std::string Formatted(const std::string& format, const std::vector<std::string>& more = {}) const {
    const Outcome outcome = Korvelcheck(Joined({"history", "v1.xml", "v2.xml", "v3.xml", "--format", format}, more));
    EXPECT_EQ(outcome.exit_code, 1) << outcome.err;
    return outcome.out;
  }
};

TEST_F(HistoryFormatTest, ServicesGetTheFindingsOfAllSteps) {
  for (const char* const format : {"sarif", "junit", "github", "gitlab", "markdown", "html", "json", "text"}) {
    const std::string text = Formatted(format);
    EXPECT_THAT(text, HasSubstr("primary-key.size")) << format;
    EXPECT_THAT(text, HasSubstr("field.missing")) << format;
    EXPECT_THAT(text, HasSubstr("v2.xml")) << format;
    EXPECT_THAT(text, HasSubstr("v3.xml")) << format;
  }
  const auto sarif = nlohmann::json::parse(Formatted("sarif"));
  EXPECT_EQ(sarif["runs"][0]["results"].size(), 2);
  EXPECT_EQ(nlohmann::json::parse(Formatted("gitlab")).size(), 2);
  EXPECT_THAT(Formatted("junit"), HasSubstr("<testsuite name=\"v1.xml -&gt; v2.xml\" tests=\"1\" failures=\"1\""));
  EXPECT_THAT(Formatted("github", {"--path-prefix", "sub/"}), HasSubstr("::error file=sub/v2.xml,line=2,"));
}

// Each step is allowed, both together are not: a service must not show success.
TEST_F(HistoryFormatTest, ServicesGetRefusalsThatNoStepHas) {
  const auto tlv = [](int version, const std::string& fields) { return Library(version, {Table({.fields = fields})}, "TLV"); };
  Write("t1.xml", tlv(5, "<entry name=\"a\" id=\"2\" type=\"uint32\"/>"));
  Write("t2.xml", tlv(6, ""));
  Write("t3.xml", tlv(7, "<entry name=\"a\" id=\"2\" type=\"string\" size=\"9\" version=\"7\"/>"));
  const Outcome outcome = Korvelcheck({"history", "t1.xml", "t2.xml", "t3.xml", "--created-as", "tlv", "--format", "sarif"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_GE(nlohmann::json::parse(outcome.out)["runs"][0]["results"].size(), 1);
}

TEST_F(HistoryFormatTest, JsonMatchesItsSchema) {
  Write("list.json", Formatted("json"));
  const std::string source = KORVEL_SOURCE_DIR;
  const std::string command = KORVEL_PYTHON " '" + source + "/tests/report/validate.py' '" + source +
                              "/docs/history.schema.json' '" + PathOf("list.json").string() + "'";
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
}

TEST_F(HistoryFormatTest, PageHasVersionsStepsAndTexts) {
  Write("v2.xml", Read("v2.xml") + "<!-- </script><b> -->\n");
  const std::string page = Formatted("html");
  EXPECT_THAT(page, HasSubstr("<ol class=\"versions\" aria-label=\"versions\">\n<li><code>v1.xml</code> </li>\n"
                              "<li class=\"refused\"><a href=\"#h1v1\"><code>v2.xml</code></a> "));
  EXPECT_THAT(page, HasSubstr("<h3 id=\"h1v1\">Step 1: <code>v1.xml</code> \u2192 <code>v2.xml</code>"));
  EXPECT_THAT(page, HasSubstr("<option value=\"2\" selected>v3.xml</option>"));
  EXPECT_THAT(page, Not(HasSubstr("</script><b>")));
  const std::string start = "<script type=\"application/json\">";
  const std::size_t begin = page.find(start) + start.size();
  const auto data = nlohmann::json::parse(page.substr(begin, page.find("</script>", begin) - begin));
  ASSERT_EQ(data["texts"].size(), 3);
  std::string text;
  for (const std::size_t id : data["texts"][1]) text += data["lines"][id].get<std::string>() + "\n";
  EXPECT_EQ(text, Read("v2.xml"));
}

}  // namespace
}  // namespace tool_test
