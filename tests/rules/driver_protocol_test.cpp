// KorvelModifyTable: which field rules run for which protocols, and the check of field lengths after them.

#include "rules/rule_test.h"

namespace rules {
namespace {

using qmx::Protocol;

constexpr char kEntry[] = "KorvelModifyTable";
constexpr char kPreset[] = "entry name is too long:";

struct Settings {
  int init_version = 1;
  std::string server = {};
  std::string whitelist = {};
  int list_num = 0;
  int table_type = 0;
};

Call Modify(const Library& old_library, const Library& new_library, const Settings& settings) {
  return Between(old_library, new_library,
                 [=](ModifyTable& checker, const Schema& old_schema, const Schema& new_schema, auto log) {
                   return checker.KorvelModifyTable(old_schema.Lib(), new_schema.Lib(), support::TableName("mall%s").c_str(),
                                                    settings.table_type, settings.init_version, log, settings.server,
                                                    settings.whitelist, settings.list_num);
                 });
}

Library Mall(Protocol protocol) {
  return {.protocol = protocol,
          .tables = {{.fields = {{.name = "uid", .id = 1}, {.name = "box", .type = "box%s", .id = 2}}, .key = {"uid"}},
                     {.name = "box%s", .fields = {{.name = "x", .id = 1}}}}};
}

// Refused by each set of rules in its own way: the record rules do not find x, the TLV rules allow that.
Library MemberRenamed(Protocol protocol) {
  Library library = Mall(protocol);
  library.tables[1].fields[0].name = "y";
  return library;
}
// The reverse: the record rules compare ids only if both libraries have the flag.
Library FieldRenumbered(Protocol protocol) {
  Library library = Mall(protocol);
  library.tables[0].fields[1].id = 9;
  return library;
}
Library AttributeAdded(Protocol protocol) {
  Library library = Mall(protocol);
  library.tables[0].fields[1].attr2 = "pii";
  return library;
}
Library FieldsSwapped(Protocol protocol) {
  Library library = Mall(protocol);
  std::swap(library.tables[0].fields[0], library.tables[0].fields[1]);
  return library;
}

std::string TraceLine(const Settings& settings) {
  return Trace(kEntry, "src/common/modify_table.cpp(LINE)-<KorvelModifyTable>:  m_svr_ver:" + settings.server +
                           " table:'mall%s' type is :" + std::to_string(settings.table_type));
}

const std::string kNoSplit = Info("CompareSplittableKey", "Table dose not have SplittableKey! table:'mall%s'");
const std::string kUid = Info("CheckFieldNameValidate", "length of entry name uid is 3");
const std::string kBox = Info("CheckFieldNameValidate", "length of entry name box is 3");
const std::string kDone = Info(kEntry, "ModifyTable successed! table:'mall%s'");

Outcome After(int code, const std::string& text, std::vector<std::string> records, const Settings& settings) {
  records.insert(records.begin(), {TraceLine(settings), kNoSplit});
  return {.code = code, .buffer = text, .log = records, .server = settings.server};
}

Outcome Allowed(int init_version) { return After(0, kPreset, {kUid, kBox, kDone}, {init_version}); }

Outcome NotComparable(const std::string& old_protocol, const std::string& new_protocol) {
  const std::string text = "Table can not be modified from version:'" + old_protocol + "' to version:'" + new_protocol +
                           "',init_qmx_version:'TLV'!  table:'mall%s'";
  return After(-2, text, {Error(kEntry, text)}, {2});
}

Outcome RecordRefusal(int code, const std::string& rule, const std::string& text) {
  return After(code, text, {Error(rule, text)}, {1});
}

Outcome TlvRefusal(int init_version, const std::string& text) {
  return After(
      -3, text,
      {Error("CompareEntryValueFieldTLV", text), ErrorLogOnly(kEntry, "CompareEntryValueFieldTLV failed! table:'mall%s'")},
      {init_version});
}

std::vector<Row> Rows() {
  constexpr Protocol kQmx = Protocol::kQmx, kTlv = Protocol::kTlv;
  const Outcome lost = RecordRefusal(-3, "CompareEntryValueField", "The entry can't be found! entry_name:'x' metaname:'box%s'");
  const Outcome attribute =
      RecordRefusal(-3, "CompareEntryValueField", "The customattr2 of entry can not modify! entry:'box' metaname:'mall%s'");
  const Outcome order = RecordRefusal(-8, "CompareOrder", "Order of the entry can't be modified! entry:'box' meta:'mall%s'");
  const std::string deleted = "The entry:box can't be delete now,it will be supported by korvsvr of 3.28.0!";
  return {
      {"record_record_1", Modify(Mall(kQmx), Mall(kQmx), {1}), Allowed(1)},
      {"record_tlv_1", Modify(Mall(kQmx), Mall(kTlv), {1}), Allowed(1)},
      {"tlv_tlv_1", Modify(Mall(kTlv), Mall(kTlv), {1}), Allowed(1)},
      {"tlv_tlv_2", Modify(Mall(kTlv), Mall(kTlv), {2}), Allowed(2)},
      {"record_record_2", Modify(Mall(kQmx), Mall(kQmx), {2}), NotComparable("QMX", "QMX")},
      {"record_tlv_2", Modify(Mall(kQmx), Mall(kTlv), {2}), NotComparable("QMX", "TLV")},
      {"unset_unset_2", Modify(Mall(Protocol::kUnset), Mall(Protocol::kUnset), {2}), NotComparable("QMX", "QMX")},
      {"unset_tlv_2", Modify(Mall(Protocol::kUnset), Mall(kTlv), {2}), NotComparable("QMX", "TLV")},
      {"record_record_1_member_renamed", Modify(Mall(kQmx), MemberRenamed(kQmx), {1}), lost},
      {"record_tlv_1_member_renamed", Modify(Mall(kQmx), MemberRenamed(kTlv), {1}), lost},
      {"tlv_tlv_1_member_renamed", Modify(Mall(kTlv), MemberRenamed(kTlv), {1}), lost},
      {"tlv_tlv_2_member_renamed", Modify(Mall(kTlv), MemberRenamed(kTlv), {2}), Allowed(2)},
      {"record_tlv_1_renumbered", Modify(Mall(kQmx), FieldRenumbered(kTlv), {1}), Allowed(1)},
      {"tlv_tlv_1_renumbered", Modify(Mall(kTlv), FieldRenumbered(kTlv), {1}), TlvRefusal(1, deleted)},
      {"tlv_tlv_2_renumbered", Modify(Mall(kTlv), FieldRenumbered(kTlv), {2}), TlvRefusal(2, deleted)},
      {"tlv_tlv_1_attribute", Modify(Mall(kTlv), AttributeAdded(kTlv), {1}), attribute},
      {"tlv_tlv_2_attribute", Modify(Mall(kTlv), AttributeAdded(kTlv), {2}), Allowed(2)},
      {"tlv_tlv_1_swapped", Modify(Mall(kTlv), FieldsSwapped(kTlv), {1}), order},
      {"tlv_tlv_2_swapped", Modify(Mall(kTlv), FieldsSwapped(kTlv), {2}), After(0, kPreset, {kBox, kUid, kDone}, {2})},
  };
}

INSTANTIATE_TEST_SUITE_P(ModifyProtocol, RuleTest, testing::ValuesIn(Rows()), RowName);

// Structure names are compared whenever the record rules run, whatever the flags are.
TEST(ModifyProtocol, TwoTlvLibrariesOfRecordTableUseBothRuleSets) {
  Library other = Mall(Protocol::kTlv);
  other.tables[0].fields[1].type = other.tables[1].name = "bag%s";
  EXPECT_EQ(OutcomeOf(Modify(Mall(Protocol::kTlv), other, {2})), Allowed(2));
  EXPECT_EQ(OutcomeOf(Modify(Mall(Protocol::kTlv), other, {1})),
            RecordRefusal(-3, "CompareEntryValueField", "Can't modify the entry struct type  box%s -> bag%s"));
}

// Field lengths, the last rule.
Library Sized(std::uint64_t size) {
  return Of({{.fields = {{.name = "uid"}, {.name = "box", .type = "bytes", .size = size}}, .key = {"uid"}}});
}

constexpr char kLength[] = "CheckWhiteListFieldLen";

std::vector<Row> LengthRows() {
  const Settings plain = {.server = "3.28.9"}, listed = {.server = "3.28.9", .whitelist = "box"}, unasked = {.whitelist = "box"};
  const std::string grew = "WARNING_WHITELIST:entry:box size 8 -> 131073 |";
  Outcome warned =
      After(-35, grew, {kUid, kBox, Info(kLength, "entry box old_len:8,new_len:131073"), Warn(kLength, grew)}, listed);
  warned.grown = {"box 8 -> 131073"};
  warned.white = {"box"};
  Outcome kept = After(0, kPreset, {kUid, kBox, Info(kLength, "entry box old_len:131073,new_len:131073"), kDone}, listed);
  kept.white = {"box"};
  return {
      {"within_the_limit", Modify(Sized(8), Sized(131072), plain), After(0, kPreset, {kUid, kBox, kDone}, plain), false},
      {"above_the_limit", Modify(Sized(8), Sized(131073), plain),
       After(-2, "ERR_ENTRY_LEN;box|", {kUid, kBox, ErrorLogOnly(kLength, "entry box length(131073) is greater than 256KB")},
             plain),
       false},
      {"whitelisted_and_grown", Modify(Sized(8), Sized(131073), listed), warned, false},
      {"whitelisted_and_kept", Modify(Sized(131073), Sized(131073), listed), kept, false},
      {"not_called_without_a_server_version", Modify(Sized(8), Sized(10485761), unasked),
       After(0, kPreset, {kUid, kBox, kDone}, unasked), false},
  };
}

INSTANTIATE_TEST_SUITE_P(ModifyLength, RuleTest, testing::ValuesIn(LengthRows()), RowName);

// With a null category and a server version, the last rule refuses without a text, and the preset of the name rule stays.
TEST(ModifyLength, WithoutCategoryCheckReturnsMinusOneWithoutText) {
  ModifyTable checker;
  EXPECT_EQ(Modify(Sized(8), Sized(8), {.server = "3.28.9"})(checker, nullptr), -1);
  EXPECT_STREQ(checker.GetErrType(), kPreset);
  EXPECT_EQ(Modify(Sized(8), Sized(8), {})(checker, nullptr), 0);
}

TEST(ModifyLength, ServerVersionIsThatOfTheLastCall) {
  ModifyTable checker;
  support::CaptureCategory log;
  Modify(Sized(8), Sized(8), {.server = "3.28.9"})(checker, &log);
  EXPECT_EQ(checker.m_svr_ver, "3.28.9");
  Modify(Absent(), Absent(), {})(checker, &log);
  EXPECT_EQ(checker.m_svr_ver, "");
}

// A field that grew in an earlier call is reported by every later one.
TEST(ModifyLength, GrowthInEarlierCallRefusesLaterOne) {
  ModifyTable checker;
  support::CaptureCategory log;
  EXPECT_EQ(Modify(Sized(8), Sized(131073), {.server = "1", .whitelist = "box"})(checker, &log), -35);
  EXPECT_EQ(Modify(Sized(8), Sized(8), {.server = "1"})(checker, &log), -35);
  EXPECT_STREQ(checker.GetErrType(), "WARNING_WHITELIST:entry:box size 8 -> 131073 |");
}

// The list length is passed to the list rule: a table with an old definition becomes a list with the length on the server.
TEST(ModifyList, TypeAndLengthReachTheListRule) {
  const Library old_kind = Sized(8);
  Library list = old_kind;
  list.tables[0].attr = "TableType=LIST;ListNum=8";
  const auto outcome = [&](int type, int number) {
    return OutcomeOf(Modify(old_kind, list, {.list_num = number, .table_type = type}));
  };
  const Settings as_list = {.list_num = 8, .table_type = 1}, as_generic = {.list_num = 8, .table_type = 0};
  EXPECT_EQ(outcome(1, 8), After(0, kPreset, {kUid, kBox, kDone}, as_list));
  const std::string number = "Can't change table_list_num(table:mall%s) from 9 to 8";
  EXPECT_EQ(outcome(1, 9), After(-1, number, {Error("CheckListMetaInfo", number)}, as_list));
  const std::string type = "Can't change table_type(table:mall%s) from GENERIC to LIST";
  EXPECT_EQ(outcome(0, 8), After(-1, type, {Error("CheckListMetaInfo", type)}, as_generic));
}

}  // namespace
}  // namespace rules
