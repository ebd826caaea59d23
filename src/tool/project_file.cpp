// Reads korvelcheck.toml through toml++, which is seen only here. Held by tests/tool/project_file_test.cpp.
#include <algorithm>
#include <limits>
#include <map>
#include <span>
#include <string_view>
#include <tuple>
#include <utility>

// toml++ takes for granted what a wrong file breaks, "[[[" for one: by an assertion or, in a release, by a promise to the
// compiler. Without either it reports the fault.
#undef NDEBUG
#define TOML_ASSERT(condition) static_cast<void>(0)
#include <toml++/toml.h>

#include "qmx/did_you_mean.h"
#include "qmx/quote.h"
#include "report/book/rule_book.h"
#include "report/source/choice.h"
#include "report/text/one_line.h"
#include "tool/calendar.h"
#include "tool/cannot_ask.h"
#include "tool/project.h"
#include "tool/setting_values.h"

namespace korvel::tool {
namespace {

qmx::LineColumn PlaceOf(const toml::source_position& position) { return {position.line, position.column}; }
qmx::LineColumn PlaceOf(const toml::node& node) { return PlaceOf(node.source().begin); }

class Reader;

// What stands behind a key.
struct Value {
  std::string key;
  const toml::node& node;
};

// A key of a table, and what reads its value into a part of the project.
template <class Part>
struct Key {
  std::string_view name;
  void (*read)(Reader& reader, const Value& value, Part& part);
};

// Whether a text is a fingerprint of a finding.
bool IsFingerprint(std::string_view text) {
  return text.size() == 16 && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

class Reader {
 public:
  explicit Reader(std::string file) : file_(std::move(file)) {}

  void Run(const std::string& text, Project& project);

  void Fault(qmx::LineColumn place, const std::string& text) {
    const std::string at = file_ + ":" + std::to_string(place.line) + ":" + std::to_string(place.column);
    faults_.emplace(std::pair(place.line, place.column), report::OneLine(at + ": error: " + text));
  }

  void Refuse(const Value& value, const std::string& found, const std::string& allowed) {
    Fault(PlaceOf(value.node), value.key + " is " + found + "; allowed: " + allowed);
  }

  // A value of another type than those that are allowed.
  void RefuseType(const Value& value, const std::string& allowed) { Refuse(value, TypeOf(value.node), allowed); }

  // The value as a text; nullopt, and a fault, if it is none.
  std::optional<std::string> Text(const Value& value, const std::string& allowed) {
    if (const auto* text = value.node.as_string()) return text->get();
    RefuseType(value, allowed);
    return std::nullopt;
  }

  // The members of a list of texts.
  std::vector<ProjectText> Texts(const Value& value, const std::string& allowed) {
    std::vector<ProjectText> texts;
    const toml::array* const list = value.node.as_array();
    if (list == nullptr) RefuseType(value, "a list of " + allowed);
    for (std::size_t i = 0; list != nullptr && i < list->size(); ++i) {
      const toml::node& member = (*list)[i];
      if (const auto text = Text({value.key + "[" + std::to_string(i) + "]", member}, allowed)) {
        texts.push_back({*text, PlaceOf(member)});
      }
    }
    return texts;
  }

  // Reads the keys of a table.
  template <class Part>
  void ReadTable(const Value& value, std::span<const Key<Part>> keys, Part& part) {
    const toml::table* const table = value.node.as_table();
    if (table == nullptr) {
      RefuseType(value, "a table");
      return;
    }
    for (const auto& [key, node] : *table) {
      const Key<Part>* const known = Find(keys, key.str());
      known == nullptr ? RefuseKey(key, value.key, keys) : known->read(*this, {std::string(key.str()), node}, part);
    }
  }

  static std::string TypeOf(const toml::node& node) {
    static constexpr std::string_view kTypes[] = {"nothing",  "a table",       "a list", "a text", "a number",
                                                  "a number", "a truth value", "a date", "a time", "a date and time"};
    return std::string(kTypes[static_cast<std::size_t>(node.type())]);
  }

 private:
  template <class Part>
  static const Key<Part>* Find(std::span<const Key<Part>> keys, std::string_view name) {
    for (const Key<Part>& key : keys) {
      if (key.name == name) return &key;
    }
    return nullptr;
  }

  template <class Part>
  void RefuseKey(const toml::key& key, const std::string& table, std::span<const Key<Part>> keys) {
    std::vector<std::string_view> names;
    std::string allowed;
    for (const Key<Part>& known : keys) {
      names.push_back(known.name);
      allowed.append(allowed.empty() ? "" : ", ").append(known.name);
    }
    Fault(PlaceOf(key.source().begin), "unknown key " + qmx::Quote(key.str()) + (table.empty() ? "" : " in " + table) +
                                           qmx::DidYouMean(key.str(), names) + "; allowed: " + allowed);
  }

  std::string file_;
  std::multimap<std::pair<std::size_t, std::size_t>, std::string> faults_;  // by line and column: keys are read in another order
};

// --- [schemas] ---

constexpr char kPatterns[] = "paths below the project file, with '*', '?' and '**'";

// Patterns are relative: another machine has the project elsewhere.
template <std::vector<ProjectText> Project::*kMember>
void ReadPatterns(Reader& reader, const Value& value, Project& project) {
  project.*kMember = reader.Texts(value, kPatterns);
  for (const ProjectText& pattern : project.*kMember) {
    const std::string parts = "/" + pattern.text + "/";
    const auto has = [&](const char* odd) { return parts.find(odd) != std::string::npos; };
    if (has("//") || has("/./") || has("/../")) {
      reader.Fault(pattern.place, value.key + " has " + qmx::Quote(pattern.text) + "; allowed: " + kPatterns);
    }
  }
}

void ReadAgainst(Reader& reader, const Value& value, Project& project) {
  constexpr char kAllowed[] = "'git:REV' or a directory";
  const auto text = reader.Text(value, kAllowed);
  if (text && text->empty()) reader.Refuse(value, "empty", kAllowed);
  if (text) project.against = {*text, PlaceOf(value.node)};
}

constexpr Key<Project> kSchemaKeys[] = {
    {"paths", ReadPatterns<&Project::paths>},
    {"exclude", ReadPatterns<&Project::exclude>},
    {"against", ReadAgainst},
};

void ReadSchemas(Reader& reader, const Value& value, Project& project) {
  reader.ReadTable<Project>({"[schemas]", value.node}, kSchemaKeys, project);
}

// --- Settings ---

std::optional<int> ReadChoice(Reader& reader, const Value& value, std::span<const report::Choice> choices) {
  const std::string allowed = report::NamesOf(choices);
  const auto text = reader.Text(value, allowed);
  if (!text) return std::nullopt;
  const std::optional<int> code = report::CodeOf(choices, *text);
  if (!code) reader.Refuse(value, qmx::Quote(*text), allowed);
  return code;
}

void ReadType(Reader& reader, const Value& value, report::Settings& settings) {
  settings.type = ReadChoice(reader, value, report::kTableTypes);
}

void ReadCreatedAs(Reader& reader, const Value& value, report::Settings& settings) {
  settings.created_as = ReadChoice(reader, value, report::kProtocols);
}

void ReadServerVersion(Reader& reader, const Value& value, report::Settings& settings) {
  settings.server_version = reader.Text(value, std::string("a text of ") + kAllowedVersion);
  if (settings.server_version && !IsVersion(*settings.server_version)) {
    reader.Refuse(value, qmx::Quote(*settings.server_version), kAllowedVersion);
  }
}

void ReadWhitelist(Reader& reader, const Value& value, report::Settings& settings) {
  constexpr char kAllowed[] = "names of fields";
  if (const auto* joined = value.node.as_string()) {
    settings.whitelist = joined->get();
    return;
  }
  std::string joined;
  for (const ProjectText& name : reader.Texts(value, kAllowed)) {
    const bool is_name = !name.text.empty() && name.text.find(';') == std::string::npos;
    if (!is_name) reader.Fault(name.place, "whitelist has " + qmx::Quote(name.text) + "; allowed: " + kAllowed + " without ';'");
    joined += (joined.empty() ? "" : ";") + name.text;
  }
  settings.whitelist = joined;
}

void ReadListNum(Reader& reader, const Value& value, report::Settings& settings) {
  const auto* const number = value.node.as_integer();
  if (number == nullptr) {
    reader.RefuseType(value, kAllowedListNum);
  } else if (number->get() < 0 || number->get() > std::numeric_limits<int>::max()) {
    reader.Refuse(value, std::to_string(number->get()), kAllowedListNum);
  } else {
    settings.list_num = static_cast<int>(number->get());
  }
}

constexpr Key<report::Settings> kSettingKeys[] = {
    {"type", ReadType},           {"created-as", ReadCreatedAs}, {"server-version", ReadServerVersion},
    {"whitelist", ReadWhitelist}, {"list-num", ReadListNum},
};

void ReadDefaults(Reader& reader, const Value& value, Project& project) {
  reader.ReadTable<report::Settings>({"[defaults]", value.node}, kSettingKeys, project.defaults);
}

void ReadTables(Reader& reader, const Value& value, Project& project) {
  const toml::table* const tables = value.node.as_table();
  if (tables == nullptr) {
    reader.RefuseType(value, "tables like [tables.\"NAME\"]");
    return;
  }
  for (const auto& [name, settings] : *tables) {
    TableSettings& table = project.tables[std::string(name.str())];
    table.place = PlaceOf(settings);
    reader.ReadTable<report::Settings>({"[tables." + qmx::Quote(name.str()) + "]", settings}, kSettingKeys, table.settings);
  }
}

// --- [[waivers]] ---

template <std::string WaiverEntry::*kMember>
void ReadText(Reader& reader, const Value& value, WaiverEntry& waiver) {
  if (const auto text = reader.Text(value, "a text")) waiver.*kMember = *text;
}

std::string Digits(int number, std::size_t count) {
  const std::string digits = std::to_string(number);
  return std::string(count - std::min(count, digits.size()), '0') + digits;
}

// A day may be a text or one of TOML's own dates.
void ReadUntil(Reader& reader, const Value& value, WaiverEntry& waiver) {
  if (const auto* const date = value.node.as_date()) {
    const toml::date& day = date->get();
    waiver.until = Digits(day.year, 4) + "-" + Digits(day.month, 2) + "-" + Digits(day.day, 2);
  } else if (const auto text = reader.Text(value, "a day like 2027-01-31")) {
    waiver.until = *text;
  }
}

constexpr Key<WaiverEntry> kWaiverKeys[] = {
    {"fingerprint", ReadText<&WaiverEntry::fingerprint>},
    {"table", ReadText<&WaiverEntry::table>},
    {"rule", ReadText<&WaiverEntry::rule>},
    {"entry", ReadText<&WaiverEntry::entry>},
    {"reason", ReadText<&WaiverEntry::reason>},
    {"until", ReadUntil},
};

// Why no finding can have this rule; empty if one can.
std::string FaultOfRule(const std::string& rule) {
  if (rule.empty() || report::FindRow(rule) != nullptr) return "";
  std::vector<std::string_view> known;
  for (const RefusalRow* row : AllRefusals()) known.emplace_back(row->id);
  return "rule is " + qmx::Quote(rule) + qmx::DidYouMean(rule, known) + "; allowed: what 'korvelcheck rules' lists";
}

bool IsForTheSame(const WaiverEntry& one, const WaiverEntry& other) {
  return std::tie(one.fingerprint, one.table, one.rule, one.entry) ==
         std::tie(other.fingerprint, other.table, other.rule, other.entry);
}

// The second of two would be told to be for no finding, or hide that the first one has expired.
std::string FaultOfRepeated(const WaiverEntry& waiver, const Project& before) {
  const auto other = std::ranges::find_if(before.waivers, [&](const WaiverEntry& one) { return IsForTheSame(one, waiver); });
  if (other == before.waivers.end()) return "";
  return before.file + ":" + std::to_string(other->place.line) + " has one for the same finding; allowed: one, change it there";
}

// What is wrong with a waiver; empty if nothing is.
std::string FaultOf(const WaiverEntry& waiver, const toml::table& table) {
  const bool has_fingerprint = !waiver.fingerprint.empty();
  const bool has_entry = table.contains("entry");  // which is empty for a finding about the table as a whole
  const bool has_triple = !waiver.table.empty() && !waiver.rule.empty() && has_entry;
  if (has_fingerprint && (table.contains("table") || table.contains("rule") || has_entry))
    return "it has a fingerprint and table, rule or entry; allowed: one of the two";
  if (!has_fingerprint && !has_triple) return "it says not what it is for; allowed: a fingerprint, or table, rule and entry";
  if (has_fingerprint && !IsFingerprint(waiver.fingerprint)) {
    return "fingerprint is " + qmx::Quote(waiver.fingerprint) + "; allowed: 16 hexadecimal digits, as reports show them";
  }
  if (std::string fault = FaultOfRule(waiver.rule); !fault.empty()) return fault;
  if (waiver.reason.find_first_not_of(" \t\r\n") == std::string::npos) return "it has no reason; allowed: a text";
  if (waiver.until.empty()) return "it has no end; allowed: until = \"2027-01-31\"";
  if (!IsDay(waiver.until)) return "until is " + qmx::Quote(waiver.until) + "; allowed: a day like 2027-01-31";
  return "";
}

void ReadWaivers(Reader& reader, const Value& value, Project& project) {
  const toml::array* const waivers = value.node.as_array();
  if (waivers == nullptr) {
    reader.RefuseType(value, "tables like [[waivers]]");
    return;
  }
  for (const toml::node& node : *waivers) {
    WaiverEntry waiver;
    waiver.place = PlaceOf(node);
    reader.ReadTable<WaiverEntry>({"[[waivers]]", node}, kWaiverKeys, waiver);
    if (const toml::table* const table = node.as_table()) waiver.fault = FaultOf(waiver, *table);
    if (waiver.fault.empty()) waiver.fault = FaultOfRepeated(waiver, project);
    project.waivers.push_back(std::move(waiver));
  }
}

constexpr Key<Project> kKeys[] = {
    {"schemas", ReadSchemas},
    {"defaults", ReadDefaults},
    {"tables", ReadTables},
    {"waivers", ReadWaivers},
};

void Reader::Run(const std::string& text, Project& project) {
  try {
    const toml::table root = toml::parse(text);
    ReadTable<Project>({"", root}, kKeys, project);
  } catch (const toml::parse_error& error) {
    Fault(PlaceOf(error.source().begin), std::string(error.description()));
  }
  if (faults_.empty()) return;
  CannotAsk all;
  for (const auto& [place, line] : faults_) all.lines.push_back(line);
  throw all;
}

}  // namespace

Project ParseProject(const std::string& file, const std::string& directory, const std::string& text) {
  Project project;
  project.file = file;
  project.directory = directory;
  Reader(file).Run(text, project);
  return project;
}

}  // namespace korvel::tool
