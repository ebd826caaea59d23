// Derives a table's settings from its attributes. If CheckTable refuses the attributes, the defaults apply: the checker refuses
// them itself. Tested by tests/tool/settings_test.cpp.
#include "schema/settings.h"

#include "common/check_table.h"
#include "common/meta_view.h"
#include "schema/setting_values.h"

namespace korvel {
namespace {

Settings FromSchema(const Source& source, const std::string& table) {
  const TableAttributes declared = TableAttributesOf(source, table);
  const bool tlv = declared.protocol.empty() ? IsTlv(source.Library()) : declared.protocol == "TLV";
  Settings settings;
  // The checker treats a sorted list as a list.
  settings.type = *CodeOf(kTableTypes, declared.type == TABLE_TYPE_GENERIC ? "generic" : "list");
  settings.created_as = *CodeOf(kProtocols, tlv ? "tlv" : "qmx");
  settings.server_version = "";
  settings.whitelist = "";
  settings.list_num = declared.list_num;
  return settings;
}

}  // namespace

TableAttributes TableAttributesOf(const Source& source, const std::string& table) {
  TableAttributes declared{TABLE_TYPE_GENERIC, 0, ""};
  int sort_field_num = 0;
  int sort_rule = 0;
  char protocol[8] = "";
  // Every result except 0 leaves the values above unchanged.
  CheckTable().CheckTableTypeByCustomAttr(source.Library(), table.c_str(), declared.type, declared.list_num, sort_field_num,
                                          sort_rule, protocol, false, nullptr);
  declared.protocol = protocol;
  return declared;
}

Settings ResolveSettings(const Settings& given, const Source& old_source, const std::string& table) {
  Settings settings = FromSchema(old_source, table);
  if (given.type) settings.type = given.type;
  if (given.created_as) settings.created_as = given.created_as;
  if (given.server_version) settings.server_version = given.server_version;
  if (given.whitelist) settings.whitelist = given.whitelist;
  if (given.list_num) settings.list_num = given.list_num;
  return settings;
}

}  // namespace korvel
