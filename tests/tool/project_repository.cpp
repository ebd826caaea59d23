#include "project_repository.h"

#include <nlohmann/json.hpp>

namespace tool_test {

ProjectTest::ProjectTest() {
  for (const char* file : {"old.xml", "same.xml", "wide.xml"}) std::filesystem::remove(PathOf(file));
  std::filesystem::create_directories(PathOf("schemas/deep"));
  Write("korvelcheck.toml", "[schemas]\npaths = [\"schemas/**/*.xml\"]\n");
  Write("schemas/orders.xml", Schema("orders"));
  Write("schemas/users.xml", Schema("users"));
  Write("schemas/deep/items.xml", Schema("items"));
  Commit("first");
}

std::string ProjectTest::Schema(const std::string& name, const std::string& key_type) {
  return "<metalib name=\"" + name + "\" version=\"5\" protocol=\"QMX\">\n" + Table({.name = name, .key_type = key_type}) +
         "\n</metalib>\n";
}

Outcome ProjectTest::Against(const std::vector<std::string>& more, const std::string& directory) const {
  return Run(Joined({"check", "--against", "git:HEAD"}, more), directory);
}

std::vector<std::string> ProjectTest::Tables(const Outcome& outcome) {
  std::vector<std::string> lines;
  const auto json = nlohmann::json::parse(outcome.out, nullptr, false);
  if (json.is_discarded()) return {"no report: " + outcome.err};
  for (const auto& table : json["tables"]) {
    lines.push_back(table["location"]["file"].get<std::string>() + ": " + table["table"].get<std::string>() + " " +
                    table["status"].get<std::string>() + (table.value("removed", false) ? " removed" : ""));
  }
  return lines;
}

}  // namespace tool_test
