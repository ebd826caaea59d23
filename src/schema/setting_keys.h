// The settings of a table that are given as text, by the keys of the project file.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "schema/settings.h"

namespace korvel {

struct SettingKey {
  const char* name;
  // Sets the setting. Returns "", or what is allowed if `value` is not; then nothing changed.
  std::string (*set)(PartialSettings& settings, const std::string& value);
};

// In the order of the documentation.
std::span<const SettingKey> SettingKeys();

// Sets the setting of a key. Returns as SettingKey::set. REQUIRES: the key is one of SettingKeys().
std::string SetSetting(PartialSettings& settings, std::string_view key, const std::string& value);

}  // namespace korvel
