// Whether a record, read under two schemas, holds the same values.
#pragma once

#include <string>

#include "codec/record.h"

namespace codec {

enum class Match { kName, kId };  // how a field of the one schema is found in the other: packed records, TLV

// Where `after` holds other values than `before`: "lines[2].price"; empty if nowhere.
//
// Same is: an integer of the same number, whatever its width; a string and bytes of the same bytes; elements of the same values,
// and behind them, where the new count is fixed, default ones. A field that only the new schema has holds default values. A field
// that only the old schema has is lost in a packed record and passed over in TLV.
std::string Difference(const Value& before, const Value& after, Match match);

}  // namespace codec
