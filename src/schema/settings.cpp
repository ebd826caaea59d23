// Derives a table's settings from its attributes. If CheckTable refuses the attributes, the defaults apply: the checker refuses
// them itself. Tested by tests/tool/settings_test.cpp.
#include "schema/settings.h"

#include "common/check_table.h"
#include "common/meta_view.h"
#include "schema/setting_values.h"

namespace korvel {

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

Settings ResolveSettings(const PartialSettings& given, const Source& old_source, const std::string& table) {
  const TableAttributes declared = TableAttributesOf(old_source, table);
  const bool is_tlv = declared.protocol.empty() ? IsTlv(old_source.Library()) : declared.protocol == "TLV";
  // The checker treats a sorted list as a list.
  const char* const type = declared.type == TABLE_TYPE_GENERIC ? "generic" : "list";
  return {.type = given.type.value_or(*CodeOf(kTableTypes, type)),
          .created_as = given.created_as.value_or(*CodeOf(kProtocols, is_tlv ? "tlv" : "qmx")),
          .server_version = given.server_version.value_or(""),
          .whitelist = given.whitelist.value_or(""),
          .list_num = given.list_num.value_or(declared.list_num)};
}

}  // namespace korvel
