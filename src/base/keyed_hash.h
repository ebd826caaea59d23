// Hashes of names that come from files. std::hash must not be used for them: its seed is fixed, so a file can have names that all
// collide. tests/tool/fixed_hash.sh checks that no library uses it for text.
#pragma once

#include <cstdint>
#include <string_view>

namespace korvel {

// Depends on all bytes and on the seed.
std::uint64_t HashWithSeed(std::string_view text, std::uint64_t seed);

// With a seed that is the same during a run and differs from run to run. No result of the program may depend on it.
std::uint64_t KeyedHash(std::string_view text);

}  // namespace korvel
