// Field names of a table: identifiers of at most 31 bytes. Names inside sub-structures are not checked.
// Tested by tests/rules/field_name_test.cpp.
#include <array>
#include <cstddef>
#include <cstring>

#include "common/meta_view.h"
#include "common/run.h"

namespace korvel {
namespace {

constexpr std::ptrdiff_t kMaxNameLength = 31;

constexpr TextFormat<> kPreset("entry name is too long:");
constexpr TextFormat<CString, std::size_t> kNameTrace("length of entry name %s is %lu");

// Not those of <cctype>, whose answers depend on the locale.
constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

// Whether a byte is allowed in a name, by its value. The zero behind a name is not.
constexpr auto kLegal = [] {
  std::array<bool, 256> legal{};
  for (int byte = 0; byte < 128; ++byte) {
    const char c = static_cast<char>(byte);
    legal[static_cast<unsigned char>(c)] = IsDigit(c) || IsLetter(c) || c == '_';
  }
  return legal;
}();
bool IsLegal(char c) { return kLegal[static_cast<unsigned char>(c)]; }

}  // namespace

int Run::CheckFieldNameValidate(LPQMXMETA meta) {
  if (meta == nullptr) return Refuse(HERE, kNameMetaNull);
  // Stays in the buffer when every name passes; part of the interface.
  WriteText(kPreset);
  for (const auto [index, entry] : Entries(meta)) {
    const char* given = qmx_get_entry_name(entry);
    const char* name = given == nullptr ? "" : given;
    // Not LogOnly: most logs are closed, and then the length is not needed.
    if (MayLog(VESK_PRIORITY_INFO)) WriteRecord(HERE, VESK_PRIORITY_INFO, kNameTrace, name, std::strlen(name));
    if (*name == '\0') return Refuse(HERE, kNameEmpty);
    if (IsDigit(*name)) return Refuse(HERE, kNameDigit, name);
    const char* end = name;
    while (IsLegal(*end)) ++end;
    if (*end != '\0') return Refuse(HERE, kNameCharacter, name);
    if (end - name > kMaxNameLength) return Refuse(HERE, kNameLength, name);
  }
  return CHECK_TABLE_SUCCESS;
}

}  // namespace korvel
