// A JUnit report: a suite for each pair of files, a test case for each table, a failure for each of its findings. A waived
// finding is not a failure; it is in the output of its test case. Tested by tests/report/formats_test.cpp.
#include <algorithm>

#include "base/characters.h"
#include "report/render/render.h"
#include "report/result/issues.h"
#include "schema/xml_writer.h"

namespace korvel {
namespace {

struct TestCase {
  std::string name;
  std::string file;
  std::string body;  // elements
  bool failed = false;
  bool skipped = false;
};

struct Suite {
  std::string name;
  const Source* second;
  std::vector<TestCase> cases;

  std::size_t Count(bool TestCase::*what) const {
    return static_cast<std::size_t>(std::ranges::count_if(cases, [&](const TestCase& one) { return one.*what; }));
  }
};

// Lines as content or as the value of an attribute. Characters that XML cannot contain are escaped ("\x1b") or become U+FFFD.
std::string XmlText(std::string_view text) {
  std::string xml;
  const std::string valid = ValidUtf8(text);
  for (std::string_view rest = valid; !rest.empty(); rest.remove_prefix(CharacterLength(rest))) {
    const std::string_view character = rest.substr(0, CharacterLength(rest));
    // U+FFFE and U+FFFF are valid UTF-8 but not allowed in XML.
    xml += character == "\n" ? "\n" : EscapeForXml(VisibleCharacter(character)).value_or("\xef\xbf\xbd");
  }
  return xml;
}

std::string Attribute(const char* name, std::string_view value) {
  return std::string(" ") + name + "=\"" + XmlText(value) + "\"";
}

std::string Counts(std::size_t tests, std::size_t failures, std::size_t skipped) {
  return Attribute("tests", std::to_string(tests)) + Attribute("failures", std::to_string(failures)) + Attribute("errors", "0") +
         Attribute("skipped", std::to_string(skipped));
}

void AddIssue(TestCase& test, const Issue& issue) {
  std::string text = ToText(issue.location) + ": " + issue.summary + "\n";
  for (const std::string& line : DetailsOf(issue)) text += line + "\n";
  if (issue.waived) {
    test.body += "      <system-out>" + XmlText(text) + "</system-out>\n";
  } else {
    test.failed = true;
    test.body += "      <failure" + Attribute("message", issue.summary) + Attribute("type", issue.rule) + ">" + XmlText(text) +
                 "</failure>\n";
  }
}

TestCase CaseOf(const TableResult& table) {
  TestCase test{table.table, ServicePath(table.declared.source->name), "", false, table.status == Status::kNew};
  if (test.skipped) test.body = "      <skipped message=\"new table: there is nothing to compare it with\"/>\n";
  return test;
}

TestCase ProjectCase(const Issue& issue) {
  TestCase test{issue.rule + " at " + ToText(issue.location), ServicePath(issue.location.file), "", false, false};
  AddIssue(test, issue);
  return test;
}

Suite SuiteOf(const TableResult& table) {
  const std::string second = table.second->name;
  return {table.first == nullptr || table.first == table.second ? second : table.first->name + " -> " + second, table.second, {}};
}

std::vector<Suite> SuitesOf(const Report& report) {
  const Issues issues(report, Repeats::kEach);
  auto next = issues.all().cbegin();
  std::vector<Suite> suites;
  for (const TableResult& table : report.tables) {
    if (suites.empty() || suites.back().second != table.second) suites.push_back(SuiteOf(table));
    TestCase& test = suites.back().cases.emplace_back(CaseOf(table));
    for (; next != issues.all().cend() && next->table == &table; ++next) AddIssue(test, *next);
  }
  if (next != issues.all().cend()) suites.push_back({"project file", nullptr, {}});
  for (; next != issues.all().cend(); ++next) suites.back().cases.push_back(ProjectCase(*next));
  return suites;
}

std::string ToXml(const TestCase& test, const std::string& suite) {
  const std::string start = "    <testcase" + Attribute("name", test.name) + Attribute("classname", suite) +
                            (test.file.empty() ? "" : Attribute("file", test.file));
  return test.body.empty() ? start + "/>\n" : start + ">\n" + test.body + "    </testcase>\n";
}

}  // namespace

std::string RenderJunit(const Report& report) {
  std::string body;
  std::size_t tests = 0, failures = 0, skipped = 0;
  for (const Suite& suite : SuitesOf(report)) {
    const std::size_t failed = suite.Count(&TestCase::failed), skipped_here = suite.Count(&TestCase::skipped);
    body += "  <testsuite" + Attribute("name", suite.name) + Counts(suite.cases.size(), failed, skipped_here) + ">\n";
    for (const TestCase& test : suite.cases) body += ToXml(test, suite.name);
    body += "  </testsuite>\n";
    tests += suite.cases.size();
    failures += failed;
    skipped += skipped_here;
  }
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + Attribute("name", "korvelcheck " + report.command) +
         Counts(tests, failures, skipped) + ">\n" + body + "</testsuites>\n";
}

}  // namespace korvel
