// The catalog as a list, and the way back from a text to its row. Tested by tests/rules/refusals_test.cpp.
#include "common/refusals.h"

#include <cstddef>

namespace korvel {
namespace {

constexpr const RefusalRow* kRows[] = {
    &kArguments,       &kTableType,       &kInitVersion,     &kCompatArguments,
    &kMetaNull,        &kOldMetaNull,     &kNewMetaNull,     &kNameMetaNull,
    &kNameOrMeta,      &kTlvToQmx,        &kLibVersion,      &kTableMissing,
    &kCompatVersion,   &kValuesVersion,   &kProtocolPair,    &kPrimaryKeyInvalid,
    &kPrimaryKeyCount, &kPrimaryKeyField, &kNoPrimaryKey,    &kNotPrimaryKey,
    &kPrimaryKeySize,  &kTlvKeySize,      &kTlvKeyName,      &kSplitKeyPresence,
    &kSplitKeyChanged, &kSplitKeyNewText, &kSplitKeyOldText, &kIndexTableType,
    &kIndexOnList,     &kIndexCount,      &kIndexName,       &kIndexColumns,
    &kIndexNull,       &kColumnSet,       &kColumnField,     &kStructMissing,
    &kStructName,      &kEntryMissing,    &kTlvEntryMissing, &kEntryId,
    &kTlvEntryId,      &kEntrySize,       &kEntryType,       &kSubEntryType,
    &kReferCount,      &kFixedCount,      &kSubEntryCount,   &kCustomAttr2,
    &kEntryVersion,    &kNewEntryVersion, &kEntryOrder,      &kFieldNum,
    &kFieldMissing,    &kFieldShape,      &kFieldNames,      &kNameEmpty,
    &kNameDigit,       &kNameCharacter,   &kNameLength,      &kToSortList,
    &kDeclaredType,    &kDeclaredListNum, &kToOldFormat,     &kKind,
    &kListNum,         &kSortFieldNum,    &kSortRule,        &kDataProtocol,
    &kNewEntryNull,    &kNewEntryName,    &kOldEntryNull,    &kOldEntryName,
    &kSortAttribute,   &kTableAttributes, &kLengthEntryNull, &kOversized,
    &kWhitelistGrown,
};

constexpr std::size_t kCutLength = 1023;  // a text of this length may have lost its end

// The fixed bytes in front of a format's next conversion. `format` goes on behind the conversion, or becomes empty.
std::string_view TakeFixed(std::string_view& format) {
  const std::string_view fixed = format.substr(0, format.find('%'));
  format.remove_prefix(fixed.size());
  if (!format.empty()) format.remove_prefix(format.starts_with("%z") ? 3 : 2);
  return fixed;
}

// How many fixed bytes of `format` are in `text`; 0 if the text is not this format filled in. Arguments may be any bytes.
std::size_t Fit(std::string_view format, std::string_view text) {
  const bool may_be_cut = text.size() == kCutLength;
  bool more = format.find('%') != std::string_view::npos;
  const std::string_view head = TakeFixed(format);
  if (!text.starts_with(head) || (!more && text != head)) return 0;
  text.remove_prefix(head.size());
  std::size_t found = head.size();
  while (more) {
    more = format.find('%') != std::string_view::npos;
    const std::string_view fixed = TakeFixed(format);
    // The last fixed part ends the text; those between are somewhere before it.
    const std::size_t at = more ? text.find(fixed) : text.rfind(fixed);
    const bool fits = at != std::string_view::npos && (more || at + fixed.size() == text.size());
    if (!fits) return may_be_cut ? found : 0;
    text.remove_prefix(at + fixed.size());
    found += fixed.size();
  }
  return found;
}

}  // namespace

std::span<const RefusalRow* const> AllRefusals() { return kRows; }

const RefusalRow* FindRefusal(std::string_view id) {
  for (const RefusalRow* row : kRows) {
    if (id == row->id) return row;
  }
  return nullptr;
}

const RefusalRow* Identify(std::string_view text) {
  const RefusalRow* best = nullptr;
  std::size_t best_fit = 0;
  for (const RefusalRow* row : kRows) {
    const std::size_t fit = Fit(row->text, text);
    if (fit > best_fit) {
      best = row;
      best_fit = fit;
    }
  }
  return best;
}

}  // namespace korvel
