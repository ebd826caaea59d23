// The plain model of the checker: type of table. Parses the attributes itself, too. Tested by model_test.cpp.
#include <cstdlib>

#include "model/rules.h"

namespace model {
namespace {

constexpr int kInfo = 600;
constexpr int kGeneric = 0, kList = 1, kSortList = 2;
constexpr std::size_t kMostSortFields = 4;
constexpr int kFirstIntegerType = 2, kLastIntegerType = 9;
constexpr long long kLongestList = 2147483647;

std::string TypeText(int type) { return type == 0 ? "GENERIC" : "LIST"; }
std::string OrderText(int order) { return order == 0 ? "INSC" : "DESC"; }

std::optional<int> CodeOf(const std::string& word, const std::vector<std::string>& words) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (words[i] == word) return static_cast<int>(i);
  }
  return std::nullopt;
}

std::optional<int> ListLength(const std::string& digits) {
  if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
  const std::size_t first = digits.find_first_not_of('0');
  if (first == std::string::npos || digits.size() - first > 10) return std::nullopt;
  const long long number = std::atoll(digits.c_str());
  return number <= kLongestList ? std::optional<int>(static_cast<int>(number)) : std::nullopt;
}

// The four values, each absent until its key is found.
struct Attributes {
  std::optional<int> type;
  std::optional<int> list_num;
  std::optional<int> sort_rule;
  std::optional<std::string> protocol;
};

// False if the pair is not allowed there.
bool TakePair(const std::string& key, const std::string& value, Attributes& attributes) {
  if (key == "TableType" && !attributes.type) {
    attributes.type = CodeOf(value, {"GENERIC", "LIST", "SORTLIST"});
    return attributes.type.has_value();
  }
  if (key == "ListNum" && !attributes.list_num) {
    attributes.list_num = ListLength(value);
    return attributes.list_num.has_value();
  }
  if (key == "SortRule" && !attributes.sort_rule) {
    attributes.sort_rule = CodeOf(value, {"INSC", "DESC"});
    return attributes.sort_rule.has_value();
  }
  if (key == "DataProtocol" && !attributes.protocol) {
    attributes.protocol = value;
    return value == "QMX" || value == "TLV";
  }
  return false;
}

std::optional<Attributes> ReadAttributes(const std::string& text) {
  Attributes attributes;
  std::size_t begin = 0;
  while (begin <= text.size() && !text.empty()) {
    const std::size_t end = std::min(text.find(';', begin), text.size());
    const std::string pair = text.substr(begin, end - begin);
    const std::size_t sign = pair.find('=');
    if (sign == std::string::npos) return std::nullopt;
    if (!TakePair(pair.substr(0, sign), pair.substr(sign + 1), attributes)) return std::nullopt;
    begin = end + 1;
  }
  return attributes;
}

// The number of fields with sort=1, sort=2 and so on; absent if they are invalid.
std::optional<int> SortFields(const PlainMeta& meta) {
  bool is_there[kMostSortFields + 1] = {};
  std::size_t number = 0;
  for (const PlainEntry& entry : meta.entries) {
    const std::string attr2 = entry.attr2.value_or("");
    if (!attr2.starts_with("sort=")) continue;
    if (attr2.size() != 6 || attr2[5] < '1' || attr2[5] > '4') return std::nullopt;
    if (entry.type < kFirstIntegerType || entry.type > kLastIntegerType) return std::nullopt;
    bool& seen = is_there[attr2[5] - '0'];
    if (seen) return std::nullopt;
    seen = true;
    ++number;
  }
  for (std::size_t i = 1; i <= number; ++i) {
    if (!is_there[i]) return std::nullopt;
  }
  return number == 0 ? std::nullopt : std::optional<int>(static_cast<int>(number));
}

