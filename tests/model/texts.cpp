// The texts in one table. Misspellings, double blanks and full-width commas are part of the interface. The rules that write them
// are in rules_*.cpp. Tested by model_test.cpp, which requires that each of them occurs.
#include "model/texts.h"

#include <cstdio>
#include <cstdlib>

namespace model {
namespace {

using enum TextId;

constexpr TextRow kRows[] = {
    {kBadArguments, "Tnvaild parameter，please check the parameter! table: '{table}'"},
    {kTrace, "{file}({line})-<{operation}>:  m_svr_ver:{server} table:'{table}' type is :{type}"},
    {kBadTableType, "Table_type is invaild type:{type},please check the table type!table:'{table}'"},
    {kBadInitVersion, "init_qmx_version is invaild type，please check the init_qmx_version!  table:'{table}'"},
    {kTlvToQmx, "Table can not be modified from TLV to QMX! table:'{table}'"},
    {kLibVersion, "LibVersion invalid, newVersion {new} < oldVersion {old}"},
    {kNoTable, "Get meta info failed, please check the table name ! table:'{table}'"},
    {kTlvFieldsFailed, "CompareEntryValueFieldTLV failed! table:'{table}'"},
    {kProtocols, "Table can not be modified from version:'{old}' to version:'{new}',init_qmx_version:'{init}'!  table:'{table}'"},
    {kNameCheckFailed, "CheckFieldNameValidate failed! table:'{table}'"},
    {kSucceeded, "ModifyTable successed! table:'{table}'"},

    {kCompatArguments, "invaild parameter, please check the parameter! table: '{table}'"},
    {kCompatNoTable, "Get meta info failed, please check the table name ! table:'{table}'"},
    {kCompatKey, "ComparePrimaryKey failed! table:'{table}'"},
    {kCompatFields, "CompareEntryValueField failed! table:'{table}'"},
    {kCompatOrder, "CompareOrder failed! table:'{table}'"},
    {kCompatNoVersion, "Get metalib version failed! table:'{table}'"},
    {kCompatVersion, "CompareVersion failed! table:'{table}'"},

    {kValuesTlv, "CompareEntryValueFieldTLV failed! ret:{result}"},
    {kValuesFields, "CompareEntryValueField failed! ret:{result}"},
    {kValuesNoVersion, "get table [{table}] metalib version failed."},
    {kValuesVersion, "CompareVersion failed! ret:{result}"},

    {kNameOrMeta, "Entry_name or meta is invalid"},
    {kNoKey, "Table dose not have primaykey, table:'{table}'"},
    {kNotInKey, "The entry is not belong to primarykey,entry:'{entry}' table:'{table}'"},
    {kMetaNull, "Invalid parameter, meta is null"},
    {kKeyInvalid, "Primaykey is invalid! table:'{table}'"},
    {kKeyNumber, "Primarykey number can't be modified!  table:'{table}'"},
    {kKeyChanged, "Primaykey can't be modified! primaykey:'{entry}' table:'{table}'"},

    {kNoSplit, "Table dose not have SplittableKey! table:'{table}'"},
    {kSplitPresence, "Splittablekey can't be modified! table:'{table}'"},
    {kNewSplitUnreadable, "Can't get new splittablekey! table:'{table}'"},
    {kOldSplitUnreadable, "Can't get old splittablekey! table:'{table}'"},
    {kSplitChanged, "Splittablekey can't be modified! splittablekey:'{key}' table:'{table}'"},

    {kIndexTableType, "Table_type is invaild type!  table:'{table}'"},
    {kIndexOnList, "List type table isn't allowed to configure index field! table:'{table}'"},
    {kIndexNumber, "The number of index can't be modified! table:'{table}'"},
    {kIndexName, "Can't change index field! index:'{index}' table:'{table}'"},
    {kIndexColumns, "The column of index field can't be modified! index:'{index}' table:'{table}'"},
    {kColumnSet, "Index column has been modified! table:'{table}'"},
    {kColumnField, "Index column has been modified!index:'{entry}' table:'{table}'"},

    {kOldMetaNull, "old_meta is NULL!"},
    {kNewMetaNull, "new_meta is NULL!"},
    {kFieldNumber, "{old} ValueFieldNum({old_number}) is not equal to {new} ValueFieldNum({new_number})"},
    {kFieldAbsent, "can not find value_entry:{entry} in {table}"},
    {kFieldShape,
     "{old} value_entry:{old_entry} type({old_type}) != {new} value_entry:{new_entry} type({new_type}) or src entry "
     "count({old_count}) != dst entry count({new_count}) or src entry size({old_size}) != dst entry size({new_size})"},
    {kFieldsSame, "CompareValueField between new and old table:{table} successed"},

    {kNoEntries, "Table dose not have entry, table:'{table}'"},
    {kVersionChanged, "Version of the entry can't be modified! entry:'{entry}' meta:'{table}'"},
    {kNewVersionLow,
     "new entry version lower than old metalib version or misspell 'version', please check both. "
     "entry:'{entry}' meta:'{table}'"},
    {kOrder, "Order of the entry can't be modified! entry:'{entry}' meta:'{table}'"},

    {kStructureMissing, "Can't modify the table name! table:'{table}'"},
    {kStructureChanged, "Can't modify the entry struct type  {old} -> {new}"},
    {kEntryRemoved, "The entry can't be found! entry_name:'{entry}' metaname:'{table}'"},
    {kIdChanged, "The entry_id can't be modified! entry_id:'{id}' metaname:'{table}'"},
    {kKeySize, "The size of primarykey can't be modified! entry:'{entry}' metaname:'{table}'"},
    {kSizeReduced, "The size of entry can't be reduced! entry:'{entry}' metaname:'{table}'"},
    {kTypeChanged, "The type of entry can't be modified! entry:'{entry}' metaname:'{table}'"},
    {kCountReduced, "The count of entry can't be reduced if contain refer property! entry:'{entry}' metaname:'{table}'"},
    {kCountChanged, "The count of entry can't be modified if not contain refer property! entry:'{entry}' metaname:'{table}'"},
    {kAttributeChanged, "The customattr2 of entry can not modify! entry:'{entry}' metaname:'{table}'"},

    {kEntryRemovedTlv, "The entry:{entry} can't be delete now,it will be supported by korvsvr of 3.28.0!"},
    {kIdRemovedTlv, "The entry can't be modified! entry_id:'{id}' metaname:'{table}'"},
    {kKeyNameTlv, "The name of primarykey can't be modified! entry_id:'{id}' metaname:'{table}'"},
    {kKeySizeTlv, "The size of primorykey can't be modified! entry:'{entry}' metaname:'{table}'"},
    {kTypeChangedTlv, "The type of entry can't be modified!  entry_id:'{id}' metaname:'{table}'"},
    {kCountReducedTlv, "The count of entry can't be reduced! entry:'{entry}' metaname:'{table}'"},

    {kNamePreset, "entry name is too long:"},
    {kNameLength, "length of entry name {entry} is {length}"},
    {kNameEmpty, "field name is empty."},
    {kNameDigit, "field name[{entry}] startswith digit."},
    {kNameCharacter, "field name[{entry}] has illegal character."},
    {kNameTooLong, "length of entry {entry} is too long"},

    {kBadAttributes, "{text}"},
    {kToSortList, "Can't modify table type (table:{table}) from others to sortlist "},
    {kNotDeclaredType, "Can't change table_type(table:{table}) from {old} to {new}"},
    {kNotDeclaredNumber, "Can't change table_list_num(table:{table}) from {old} to {new}"},
    {kAttributesRemoved, "Can't change table {table} from new format to old format"},
    {kListTypes, "CheckListMetaInfo({table}) old_table_type:{old},new_table_type:{new}"},
    {kListType, "Can't change table type from {old} to {new}"},
    {kListNumber, "Can't reduce list_num from {old} to {new}"},
    {kSortFields, "Can't change sort_field_num from {old} to {new}"},
    {kSortRule, "Can't change sort_rule from {old} to {new}"},
    {kDataProtocol, "Can't change DataProtocolType from {old} to {new}"},
    {kNewNameMissing, "System error:get entry({position}) name failed <-8>"},
    {kOldNameMissing, "System error:get entry({position}) name failed <-10>"},
    {kSortAttribute, "System error:old_customattr2:{old},new_customattr2:{new}"},

    {kGrowth, "entry {entry} old_len:{old},new_len:{new}"},
    {kOver256, "entry {entry} length({length}) is greater than 128kB"},
    {kOver128, "entry {entry} length({length}) is greater than 256KB"},
    {kTooLong, "ERR_ENTRY_LEN;{names}"},
    {kGrown, "WARNING_WHITELIST:{fields}"},
};

[[noreturn]] void DoesNotFit(const TextRow& row) {
  std::fprintf(stderr, "values do not fit \"%s\"\n", std::string(row.wording).c_str());
  std::abort();
}

const std::string& ValueOf(std::string_view name, const Values& values, const TextRow& row) {
  for (const auto& [value_name, value] : values) {
    if (value_name == name) return value;
  }
  DoesNotFit(row);
}

}  // namespace

std::span<const TextRow> Texts() { return kRows; }

std::string Fill(TextId text_id, const Values& values) {
  const TextRow& row = Texts()[static_cast<std::size_t>(text_id)];
  ++TimesUsed()[static_cast<std::size_t>(text_id)];
  std::string text;
  std::string_view rest = row.wording;
  std::size_t filled = 0;
  while (!rest.empty()) {
    const std::size_t open = rest.find('{');
    text += rest.substr(0, open);
    if (open == std::string_view::npos) break;
    const std::size_t close = rest.find('}', open);
    text += ValueOf(rest.substr(open + 1, close - open - 1), values, row);
    ++filled;
    rest.remove_prefix(close + 1);
  }
  if (filled != values.size()) DoesNotFit(row);
  return text;
}

std::array<std::uint64_t, static_cast<std::size_t>(TextId::kEnd)>& TimesUsed() {
  static std::array<std::uint64_t, static_cast<std::size_t>(TextId::kEnd)> times = {};
  return times;
}

}  // namespace model
