// Compares two layouts of a table, field by field. Tested by tests/report/layout_test.cpp.
#include <map>
#include <optional>
#include <string_view>

#include "base/text.h"
#include "report/result/layout.h"

namespace korvel {
namespace {

// The fields of one structure, or those of the table: fields [begin, end) of a layout, including inner fields.
struct Part {
  const TableLayout& layout;
  std::size_t begin;
  std::size_t end;

  std::vector<const FieldLayout*> Children() const {
    std::vector<const FieldLayout*> children;
    for (std::size_t i = begin; i < end; i = layout.fields[i].end) children.push_back(&layout.fields[i]);
    return children;
  }

  Part Inside(const FieldLayout* field) const {
    if (field == nullptr) return {layout, 0, 0};
    return {layout, static_cast<std::size_t>(field - layout.fields.data()) + 1, field->end};
  }
};

using Fields = std::vector<const FieldLayout*>;
using Matches = std::vector<std::optional<std::size_t>>;  // of each old field, the position of its new one

// Matches fields without a partner that have the same key. Of several with one key, the first is taken.
template <class Key, class KeyOf>
void Match(const Fields& before, const Fields& after, KeyOf key_of, Matches& partners, std::vector<bool>& taken) {
  std::map<Key, std::size_t> known;  // ordered, because a file could choose names or ids whose hashes collide
  for (std::size_t i = 0; i < after.size(); ++i) {
    if (const std::optional<Key> key = key_of(*after[i]); key && !taken[i]) known.emplace(*key, i);
  }
  for (std::size_t i = 0; i < before.size(); ++i) {
    const std::optional<Key> key = key_of(*before[i]);
    if (partners[i] || !key) continue;
    const auto found = known.find(*key);
    if (found == known.end() || taken[found->second]) continue;
    partners[i] = found->second;
    taken[found->second] = true;
  }
}

class Pairing {
 public:
  Pairing(bool by_id_first, std::vector<FieldPair>& pairs) : by_id_first_(by_id_first), pairs_(pairs) {}

  void Add(const Part& before, const Part& after, std::size_t level) {
    const Fields old_fields = before.Children();
    const Fields new_fields = after.Children();
    std::vector<std::optional<std::size_t>> origin(new_fields.size());  // of each new field, the position of its old one
    const Matches partners = Find(old_fields, new_fields);
    for (std::size_t i = 0; i < partners.size(); ++i) {
      if (partners[i]) origin[*partners[i]] = i;
    }
    std::size_t next = 0;  // the first old field that was not visited yet
    const auto add_removed = [&](std::size_t end) {
      for (; next < end; ++next) {
        if (!partners[next]) Put(before, after, {old_fields[next], nullptr, level});
      }
    };
    for (std::size_t i = 0; i < new_fields.size(); ++i) {
      if (origin[i]) add_removed(*origin[i]);
      Put(before, after, {origin[i] ? old_fields[*origin[i]] : nullptr, new_fields[i], level});
    }
    add_removed(old_fields.size());
  }

 private:
  Matches Find(const Fields& before, const Fields& after) const {
    Matches partners(before.size());
    std::vector<bool> taken(after.size());
    const auto by_name = [&] {
      const auto name = [](const FieldLayout& field) { return std::optional<std::string_view>(field.name); };
      Match<std::string_view>(before, after, name, partners, taken);
    };
    const auto by_id = [&] {
      const auto id = [](const FieldLayout& field) { return field.id == -1 ? std::nullopt : std::optional(field.id); };
      Match<std::int32_t>(before, after, id, partners, taken);
    };
    if (by_id_first_) by_id();
    by_name();
    if (!by_id_first_) by_id();
    return partners;
  }

  void Put(const Part& before, const Part& after, const FieldPair& pair) {
    pairs_.push_back(pair);
    Add(before.Inside(pair.before), after.Inside(pair.after), pair.level + 1);
  }

  bool by_id_first_;
  std::vector<FieldPair>& pairs_;
};

std::string Distance(std::uint64_t before, std::uint64_t after) {
  return after < before ? "-" + std::to_string(before - after) : "+" + std::to_string(after - before);
}

// Joins descriptions of changes.
class ChangeText {
 public:
  void Add(const std::string& words) { AppendPart(text_, ", ", words); }

  void Changed(const std::string& what, const std::string& before, const std::string& after) {
    if (before != after) Add(what + " " + before + " -> " + after);
  }

  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

bool Moved(const FieldPair& pair, bool tlv) {
  return !tlv && (pair.before->offset != pair.after->offset || pair.before->in_element != pair.after->in_element);
}

// What happened to a field that is on both sides, apart from its offset.
std::string DescribeItself(const FieldLayout& before, const FieldLayout& after) {
  ChangeText words;
  if (before.name != after.name) words.Add("renamed from " + before.name);
  words.Changed("type", before.type, after.type);
  words.Changed("count", std::to_string(before.count), std::to_string(after.count));
  if (before.size < after.size) words.Add("grew by " + std::to_string(after.size - before.size));
  if (before.size > after.size) words.Add("shrank by " + std::to_string(before.size - after.size));
  return words.text();
}

}  // namespace

std::vector<FieldPair> PairFields(const TableLayout& before, const TableLayout& after) {
  std::vector<FieldPair> pairs;
  Pairing(before.tlv && after.tlv, pairs).Add({before, 0, before.fields.size()}, {after, 0, after.fields.size()}, 1);
  return pairs;
}

FieldChangeWords WordsOf(FieldChange change) {
  constexpr FieldChangeWords kWords[] = {{"=", "same"}, {">", "moved"}, {"~", "changed"}, {"+", "added"}, {"-", "removed"}};
  return kWords[static_cast<std::size_t>(change)];
}

FieldChange ChangeOf(const FieldPair& pair, bool tlv) {
  if (pair.before == nullptr) return FieldChange::kAdded;
  if (pair.after == nullptr) return FieldChange::kRemoved;
  if (!DescribeItself(*pair.before, *pair.after).empty()) return FieldChange::kChanged;
  return Moved(pair, tlv) ? FieldChange::kMoved : FieldChange::kSame;
}

std::string DescribeChange(const FieldPair& pair, bool tlv) {
  if (pair.before == nullptr) return "added";
  if (pair.after == nullptr) return "removed";
  ChangeText words;
  if (const std::string itself = DescribeItself(*pair.before, *pair.after); !itself.empty()) words.Add(itself);
  if (Moved(pair, tlv)) words.Add("moved by " + Distance(pair.before->offset, pair.after->offset));
  return words.text();
}

}  // namespace korvel
