#include "tool_test.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace tool_test {

std::string Library(int version, const std::vector<std::string>& tables, const std::string& protocol) {
  const std::string attribute = protocol.empty() ? "" : " protocol=\"" + protocol + "\"";
  std::string text = "<metalib name=\"mall\" version=\"" + std::to_string(version) + "\"" + attribute + ">\n";
  for (const std::string& table : tables) text += table + "\n";
  return text + "</metalib>\n";
}

std::string Table(const TableText& table) {
  const std::string attributes = table.attributes.empty() ? "" : " customattr=\"" + table.attributes + "\"";
  return "<meta name=\"" + table.name + "\"" + attributes + "><entry name=\"uid\" id=\"1\" type=\"" + table.key_type + "\"/>" +
         table.fields + "<primarykey entries=\"uid\"/></meta>";
}

ToolTest::ToolTest() {
  std::string name = testing::TempDir() + "korvelcheck-XXXXXX";
  if (::mkdtemp(name.data()) == nullptr) std::abort();
  directory_ = name;
  const std::string users = Table({.name = "users"});
  Write("old.xml", Library(5, {Table(), users}));
  Write("same.xml", Library(5, {Table(), users}));
  Write("wide.xml", Library(5, {Table({.key_type = "uint32"}), users}));
}

ToolTest::~ToolTest() { std::filesystem::remove_all(directory_); }

void ToolTest::Write(const std::string& file, const std::string& text) const {
  std::ofstream stream(PathOf(file), std::ios::binary);
  stream << text;
  ASSERT_TRUE(stream.good()) << file;
}

std::string ToolTest::Read(const std::string& file) const {
  std::ifstream stream(PathOf(file), std::ios::binary);
  EXPECT_TRUE(stream.good()) << file;
  std::stringstream text;
  text << stream.rdbuf();
  return text.str();
}

std::vector<std::string> ToolTest::Files() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory_)) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

Outcome ToolTest::Korvelcheck(const std::vector<std::string>& arguments) const {
  return Korvelcheck(Call{.arguments = arguments});
}

Outcome ToolTest::Korvelcheck(Call call) const {
  call.directory = directory_;
  return RunProgram(call);
}

// Each name is indented by two blanks, below the line "Commands:".
std::vector<std::string> ToolTest::CommandNames() const {
  std::istringstream help(Korvelcheck({"--help"}).out);
  std::vector<std::string> names;
  std::string line;
  while (std::getline(help, line) && line != "Commands:") continue;
  while (std::getline(help, line) && line.starts_with("  ")) names.push_back(line.substr(2, line.find(' ', 2) - 2));
  return names;
}

void ExpectOutcome(const Outcome& outcome, int exit_code, const std::string& out, const std::string& err) {
  EXPECT_EQ(outcome.exit_code, exit_code);
  EXPECT_EQ(outcome.out, out);
  EXPECT_EQ(outcome.err, err);
}

std::string Verdicts(const std::string& report) {
  std::string verdicts;
  std::istringstream lines(report);
  for (std::string line; std::getline(lines, line);) {
    const bool is_shown = line.starts_with("  table ") || line.starts_with("  checker: ") || !line.starts_with(" ");
    const bool is_hint = line.starts_with("Run ") || line.starts_with("To fix ");
    if (is_shown && !is_hint) verdicts += line + "\n";
  }
  return verdicts;
}

void ExpectVerdicts(const Outcome& outcome, int exit_code, const std::string& verdicts) {
  ExpectOutcome({outcome.exit_code, Verdicts(outcome.out), outcome.err}, exit_code, verdicts, "");
}

void ExpectInputError(const Outcome& outcome, const std::string& err) {
  const bool is_failed_report =
      outcome.out.starts_with("{\n") && outcome.out.find("\"verdict\": \"incomplete\"") != std::string::npos;
  ExpectOutcome({outcome.exit_code, is_failed_report ? "" : outcome.out, outcome.err}, 2, "", err);
}

}  // namespace tool_test
