// Every text the checker can write, with placeholders that have names, and a count of how often each was said.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace model {

enum class Said {
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
  kEntryGone,
  kIdChanged,
  kKeySize,
  kSizeReduced,
  kTypeChanged,
  kCountReduced,
  kCountChanged,
  kAttributeChanged,
  kEntryGoneTlv,
  kIdGoneTlv,
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
  kAttributesGone,
  kListTypes,
  kListType,
  kListNumber,
  kSortFields,
  kSortRule,
  kDataProtocol,
  kNewNameGone,
  kOldNameGone,
  kSortAttribute,
  kGrowth,
  kOver256,
  kOver128,
  kTooLong,
  kGrown,
  kEnd
};

struct TextRow {
  Said said;
  std::string_view wording;  // "{name}" stands for the value of that name
};

// In the order of Said.
std::span<const TextRow> Texts();

using Values = std::vector<std::pair<std::string_view, std::string>>;

// The wording with its placeholders filled in. Ends the program where a placeholder and the values do not fit.
std::string Fill(Said said, const Values& values);

// How often each text was filled in so far.
std::array<std::uint64_t, static_cast<std::size_t>(Said::kEnd)>& TimesSaid();

}  // namespace model
