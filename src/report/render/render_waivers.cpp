// The output of `waivers` as text and JSON; docs/command-line.md describes both. Tested by tests/tool/waiver_test.cpp.
#include <algorithm>

#include "base/text.h"
#include "report/render/json_stream.h"
#include "report/render/json_values.h"
#include "report/render/render.h"
#include "report/result/words.h"

namespace korvel {
namespace {

// What a state is called in text and in JSON.
struct StateName {
  WaiverState state;
  const char* text;
  const char* json;
  const char* json_count;  // in the summary
};

constexpr StateName kStates[] = {{WaiverState::kInUse, "in use", "in-use", "in_use"},
                                 {WaiverState::kUnused, "unused", "unused", "unused"},
                                 {WaiverState::kExpired, "expired", "expired", "expired"},
                                 {WaiverState::kMalformed, "malformed", "malformed", "malformed"}};

const StateName& NameOf(WaiverState state) { return kStates[static_cast<std::size_t>(state)]; }

std::size_t CountOf(const WaiverList& list, WaiverState state) {
  return static_cast<std::size_t>(std::ranges::count(list.rows, state, &WaiverList::Row::state));
}

std::string DaysText(const WaiverList::Row& row) {
  if (!row.days_left) return "";
  const long long days = *row.days_left;
  const std::string number = Counted(static_cast<std::size_t>(days < 0 ? -days : days), "day");
  return ", until " + row.until + " (" + number + (days < 0 ? " ago)" : " left)");
}

// The members that the waiver has, each on a line.
std::string MemberLines(const WaiverList::Row& row) {
  std::string text;
  const auto add = [&](const char* name, const std::string& value) {
    if (!value.empty()) text += std::string("  ") + name + ": " + OneLine(value) + "\n";
  };
  add("rule", row.rule);
  add("table", row.table);
  add("path", row.path);
  add("change", row.is_wide ? "any that the rule refuses here (wide)" : row.change);
  add("entry", row.entry);
  add("file", row.file);
  add("fingerprint", row.fingerprint);
  add("reason", row.reason);
  return text;
}

std::string RowText(const WaiverList::Row& row) {
  std::string text = FileLineColumn(PathText(row.project_file), row.position) + ": " + NameOf(row.state).text + DaysText(row) +
                     "\n" + MemberLines(row);
  for (const WaiverList::Match& match : row.matches) {
    const std::string& path = match.path.empty() ? match.table : match.path;
    text += "  matches: " + OneLine(match.file) + (path.empty() ? "" : ": " + OneLine(path)) + ", fingerprint " +
            match.fingerprint + "\n";
  }
  return row.fault.empty() ? text : text + "  fault: " + OneLine(row.fault) + "\n" + SuggestionText(row.suggestion);
}

Json RowJson(const WaiverList::Row& row) {
  Json matches = Json::array();
  for (const auto& [in_file, table, path, fingerprint] : row.matches) {
    matches.push_back({{"file", in_file}, {"table", table}, {"path", path}, {"fingerprint", fingerprint}});
  }
  return {{"location", LocationToJson(row.project_file, row.position)},
          {"state", NameOf(row.state).json},
          {"wide", row.is_wide},
          {"rule", row.rule},
          {"table", row.table},
          {"path", row.path},
          {"change", row.change},
          {"file", row.file},
          {"entry", row.entry},
          {"fingerprint", NameOrNull(row.fingerprint)},
          {"reason", row.reason},
          {"until", row.until},
          {"days_left", row.days_left ? Json(*row.days_left) : Json()},
          {"fault", NameOrNull(row.fault)},
          {"suggestion", NameOrNull(row.suggestion)},
          {"matches", std::move(matches)}};
}

}  // namespace

std::string RenderWaiversText(const WaiverList& list) {
  std::string text;
  for (const WaiverList::Row& row : list.rows) text += RowText(row);
  text += Counted(list.rows.size(), "waiver");
  const char* separator = ": ";
  for (const StateName& name : kStates) {
    text += separator + std::to_string(CountOf(list, name.state)) + " " + name.text;
    separator = ", ";
  }
  return text + "\n";
}

std::string RenderWaiversJson(const WaiverList& list) {
  Json json = HeaderToJson(kJsonVersion, "waivers");
  json["project"] = list.project_file;
  Json& waivers = json["waivers"] = Json::array();
  for (const WaiverList::Row& row : list.rows) waivers.push_back(RowJson(row));
  Json& summary = json["summary"] = {{"waivers", list.rows.size()}};
  for (const StateName& name : kStates) summary[name.json_count] = CountOf(list, name.state);
  return JsonText(json) + "\n";
}

}  // namespace korvel
