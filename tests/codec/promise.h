// The meaning of an allowed change: records written under the old schema read back under the new one, with the same values and
// the same keys.
#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "support/schema.h"

namespace codec {

// A change of table "t" and the settings of the check.
struct Change {
  support::Library old_lib;
  support::Library new_lib;
  int created_in = 1;  // 1 = packed records, 2 = TLV
  int table_type = 0;  // 0 = generic, 1 = list
  int list_num = 0;
};

enum class Form { kPacked, kTlv };

// A record that does not read back.
struct Broken {
  Form form;
  bool only_keys;     // all values are equal, but a key has other bytes
  std::string where;  // "lines[2].price is another value"
};

// The id of the refusal; empty: allowed.
std::string Refused(const Change& change);

// The forms that records of the table may have: packed if the table was created so, TLV if both libraries are TLV.
std::vector<Form> FormsOf(const Change& change);

// Writes random records under the old schema and reads each one under the new schema, in every form. Returns the first record
// that does not read back; adds the number of those that do to `read_back`.
std::optional<Broken> ReadBack(const Change& change, int records, std::mt19937_64& random, std::uint64_t& read_back);

// Both libraries as readable text, one line for each field.
std::string Describe(const Change& change);

}  // namespace codec
