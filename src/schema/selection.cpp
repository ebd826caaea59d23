// Selects the tables that a command compares. Tested by tests/tool/check_test.cpp and pair_commands_test.cpp.
#include "schema/selection.h"

#include <set>
#include <string_view>
#include <utility>

#include "base/did_you_mean.h"
#include "base/input_error.h"
#include "base/text.h"

namespace korvel {
namespace {

std::string UnknownTable(const Pair& pair, const std::string& name, const std::string& of = "") {
  const std::string where = &pair.first == &pair.second
                                ? " is not in " + OneLine(pair.first.name)
                                : " is neither in " + OneLine(pair.first.name) + " nor in " + OneLine(pair.second.name);
  std::vector<std::string_view> known = pair.first.tables;
  known.insert(known.end(), pair.second.tables.begin(), pair.second.tables.end());
  return ToolMessage("table " + Quote(name) + of + where + DidYouMean(name, known));
}

Selection SelectRequested(const Pair& pair, const std::vector<std::string>& requested) {
  Selection selection;
  InputError unknown;
  std::set<std::string_view> seen;
  for (const std::string& name : requested) {
    if (!seen.insert(name).second) continue;
    if (pair.first.HasMeta(name)) {
      selection.compared.push_back(name);
    } else if (pair.second.HasMeta(name)) {
      selection.added.push_back(name);
    } else {
      unknown.lines.push_back(UnknownTable(pair, name));
    }
  }
  if (!unknown.lines.empty()) throw unknown;
  return selection;
}

Selection SelectAll(const Pair& pair) {
  Selection selection;
  selection.compared.assign(pair.first.tables.begin(), pair.first.tables.end());
  const std::set<std::string_view> known(pair.first.tables.begin(), pair.first.tables.end());
  for (const std::string_view name : pair.second.tables) {
    if (!known.contains(name)) selection.added.emplace_back(name);
  }
  return selection;
}

}  // namespace

Selection SelectTables(const Pair& pair, const std::vector<std::string>& requested) {
  Selection selection = requested.empty() ? SelectAll(pair) : SelectRequested(pair, requested);
  if (!selection.compared.empty()) return selection;
  const std::string why = requested.empty() ? " has no table (a meta with a primary key)" : " has none of the requested tables";
  throw InputError{{ToolMessage("nothing was compared: " + OneLine(pair.first.name) + why)}};
}

std::vector<std::string> SelectFromFirst(const Pair& pair, const std::vector<std::string>& requested) {
  Selection selection = SelectTables(pair, requested);
  if (!requested.empty()) RequireTables(pair.first, selection.added);
  return std::move(selection.compared);
}

std::vector<std::string> SelectFromBoth(const Pair& pair, const std::vector<std::string>& requested) {
  std::vector<std::string> tables = SelectFromFirst(pair, requested);
  RequireTables(pair.second, tables);
  return tables;
}

void RequireTablesOfSettings(const Pair& pair, const std::vector<std::string>& names) {
  InputError unknown;
  for (const std::string& name : names) {
    if (pair.first.HasMeta(name) || pair.second.HasMeta(name)) continue;
    unknown.lines.push_back(UnknownTable(pair, name, " of the settings"));
  }
  if (!unknown.lines.empty()) throw unknown;
}

void RequireTables(const Source& input, const std::vector<std::string>& names) {
  InputError missing;
  for (const std::string& name : names) {
    if (input.HasMeta(name)) continue;
    missing.lines.push_back(
        ToolMessage("table " + Quote(name) + " is not in " + OneLine(input.name) + DidYouMean(name, input.tables)));
  }
  if (!missing.lines.empty()) throw missing;
}

}  // namespace korvel
