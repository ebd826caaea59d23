// Chooses tables. Held by tests/tool/check_test.cpp and pair_commands_test.cpp.
#include "tool/selection.h"

#include <string_view>
#include <unordered_set>
#include <utility>

#include "qmx/did_you_mean.h"
#include "qmx/quote.h"
#include "report/text/one_line.h"
#include "tool/cannot_ask.h"

namespace korvel::tool {
namespace {

std::string UnknownTable(const Pair& pair, const std::string& name) {
  std::vector<std::string_view> known = pair.first.tables;
  known.insert(known.end(), pair.second.tables.begin(), pair.second.tables.end());
  return Said("table " + qmx::Quote(name) + " is neither in " + OneLine(pair.first.name) + " nor in " +
              OneLine(pair.second.name) + qmx::DidYouMean(name, known));
}

Selection SelectAsked(const Pair& pair, const std::vector<std::string>& asked) {
  Selection selection;
  CannotAsk unknown;
  std::unordered_set<std::string_view> seen;
  for (const std::string& name : asked) {
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
  const std::unordered_set<std::string_view> known(pair.first.tables.begin(), pair.first.tables.end());
  for (const std::string_view name : pair.second.tables) {
    if (!known.contains(name)) selection.added.emplace_back(name);
  }
  return selection;
}

}  // namespace

Pair PairOf(const Report& report) { return {*report.inputs[0].source, *report.inputs[1].source}; }

Selection SelectTables(const Pair& pair, const std::vector<std::string>& asked) {
  Selection selection = asked.empty() ? SelectAll(pair) : SelectAsked(pair, asked);
  if (!selection.compared.empty()) return selection;
  const std::string why = asked.empty() ? " has no table (a meta with a primary key)" : " has none of the tables asked for";
  throw CannotAsk{{Said("nothing was compared: " + OneLine(pair.first.name) + why)}};
}

std::vector<std::string> SelectFromFirst(const Pair& pair, const std::vector<std::string>& asked) {
  Selection selection = SelectTables(pair, asked);
  if (!asked.empty()) RequireTables(pair.first, selection.added);
  return std::move(selection.compared);
}

void RequireTables(const Source& input, const std::vector<std::string>& names) {
  CannotAsk missing;
  for (const std::string& name : names) {
    if (input.HasMeta(name)) continue;
    missing.lines.push_back(
        Said("table " + qmx::Quote(name) + " is not in " + OneLine(input.name) + qmx::DidYouMean(name, input.tables)));
  }
  if (!missing.lines.empty()) throw missing;
}

}  // namespace korvel::tool
