// What the checker must be told about a table beside its schemas.
#pragma once

#include <optional>
#include <string>

#include "schema/source.h"

namespace korvel {

// Absent members are not given (on the command line) or not used (by a command).
struct Settings {
  std::optional<int> type;                    // code of kTableTypes
  std::optional<int> created_as;              // code of kProtocols
  std::optional<std::string> server_version;  // dotted digits; "" = field lengths are not checked
  std::optional<std::string> whitelist;       // field names joined by ';'
  std::optional<int> list_num;                // slots
};

// What the attributes of a table say. Those that CheckTable refuses, and absent ones, say what is in brackets.
struct TableAttributes {
  int type;              // TABLE_TYPE_... (generic)
  int list_num;          // slots (0)
  std::string protocol;  // "QMX" or "TLV" ("")
};

TableAttributes TableAttributesOf(const Source& source, const std::string& table);

// Every setting of a table: as given, else from the table's attributes and protocol in `old_source`, else the default: a generic
// table in the record format, no server version, an empty whitelist, 0 slots. All members of the result are set.
Settings ResolveSettings(const Settings& given, const Source& old_source, const std::string& table);

}  // namespace korvel
