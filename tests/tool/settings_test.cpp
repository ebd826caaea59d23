// Settings of a table: options precede the old schema's attributes, which precede the defaults.
#include <nlohmann/json.hpp>

#include "tool_test.h"

namespace tool_test {
namespace {

class SettingsTest : public ToolTest {
 protected:
  // The settings of the first table of old.xml, with these options.
  nlohmann::json Settings(const std::vector<std::string>& options = {}) const {
    std::vector<std::string> arguments = {"check", "old.xml", "old.xml", "--format", "json"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const nlohmann::json report = nlohmann::json::parse(Korvelcheck(arguments).out);
    return report.at("tables").at(0).at("settings");
  }

  static nlohmann::json Expected(const char* type, const char* created_as, int list_num) {
    return {{"type", type}, {"created_as", created_as}, {"server_version", ""}, {"whitelist", ""}, {"list_num", list_num}};
  }

  void WriteOld(const std::string& attributes, const std::string& protocol) const {
    Write("old.xml", Library(5, {Table({.attributes = attributes})}, protocol));
  }
};

TEST_F(SettingsTest, DefaultsWithoutAttributesAndProtocol) {
  WriteOld("", "");
  EXPECT_EQ(Settings(), Expected("generic", "qmx", 0));
}

TEST_F(SettingsTest, UsesTheProtocolOfTheLibrary) {
  WriteOld("", "TLV");
  EXPECT_EQ(Settings(), Expected("generic", "tlv", 0));
  WriteOld("", "QMX");
  EXPECT_EQ(Settings(), Expected("generic", "qmx", 0));
}

TEST_F(SettingsTest, AttributesPrecedeTheLibrary) {
  WriteOld("TableType=LIST;ListNum=7;DataProtocol=QMX", "TLV");
  EXPECT_EQ(Settings(), Expected("list", "qmx", 7));
  WriteOld("TableType=GENERIC;DataProtocol=TLV", "QMX");
  EXPECT_EQ(Settings(), Expected("generic", "tlv", 0));
  WriteOld("TableType=LIST;ListNum=7", "TLV");
  EXPECT_EQ(Settings(), Expected("list", "tlv", 7));
}

TEST_F(SettingsTest, SortedListIsAList) {
  const std::string sort_field = "<entry name=\"rank\" id=\"2\" type=\"int32\" customattr2=\"sort=1\"/>";
  Write("old.xml", Library(5, {Table({.attributes = "TableType=SORTLIST;ListNum=3", .fields = sort_field})}));
  EXPECT_EQ(Settings(), Expected("list", "qmx", 3));
}

TEST_F(SettingsTest, OptionsPrecedeAttributes) {
  WriteOld("TableType=LIST;ListNum=7;DataProtocol=TLV", "TLV");
  const nlohmann::json settings = Settings(
      {"--type", "generic", "--created-as", "qmx", "--server-version", "3.29.0", "--whitelist", "a;b", "--list-num", "0"});
  const nlohmann::json expected = {
      {"type", "generic"}, {"created_as", "qmx"}, {"server_version", "3.29.0"}, {"whitelist", "a;b"}, {"list_num", 0}};
  EXPECT_EQ(settings, expected);
}

TEST_F(SettingsTest, EachOptionReplacesOnlyItsSetting) {
  WriteOld("TableType=LIST;ListNum=7;DataProtocol=TLV", "QMX");
  EXPECT_EQ(Settings({"--type", "generic"}), Expected("generic", "tlv", 7));
  EXPECT_EQ(Settings({"--created-as", "qmx"}), Expected("list", "qmx", 7));
  EXPECT_EQ(Settings({"--list-num", "9"}), Expected("list", "tlv", 9));
}

// The checker refuses such attributes itself.
TEST_F(SettingsTest, MalformedAttributesGiveDefaults) {
  WriteOld("TableType=LIST;ListNum=many;DataProtocol=TLV", "QMX");
  EXPECT_EQ(Settings(), Expected("generic", "qmx", 0));
}

// The settings reach the checker, and not only the report.
TEST_F(SettingsTest, SettingsReachTheChecker) {
  WriteOld("", "QMX");
  Write("new.xml", Library(5, {Table({.attributes = "TableType=LIST;ListNum=7"})}));
  const std::vector<std::string> check = {"check", "old.xml", "new.xml"};
  const auto exit_code = [&](std::vector<std::string> options) {
    options.insert(options.begin(), check.begin(), check.end());
    return Korvelcheck(options).exit_code;
  };
  EXPECT_EQ(exit_code({}), 1);
  EXPECT_EQ(exit_code({"--type", "list"}), 1);
  EXPECT_EQ(exit_code({"--type", "list", "--list-num", "7"}), 0);
  EXPECT_EQ(exit_code({"--type", "list", "--list-num", "7", "--created-as", "tlv"}), 1);
}

}  // namespace
}  // namespace tool_test