// CheckTable's text is used as a format string, in which percent signs are doubled.
std::string Formatted(const std::string& format) {
  std::string text;
  for (std::size_t i = 0; i < format.size(); ++i) {
    text += format[i];
    if (format[i] == '%') ++i;
  }
  return text;
}

int FailByAttributes(Checker& checker, int code, const char* method, const PlainLibrary* library, const Name& table) {
  return Fail(checker, code, method, TextId::kBadAttributes, {{"text", Formatted(checker.wording(library, table))}});
}

int Folded(int type) { return type == kSortList ? kList : type; }

// The old side has no table type, the new side has one.
int CompareDeclared(Checker& checker, const Name& table, const TableKind& kind, int maybe_type, int maybe_list_num) {
  static constexpr char kMethod[] = "CheckListMetaInfo";
  if (kind.sort_fields > 0) return Fail(checker, -3, kMethod, TextId::kToSortList, {{"table", Shown(table)}});
  if (Folded(kind.type) != maybe_type) {
    return Fail(checker, -4, kMethod, TextId::kNotDeclaredType,
                {{"table", Shown(table)}, {"old", TypeText(maybe_type)}, {"new", TypeText(Folded(kind.type))}});
  }
  if (maybe_type == kList && kind.list_num != maybe_list_num) {
    return Fail(checker, -5, kMethod, TextId::kNotDeclaredNumber,
                {{"table", Shown(table)}, {"old", std::to_string(maybe_list_num)}, {"new", std::to_string(kind.list_num)}});
  }
  return 0;
}

int CompareSortAttributes(Checker& checker, const PlainMeta& old_meta, const PlainMeta& new_meta) {
  static constexpr char kMethod[] = "CheckListMetaInfo";
  for (std::size_t i = 0; i < new_meta.entries.size(); ++i) {
    const PlainEntry& new_entry = new_meta.entries[i];
    if (new_entry.attr2.value_or("").empty()) continue;
    if (!new_entry.name) return Fail(checker, -8, kMethod, TextId::kNewNameMissing, {{"position", std::to_string(i)}});
    for (std::size_t j = 0; j < old_meta.entries.size(); ++j) {
      const PlainEntry& old_entry = old_meta.entries[j];
      if (old_entry.attr2.value_or("").empty()) continue;
      if (!old_entry.name) return Fail(checker, -10, kMethod, TextId::kOldNameMissing, {{"position", std::to_string(j)}});
      if (old_entry.name != new_entry.name) continue;
      if (old_entry.attr2 == new_entry.attr2) break;
      return Fail(checker, -11, kMethod, TextId::kSortAttribute, {{"old", *old_entry.attr2}, {"new", *new_entry.attr2}});
    }
  }
  return 0;
}

Values Numbers(int old_number, int new_number) {
  return {{"old", std::to_string(old_number)}, {"new", std::to_string(new_number)}};
}

int CompareKinds(Checker& checker, const Name& table, const TableKind& old_kind, const TableKind& new_kind) {
  static constexpr char kMethod[] = "CheckListMetaInfo";
  LogOnly(checker, kInfo, kMethod, TextId::kListTypes,
          {{"table", Shown(table)}, {"old", std::to_string(old_kind.type)}, {"new", std::to_string(new_kind.type)}});
  if (Folded(old_kind.type) != Folded(new_kind.type)) {
    return Fail(checker, -4, kMethod, TextId::kListType,
                {{"old", TypeText(Folded(old_kind.type))}, {"new", TypeText(Folded(new_kind.type))}});
  }
  if (old_kind.list_num > new_kind.list_num) {
    return Fail(checker, -5, kMethod, TextId::kListNumber, Numbers(old_kind.list_num, new_kind.list_num));
  }
  if (old_kind.sort_fields != new_kind.sort_fields) {
    return Fail(checker, -6, kMethod, TextId::kSortFields, Numbers(old_kind.sort_fields, new_kind.sort_fields));
  }
  if (old_kind.sort_rule != new_kind.sort_rule) {
    return Fail(checker, -15, kMethod, TextId::kSortRule,
                {{"old", OrderText(old_kind.sort_rule)}, {"new", OrderText(new_kind.sort_rule)}});
  }
  if (!old_kind.protocol.empty() && old_kind.protocol != new_kind.protocol) {
    return Fail(checker, -16, kMethod, TextId::kDataProtocol, {{"old", old_kind.protocol}, {"new", new_kind.protocol}});
  }
  return 0;
}

}  // namespace

