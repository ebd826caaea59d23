// The arguments of the checker about a table besides its schemas.
#pragma once

#include <optional>
#include <string>

#include "schema/source.h"

namespace korvel {

// Absent members were not given on the command line, or the command does not use them.
struct Settings {
  std::optional<int> type;                    // code of kTableTypes
  std::optional<int> created_as;              // code of kProtocols
  std::optional<std::string> server_version;  // dotted digits; "" = field lengths are not checked
  std::optional<std::string> whitelist;       // field names joined by ';'
  std::optional<int> list_num;                // slots
};

// Values from the attributes of a table; the value in brackets if an attribute is absent or CheckTable refuses the attributes.
struct TableAttributes {
  int type;              // TABLE_TYPE_... (generic)
  int list_num;          // slots (0)
  std::string protocol;  // "QMX" or "TLV" ("")
};

TableAttributes TableAttributesOf(const Source& source, const std::string& table);

// All settings of a table, none absent: as given, else from the table's attributes and the protocol of `old_source`, else the
// default: a generic table in the record format, no server version, an empty whitelist, 0 slots.
Settings ResolveSettings(const Settings& given, const Source& old_source, const std::string& table);

}  // namespace korvel
