// Asks about names in tables that hold nothing else. What a good name is, is not decided here.
// Held by tests/report/bad_names_test.cpp.
#include "analysis/findings/bad_names.h"

#include <span>

#include "analysis/findings/ask_checker.h"
#include "qmx/qmx_builder.h"
#include "schema/choice.h"

namespace korvel {
namespace {

constexpr char kKey[] = "k";  // a good name

// What no rule but that of names looks at.
Settings PlainSettings() {
  Settings settings;
  settings.type = CodeOf(kTableTypes, "generic");
  settings.created_as = CodeOf(kProtocols, "qmx");
  settings.server_version = "";
  settings.whitelist = "";
  settings.list_num = 0;
  return settings;
}

// The answer about a table of such fields, against itself.
Verdict AskAboutNames(const std::string& table, std::span<const std::string> names) {
  qmx::MetalibBuilder builder("names", 1, qmx::Protocol::kQmx);
  builder.AddMeta(table);
  builder.AddEntry({.name = kKey, .type = "int32"});
  for (const std::string& name : names) {
    if (name != kKey) builder.AddEntry({.name = name, .type = "int32"});
  }
  builder.SetPrimaryKey({kKey});
  const qmx::BuildResult built = builder.Finish();
  const LPQMXMETALIB library = built.metalib.value().get();
  return AskChecker(library, library, table, PlainSettings());
}

void Collect(const std::string& table, std::span<const std::string> names, std::size_t first, std::size_t most,
             std::vector<BadName>& found) {
  if (names.empty() || found.size() == most) return;
  Verdict verdict = AskAboutNames(table, names);
  if (!verdict.Refused()) return;
  if (names.size() == 1) {
    found.push_back({first, std::move(verdict)});
    return;
  }
  const std::size_t half = names.size() / 2;
  Collect(table, names.first(half), first, most, found);
  Collect(table, names.subspan(half), first + half, most, found);
}

}  // namespace

std::vector<BadName> FindBadNames(const std::string& table, const std::vector<std::string>& names, std::size_t most) {
  std::vector<BadName> found;
  Collect(table, names, 0, most, found);
  return found;
}

}  // namespace korvel
