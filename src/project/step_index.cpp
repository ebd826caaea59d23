// Tested by tests/tool/history_test.cpp.
#include "project/step_index.h"

#include <algorithm>
#include <string>
#include <utility>

#include "base/keyed_hash.h"
#include "report/result/summary.h"

namespace korvel {
namespace {

// What a key is about.
constexpr char kRefusedKey = 'r';  // a table
constexpr char kOpenKey = 'o';     // likewise, not waived
constexpr char kRemovedKey = 'x';  // likewise
constexpr char kFindingKey = 'f';  // a table and a fingerprint
constexpr char kPathKey = 'p';     // a table, a rule and a path

std::uint64_t KeyOf(char kind, const std::string& table, const std::string& first = "", const std::string& second = "") {
  return KeyedHash(kind + table + '\0' + first + '\0' + second);
}

}  // namespace

StepIndex::Keys StepIndex::KeysOf(const std::vector<TableResult>& tables) {
  Keys keys;
  for (const TableResult& table : tables) {
    if (table.status != Status::kRefused) continue;
    keys.push_back(KeyOf(kRefusedKey, table.table));
    if (!IsWaived(table)) keys.push_back(KeyOf(kOpenKey, table.table));
    if (table.removed) keys.push_back(KeyOf(kRemovedKey, table.table));
    if (!table.changes) continue;
    for (const Finding& finding : table.changes->findings) {
      keys.push_back(KeyOf(kFindingKey, table.table, finding.fingerprint));
      keys.push_back(KeyOf(kPathKey, table.table, finding.verdict.rule, finding.path));
    }
  }
  std::ranges::sort(keys);
  return keys;
}

bool StepIndex::Step::Has(std::uint64_t key) const { return std::ranges::binary_search(keys, key); }

void StepIndex::Add(std::size_t from, Keys keys) { steps_.push_back({from, std::move(keys)}); }

bool StepIndex::Refuses(std::size_t from, const std::string& table, bool is_waived) const {
  const std::uint64_t key = KeyOf(is_waived ? kRefusedKey : kOpenKey, table);
  return std::ranges::any_of(steps_, [&](const Step& step) { return step.from >= from && step.Has(key); });
}

bool StepIndex::FindLast(std::size_t from, std::uint64_t key, NewestRefusal& refusal) const {
  for (std::size_t i = steps_.size(); i-- > 0 && steps_[i].from >= from;) {
    if (!steps_[i].Has(key)) continue;
    refusal.step = i;
    refusal.has_cause = true;
    return true;
  }
  return false;
}

void StepIndex::FindStep(std::size_t from, NewestRefusal& refusal) const {
  const std::string& table = refusal.result.table;
  const RefusalCause& cause = refusal.cause;
  // Whatever else the step that removed the table was refused for.
  if (refusal.result.removed && FindLast(from, KeyOf(kRemovedKey, table), refusal)) return;
  if (!cause.fingerprint.empty() && FindLast(from, KeyOf(kFindingKey, table, cause.fingerprint), refusal)) return;
  if (FindLast(from, KeyOf(kPathKey, table, cause.rule, cause.path), refusal)) return;
  const std::uint64_t key = KeyOf(kRefusedKey, table);
  const auto first = std::ranges::find_if(steps_, [&](const Step& step) { return step.from >= from && step.Has(key); });
  if (first != steps_.end()) refusal.step = static_cast<std::size_t>(first - steps_.begin());
}

}  // namespace korvel
