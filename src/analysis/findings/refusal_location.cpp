// Tested by tests/tool/lint_location_test.cpp.
#include "analysis/findings/refusal_location.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "analysis/diff/table_attributes.h"
#include "analysis/findings/attribute_fault.h"
#include "analysis/findings/run_checker.h"
#include "common/meta_view.h"
#include "common/refusals.h"
#include "rule_docs/rule_docs.h"
#include "schema/settings.h"

namespace korvel {
namespace {

using Kind = qmx::ElementId::Kind;

// What the searches below get: the table and the checker's answer.
struct RefusedTable {
  const Source& source;
  const std::string& table;
  const Verdict& verdict;
  LPQMXMETA meta;
  std::uint32_t position;
};

std::optional<Location> FaultyAttributePlace(const RefusedTable& refused) {
  const std::optional<AttributeFault> fault = FindAttributeFault(refused.source, refused.table, refused.verdict.text);
  return fault ? std::optional(fault->location) : std::nullopt;
}

std::optional<Location> FirstIndex(const RefusedTable& refused) {
  if (Indexes(refused.meta).size() == 0) return std::nullopt;
  return Location{&refused.source, {Kind::kIndex, refused.position, 0}, ""};
}

std::optional<Location> FirstOversizedField(const RefusedTable& refused) {
  const std::string_view listed = OversizedFields(refused.verdict);
  const std::string_view name = listed.substr(0, listed.find('|'));
  for (const auto [index, entry] : Entries(refused.meta)) {
    const char* const entry_name = EntryName(entry);
    if (entry_name == nullptr || entry_name != name) continue;
    return Location{&refused.source, {Kind::kEntry, refused.position, static_cast<std::uint32_t>(index)}, ""};
  }
  return std::nullopt;
}

// What makes the table one in TLV: its attribute, if it has one, else the settings. Then the library is at fault.
std::optional<Location> ProtocolPlace(const RefusedTable& refused) {
  const char* const text = qmx_get_meta_customattr(refused.meta);
  const std::optional<std::string> attributes = text == nullptr ? std::nullopt : std::optional<std::string>(text);
  const bool is_tlv = TableAttributesOf(refused.source, refused.table).protocol == "TLV";
  if (const auto pairs = is_tlv ? SplitAttributes(attributes) : std::nullopt) {
    const auto found = std::ranges::find(*pairs, "DataProtocol", &AttributePair::key);
    if (found != pairs->end()) return Location{&refused.source, {Kind::kMeta, refused.position}, "customattr", found->span};
  }
  return Location{&refused.source, {Kind::kMetalib}, "protocol"};
}

struct PlaceSearch {
  const RefusalRow* row;
  std::optional<Location> (*find)(const RefusedTable&);
};

constexpr PlaceSearch kPlaceSearches[] = {
    {&kTableAttributes, FaultyAttributePlace},
    {&kIndexOnList, FirstIndex},
    {&kOversized, FirstOversizedField},
    {&kProtocolPair, ProtocolPlace},
};

}  // namespace

Location LocateRefusal(const Source& source, const std::string& table, const Verdict& verdict) {
  const Location declared = DeclaredAt(source, table);
  const LPQMXMETA meta = qmx_get_meta_by_name(source.Library(), table.c_str());
  for (const PlaceSearch& search : kPlaceSearches) {
    if (verdict.rule != search.row->id) continue;
    return search.find({source, table, verdict, meta, declared.element.meta}).value_or(declared);
  }
  return declared;
}

std::string LintSuggestion(const Source& source, const std::string& table, const Verdict& verdict) {
  const RefusalRow& row = kTableAttributes;
  if (verdict.rule == row.id) {
    if (const std::optional<AttributeFault> fault = FindAttributeFault(source, table, verdict.text)) return fault->suggestion;
  }
  const RuleDoc* const doc = FindRuleDoc(verdict.rule);
  return doc == nullptr ? "change what the checker's text names" : doc->allowed;
}

}  // namespace korvel
