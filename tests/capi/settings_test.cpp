// Settings by key and text, and what they change.
#include <gtest/gtest.h>

#include "capi/example.h"

namespace capi_test {
namespace {

using korvelcheck::Settings;

// What an invalid setting is answered with.
std::string ErrorOf(const char* table, const char* key, const char* value) {
  const Settings settings;
  kc_error* error = nullptr;
  EXPECT_EQ(kc_settings_set(const_cast<kc_settings*>(settings.get()), table, key, value, &error), KC_ERROR_ARGUMENT);
  const std::string message = kc_error_message(error);
  kc_error_free(error);
  return message;
}

TEST(CApiSettings, RefusesUnknownKeysAndValues) {
  EXPECT_EQ(ErrorOf(nullptr, "typ", "list"),
            "kc_settings_set: unknown key 'typ' (did you mean 'type'?); allowed: type, created-as, server-version, whitelist, "
            "list-num, fail-on, max-findings");
  EXPECT_EQ(ErrorOf("orders", "fail-on", "warning"),
            "kc_settings_set: unknown key 'fail-on' of a table; allowed: type, created-as, server-version, whitelist, list-num");
  EXPECT_EQ(ErrorOf(nullptr, "type", "lists"), "kc_settings_set: type is 'lists'; allowed: generic|list");
  EXPECT_EQ(ErrorOf(nullptr, "created-as", ""), "kc_settings_set: created-as is ''; allowed: qmx|tlv");
  EXPECT_EQ(ErrorOf(nullptr, "server-version", "3.x"),
            "kc_settings_set: server-version is '3.x'; allowed: numbers joined by dots, like 3.29.0");
  EXPECT_EQ(ErrorOf("orders", "list-num", "-1"), "kc_settings_set: list-num is '-1'; allowed: 0 to 2147483647");
  EXPECT_EQ(ErrorOf(nullptr, "fail-on", "note"), "kc_settings_set: fail-on is 'note'; allowed: refused|warning");
  EXPECT_EQ(ErrorOf(nullptr, "max-findings", "0"), "kc_settings_set: max-findings is '0'; allowed: 1 to 2147483647");
}

korvelcheck::Report CheckLongerReplays(const Settings& settings) {
  const std::string game = KORVEL_SOURCE_DIR "/examples/game/";
  return korvelcheck::Check(korvelcheck::Schema::FromFile(game + "v12.xml"),
                            korvelcheck::Schema::FromFile(game + "v13-longer-replays.xml"), {}, settings.get());
}

TEST(CApiSettings, ServerVersionChecksLengths) {
  EXPECT_TRUE(CheckLongerReplays(Settings()).IsAllowed());
  EXPECT_FALSE(CheckLongerReplays(Settings().Set("server-version", "3.28.0")).IsAllowed());
}

TEST(CApiSettings, TableTakesPrecedence) {
  Settings settings;
  settings.Set("server-version", "3.28.0").SetFor("replays", "server-version", "3.29.0");
  EXPECT_TRUE(CheckLongerReplays(settings).IsAllowed());
  settings.SetFor("replays", "server-version", "3.28.0");
  EXPECT_FALSE(CheckLongerReplays(settings).IsAllowed());
  settings.Set("server-version", "3.29.0");
  EXPECT_FALSE(CheckLongerReplays(settings).IsAllowed());
}

// What a check with settings for a table answers.
template <class Check>
std::string ErrorWithTable(const std::string& table, const Check& check) {
  Settings settings;
  settings.SetFor("orders", "type", "generic").SetFor(table, "created-as", "tlv");
  try {
    check(settings.get());
  } catch (const korvelcheck::Error& error) {
    EXPECT_EQ(error.result(), KC_ERROR_INPUT);
    return error.what();
  }
  return "";
}

// The table would be checked without the settings that are meant for it.
TEST(CApiSettings, TablesMustExist) {
  const auto check = [](const kc_settings* settings) {
    korvelcheck::Check(Example("v6.xml"), Example("v7.xml"), {"customers"}, settings);
  };
  const auto lint = [](const kc_settings* settings) { korvelcheck::Lint(Example("v6.xml"), settings); };
  const auto check_alone = [](const kc_settings* settings) {
    const korvelcheck::Schema schema = Example("v6.xml");
    korvelcheck::Check(schema, schema, {}, settings);
  };
  EXPECT_EQ(ErrorWithTable("paymets", check),
            "korvelcheck: table 'paymets' of the settings is neither in v6.xml nor in v7.xml (did you mean 'payments'?)");
  for (const std::string& error : {ErrorWithTable("paymets", lint), ErrorWithTable("paymets", check_alone)}) {
    EXPECT_EQ(error, "korvelcheck: table 'paymets' of the settings is not in v6.xml (did you mean 'payments'?)");
  }
}

// The old schema has no shipments.
TEST(CApiSettings, TableMayBeNew) {
  const auto check = [](const kc_settings* settings) { korvelcheck::Check(Example("v6.xml"), Example("v7.xml"), {}, settings); };
  EXPECT_EQ(ErrorWithTable("shipments", check), "");
}

TEST(CApiSettings, InvalidValueChangesNothing) {
  Settings settings;
  settings.Set("server-version", "3.28.0");
  EXPECT_THROW(settings.Set("server-version", "x"), korvelcheck::Error);
  EXPECT_FALSE(CheckLongerReplays(settings).IsAllowed());
}

TEST(CApiSettings, MaxFindingsLimitsList) {
  Settings settings;
  settings.Set("max-findings", "1");
  const auto report = korvelcheck::Check(Example("v6.xml"), Example("v7-wider-key.xml"), {}, settings.get());
  EXPECT_EQ(report.Info().finding_count, 1U);
  EXPECT_EQ(report.Info().left_out_count, 1U);
  EXPECT_FALSE(report.IsAllowed());
}

TEST(CApiSettings, FailOnWarning) {
  const std::string folder = KORVEL_CASES_DIR "/warnings/key-members-allowed/";
  const auto check = [&](const Settings& settings) {
    return korvelcheck::Check(korvelcheck::Schema::FromFile(folder + "old.xml"),
                              korvelcheck::Schema::FromFile(folder + "new.xml"), {}, settings.get());
  };
  Settings strict;
  strict.Set("fail-on", "warning");
  const korvelcheck::Report report = check(Settings());
  ASSERT_TRUE(report.IsAllowed());
  ASSERT_EQ(report.Findings().at(0).level, KC_LEVEL_WARNING);
  EXPECT_TRUE(report.Passes());
  EXPECT_TRUE(check(strict).IsAllowed());
  EXPECT_FALSE(check(strict).Passes());
}

// A report does not change with the settings that it was made with.
TEST(CApiSettings, AreCopied) {
  Settings settings;
  settings.Set("max-findings", "1");
  const auto report = korvelcheck::Check(Example("v6.xml"), Example("v7-wider-key.xml"), {}, settings.get());
  settings.Set("max-findings", "1000");
  EXPECT_EQ(report.Info().finding_count, 1U);
}

}  // namespace
}  // namespace capi_test
