// Tested by tests/tool/ignored_attribute_test.cpp, tests/cases/list and tests/cases/sortlist.
#include "analysis/warnings/ignored_attributes.h"

#include <algorithm>
#include <cstring>

#include "analysis/warnings/entry_finder.h"
#include "common/check_table.h"
#include "common/meta_view.h"
#include "common/result_codes.h"

namespace korvel {
namespace {

constexpr std::string_view kSortMark = "sort=";

// The attributes of a table for which CheckTable looks for a TableType in vain; "" if it finds one, or refuses them.
std::string_view IgnoredText(LPQMXMETA table) {
  const char* const attributes = table == nullptr ? nullptr : qmx_get_meta_customattr(table);
  if (attributes == nullptr || *attributes == '\0') return {};
  if (std::strstr(attributes, "TableType=") != nullptr) return {};  // nearly all tables
  int type{}, list_num{}, sort_field_num{}, sort_rule{};
  char protocol[8] = "";
  const int result = CheckTable().CheckTableTypeByCustomAttr(OwnerOf(table), qmx_get_meta_name(table), type, list_num,
                                                             sort_field_num, sort_rule, protocol, false, nullptr);
  return result == ERROR_OLD_TABLE_DEFINE ? attributes : std::string_view();
}

// CheckTable has accepted the text, so it has few keys, each once.
std::vector<std::string_view> KeysIn(std::string_view text) {
  std::vector<std::string_view> keys;
  while (!text.empty()) {
    const std::string_view pair = text.substr(0, text.find(';'));
    keys.push_back(pair.substr(0, pair.find('=')));
    text.remove_prefix(std::min(pair.size() + 1, text.size()));
  }
  return keys;
}

// Also if the checker refuses the list, because it has no other sort field.
bool IsMeantAsSortedList(LPQMXMETA table) {
  const char* const attributes = qmx_get_meta_customattr(table);
  return attributes != nullptr && std::strstr(attributes, "TableType=SORTLIST") != nullptr;
}

// Whether the checker ignores the attribute of an entry although it looks like a mark of a sort field.
bool IsMisspelledMark(LPQMXMETA table, LPQMXMETAENTRY entry) {
  const char* const text = qmx_get_entry_customattr2(OwnerOf(table), entry);
  return text != nullptr && !std::string_view(text).starts_with(kSortMark) && !SortMarkLike(text).empty();
}

void AddMarks(LPQMXMETA old_meta, LPQMXMETA new_meta, std::vector<AdviceMatch>& matches) {
  EntryFinder in_old(RecordForm::kPacked, old_meta);
  for (const auto [index, entry] : Entries(new_meta)) {
    if (!IsMisspelledMark(new_meta, entry) || EntryName(entry) == nullptr) continue;
    const LPQMXMETAENTRY old_entry = old_meta == nullptr ? nullptr : in_old.Find(entry, index);
    const bool is_kept = old_meta != new_meta && old_entry != nullptr && IsMisspelledMark(old_meta, old_entry);
    if (is_kept) continue;
    const EditKind kind = old_entry == nullptr ? EditKind::kEntryAdded : EditKind::kEntryCustomAttr2;
    matches.push_back({&kAttributeIgnoredAdvice, kind, old_meta, new_meta, old_entry, entry});
  }
}

}  // namespace

std::vector<AdviceMatch> FindIgnoredAttributes(LPQMXMETA old_meta, LPQMXMETA new_meta) {
  std::vector<AdviceMatch> matches;
  const std::vector<std::string_view> old_keys = KeysIn(old_meta == new_meta ? std::string_view() : IgnoredText(old_meta));
  for (const std::string_view key : KeysIn(IgnoredText(new_meta))) {
    if (std::ranges::find(old_keys, key) != old_keys.end()) continue;
    matches.push_back(
        {&kAttributeIgnoredAdvice, EditKind::kTableAttribute, old_meta, new_meta, nullptr, nullptr, nullptr, nullptr, key});
  }
  if (IsMeantAsSortedList(new_meta)) AddMarks(old_meta, new_meta, matches);
  return matches;
}

std::string SortMarkLike(std::string_view text) {
  std::string like;
  for (const char c : text) {
    if (c != ' ') like += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    if (like.size() == kSortMark.size() && like != kSortMark) return "";
  }
  return like.size() > kSortMark.size() ? like : "";
}

}  // namespace korvel
