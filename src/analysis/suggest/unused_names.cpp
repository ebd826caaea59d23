// Tested by tests/report/suggestions_test.cpp.
#include "analysis/suggest/unused_names.h"

#include <algorithm>
#include <cstddef>
#include <limits>

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

std::string UnusedNames::UniqueName(const std::string& meta, const std::string& wanted) {
  Used& used = UsedIn(meta);
  std::string name = wanted;
  for (std::int64_t number = 2; !used.names.insert(name).second; ++number) {
    const std::string suffix = "_" + std::to_string(number);
    name = wanted.substr(0, kMaxNameBytes - suffix.size()) + suffix;
  }
  return name;
}

std::int32_t UnusedNames::NextId(const std::string& meta) {
  Used& used = UsedIn(meta);
  if (used.largest_id < std::numeric_limits<std::int32_t>::max()) ++used.largest_id;
  return used.largest_id;
}

UnusedNames::Used& UnusedNames::UsedIn(const std::string& meta) {
  const auto [found, is_new] = used_.try_emplace(meta);
  Used& used = found->second;
  if (!is_new) return used;
  for (const auto* metas : {&old_metas_, &new_metas_}) {
    const auto side = metas->find(meta);
    if (side == metas->end()) continue;
    for (const EntryModel& entry : side->second->entries) {
      used.names.insert(entry.name);
      used.largest_id = std::max(used.largest_id, entry.id);
      if (metas != &old_metas_) continue;
      used.old_names.insert(entry.name);
      used.old_ids.insert(entry.id);
    }
  }
  if (reserved_ == nullptr || !reserved_->contains(meta)) return used;
  const auto& [names, ids] = reserved_->at(meta);
  used.names.insert(names.begin(), names.end());
  used.old_names.insert(names.begin(), names.end());
  used.old_ids.insert(ids.begin(), ids.end());
  if (!ids.empty()) used.largest_id = std::max(used.largest_id, *ids.rbegin());
  return used;
}

}  // namespace korvel
