// The catalog of refusals: id, code, text and a one-line summary of each, written once. Rules and tool read the same rows.
//
// Texts are part of the interface, with their misspellings, double blanks and full-width commas. An id never changes its meaning.
#pragma once

#include "common/catalog.h"
#include "common/result_codes.h"
#include "common/text_format.h"

namespace korvel {

// A row whose text takes exactly Args.
template <class... Args>
struct Refusal : RefusalRow, TextFormat<Args...> {
  consteval Refusal(const char* row_id, int row_code, const char* row_text, const char* row_summary)
      : RefusalRow{row_id, row_code, row_text, row_summary}, TextFormat<Args...>(row_text) {}
};

using CString = const char*;

// What a lookup writes where the structure has no fields; the caller then takes the field for missing.
inline constexpr TextFormat<CString> kNoEntries("Table dose not have entry, table:'%s'");

// --- Arguments of the checks ---

inline constexpr Refusal<CString> kArguments{"arguments.check", -1, "Tnvaild parameter，please check the parameter! table: '%s'",
                                             "a library or the table name is missing"};
inline constexpr Refusal<int, CString> kTableType{"arguments.table-type", -1,
                                                  "Table_type is invaild type:%d,please check the table type!table:'%s'",
                                                  "the table type is neither generic nor list"};
inline constexpr Refusal<CString> kInitVersion{"arguments.protocol", -1,
                                               "init_qmx_version is invaild type，please check the init_qmx_version!  table:'%s'",
                                               "the protocol with which the table was created is neither QMX nor TLV"};
inline constexpr Refusal<CString> kCompatArguments{"arguments.compat", -1,
                                                   "invaild parameter, please check the parameter! table: '%s'",
                                                   "a library or the table name is missing"};
inline constexpr Refusal<> kMetaNull{"arguments.meta", -1, "Invalid parameter, meta is null",
                                     "a structure is missing, or a field no longer holds a structure"};
inline constexpr Refusal<> kOldMetaNull{"arguments.old-meta", -1, "old_meta is NULL!", "the old structure is missing"};
inline constexpr Refusal<> kNewMetaNull{"arguments.new-meta", -1, "new_meta is NULL!", "the new structure is missing"};
inline constexpr Refusal<> kNameMetaNull{"arguments.name-meta", -1, "meta is NULL",
                                         "the structure whose field names are checked is missing"};
inline constexpr Refusal<> kNameOrMeta{"arguments.lookup", -1, "Entry_name or meta is invalid",
                                       "a field was looked up without a name or with a negative id"};

// --- Libraries ---

inline constexpr Refusal<CString> kTlvToQmx{"library.tlv-to-qmx", -1, "Table can not be modified from TLV to QMX! table:'%s'",
                                            "a TLV library was changed to the record format"};
inline constexpr Refusal<int, int> kLibVersion{"library.version", -1, "LibVersion invalid, newVersion %d < oldVersion %d",
                                               "the version of the new library is below that of the old library"};
inline constexpr Refusal<CString> kTableMissing{"library.table", -2,
                                                "Get meta info failed, please check the table name ! table:'%s'",
                                                "the table is missing in one of the libraries"};
inline constexpr Refusal<CString> kCompatVersion{"library.no-version", -2, "Get metalib version failed! table:'%s'",
                                                 "the old library has no version"};
inline constexpr Refusal<CString> kValuesVersion{"library.no-source-version", -2, "get table [%s] metalib version failed.",
                                                 "the source library has no version"};
inline constexpr Refusal<CString, CString, CString, CString> kProtocolPair{
    "library.protocols", -2, "Table can not be modified from version:'%s' to version:'%s',init_qmx_version:'%s'!  table:'%s'",
    "a table created in TLV has a library in the record format"};

// --- Keys ---

inline constexpr Refusal<CString> kPrimaryKeyInvalid{"primary-key.missing", -4, "Primaykey is invalid! table:'%s'",
                                                     "the table has no primary key in one of the schemas"};
inline constexpr Refusal<CString> kPrimaryKeyCount{"primary-key.count", -4, "Primarykey number can't be modified!  table:'%s'",
                                                   "the number of primary key fields changed"};
inline constexpr Refusal<CString, CString> kPrimaryKeyField{"primary-key.field", -4,
                                                            "Primaykey can't be modified! primaykey:'%s' table:'%s'",
                                                            "the primary key contains a field that was not a key field"};
inline constexpr Refusal<CString> kNoPrimaryKey{"primary-key.none", -4, "Table dose not have primaykey, table:'%s'",
                                                "a key field was looked up in a structure without a primary key"};
inline constexpr Refusal<CString, CString> kNotPrimaryKey{"primary-key.member", -7,
                                                          "The entry is not belong to primarykey,entry:'%s' table:'%s'",
                                                          "a field is not part of the primary key"};
inline constexpr Refusal<CString, CString> kPrimaryKeySize{"primary-key.size", -3,
                                                           "The size of primarykey can't be modified! entry:'%s' metaname:'%s'",
                                                           "the size of a primary key field changed"};
inline constexpr Refusal<CString, CString> kTlvKeySize{"primary-key.size-tlv", -3,
                                                       "The size of primorykey can't be modified! entry:'%s' metaname:'%s'",
                                                       "the size of a primary key field changed (TLV)"};
inline constexpr Refusal<int, CString> kTlvKeyName{"primary-key.name-tlv", -3,
                                                   "The name of primarykey can't be modified! entry_id:'%d' metaname:'%s'",
                                                   "the first field with the id of a primary key field has another name (TLV)"};
inline constexpr Refusal<CString> kSplitKeyPresence{"splittable-key.presence", -5, "Splittablekey can't be modified! table:'%s'",
                                                    "a splittable key was added or removed"};
inline constexpr Refusal<CString, CString> kSplitKeyChanged{"splittable-key.changed", -5,
                                                            "Splittablekey can't be modified! splittablekey:'%s' table:'%s'",
                                                            "the fields of the splittable key changed"};
inline constexpr Refusal<CString> kSplitKeyNewText{"splittable-key.new-text", -5, "Can't get new splittablekey! table:'%s'",
                                                   "the new splittable key cannot be read"};
inline constexpr Refusal<CString> kSplitKeyOldText{"splittable-key.old-text", -5, "Can't get old splittablekey! table:'%s'",
                                                   "the old splittable key cannot be read"};

// --- Indexes ---

inline constexpr Refusal<CString> kIndexTableType{"index.table-type", -6, "Table_type is invaild type!  table:'%s'",
                                                  "the table type is neither generic nor list (index rules)"};
inline constexpr Refusal<CString> kIndexOnList{
    "index.list-table", -6, "List type table isn't allowed to configure index field! table:'%s'", "a list table has an index"};
inline constexpr Refusal<CString> kIndexCount{"index.count", -6, "The number of index can't be modified! table:'%s'",
                                              "the number of indexes changed"};
inline constexpr Refusal<CString, CString> kIndexName{"index.name", -6, "Can't change index field! index:'%s' table:'%s'",
                                                      "an index was renamed or replaced"};
inline constexpr Refusal<CString, CString> kIndexColumns{
    "index.columns", -6, "The column of index field can't be modified! index:'%s' table:'%s'", "the columns of an index changed"};
inline constexpr Refusal<> kIndexNull{"index.null", -1, "Invaild parameter! pstIndex is null", "an index is missing"};
inline constexpr Refusal<CString> kColumnSet{"index.column-set", -7, "Index column has been modified! table:'%s'",
                                             "the number of columns of an index changed, or a column was added"};
// The text says index where it names the column's field; part of the interface.
inline constexpr Refusal<CString, CString> kColumnField{"index.column-field", -7,
                                                        "Index column has been modified!index:'%s' table:'%s'",
                                                        "a field was added to the columns of an index"};

// --- Fields ---

inline constexpr Refusal<CString> kStructMissing{"field.structure-missing", -3, "Can't modify the table name! table:'%s'",
                                                 "the structure of a field is missing in the new library"};
inline constexpr Refusal<CString, CString> kStructName{"field.structure", -3, "Can't modify the entry struct type  %s -> %s",
                                                       "a field's structure was replaced by another structure (record format)"};
inline constexpr Refusal<CString, CString> kEntryMissing{"field.missing", -3,
                                                         "The entry can't be found! entry_name:'%s' metaname:'%s'",
                                                         "a field was removed or renamed (record format)"};
inline constexpr Refusal<CString> kTlvEntryMissing{"field.missing-tlv", -3,
                                                   "The entry:%s can't be delete now,it will be supported by korvsvr of 3.28.0!",
                                                   "a field was removed or renamed, or its id changed (TLV)"};
inline constexpr Refusal<int, CString> kEntryId{
    "field.id", -3, "The entry_id can't be modified! entry_id:'%d' metaname:'%s'",
    "a field's id changed (both libraries in TLV, table created in the record format)"};
inline constexpr Refusal<int, CString> kTlvEntryId{"field.id-tlv", -3, "The entry can't be modified! entry_id:'%d' metaname:'%s'",
                                                   "a field's id is negative (TLV)"};
inline constexpr Refusal<CString, CString> kEntrySize{
    "field.size", -3, "The size of entry can't be reduced! entry:'%s' metaname:'%s'", "a field's size was reduced"};
inline constexpr Refusal<CString, CString> kEntryType{
    "field.type", -3, "The type of entry can't be modified! entry:'%s' metaname:'%s'", "a field's type changed"};
inline constexpr Refusal<int, CString> kSubEntryType{"field.type-tlv", -3,
                                                     "The type of entry can't be modified!  entry_id:'%d' metaname:'%s'",
                                                     "the type of a structure member changed (TLV)"};
inline constexpr Refusal<CString, CString> kReferCount{
    "field.count-refer", -3, "The count of entry can't be reduced if contain refer property! entry:'%s' metaname:'%s'",
    "the count of a field with a refer property was reduced"};
inline constexpr Refusal<CString, CString> kFixedCount{
    "field.count", -3, "The count of entry can't be modified if not contain refer property! entry:'%s' metaname:'%s'",
    "the count of a field without a refer property changed"};
inline constexpr Refusal<CString, CString> kSubEntryCount{"field.count-tlv", -3,
                                                          "The count of entry can't be reduced! entry:'%s' metaname:'%s'",
                                                          "the count of a structure member was reduced (TLV)"};
inline constexpr Refusal<CString, CString> kCustomAttr2{"field.customattr2", -3,
                                                        "The customattr2 of entry can not modify! entry:'%s' metaname:'%s'",
                                                        "a field's second custom attribute changed (record format)"};
inline constexpr Refusal<CString, CString> kEntryVersion{"field.version", -8,
                                                         "Version of the entry can't be modified! entry:'%s' meta:'%s'",
                                                         "the version of an existing field changed"};
inline constexpr Refusal<CString, CString> kNewEntryVersion{
    "field.new-version", -8,
    "new entry version lower than old metalib version or misspell 'version', please check both. entry:'%s' meta:'%s'",
    "the version of an added field is not above that of the old library"};
inline constexpr Refusal<CString, CString> kEntryOrder{
    "field.order", -8, "Order of the entry can't be modified! entry:'%s' meta:'%s'",
    "the order of existing fields changed, or a field before them was removed"};

// --- Same set of fields ---

inline constexpr Refusal<CString, int, CString, int> kFieldNum{"field-set.count", -33,
                                                               "%s ValueFieldNum(%d) is not equal to %s ValueFieldNum(%d)",
                                                               "the structures have different numbers of fields"};
inline constexpr Refusal<CString, CString> kFieldMissing{"field-set.missing", -34, "can not find value_entry:%s in %s",
                                                         "a field is missing in the other structure"};
inline constexpr Refusal<CString, CString, int, CString, CString, int, int, int, std::size_t, std::size_t> kFieldShape{
    "field-set.shape", -34,
    "%s value_entry:%s type(%d) != %s value_entry:%s type(%d) or src entry count(%d) != dst entry count(%d) or src entry "
    "size(%zu) != dst entry size(%zu)",
    "a field has a different type, count or size"};

// --- Field names ---

inline constexpr Refusal<CString> kFieldNames{"field-name.invalid", 0, "CheckFieldNameValidate failed! table:'%s'",
                                              "a field name is not a valid identifier"};
inline constexpr Refusal<> kNameEmpty{"field-name.empty", -19, "field name is empty.", "a field name is empty"};
inline constexpr Refusal<CString> kNameDigit{"field-name.digit", -17, "field name[%s] startswith digit.",
                                             "a field name begins with a digit"};
inline constexpr Refusal<CString> kNameCharacter{"field-name.character", -18, "field name[%s] has illegal character.",
                                                 "a field name contains a character other than letters, digits and underscore"};
inline constexpr Refusal<CString> kNameLength{"field-name.length", -9, "length of entry %s is too long",
                                              "a field name is longer than 31 bytes"};

// --- Kind of table ---

// The trailing blank is part of the interface.
inline constexpr Refusal<CString> kToSortList{"table.to-sortlist", -3,
                                              "Can't modify table type (table:%s) from others to sortlist ",
                                              "a table without attributes was changed to a sorted list"};
inline constexpr Refusal<CString, CString, CString> kDeclaredType{"table.declared-type", -4,
                                                                  "Can't change table_type(table:%s) from %s to %s",
                                                                  "added table attributes name a type other than the server's"};
inline constexpr Refusal<CString, int, int> kDeclaredListNum{"table.declared-list-num", -5,
                                                             "Can't change table_list_num(table:%s) from %d to %d",
                                                             "added table attributes name a list length other than the server's"};
inline constexpr Refusal<CString> kToOldFormat{"table.attributes-removed", -15,
                                               "Can't change table %s from new format to old format",
                                               "the table's attributes were removed"};
inline constexpr Refusal<CString, CString> kKind{"table.type", -4, "Can't change table type from %s to %s",
                                                 "the table type changed"};
inline constexpr Refusal<int, int> kListNum{"table.list-num", -5, "Can't reduce list_num from %d to %d",
                                            "the list length was reduced"};
inline constexpr Refusal<int, int> kSortFieldNum{"table.sort-fields", -6, "Can't change sort_field_num from %d to %d",
                                                 "the number of sort fields changed"};
inline constexpr Refusal<CString, CString> kSortRule{"table.sort-rule", -15, "Can't change sort_rule from %s to %s",
                                                     "the sort rule changed"};
inline constexpr Refusal<CString, CString> kDataProtocol{
    "table.data-protocol", -16, "Can't change DataProtocolType from %s to %s", "the table's data protocol changed"};
inline constexpr Refusal<int> kNewEntryNull{"table.new-field", -7, "System error:get entry(%d) failed <-7>",
                                            "a new field cannot be read"};
inline constexpr Refusal<int> kNewEntryName{"table.new-field-name", -8, "System error:get entry(%d) name failed <-8>",
                                            "a new field has no name"};
inline constexpr Refusal<int> kOldEntryNull{"table.old-field", -9, "System error:get entry(%d) failed <-9>",
                                            "an old field cannot be read"};
inline constexpr Refusal<int> kOldEntryName{"table.old-field-name", -10, "System error:get entry(%d) name failed <-10>",
                                            "an old field has no name"};
inline constexpr Refusal<CString, CString> kSortAttribute{"table.sort-attribute", -11,
                                                          "System error:old_customattr2:%s,new_customattr2:%s",
                                                          "the second custom attribute of a field of a sorted list changed"};
// CheckTable's own text. Which code follows is the caller's: -1 for the old side, -2 for the new.
inline constexpr Refusal<CString, CString> kTableAttributes{"table.attributes", ERROR_ATTEMPT_MODIFY_TABLE_CUSTOMATTR_STYLE,
                                                            "Table attributes are invalid! table:'%s', %s",
                                                            "the table attributes are invalid"};

// --- Field lengths ---

inline constexpr Refusal<int, CString> kLengthEntryNull{"length.field-missing", -2, "entry %d is null! Meta name: %s",
                                                        "a field cannot be read"};
inline constexpr Refusal<CString> kOversized{"length.limit", -2, "ERR_ENTRY_LEN;%s",
                                             "fields are larger than the servers allow and are not whitelisted"};
inline constexpr Refusal<CString> kWhitelistGrown{"length.whitelist", -3, "WARNING_WHITELIST:%s",
                                                  "whitelisted fields above the limit grew and need manual confirmation"};

}  // namespace korvel
