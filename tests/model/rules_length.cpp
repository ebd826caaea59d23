// The plain model of the checker: lengths of fields and the whitelist. Tested by model_test.cpp.
#include <algorithm>

#include "model/rules.h"

namespace model {
namespace {

constexpr char kMethod[] = "CheckWhiteListFieldLen";
constexpr int kError = 300, kWarn = 400, kInfo = 600;

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> pieces(1);
  for (const char byte : text) {
    if (byte == separator) {
      pieces.emplace_back();
    } else {
      pieces.back() += byte;
    }
  }
  return pieces;
}

// The leading digits of a part of a version, without leading zeros: a longer number is larger.
std::string Number(const std::string& part) {
  const std::string digits = part.substr(0, part.find_first_not_of("0123456789"));
  return digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
}

bool IsOlder(const std::string& version, const std::string& than) {
  std::vector<std::string> one = Split(version, '.');
  std::vector<std::string> other = Split(than, '.');
  one.resize(std::max(one.size(), other.size()));
  other.resize(one.size());
  for (std::size_t i = 0; i < one.size(); ++i) {
    const std::string a = Number(one[i]);
    const std::string b = Number(other[i]);
    if (a.size() != b.size()) return a.size() < b.size();
    if (a != b) return a < b;
  }
  return false;
}

std::size_t Limit(const std::string& server) {
  if (!IsOlder(server, "3.39.0")) return 10485760;
  return IsOlder(server, "3.29.0") ? 131072 : 262144;
}

std::size_t Size(const PlainEntry& entry) { return entry.unit_size * static_cast<std::size_t>(entry.count); }

// The old size of the field, if it existed and grew.
void TakeWhitelisted(Checker& checker, const PlainEntry& entry, const PlainMeta& old_meta) {
  const auto has_the_name = [&entry](const PlainEntry& one) { return one.name == entry.name; };
  const auto old_entry = std::ranges::find_if(old_meta.entries, has_the_name);
  const std::size_t before = old_entry == old_meta.entries.end() ? 0 : Size(*old_entry);
  LogOnly(checker, kInfo, kMethod, TextId::kGrowth,
          {{"entry", *entry.name}, {"old", std::to_string(before)}, {"new", std::to_string(Size(entry))}});
  if (old_entry == old_meta.entries.end() || before >= Size(entry)) return;
  checker.state.grown.push_back({*entry.name, before, Size(entry)});
}

std::string GrownFields(const std::vector<Grown>& grown) {
  std::string text;
  for (const Grown& one : grown) {
    text += "entry:" + one.name + " size " + std::to_string(one.before) + " -> " + std::to_string(one.after) + " |";
  }
  return text;
}

}  // namespace

// Every field has a name at this point: names were checked before.
int CheckWhiteListFieldLen(Checker& checker, const Name& table, const PlainLibrary* old_library, const PlainLibrary* new_library,
                           const std::string& server, const std::string& whitelist) {
  if (!table || table->empty() || old_library == nullptr || new_library == nullptr || checker.gate.absent) return -1;
  for (const std::string& piece : Split(whitelist, ';')) {
    if (!piece.empty()) checker.state.white.insert(piece);
  }
  const PlainMeta& old_meta = *old_library->Find(table);
  std::string too_long;
  for (const PlainEntry& entry : new_library->Find(table)->entries) {
    if (entry.is_key || Size(entry) <= Limit(server)) continue;
    if (checker.state.white.contains(*entry.name)) {
      TakeWhitelisted(checker, entry, old_meta);
      continue;
    }
    const TextId text_id = IsOlder(server, "3.29.0") ? TextId::kOver128 : TextId::kOver256;
    LogOnly(checker, kError, kMethod, text_id, {{"entry", *entry.name}, {"length", std::to_string(Size(entry))}});
    too_long += *entry.name + "|";
  }
  if (!too_long.empty()) {
    Write(checker, Fill(TextId::kTooLong, {{"names", too_long}}));
    return -2;
  }
  if (checker.state.grown.empty()) return 0;
  Write(checker, Fill(TextId::kGrown, {{"fields", GrownFields(checker.state.grown)}}));
  LogBuffer(checker, kWarn, kMethod);
  return -3;
}

}  // namespace model
