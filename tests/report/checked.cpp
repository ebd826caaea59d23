#include "checked.h"

#include <algorithm>
#include <charconv>
#include <filesystem>

#include "analysis/check_table_change.h"
#include "cases/case_files.h"
#include "read_source.h"
#include "report/render/render.h"
#include "vesk/log_category.h"

namespace report_test {
namespace {

namespace fs = std::filesystem;
using korvel::Settings;
using korvel::Source;

// The example that depends on the age of the servers, and servers that refuse it.
constexpr char kByServer[] = "game-v13-longer-replays";
constexpr char kOldServer[] = "3.28.0";

const fs::path kTop = KORVEL_SOURCE_DIR;

// The pair of files whose tables come next in the report. Names are paths from the top of the project.
korvel::Pair AddPair(Judged& checked, const std::string& old_file, const std::string& new_file) {
  for (const auto& [role, file] : {std::pair("old", old_file), std::pair("new", new_file)}) {
    checked.sources.push_back(std::make_unique<Source>(ReadSource(file, cases::ReadFile(kTop / file))));
    checked.report.inputs.push_back({role, checked.sources.back().get()});
  }
  return {**(checked.sources.end() - 2), *checked.sources.back()};
}

void AddTable(Judged& checked, const korvel::Pair& pair, const std::string& table, const Settings& settings) {
  const std::unique_ptr<vesk::LogCategory> log = vesk::LogCategory::Closed();
  checked.report.tables.push_back(pair.first.HasMeta(table) ? korvel::CheckTableChange({.sources = pair,
                                                                                        .table = table,
                                                                                        .given = settings,
                                                                                        .wants_allowed_changes = true,
                                                                                        .wants_fixes = true,
                                                                                        .log = log->handle()})
                                                            : korvel::NewTable(pair.second, table));
}

// "v13-reused-id" -> 13
int VersionOf(const std::string& stem) {
  int version = 0;
  std::from_chars(stem.data() + 1, stem.data() + stem.size(), version);
  return version;
}

}  // namespace

Settings AskedIn(const cases::Settings& given) {
  Settings settings;
  settings.type = given.table_type;
  settings.created_as = given.created_as;
  settings.server_version = given.server_version;
  settings.whitelist = given.whitelist;
  settings.list_num = given.list_num;
  return settings;
}

Judged JudgeCases(const std::vector<std::string>& names) {
  Judged checked;
  checked.report.command = "check";
  for (const std::string& name : names) {
    const std::string folder = "tests/cases/" + name;
    const korvel::Pair pair = AddPair(checked, folder + "/old.xml", folder + "/new.xml");
    const cases::Settings settings = cases::Load(name).settings;
    AddTable(checked, pair, settings.table, AskedIn(settings));
  }
  return checked;
}

std::vector<Example> Examples() {
  std::vector<Example> examples;
  for (const char* project : {"game", "shop"}) {
    const std::string folder = std::string("examples/") + project + "/";
    for (const auto& file : fs::directory_iterator(kTop / folder)) {
      const std::string stem = file.path().stem().string();
      const std::string before = folder + "v" + std::to_string(VersionOf(stem) - 1) + ".xml";
      if (fs::exists(kTop / before)) examples.push_back({std::string(project) + "-" + stem, before, folder + stem + ".xml"});
    }
  }
  std::ranges::sort(examples, {}, &Example::name);
  return examples;
}

Judged JudgeExample(const Example& example) {
  Judged checked;
  checked.report.command = "check";
  const korvel::Pair pair = AddPair(checked, example.old_file, example.new_file);
  Settings settings;
  if (example.name == kByServer) settings.server_version = kOldServer;
  for (const std::string_view table : pair.first.tables) AddTable(checked, pair, std::string(table), settings);
  for (const std::string_view table : pair.second.tables) {
    if (!pair.first.HasMeta(std::string(table))) AddTable(checked, pair, std::string(table), settings);
  }
  return checked;
}

}  // namespace report_test
