// Compares docs/command-line.md with the program: runs its example, and compares its options with the help.
#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "tool_test.h"

namespace tool_test {
namespace {

std::vector<std::string> DocumentLines() {
  std::ifstream document(KORVEL_COMMAND_LINE_DOCUMENT);
  EXPECT_TRUE(document.good());
  std::vector<std::string> lines;
  for (std::string line; std::getline(document, line);) lines.push_back(line);
  return lines;
}

// A fenced block, and the last line of text before it.
struct Block {
  std::string language;
  std::string title;
  std::vector<std::string> lines;
};

std::vector<Block> Blocks() {
  std::vector<Block> blocks;
  std::string title;
  bool inside = false;
  for (const std::string& line : DocumentLines()) {
    if (line.starts_with("```")) {
      inside = !inside;
      if (inside) blocks.push_back({line.substr(3), title, {}});
    } else if (inside) {
      blocks.back().lines.push_back(line);
    } else if (!line.empty()) {
      title = line;
    }
  }
  return blocks;
}

std::string JoinLines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

// Replaces a part of the document.
void Correct(const std::string& piece, const std::string& with) {
  std::string text = JoinLines(DocumentLines());
  text.replace(text.find(piece), piece.size(), with);
  std::ofstream(KORVEL_COMMAND_LINE_DOCUMENT, std::ios::binary) << text;
}

std::vector<std::string> Words(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

class DocumentTest : public ToolTest {
 protected:
  // The block with the current output of each of its commands.
  std::vector<std::string> WithOutput(const std::vector<std::string>& lines) const {
    const std::string call = "$ korvelcheck ";
    std::vector<std::string> typed;
    int exit_code = -1;
    for (const std::string& line : lines) {
      if (!line.starts_with("$ ")) continue;
      typed.push_back(line);
      if (line == "$ echo $?") {
        typed.push_back(std::to_string(exit_code));
      } else {
        EXPECT_TRUE(line.starts_with(call)) << line;
        const Outcome outcome = Korvelcheck(Words(line.substr(call.size())));
        exit_code = outcome.exit_code;
        std::istringstream printed(outcome.out + outcome.err);
        for (std::string text; std::getline(printed, text);) typed.push_back(text);
      }
    }
    return typed;
  }
};

TEST_F(DocumentTest, ExampleMatchesProgramOutput) {
  int consoles = 0;
  for (const Block& block : Blocks()) {
    if (block.language == "xml") Write(block.title.substr(1, block.title.find('`', 1) - 1), JoinLines(block.lines));
    if (block.language != "console") continue;
    ++consoles;
    const std::string typed = JoinLines(WithOutput(block.lines));
    if (std::getenv("KORVEL_UPDATE_GOLDENS") != nullptr) Correct(JoinLines(block.lines), typed);
    EXPECT_EQ(JoinLines(block.lines), typed);
  }
  EXPECT_EQ(consoles, 1);
}

// The words of a text that match, each once.
std::set<std::string> Matches(const std::string& text, const std::string& pattern) {
  const std::regex word(pattern);
  return {std::sregex_token_iterator(text.begin(), text.end(), word, 1), std::sregex_token_iterator()};
}

// The options of each command, by the tables with a column "commands": some commands, "every", or "every but" some.
std::map<std::string, std::set<std::string>> DocumentedOptions(const std::vector<std::string>& commands) {
  std::map<std::string, std::set<std::string>> options;
  const std::regex row("[|] (`-.*?`) [|] ([^|]*) [|].*");
  for (const std::string& line : DocumentLines()) {
    std::smatch cells;
    if (!std::regex_match(line, cells, row)) continue;
    const std::set<std::string> named = Matches(cells[2], "`([a-z]+)`");
    for (const std::string& command : commands) {
      if (cells[2].str().starts_with("every") != named.contains(command))
        options[command].merge(Matches(cells[1], "(--[a-z-]+)"));
    }
  }
  return options;
}

TEST_F(DocumentTest, DocumentedOptionsMatchHelp) {
  const std::vector<std::string> commands = CommandNames();
  std::map<std::string, std::set<std::string>> documented = DocumentedOptions(commands);
  for (const std::string& command : commands) {
    // Two blanks and an option: where help declares an option, not where it mentions one.
    const std::string help = Korvelcheck({command, "--help"}).out;
    EXPECT_EQ(documented[command], Matches(help, "\n  (?:-[a-z],)?(--[a-z-]+)")) << command;
  }
}

TEST_F(DocumentTest, DocumentsEveryCommand) {
  const std::string document = JoinLines(DocumentLines());
  for (const std::string& command : CommandNames()) EXPECT_THAT(document, testing::ContainsRegex("\n[|] `" + command + "[ `]"));
}

}  // namespace
}  // namespace tool_test
