#include "checked.h"

#include <algorithm>
#include <charconv>
#include <filesystem>

#include "analysis/check_table_change.h"
#include "cases/case_files.h"
#include "read_source.h"
#include "report/render/render.h"
#include "vesk/closed_category.h"

namespace report_test {
namespace {

namespace fs = std::filesystem;
using korvel::PartialSettings;
using korvel::Source;

// The example whose verdict depends on the age of the servers, and a server version that refuses it.
constexpr char kByServer[] = "game-v13-longer-replays";
constexpr char kOldServer[] = "3.28.0";

const fs::path kTop = KORVEL_SOURCE_DIR;

// Adds the pair of files to which the next tables belong. Names are paths relative to the top of the project.
korvel::Pair AddPair(CheckedReport& checked, const std::string& old_file, const std::string& new_file) {
  for (const auto& [role, file] : {std::pair("old", old_file), std::pair("new", new_file)}) {
    checked.sources.push_back(std::make_unique<Source>(ReadSource(file, cases::ReadFile(kTop / file))));
    checked.report.inputs.push_back({role, checked.sources.back().get()});
  }
  return {**(checked.sources.end() - 2), *checked.sources.back()};
}

void AddTable(CheckedReport& checked, const korvel::Pair& pair, const std::string& table, const PartialSettings& given) {
  vesk::ClosedCategory log;
  checked.report.tables.push_back(pair.first.HasMeta(table) ? korvel::CheckTableChange({.sources = pair,
                                                                                        .table = table,
                                                                                        .given = given,
                                                                                        .wants_allowed_changes = true,
                                                                                        .wants_fixes = true,
                                                                                        .log = log.handle()})
                                                            : korvel::NewTable(pair.second, table, given));
}

// "v13-reused-id" -> 13
int VersionOf(const std::string& stem) {
  int version = 0;
  std::from_chars(stem.data() + 1, stem.data() + stem.size(), version);
  return version;
}

}  // namespace

CheckedReport CheckCases(const std::vector<std::string>& names) {
  CheckedReport checked;
  checked.report.command = "check";
  checked.report.path_prefix = "";
  for (const std::string& name : names) {
    const std::string folder = "tests/cases/" + name;
    const korvel::Pair pair = AddPair(checked, folder + "/old.xml", folder + "/new.xml");
    const cases::Settings settings = cases::Load(name).settings;
    AddTable(checked, pair, settings.table, ToCheckerSettings(settings));
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

CheckedReport CheckExample(const Example& example) {
  CheckedReport checked;
  checked.report.command = "check";
  checked.report.path_prefix = "";
  const korvel::Pair pair = AddPair(checked, example.old_file, example.new_file);
  PartialSettings settings;
  if (example.name == kByServer) settings.server_version = kOldServer;
  for (const std::string_view table : pair.first.tables) AddTable(checked, pair, std::string(table), settings);
  for (const std::string_view table : pair.second.tables) {
    if (!pair.first.HasMeta(std::string(table))) AddTable(checked, pair, std::string(table), settings);
  }
  return checked;
}

}  // namespace report_test
