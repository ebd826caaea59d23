// The words of suggestions, as tables. Contains no rules: what is allowed is decided by the checker alone.
// Tested by tests/report/suggestions_test.cpp.
#include "analysis/findings/suggestion_text.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "base/text.h"
#include "rule_docs/rule_docs.h"

namespace korvel {
namespace {

// {item}, {meta}, {before} and {after} are replaced by the values of the edit, empty ones by "none". Every kind has a row.
struct KindWords {
  EditKind kind;
  std::string_view text;
};

constexpr KindWords kByKind[] = {
    {EditKind::kLibraryName, "keep the library's name {before}"},
    {EditKind::kLibraryVersion, "keep the library's version {before} or raise it"},
    {EditKind::kLibraryProtocol,
     "keep the library's protocol {before}; another protocol needs new tables and a copy of the records"},
    {EditKind::kTableAdded, "do not add table {item}"},
    {EditKind::kMetaRenamed, "keep the name {before}"},
    {EditKind::kMetaKind, "keep {meta} a {before}"},
    {EditKind::kTableAttribute, "keep {item} of table {meta}: {before}"},
    {EditKind::kPrimaryKey, "keep the primary key {before}; another key needs a new table and a copy of the records"},
    {EditKind::kSplittableKey, "keep the splittable key {before}; another one needs a new table and a copy of the records"},
    {EditKind::kIndexAdded, "do not add index {item}; a new table may have it"},
    {EditKind::kIndexRemoved, "keep index {item}"},
    {EditKind::kIndexColumns, "keep the columns of index {item}: {before}"},
    {EditKind::kIndexMoved, "leave index {item} where it is"},
    {EditKind::kEntryAdded, "do not add field {item}"},
    {EditKind::kEntryRemoved, "keep field {item}; programs that no longer need it can stop writing it"},
    {EditKind::kEntryRenamed, "keep the name {item}"},
    {EditKind::kEntryMoved, "leave field {item} where it is"},
    {EditKind::kEntryId, "keep the id of {item}: {before}"},
    {EditKind::kEntryVersion, "keep the version of {item}: {before}, in which it was added"},
    {EditKind::kEntryType, "keep {item} as {before}"},
    {EditKind::kEntrySize, "keep {item} at {before} bytes"},
    {EditKind::kEntryCount, "keep {item} at a count of {before}"},
    {EditKind::kEntryRefer, "keep the refer of {item}: {before}"},
    {EditKind::kEntryCustomAttr2, "keep the customattr2 of {item}: {before}"},
    {EditKind::kEntryMeta, "keep {item} a {before}; a new field may have the structure {after}"},
};

// Texts for edits of values that the old side does not have, where they differ.
constexpr KindWords kWithoutOldValue[] = {
    {EditKind::kLibraryProtocol,
     "leave the library without a protocol; another protocol needs new tables and a copy of the records"},
    {EditKind::kTableAttribute, "do not add {item} to table {meta}"},
    {EditKind::kSplittableKey, "do not add a splittable key; a new table may have one"},
    {EditKind::kEntryId, "leave {item} without an id"},
    {EditKind::kEntryRefer, "leave {item} with a fixed count"},
    {EditKind::kEntryCustomAttr2, "do not add a customattr2 to {item}"},
};

std::string ValueOf(std::string_view placeholder, const Edit& edit) {
  if (placeholder == "{before}") return edit.before.empty() ? "none" : OneLine(edit.before);
  if (placeholder == "{after}") return edit.after.empty() ? "none" : OneLine(edit.after);
  if (placeholder == "{meta}") return OneLine(edit.meta);
  // The attributes of a table as a whole have no name.
  if (edit.kind == EditKind::kTableAttribute && edit.item.empty()) return "the attributes";
  return OneLine(ValueText(edit.item));
}

}  // namespace

std::string FillIn(std::string_view words, const Edit& edit) {
  std::string text;
  while (!words.empty()) {
    const std::size_t begin = std::min(words.find('{'), words.size());
    text += words.substr(0, begin);
    words.remove_prefix(begin);
    if (words.empty()) break;
    const std::size_t end = words.find('}') + 1;
    text += ValueOf(words.substr(0, end), edit);
    words.remove_prefix(end);
  }
  return text;
}

std::string ShapeOf(const EntryModel& entry) {
  const std::string size = entry.size == 0 ? "" : " of " + std::to_string(entry.size) + " bytes";
  return OneLine(entry.type) + size + (entry.count == 1 ? "" : " x " + std::to_string(entry.count));
}

std::string LeavingOut(const Edit& edit) {
  const auto without_old = std::ranges::find(kWithoutOldValue, edit.kind, &KindWords::kind);
  if (edit.before.empty() && without_old != std::end(kWithoutOldValue)) return FillIn(without_old->text, edit);
  return FillIn(std::ranges::find(kByKind, edit.kind, &KindWords::kind)->text, edit);
}

std::string KeepingName(const std::string& old_name, const std::string& new_name) {
  return "keep " + OneLine(ValueText(old_name)) + " instead of " + OneLine(ValueText(new_name));
}

std::string RenamedSuggestion(const std::string& things, const std::string& kept) {
  return "renamed? " + things + " are matched by name; " + kept;
}

std::string PreexistingSuggestion(const Verdict& verdict) {
  const RuleDoc* const doc = FindRuleDoc(verdict.rule);
  const std::string why = "the old schema already breaks this rule";
  return doc == nullptr ? why : why + "; allowed in a new table: " + doc->allowed;
}

}  // namespace korvel
