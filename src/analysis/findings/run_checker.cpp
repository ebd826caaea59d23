// Runs the checker on whole tables, and on small tables that test field names.
// Tested by tests/report/run_checker_test.cpp and bad_names_test.cpp.
#include "analysis/findings/run_checker.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "common/catalog.h"
#include "common/refusals.h"
#include "qmx/qmx_builder.h"
#include "schema/setting_values.h"
#include "vesk/closed_category.h"

namespace korvel {
namespace {

constexpr char kKey[] = "k";                   // a valid name
constexpr std::size_t kNamesPerTable = 1'000;  // small tables are built faster than one large one

// The verdict about a table with these fields, compared with itself.
Verdict CheckNames(const std::string& table, std::span<const std::string> names) {
  qmx::MetalibBuilder builder("names", 1, qmx::Protocol::kQmx);
  builder.AddMeta(table);
  builder.AddEntry({.name = kKey, .type = "int32"});
  for (const std::string& name : names) {
    if (name != kKey) builder.AddEntry({.name = name, .type = "int32"});
  }
  builder.SetPrimaryKey({kKey});
  const qmx::BuildResult built = builder.Finish();
  const LPQMXMETALIB library = built.metalib.value().get();
  // With these settings no rule but that of field names applies.
  const Settings settings{.type = *CodeOf(kTableTypes, "generic"), .created_as = *CodeOf(kProtocols, "qmx")};
  return RunChecker(library, library, table, settings);
}

// `first` is the position of the first of `names` in the whole list.
void Collect(const std::string& table, std::span<const std::string> names, std::size_t first, std::size_t limit,
             std::vector<BadName>& found) {
  if (names.empty() || found.size() == limit) return;
  Verdict verdict = CheckNames(table, names);
  if (!verdict.Refused()) return;
  if (names.size() == 1) {
    found.push_back({first, std::move(verdict)});
    return;
  }
  const std::size_t half = names.size() / 2;
  Collect(table, names.first(half), first, limit, found);
  Collect(table, names.subspan(half), first + half, limit, found);
}

}  // namespace

Verdict VerdictOf(int code, const ModifyTable& checker) {
  Verdict verdict;
  verdict.code = code;
  if (code == 0) return verdict;
  verdict.text = checker.GetErrType();
  if (const RefusalRow* row = checker.GetRefusal()) verdict.rule = row->id;
  return verdict;
}

Verdict RunChecker(LPQMXMETALIB old_library, LPQMXMETALIB new_library, const std::string& table, const Settings& settings) {
  // Field lengths are checked only if there is a log category.
  vesk::ClosedCategory log;
  ModifyTable checker;
  const int code = checker.KorvelModifyTable(old_library, new_library, table.c_str(), settings.type, settings.created_as,
                                             log.handle(), settings.server_version, settings.whitelist, settings.list_num);
  return VerdictOf(code, checker);
}

std::string_view OversizedFields(const Verdict& verdict) {
  const RefusalRow& row = kOversized;
  if (verdict.rule != row.id) return {};
  return std::string_view(verdict.text).substr(std::string_view(row.text).find('%'));
}

bool ListsNoOtherOversizedField(const Verdict& known, const Verdict& later) {
  const std::string all = "|" + std::string(OversizedFields(known));
  std::string_view rest = OversizedFields(later);
  if (rest.empty() || all.size() == 1) return false;
  while (!rest.empty()) {
    const std::size_t length = rest.find('|') + 1;
    if (all.find("|" + std::string(rest.substr(0, length))) == std::string::npos) return false;
    rest.remove_prefix(length);
  }
  return true;
}

std::vector<BadName> FindBadNames(const std::string& table, const std::vector<std::string>& names, std::size_t limit) {
  std::vector<BadName> found;
  const std::span<const std::string> all(names);
  for (std::size_t first = 0; first < all.size(); first += kNamesPerTable) {
    Collect(table, all.subspan(first, std::min(kNamesPerTable, all.size() - first)), first, limit, found);
  }
  return found;
}

}  // namespace korvel
