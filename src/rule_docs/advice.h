// The catalog of advice: rules about changes that the checker allows although records do not read back, or that are probably
// mistakes, about new tables, which it does not check, and about attributes that it ignores. Ids, levels, summaries and
// suggestions are here; src/analysis/warnings decides when a rule applies.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "common/catalog.h"

namespace korvel {

// What a finding means: the checker refuses the change; it allows the change, but records might not read back; or neither.
enum class Level : std::uint8_t { kRefused, kWarning, kNote };

// "refused", "warning", "note"
const char* WordOf(Level level);

struct AdviceRule {
  RefusalRow row;  // its id begins with "advice."; no code and no text, because the checker reports nothing
  Level level;
  // What to do instead, for FillIn (analysis/findings/suggestion_text.h). Null: leave out the edit.
  const char* suggestion = nullptr;
};

inline constexpr AdviceRule kTableKindAdvice{{"advice.table-kind", 0, "", "a table became a union, or stopped being one"},
                                             Level::kWarning};
inline constexpr AdviceRule kKeyMembersAdvice{
    {"advice.key-members", 0, "", "the fields of the primary key are in a different order, or one of them is repeated"},
    Level::kWarning};
inline constexpr AdviceRule kKeyStructureAdvice{
    {"advice.key-structure", 0, "", "a structure in a key changed, so keys have different bytes"},
    Level::kWarning,
    "keep {meta} as it is; put new fields in a structure that no key contains"};
inline constexpr AdviceRule kReferChangedAdvice{
    {"advice.refer-changed", 0, "", "the refer of a field was added, removed or changed"}, Level::kWarning};
inline constexpr AdviceRule kReferAddedAdvice{
    {"advice.refer-added", 0, "", "a new field has a counter that old records already contain"},
    Level::kWarning,
    "add a new field that counts {item}"};
inline constexpr AdviceRule kIdReusedAdvice{
    {"advice.id-reused", 0, "", "a field got the id of a removed field with a different or smaller type"},
    Level::kWarning,
    "give {item} an id that no version has used"};
inline constexpr AdviceRule kNewTableAdvice{
    {"advice.new-table", 0, "", "the checker refuses a new table even if nothing changes in it"}, Level::kWarning};
inline constexpr AdviceRule kAttributeIgnoredAdvice{
    {"advice.attribute-ignored", 0, "", "the checker ignores an attribute of a table"},
    Level::kWarning,
    "add TableType to the attributes of table {meta}, or remove {item}"};
inline constexpr AdviceRule kVersionNotRaisedAdvice{
    {"advice.version-not-raised", 0, "", "fields were added, but the version of the library is the same"},
    Level::kNote,
    "raise the version of the library when you add a field"};
inline constexpr AdviceRule kSortFieldsAdvice{
    {"advice.sort-fields", 0, "", "a sorted list is sorted by different fields than before"}, Level::kNote};
inline constexpr AdviceRule kIndexColumnsAdvice{
    {"advice.index-columns", 0, "", "the columns of an index are in a different order, or sorted in a different direction"},
    Level::kNote};
inline constexpr AdviceRule kLibraryRenamedAdvice{{"advice.library-renamed", 0, "", "the library was renamed"}, Level::kNote};

// All rules: warnings, then notes.
std::span<const AdviceRule* const> AllAdvice();

// The rule of that id, or null.
const AdviceRule* FindAdvice(std::string_view id);

}  // namespace korvel
