// A git repository for tests of histories.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "git_repository.h"

namespace tool_test {

class HistoryVerdictTest : public GitTest {
 protected:
  using Json = nlohmann::json;

  static constexpr char kNote[] = "<entry name=\"note\" id=\"2\" type=\"uint32\" version=\"6\"/>";
  static constexpr char kProject[] = "[schemas]\npaths = [\"s/*.xml\"]\n";

  // A library and a table of one name.
  static std::string Schema(const std::string& name, const std::string& fields = "", const std::string& key_type = "uint64") {
    return "<metalib name=\"" + name + "\" version=\"" + (fields.empty() ? "5" : "6") + "\" protocol=\"QMX\">\n" +
           Table({.name = name, .key_type = key_type, .fields = fields}) + "</metalib>\n";
  }
  std::string CommitFile(const std::string& file, const std::string& text) const {
    std::filesystem::create_directories(PathOf(file).parent_path());
    Write(file, text);
    return Commit("change").substr(0, 7);
  }
  std::string CommitRemoval(const std::string& file) const {
    std::filesystem::remove(PathOf(file));
    return Commit("remove").substr(0, 7);
  }
  // A project of two files: a.xml has an allowed change after the tag v1.
  std::string StartProject() const {
    Write("korvelcheck.toml", kProject);
    std::filesystem::create_directory(PathOf("s"));
    Write("s/a.xml", Schema("a"));
    Write("s/b.xml", Schema("b"));
    const std::string first = Commit("start").substr(0, 7);
    Git({"tag", "v1"});
    CommitFile("s/a.xml", Schema("a", kNote));
    return first;
  }
  Outcome History(std::vector<std::string> arguments, const std::string& format = "text") const {
    arguments.insert(arguments.begin(), "history");
    arguments.insert(arguments.end(), {"--format", format});
    return Run(arguments);
  }
  static Json Parsed(const Outcome& outcome) { return Json::parse(outcome.out, nullptr, false); }
};

}  // namespace tool_test
