// A row of the catalog of refusals: what ModifyTable::GetRefusal returns. Apart from the catalog, so that programs in C++17 can
// read it.
#pragma once

namespace korvel {

struct RefusalRow {
  const char* id;       // "primary-key.count"
  int code;             // what the refusing operation returns; 0 = the code of the rule it reports
  const char* text;     // a format
  const char* summary;  // one line: what is refused
};

}  // namespace korvel
