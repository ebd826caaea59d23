// Formats one log record as a line of text or as a JSON object. Both are one line of valid UTF-8, whatever bytes the record
// contains.
#pragma once

#include <string>
#include <string_view>

namespace vesk {

struct Record {
  int priority = 0;
  std::string_view file;
  int line = 0;
  std::string_view function;
  std::string_view message;
};

// "ERROR" for priorities up to 300, "WARN" up to 400, "INFO" above.
std::string_view PriorityName(int priority);

// `ERROR src/common/modify_table.cpp:42 KorvelModifyTable: message`. A backslash is doubled; characters that are never printed,
// and bytes that are not UTF-8, are escaped as by korvel::AppendShown (\n, \x1b, \u202e).
std::string TextLine(const Record& record);

// `"priority":300,"level":"ERROR","file":"...","line":42,"function":"...","message":"..."`: the members of an object, without its
// braces. Characters that are never printed are escaped (\u202e). Each byte that is not part of a UTF-8 character becomes U+FFFD.
std::string JsonMembers(const Record& record);

}  // namespace vesk
