// Compares short names as numbers, to distinguish the few words of schema files fast.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qmx {

// The first 8 bytes of a name as a number. The name contains no zero bytes.
constexpr std::uint64_t ShortName(const char* name, std::size_t size = sizeof(std::uint64_t)) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < size && i < sizeof(number) && name[i] != '\0'; ++i) {
    number = number << 8 | static_cast<unsigned char>(name[i]);
  }
  return number;
}

constexpr std::uint64_t ShortName(std::string_view name) { return ShortName(name.data(), name.size()); }

// Whether only one name has that number: names shorter than 8 bytes.
constexpr bool IsWholeName(std::uint64_t number) { return number >> 56 == 0; }

}  // namespace qmx
