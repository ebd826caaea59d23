// The arguments of the checker about a table besides its schemas.
#pragma once

#include <optional>
#include <string>

#include "schema/source.h"

namespace korvel {

struct Settings {
  int type = 0;                     // code of kTableTypes
  int created_as = 0;               // code of kProtocols
  std::string server_version = {};  // dotted digits; "" = field lengths are not checked
  std::string whitelist = {};       // field names joined by ';'
  int list_num = 0;                 // slots
};

// Settings of which some may be absent: those that a caller or a project file gives, or those that an operation takes.
struct PartialSettings {
  std::optional<int> type = {};
  std::optional<int> created_as = {};
  std::optional<std::string> server_version = {};
  std::optional<std::string> whitelist = {};
  std::optional<int> list_num = {};
};

// Values from the attributes of a table; the value in brackets if an attribute is absent or CheckTable refuses the attributes.
struct TableAttributes {
  int type;              // TABLE_TYPE_... (generic)
  int list_num;          // slots (0)
  std::string protocol;  // "QMX" or "TLV" ("")
};

TableAttributes TableAttributesOf(const Source& source, const std::string& table);

// The settings of a table: as given, else from the table's attributes and the protocol of `old_source`, else the default: a
// generic table in the record format, no server version, an empty whitelist, 0 slots.
Settings ResolveSettings(const PartialSettings& given, const Source& old_source, const std::string& table);

}  // namespace korvel
