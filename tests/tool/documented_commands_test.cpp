// Runs every command that stands on a line of its own in the documents, in a repository that has all files they name.
#include <gmock/gmock.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>

#include "git_repository.h"

namespace tool_test {
namespace {

namespace fs = std::filesystem;
using testing::AnyOf;
using testing::SizeIs;

struct Script {
  std::string place;  // "docs/pipelines.md:87"
  std::string text;   // a line, or a whole block
};

// The indented lines that call the program, and the blocks of shell commands.
std::vector<Script> ScriptsOf(const std::string& page) {
  std::ifstream document(fs::path(KORVEL_SOURCE_DIR) / page);
  EXPECT_TRUE(document.good()) << page;
  const std::regex command(" {4}((?:korvelcheck [a-z]|source <\\(korvelcheck ).*)");
  std::vector<Script> scripts;
  bool in_block = false;
  int number = 0;
  for (std::string line; std::getline(document, line);) {
    ++number;
    std::smatch found;
    if (line == "```sh") {
      in_block = true;
      scripts.push_back({page + ":" + std::to_string(number), ""});
    } else if (line == "```") {
      in_block = false;
    } else if (in_block) {
      scripts.back().text += line + "\n";
    } else if (std::regex_match(line, found, command)) {
      scripts.push_back({page + ":" + std::to_string(number), found[1]});
    }
  }
  return scripts;
}

std::vector<Script> AllScripts() {
  std::vector<std::string> pages = {"README.md"};
  for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(KORVEL_SOURCE_DIR) / "docs")) {
    if (entry.path().extension() == ".md") pages.push_back("docs/" + entry.path().filename().string());
  }
  std::ranges::sort(pages);
  std::vector<Script> scripts;
  for (const std::string& page : pages) {
    for (Script& script : ScriptsOf(page)) scripts.push_back(std::move(script));
  }
  return scripts;
}

// A project whose remote branch "main", tags and directory "../released" are its earlier states. Two changes of it are refused.
class DocumentedCommandsTest : public GitTest {
 protected:
  DocumentedCommandsTest() {
    fs::create_directories(PathOf("remote/schemas/shop"));
    Write("remote/schemas/orders.xml", Orders(4, "uint64", 8));
    Write("remote/schemas/shop/users.xml", Library(5, {Table({.name = "users"})}));
    Write("remote/korvelcheck.toml", "[schemas]\npaths = [\"schemas/**/*.xml\"]\nagainst = \"git:origin/main\"\n");
    GitIn("remote", {"init", "-q", "-b", "main"});
    CommitRemote("first schema");
    GitIn("remote", {"tag", "v0.9"});
    Write("remote/schemas/orders.xml", Orders(5, "uint64", 8));
    CommitRemote("release");
    GitIn("remote", {"tag", "v1.0"});
    Git({"clone", "-q", PathOf("remote").string(), "work"});
    fs::create_directory(PathOf("released"));
    fs::copy(PathOf("remote/schemas"), PathOf("released/schemas"), fs::copy_options::recursive);
    for (const char* name : {"work/schemas/orders.xml", "work/proposal.xml", "work/new.xml"}) Write(name, Orders(6, "uint32", 4));
    for (const char* name : {"work/orders.xml", "work/old.xml"}) Write(name, Orders(5, "uint64", 8));
    for (const int version : {5, 6, 7}) Write("work/v" + std::to_string(version) + ".xml", Orders(version, "uint64", 8));
  }

  void CommitRemote(const std::string& subject) const {
    GitIn("remote", {"add", "-A"});
    GitIn("remote", {"commit", "-q", "-m", subject});
  }

  static std::string Orders(int version, const std::string& key_type, int count) {
    return Library(version, {Table({.key_type = key_type,
                                    .fields = "<entry name=\"c\" type=\"uint8\"/><entry name=\"items\" type=\"int8\" count=\"" +
                                              std::to_string(count) + "\" refer=\"c\"/>"})});
  }

  // The fingerprints of a check, the refused changes first.
  std::vector<std::string> Fingerprints(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "check");
    arguments.insert(arguments.end(), {"--format", "json"});
    std::vector<std::string> fingerprints;
    const auto report = nlohmann::json::parse(Run(arguments, "work").out);
    for (const auto& table : report["tables"]) {
      if (!table.contains("changes")) continue;
      for (const auto& finding : table["changes"]["findings"]) fingerprints.push_back(finding["fingerprint"]);
    }
    return fingerprints;
  }

  // The documents show fingerprints of findings that are not here; and a reader's shell, pager and branch.
  std::string Adapted(const std::string& text) const {
    const bool has_files = text.find("old.xml") != std::string::npos;
    const auto fingerprints =
        Fingerprints(has_files ? std::vector<std::string>{"old.xml", "new.xml"} : std::vector<std::string>());
    EXPECT_THAT(fingerprints, SizeIs(2)) << text;
    std::string adapted;
    std::size_t end = 0;
    std::size_t next = 0;
    const std::regex shown("\\b[0-9a-f]{16}\\b");
    for (std::sregex_iterator found(text.begin(), text.end(), shown); found != std::sregex_iterator(); ++found) {
      adapted += text.substr(end, static_cast<std::size_t>(found->position()) - end) + fingerprints.at(next++);
      end = static_cast<std::size_t>(found->position() + found->length());
    }
    adapted += text.substr(end);
    adapted = std::regex_replace(adapted, std::regex("\\| man -l -"), "| cat");
    return std::regex_replace(adapted, std::regex("\\| source"), "| cat");
  }

  // In a shell that finds the program by its name.
  Outcome RunScript(const std::string& text) const {
    Call call;
    call.launcher = {"/bin/bash", "-c", "set -eo pipefail\nPATH=$(dirname \"$0\"):$PATH\nBASE=main\n" + text};
    call.directory = PathOf("work");
    call.environment = environment_;
    return RunProgram(call);
  }
};

// 0 or 1: the verdict depends on the schemas. 2 is an error of the call.
TEST_F(DocumentedCommandsTest, CanBeCopied) {
  const std::vector<Script> scripts = AllScripts();
  EXPECT_GE(scripts.size(), 20u);
  for (const Script& script : scripts) {
    const Outcome outcome = RunScript(Adapted(script.text));
    EXPECT_THAT(outcome.exit_code, AnyOf(0, 1)) << script.place << ": " << script.text << "\n" << outcome.err;
    GitIn("work", {"checkout", "-q", "--", "korvelcheck.toml"});
    Write("work/new.xml", Orders(6, "uint32", 4));
  }
}

}  // namespace
}  // namespace tool_test
