// Compares the checker's texts about parts of the attributes with its text about all of them.
// Tested by tests/report/attribute_fault_test.cpp.
#include "analysis/findings/attribute_fault.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "analysis/diff/attribute_spelling.h"
#include "analysis/findings/run_checker.h"
#include "base/limits.h"
#include "common/check_table.h"
#include "common/meta_view.h"
#include "common/refusals.h"
#include "schema/declaration.h"
#include "schema/model.h"
#include "schema/setting_values.h"

namespace korvel {
namespace {

constexpr char kProbeTable[] = "t";
constexpr char kProbeKey[] = "k";
constexpr char kMarkSortFields[] = "mark one to four integer fields with customattr2 sort=1, sort=2 and so on";

// What the checker says about a table with these attributes and sort fields, without the name of the table; "" if it accepts the
// attributes.
std::string FaultIn(std::string_view customattr, std::vector<EntryModel> fields) {
  if (std::ranges::find(fields, kProbeKey, &EntryModel::name) == fields.end())
    fields.push_back({.name = kProbeKey, .type = "int32"});
  MetaModel table{
      .name = kProbeTable, .customattr = std::string(customattr), .entries = std::move(fields), .primary_key = {kProbeKey}};
  const std::optional<qmx::Metalib> library = Build({"attributes", 1, qmx::Protocol::kQmx, {std::move(table)}});
  if (!library) return "";
  // With these settings no earlier rule applies.
  const Settings settings{.type = *CodeOf(kTableTypes, "generic"), .created_as = *CodeOf(kProtocols, "qmx")};
  const Verdict verdict = RunChecker(library->get(), library->get(), kProbeTable, settings);
  constexpr std::string_view kAfterName = "', ";
  const RefusalRow& row = kTableAttributes;
  return verdict.rule == row.id ? verdict.text.substr(verdict.text.find(kAfterName) + kAfterName.size()) : "";
}

// The attributes of a text, between semicolons; some may be empty. At most kMaxAttributePairs: the checker knows so few that one
// of them has the fault. Borrows the text.
std::vector<std::string_view> AttributesIn(std::string_view text) {
  std::vector<std::string_view> attributes;
  for (std::size_t begin = 0; begin <= text.size() && attributes.size() < kMaxAttributePairs;
       begin += attributes.back().size() + 1) {
    attributes.push_back(text.substr(begin, text.find(';', begin) - begin));
  }
  return attributes;
}

// The attribute in which the checker finds the fault, or null if it is in the sort fields. The checker reads the attributes in
// order and stops at the first fault.
const std::string_view* FaultyAttribute(std::string_view text, const std::vector<std::string_view>& attributes,
                                        const std::string& fault) {
  const std::vector<EntryModel> sorted = {{.name = kProbeKey, .type = "int32", .customattr2 = "sort=1"}};
  for (const std::string_view& attribute : attributes) {
    const std::string_view read = text.substr(0, static_cast<std::size_t>(attribute.data() - text.data()) + attribute.size());
    const bool is_faulty = attribute.empty() || FaultIn(attribute, sorted) == fault || FaultIn(read, sorted) == fault;
    if (is_faulty) return &attribute;
  }
  return nullptr;
}

// The first attribute with a key, or null.
const std::string_view* FirstWithKey(const std::vector<std::string_view>& attributes, std::string_view key) {
  const auto found = std::ranges::find(attributes, key, MeantKey);
  return found == attributes.end() ? nullptr : &*found;
}

// Where an attribute is in the text; an empty one is shown by a semicolon next to it.
qmx::Span MarkOf(std::string_view attribute, std::string_view text) {
  const auto begin = static_cast<std::size_t>(attribute.data() - text.data());
  if (!attribute.empty()) return {begin, begin + attribute.size()};
  return begin < text.size() ? qmx::Span{begin, begin + 1} : qmx::Span{begin - 1, begin};
}

// `attribute` is one of `attributes`.
std::string SuggestionForAttribute(const std::string_view* attribute, const std::vector<std::string_view>& attributes) {
  if (attributes.size() == 1 && WithoutOuterSpaces(*attribute).empty()) return "remove the spaces, or the whole customattr";
  const std::string key(MeantKey(*attribute));
  if (!key.empty() && FirstWithKey(attributes, key) != attribute) return "give " + key + " only once";
  return IsKnownAttribute(*attribute) ? "add the number of slots: ListNum=NUMBER" : AttributeSuggestion(*attribute);
}

// A field that the checker takes for a sort field.
struct SortField {
  std::uint32_t position;  // in the table
  EntryModel entry;
};

// As many as the checker reads before it finds a fault.
std::vector<SortField> SortFieldsOf(const MetaModel& table) {
  std::vector<SortField> fields;
  for (std::size_t i = 0; i < table.entries.size() && fields.size() <= KORVEL_MAX_LIST_SORT_NUM; ++i) {
    const EntryModel& entry = table.entries[i];
    if (!entry.customattr2 || !entry.customattr2->starts_with("sort=")) continue;
    const bool is_composite = IsCompositeType(entry.type);
    fields.push_back({static_cast<std::uint32_t>(i),
                      {.name = entry.name,
                       .type = is_composite ? "double" : entry.type,
                       .size = entry.size,
                       .customattr2 = entry.customattr2}});
  }
  return fields;
}

std::vector<EntryModel> EntriesOf(std::vector<SortField> fields) {
  std::ranges::sort(fields, {}, &SortField::position);
  std::vector<EntryModel> entries;
  entries.reserve(fields.size());
  for (SortField& field : fields) entries.push_back(std::move(field.entry));
  return entries;
}

// The sort field in which the checker finds the fault, with those of lower marks. A gap is found at the first mark after it.
std::optional<std::uint32_t> FaultyField(std::string_view text, std::vector<SortField> fields, const std::string& fault) {
  std::ranges::stable_sort(fields, {}, [](const SortField& field) { return field.entry.customattr2; });
  for (std::size_t count = 1; count <= fields.size(); ++count) {
    if (FaultIn(text, EntriesOf({fields.begin(), fields.begin() + static_cast<std::ptrdiff_t>(count)})) == fault) {
      return fields[count - 1].position;
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<AttributeFault> FindAttributeFault(const Source& source, const std::string& table, const std::string& text) {
  using Kind = qmx::ElementId::Kind;
  const MetaModel meta = MetaOf(source.Library(), qmx_get_meta_by_name(source.Library(), table.c_str()));
  if (!meta.customattr) return std::nullopt;
  const std::string& whole = *meta.customattr;
  const std::vector<SortField> fields = SortFieldsOf(meta);
  const std::string fault = FaultIn(whole, EntriesOf(fields));
  if (fault.empty() || !text.ends_with(fault)) return std::nullopt;
  const std::uint32_t position = *PositionOf(source, table);
  const std::vector<std::string_view> attributes = AttributesIn(whole);
  const auto at = [&](std::string_view attribute) {
    return Location{&source, {Kind::kMeta, position}, "customattr", MarkOf(attribute, whole)};
  };
  if (const std::string_view* const attribute = FaultyAttribute(whole, attributes, fault)) {
    return AttributeFault{at(*attribute), SuggestionForAttribute(attribute, attributes)};
  }
  if (const std::optional<std::uint32_t> field = FaultyField(whole, fields, fault)) {
    return AttributeFault{{&source, {Kind::kEntry, position, *field}, "customattr2"}, kMarkSortFields};
  }
  const std::string_view* const type = FirstWithKey(attributes, "TableType");
  return type == nullptr ? std::nullopt : std::optional(AttributeFault{at(*type), kMarkSortFields});
}

}  // namespace korvel
