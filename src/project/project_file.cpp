// What the keys of korvelcheck.toml mean. Tested by tests/tool/project_file_test.cpp.
#include <algorithm>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include "base/text.h"
#include "project/baseline.h"
#include "project/project.h"
#include "project/toml_reader.h"
#include "project/waiver_entry.h"
#include "schema/setting_values.h"

namespace korvel {
namespace {

// --- [schemas] ---

constexpr char kPatterns[] = "paths below the project file, with '*', '?' and '**'";

// Patterns are relative: on another machine the project is in another directory.
template <std::vector<ProjectText> Project::*kMember>
void ReadPatterns(TomlReader& reader, const Value& value, Project& project) {
  project.*kMember = reader.Texts(value, kPatterns);
  for (const ProjectText& pattern : project.*kMember) {
    const std::string parts = "/" + pattern.text + "/";
    const auto has = [&](const char* odd) { return parts.find(odd) != std::string::npos; };
    if (has("//") || has("/./") || has("/../")) {
      reader.Fault(pattern.location, value.key + " has " + Quote(pattern.text) + "; allowed: " + kPatterns);
    }
  }
}

// One baseline, or a list of them.
void ReadAgainst(TomlReader& reader, const Value& value, Project& project) {
  if (value.node.is_array()) {
    project.against = reader.Texts(value, kAllowedBaselines);
  } else if (const auto text = reader.Text(value, kAllowedBaselines)) {
    project.against = {{*text, LocationOf(value.node)}};
  }
  for (const ProjectText& baseline : project.against) {
    if (baseline.text.empty()) reader.Fault(baseline.location, std::string("against is empty; allowed: ") + kAllowedBaselines);
  }
}

constexpr Key<Project> kSchemaKeys[] = {
    {"paths", ReadPatterns<&Project::paths>},
    {"exclude", ReadPatterns<&Project::exclude>},
    {"against", ReadAgainst},
};

void ReadSchemas(TomlReader& reader, const Value& value, Project& project) {
  reader.ReadTable<Project>({"[schemas]", value.node}, kSchemaKeys, project);
}

// --- Settings ---

std::optional<int> ReadChoice(TomlReader& reader, const Value& value, std::span<const NamedCode> choices) {
  const std::string allowed = NamesOf(choices);
  const auto text = reader.Text(value, allowed);
  if (!text) return std::nullopt;
  const std::optional<int> code = CodeOf(choices, *text);
  if (!code) reader.Refuse(value, Quote(*text), allowed);
  return code;
}

void ReadType(TomlReader& reader, const Value& value, PartialSettings& settings) {
  settings.type = ReadChoice(reader, value, kTableTypes);
}

void ReadCreatedAs(TomlReader& reader, const Value& value, PartialSettings& settings) {
  settings.created_as = ReadChoice(reader, value, kProtocols);
}

void ReadServerVersion(TomlReader& reader, const Value& value, PartialSettings& settings) {
  settings.server_version = reader.Text(value, std::string("a string of ") + kAllowedVersion);
  if (settings.server_version && !IsVersion(*settings.server_version)) {
    reader.Refuse(value, Quote(*settings.server_version), kAllowedVersion);
  }
}

void ReadWhitelist(TomlReader& reader, const Value& value, PartialSettings& settings) {
  constexpr char kAllowed[] = "names of fields";
  if (const auto* joined = value.node.as_string()) {
    settings.whitelist = joined->get();
    return;
  }
  std::string joined;
  for (const ProjectText& name : reader.Texts(value, kAllowed)) {
    const bool is_name = !name.text.empty() && name.text.find(';') == std::string::npos;
    if (!is_name) reader.Fault(name.location, "whitelist has " + Quote(name.text) + "; allowed: " + kAllowed + " without ';'");
    AppendPart(joined, ";", name.text);
  }
  settings.whitelist = joined;
}

void ReadListNum(TomlReader& reader, const Value& value, PartialSettings& settings) {
  const auto* const number = value.node.as_integer();
  if (number == nullptr) {
    reader.RefuseType(value, kAllowedListNum);
  } else if (number->get() < 0 || number->get() > std::numeric_limits<int>::max()) {
    reader.Refuse(value, std::to_string(number->get()), kAllowedListNum);
  } else {
    settings.list_num = static_cast<int>(number->get());
  }
}

constexpr Key<PartialSettings> kSettingKeys[] = {
    {"type", ReadType},           {"created-as", ReadCreatedAs}, {"server-version", ReadServerVersion},
    {"whitelist", ReadWhitelist}, {"list-num", ReadListNum},
};

void ReadDefaults(TomlReader& reader, const Value& value, Project& project) {
  reader.ReadTable<PartialSettings>({"[defaults]", value.node}, kSettingKeys, project.defaults);
}

void ReadTables(TomlReader& reader, const Value& value, Project& project) {
  const toml::table* const tables = value.node.as_table();
  if (tables == nullptr) {
    reader.RefuseType(value, "tables like [tables.\"NAME\"]");
    return;
  }
  for (const auto& [name, settings] : *tables) {
    TableSettings& table = project.tables[std::string(name.str())];
    table.location = LocationOf(settings);
    reader.ReadTable<PartialSettings>({"[tables." + Quote(name.str()) + "]", settings}, kSettingKeys, table.settings);
  }
}

// --- [report] ---

void ReadFailOn(TomlReader& reader, const Value& value, Project& project) {
  if (const auto code = ReadChoice(reader, value, kFailOn)) project.fails_on_warnings = *code == kFailOnWarning;
}

constexpr Key<Project> kReportKeys[] = {{"fail-on", ReadFailOn}};

void ReadReport(TomlReader& reader, const Value& value, Project& project) {
  reader.ReadTable<Project>({"[report]", value.node}, kReportKeys, project);
}

// --- [[waivers]] ---

template <std::string WaiverEntry::*kMember>
void ReadText(TomlReader& reader, const Value& value, WaiverEntry& waiver) {
  if (const auto text = reader.Text(value, "a string")) waiver.*kMember = *text;
}

std::string Digits(int number, std::size_t count) {
  const std::string digits = std::to_string(number);
  return std::string(count - std::min(count, digits.size()), '0') + digits;
}

// A day may be a string or one of TOML's own dates.
void ReadUntil(TomlReader& reader, const Value& value, WaiverEntry& waiver) {
  if (const auto* const date = value.node.as_date()) {
    const toml::date& day = date->get();
    waiver.until = Digits(day.year, 4) + "-" + Digits(day.month, 2) + "-" + Digits(day.day, 2);
  } else if (const auto text = reader.Text(value, "a day like 2027-01-31")) {
    waiver.until = *text;
  }
}

constexpr Key<WaiverEntry> kWaiverKeys[] = {
    {"rule", ReadText<&WaiverEntry::rule>},
    {"table", ReadText<&WaiverEntry::table>},
    {"path", ReadText<&WaiverEntry::path>},
    {"change", ReadText<&WaiverEntry::change>},
    {"file", ReadText<&WaiverEntry::file>},
    {"fingerprint", ReadText<&WaiverEntry::fingerprint>},
    {"entry", ReadText<&WaiverEntry::entry>},
    {"reason", ReadText<&WaiverEntry::reason>},
    {"until", ReadUntil},
};

void ReadWaivers(TomlReader& reader, const Value& value, Project& project) {
  const toml::array* const waivers = value.node.as_array();
  if (waivers == nullptr) {
    reader.RefuseType(value, "tables like [[waivers]]");
    return;
  }
  for (const toml::node& node : *waivers) {
    WaiverEntry waiver;
    waiver.location = LocationOf(node);
    reader.ReadTable<WaiverEntry>({"[[waivers]]", node}, kWaiverKeys, waiver);
    if (const toml::table* const table = node.as_table()) {
      WaiverKeys keys;
      for (const auto& member : *table) keys.emplace(member.first.str());
      waiver.form = FormOf(waiver.rule, keys);
      waiver.fault = FaultOf(waiver, keys, project);
    }
    project.waivers.push_back(std::move(waiver));
  }
}

constexpr Key<Project> kKeys[] = {
    {"schemas", ReadSchemas}, {"defaults", ReadDefaults}, {"tables", ReadTables},
    {"report", ReadReport},   {"waivers", ReadWaivers},
};

}  // namespace

Project ParseProject(const std::string& file, const std::string& text) {
  Project project;
  project.file = file;
  project.directory = std::filesystem::path(file).parent_path().string();
  TomlReader(file).Read<Project>(text, kKeys, project);
  return project;
}

}  // namespace korvel
