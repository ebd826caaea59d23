// Whether a record, read under two schemas, holds the same values.
#pragma once

#include <string>

#include "codec/record.h"

namespace codec {

enum class Match { kName, kId };  // how fields are matched: by name in packed records, by id in TLV

// The first difference: "lines[2].price is another value"; empty if there is none.
//
// Equal are: integers of the same number and any width; strings and bytes with the same bytes; and elements with equal values,
// where a fixed new count may add default ones. A field that only the new schema has must have default values. A field that only
// the old schema has counts as lost in a packed record and is skipped in TLV.
std::string Difference(const Value& before, const Value& after, Match match);

}  // namespace codec
