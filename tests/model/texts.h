// Every text of the checker, with named placeholders, and the number of times that each was written.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace model {

enum class TextId {
  kBadArguments,
  kTrace,
  kBadTableType,
  kBadInitVersion,
  kTlvToQmx,
  kLibVersion,
  kNoTable,
  kTlvFieldsFailed,
  kProtocols,
  kNameCheckFailed,
  kSucceeded,
  kCompatArguments,
  kCompatNoTable,
  kCompatKey,
  kCompatFields,
  kCompatOrder,
  kCompatNoVersion,
  kCompatVersion,
  kValuesTlv,
  kValuesFields,
  kValuesNoVersion,
  kValuesVersion,
  kNameOrMeta,
  kNoKey,
  kNotInKey,
  kMetaNull,
  kKeyInvalid,
  kKeyNumber,
  kKeyChanged,
  kNoSplit,
  kSplitPresence,
  kNewSplitUnreadable,
  kOldSplitUnreadable,
  kSplitChanged,
  kIndexTableType,
  kIndexOnList,
  kIndexNumber,
  kIndexName,
  kIndexColumns,
  kColumnSet,
  kColumnField,
  kOldMetaNull,
  kNewMetaNull,
  kFieldNumber,
  kFieldAbsent,
  kFieldShape,
  kFieldsSame,
  kNoEntries,
  kVersionChanged,
  kNewVersionLow,
  kOrder,
  kStructureMissing,
  kStructureChanged,
  kEntryRemoved,
  kIdChanged,
  kKeySize,
  kSizeReduced,
  kTypeChanged,
  kCountReduced,
  kCountChanged,
  kAttributeChanged,
  kEntryRemovedTlv,
  kIdRemovedTlv,
  kKeyNameTlv,
  kKeySizeTlv,
  kTypeChangedTlv,
  kCountReducedTlv,
  kNamePreset,
  kNameLength,
  kNameEmpty,
  kNameDigit,
  kNameCharacter,
  kNameTooLong,
  kBadAttributes,
  kToSortList,
  kNotDeclaredType,
  kNotDeclaredNumber,
  kAttributesRemoved,
  kListTypes,
  kListType,
  kListNumber,
  kSortFields,
  kSortRule,
  kDataProtocol,
  kNewNameMissing,
  kOldNameMissing,
  kSortAttribute,
  kGrowth,
  kOver256,
  kOver128,
  kTooLong,
  kGrown,
  kEnd
};

struct TextRow {
  TextId text_id;
  std::string_view wording;  // "{name}" stands for the value of that name
};

// In the order of TextId.
std::span<const TextRow> Texts();

using Values = std::vector<std::pair<std::string_view, std::string>>;

// The wording with its placeholders filled in. Ends the program if placeholders and values do not match.
std::string Fill(TextId text_id, const Values& values);

// How often each text was filled in so far.
std::array<std::uint64_t, static_cast<std::size_t>(TextId::kEnd)>& TimesUsed();

}  // namespace model
