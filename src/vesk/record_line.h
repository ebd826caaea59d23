// How one log record reads as a line of text or as a JSON object. Both are one line of valid UTF-8, whatever bytes a record
// holds.
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

// "ERROR" for 300 and everything graver, "WARN" up to 400, "INFO" for the rest.
std::string_view PriorityName(int priority);

// `ERROR src/common/modify_table.cpp:42 KorvelModifyTable: message`, with a backslash doubled, new line, carriage return and
// tabulator as \n, \r, \t, and each byte of other control characters, of line separators and of invalid UTF-8 as \xHH.
std::string TextLine(const Record& record);

// `"priority":300,"level":"ERROR","file":"...","line":42,"function":"...","message":"..."`: the members of an object, without its
// braces. Each byte that is no part of a UTF-8 character becomes U+FFFD.
std::string JsonMembers(const Record& record);

}  // namespace vesk
