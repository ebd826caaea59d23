// Sets settings by key and text. Tested by tests/capi/settings_test.cpp.
#include "capi/settings.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/did_you_mean.h"
#include "base/text.h"
#include "capi/call.h"
#include "schema/setting_keys.h"
#include "schema/setting_values.h"

namespace korvel::capi {
namespace {

constexpr char kFailOnKey[] = "fail-on";
constexpr char kMaxFindingsKey[] = "max-findings";

[[noreturn]] void RefuseKey(const std::string& key, bool is_of_table) {
  std::vector<std::string_view> known;
  for (const SettingKey& row : SettingKeys()) known.emplace_back(row.name);
  if (!is_of_table) known.insert(known.end(), {kFailOnKey, kMaxFindingsKey});
  throw ArgumentError{"kc_settings_set: unknown key " + Quote(key) + (is_of_table ? " of a table" : "") + DidYouMean(key, known) +
                      "; allowed: " + Join(known, ", ")};
}

[[noreturn]] void RefuseValue(const std::string& key, const std::string& value, const std::string& allowed) {
  throw ArgumentError{"kc_settings_set: " + key + " is " + Quote(value) + "; allowed: " + allowed};
}

// Returns as SettingKey::set.
std::string SetFailOn(CheckSettings& settings, const std::string& value) {
  const std::optional<int> code = CodeOf(kFailOn, value);
  if (!code) return NamesOf(kFailOn);
  settings.project.fails_on_warnings = *code == kFailOnWarning;
  return "";
}

std::string SetMaxFindings(CheckSettings& settings, const std::string& value) {
  const std::optional<std::size_t> number = ParseMaxFindings(value);
  if (!number) return kAllowedMaxFindings;
  settings.max_findings = *number;
  return "";
}

bool IsSettingKey(const std::string& key) {
  for (const SettingKey& row : SettingKeys()) {
    if (key == row.name) return true;
  }
  return false;
}

void SetOfTable(CheckSettings& settings, const char* table, const std::string& key, const std::string& value) {
  PartialSettings changed;
  if (const std::string allowed = SetSetting(changed, key, value); !allowed.empty()) RefuseValue(key, value, allowed);
  PartialSettings& target = table == nullptr ? settings.project.defaults : settings.project.tables[table].settings;
  SetSetting(target, key, value);
}

void Set(CheckSettings& settings, const char* table, const std::string& key, const std::string& value) {
  if (IsSettingKey(key)) return SetOfTable(settings, table, key, value);
  const bool is_fail_on = key == kFailOnKey;
  if (table != nullptr || (!is_fail_on && key != kMaxFindingsKey)) RefuseKey(key, table != nullptr);
  const std::string allowed = is_fail_on ? SetFailOn(settings, value) : SetMaxFindings(settings, value);
  if (!allowed.empty()) RefuseValue(key, value, allowed);
}

}  // namespace
}  // namespace korvel::capi

using korvel::capi::Call;
using korvel::capi::Require;

int kc_settings_new(kc_settings** settings, kc_error** error) {
  if (settings != nullptr) *settings = nullptr;
  return Call(error, [&] {
    Require(settings, "kc_settings_new", "settings");
    *settings = new kc_settings{};
  });
}

int kc_settings_set(kc_settings* settings, const char* table, const char* key, const char* value, kc_error** error) {
  return Call(error, [&] {
    Require(settings, "kc_settings_set", "settings");
    Require(key, "kc_settings_set", "key");
    Require(value, "kc_settings_set", "value");
    korvel::capi::Set(settings->values, table, key, value);
  });
}

void kc_settings_free(kc_settings* settings) { delete settings; }