std::optional<TableKind> KindOf(const PlainLibrary* library, const Name& table) {
  if (library == nullptr || !table || table->empty()) return std::nullopt;
  const PlainMeta* meta = library->Find(table);
  if (meta == nullptr) return std::nullopt;
  const std::optional<Attributes> attributes = ReadAttributes(meta->attr.value_or(""));
  if (!attributes) return std::nullopt;
  if (!attributes->type) return TableKind{.old_way = true};
  TableKind kind;
  kind.type = *attributes->type;
  if (kind.type != kGeneric && !attributes->list_num) return std::nullopt;
  kind.list_num = attributes->list_num.value_or(0);
  kind.sort_rule = attributes->sort_rule.value_or(0);
  kind.protocol = attributes->protocol.value_or("");
  if (kind.type != kSortList) return kind;
  const std::optional<int> sort_fields = SortFields(*meta);
  if (!sort_fields) return std::nullopt;
  kind.sort_fields = *sort_fields;
  return kind;
}

int CheckListMetaInfo(Checker& checker, const Name& table, const PlainLibrary* old_library, const PlainLibrary* new_library,
                      int maybe_table_type, int maybe_list_num) {
  static constexpr char kMethod[] = "CheckListMetaInfo";
  const std::optional<TableKind> old_kind = KindOf(old_library, table);
  if (!old_kind) return FailByAttributes(checker, -1, kMethod, old_library, table);
  const std::optional<TableKind> new_kind = KindOf(new_library, table);
  if (!new_kind) return FailByAttributes(checker, -2, kMethod, new_library, table);
  if (old_kind->old_way && new_kind->old_way) return 0;
  if (old_kind->old_way) return CompareDeclared(checker, table, *new_kind, maybe_table_type, maybe_list_num);
  if (new_kind->old_way) return Fail(checker, -15, kMethod, TextId::kAttributesRemoved, {{"table", Shown(table)}});
  const int result = CompareKinds(checker, table, *old_kind, *new_kind);
  if (result != 0 || new_kind->sort_fields == 0) return result;
  return CompareSortAttributes(checker, *old_library->Find(table), *new_library->Find(table));
}

int CompareSortListInfo(Checker& checker, const Name& source_table, const Name& target_table, const PlainLibrary* source,
                        const PlainLibrary* target) {
  static constexpr char kMethod[] = "CompareSortListInfo";
  const std::optional<TableKind> old_kind = KindOf(source, source_table);
  if (!old_kind) return FailByAttributes(checker, -1, kMethod, source, source_table);
  const std::optional<TableKind> new_kind = KindOf(target, target_table);
  if (!new_kind) return FailByAttributes(checker, -2, kMethod, target, target_table);
  if (old_kind->old_way && new_kind->old_way) return 0;
  if (old_kind->old_way && new_kind->sort_fields > 0) {
    return Fail(checker, -3, kMethod, TextId::kToSortList, {{"table", Shown(target_table)}});
  }
  if (old_kind->old_way) return 0;
  if (new_kind->old_way) return Fail(checker, -15, kMethod, TextId::kAttributesRemoved, {{"table", Shown(source_table)}});
  if (old_kind->sort_fields <= new_kind->sort_fields) return 0;
  return Fail(checker, -6, kMethod, TextId::kSortFields, Numbers(old_kind->sort_fields, new_kind->sort_fields));
}

}  // namespace model
