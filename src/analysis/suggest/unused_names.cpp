// Tested by tests/report/suggestions_test.cpp.
#include "analysis/suggest/unused_names.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

namespace korvel {
namespace {

constexpr std::size_t kMaxNameBytes = 31;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsNameCharacter(char c) { return IsDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; }

}  // namespace

std::string IdentifierLike(const std::string& name) {
  std::string like = name.empty() ? "field" : name;
  for (char& c : like) c = IsNameCharacter(c) ? c : '_';
  if (IsDigit(like.front())) like.insert(0, "_");
  return like.substr(0, kMaxNameBytes);
}

bool UnusedNames::IsOldName(const std::string& meta, const std::string& name) { return UsedIn(meta).IsOldName(name); }

bool UnusedNames::IsOldId(const std::string& meta, std::int32_t id) {
  const Used& used = UsedIn(meta);
  return std::ranges::binary_search(used.old_ids, id) || used.reserved.ids.contains(id);
}

std::string UnusedNames::UniqueName(const std::string& meta, const std::string& wanted) {
  Used& used = UsedIn(meta);
  std::string name = wanted;
  for (std::int64_t number = 2; used.IsUsedName(name); ++number) {
    const std::string suffix = "_" + std::to_string(number);
    name = wanted.substr(0, kMaxNameBytes - suffix.size()) + suffix;
  }
  used.proposed.insert(name);
  return name;
}

std::int32_t UnusedNames::NextId(const std::string& meta) {
  Used& used = UsedIn(meta);
  if (used.largest_id < std::numeric_limits<std::int32_t>::max()) ++used.largest_id;
  return used.largest_id;
}

UnusedNames::Used& UnusedNames::UsedIn(const std::string& meta) {
  static const std::vector<EntryModel> kNoEntries;
  static const UsedFields kNoFields;
  if (const auto found = used_.find(meta); found != used_.end()) return found->second;
  const auto entries_in = [&](const MetasByName& metas) -> const std::vector<EntryModel>& {
    const auto side = metas.find(meta);
    return side == metas.end() ? kNoEntries : side->second->entries;
  };
  const std::vector<EntryModel>& old_entries = entries_in(old_metas_);
  const std::vector<EntryModel>& new_entries = entries_in(new_metas_);
  const bool has_reserved = reserved_ != nullptr && reserved_->contains(meta);
  Used used{NameFinder(old_entries), NameFinder(new_entries), has_reserved ? reserved_->at(meta) : kNoFields};
  used.old_ids.reserve(old_entries.size());
  for (const EntryModel& entry : old_entries) used.old_ids.push_back(entry.id);
  std::ranges::sort(used.old_ids);
  if (!used.old_ids.empty()) used.largest_id = std::max(used.largest_id, used.old_ids.back());
  for (const EntryModel& entry : new_entries) used.largest_id = std::max(used.largest_id, entry.id);
  if (!used.reserved.ids.empty()) used.largest_id = std::max(used.largest_id, *used.reserved.ids.rbegin());
  return used_.emplace(meta, std::move(used)).first->second;
}

}  // namespace korvel
