// Tested by tests/tool/usage_test.cpp and tests/capi/settings_test.cpp.
#include "schema/setting_keys.h"

#include "schema/setting_values.h"

namespace korvel {
namespace {

std::string SetCode(std::span<const NamedCode> codes, const std::string& value, std::optional<int>& setting) {
  const std::optional<int> code = CodeOf(codes, value);
  if (!code) return NamesOf(codes);
  setting = code;
  return "";
}

std::string SetType(PartialSettings& settings, const std::string& value) { return SetCode(kTableTypes, value, settings.type); }

std::string SetCreatedAs(PartialSettings& settings, const std::string& value) {
  return SetCode(kProtocols, value, settings.created_as);
}

std::string SetServerVersion(PartialSettings& settings, const std::string& value) {
  if (!IsVersion(value)) return kAllowedVersion;
  settings.server_version = value;
  return "";
}

std::string SetWhitelist(PartialSettings& settings, const std::string& value) {
  settings.whitelist = value;
  return "";
}

std::string SetListNum(PartialSettings& settings, const std::string& value) {
  const std::optional<int> number = ParseCount(value);
  if (!number) return kAllowedListNum;
  settings.list_num = number;
  return "";
}

}  // namespace

std::span<const SettingKey> SettingKeys() {
  static constexpr SettingKey kKeys[] = {
      {"type", SetType},           {"created-as", SetCreatedAs}, {"server-version", SetServerVersion},
      {"whitelist", SetWhitelist}, {"list-num", SetListNum},
  };
  return kKeys;
}

std::string SetSetting(PartialSettings& settings, std::string_view key, const std::string& value) {
  const SettingKey* row = SettingKeys().data();
  while (key != row->name) ++row;
  return row->set(settings, value);
}

}  // namespace korvel
