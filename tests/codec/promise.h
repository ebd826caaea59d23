// What it means that the checker allows a change: records written under the old schema read back under the new one, with the same
// values and the same keys.
#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "support/schema.h"

namespace codec {

// A change of table "t" and the settings that the checker is asked with.
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
  bool only_keys;     // all values do, but a key has other bytes
  std::string where;  // "lines[2].price is another value"
};

// The id of the refusal; empty = allowed.
std::string Refused(const Change& change);

// The forms that records of the table may have: packed if it was created so, TLV if both libraries are.
std::vector<Form> FormsOf(const Change& change);

// Writes random records under the old schema and reads each back under the new one, in every form, up to the first that is
// broken; counts those that read back.
std::optional<Broken> ReadBack(const Change& change, int records, std::mt19937_64& random, std::uint64_t& read_back);

// Both libraries, a line a field, for people.
std::string Describe(const Change& change);

}  // namespace codec
