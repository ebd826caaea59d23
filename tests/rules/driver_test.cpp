// KorvelModifyTable: its arguments, the order of its steps, and the state after each refusal.

#include <climits>

#include "rules/rule_test.h"

namespace rules {
namespace {

using qmx::Protocol;
using support::Flag;

constexpr char kEntry[] = "KorvelModifyTable";
constexpr char kPreset[] = "entry name is too long:";  // the text that the last rule leaves if it finds nothing

struct Settings {
  std::optional<std::string> metaname = "mall%s";
  int table_type = 0;
  int init_version = 1;
  std::string server = {};
  std::string whitelist = {};
  int list_num = 0;
};

Call Modify(const Library& old_library, const Library& new_library, const Settings& settings = {}) {
  return Between(
      old_library, new_library, [=](ModifyTable& checker, const Schema& old_schema, const Schema& new_schema, auto log) {
        const std::string name = support::TableName(settings.metaname.value_or(""));
        return checker.KorvelModifyTable(old_schema.Lib(), new_schema.Lib(), settings.metaname ? name.c_str() : nullptr,
                                         settings.table_type, settings.init_version, log, settings.server, settings.whitelist,
                                         settings.list_num);
      });
}

Library Mall(Protocol protocol = Protocol::kQmx, int version = 5) {
  return {.version = version,
          .protocol = protocol,
          .tables = {{.fields = {{.name = "uid", .type = "uint64", .id = 1}, {.name = "zone", .id = 2}}, .key = {"uid"}}}};
}

// A library of the table with one more field, whose version is above that of the old library.
Library Grown(Protocol protocol = Protocol::kQmx) {
  Library library = Mall(protocol, 6);
  library.tables[0].fields.push_back({.name = "note", .id = 3, .version = 6});
  return library;
}

std::string TraceText(const std::string& table = "mall%s", int type = 0, const std::string& server = {}) {
  return "src/common/modify_table.cpp(LINE)-<KorvelModifyTable>:  m_svr_ver:" + server + " table:'" + table +
         "' type is :" + std::to_string(type);
}
std::string TraceLine(const std::string& table = "mall%s", int type = 0, const std::string& server = {}) {
  return Trace(kEntry, TraceText(table, type, server));
}

const std::string kNoSplit = Info("CompareSplittableKey", "Table dose not have SplittableKey! table:'mall%s'");
const std::string kUid = Info("CheckFieldNameValidate", "length of entry name uid is 3");
const std::string kZone = Info("CheckFieldNameValidate", "length of entry name zone is 4");
const std::string kNote = Info("CheckFieldNameValidate", "length of entry name note is 4");
const std::string kDone = Info(kEntry, "ModifyTable successed! table:'mall%s'");

// The trace, these records, and the text of the refusal in the buffer.
Outcome After(int code, const std::string& text, const std::vector<std::string>& records, const Settings& settings = {}) {
  Outcome outcome = {.code = code, .buffer = text, .log = {TraceLine("mall%s", settings.table_type, settings.server)}};
  outcome.log.insert(outcome.log.end(), records.begin(), records.end());
  outcome.server = settings.server;
  return outcome;
}

// A refusal by the operation itself, directly after the trace.
Outcome Stopped(int code, const std::string& text, const Settings& settings = {}) {
  return After(code, text, {Error(kEntry, text)}, settings);
}

const Outcome kAllowed = After(0, kPreset, {kNoSplit, kUid, kZone, kDone});
const Outcome kAllowedGrown = After(0, kPreset, {kNoSplit, kUid, kZone, kNote, kDone});

// An invalid argument is refused before the trace.
Outcome BadParameter(const std::string& name) {
  Outcome outcome = Refused(-1, kEntry, "Tnvaild parameter\xef\xbc\x8cplease check the parameter! table: '" + name + "'");
  outcome.server = "9.9";
  return outcome;
}

std::vector<Row> ParameterRows() {
  const Library mall = Mall();
  const Settings named = {.server = "9.9"}, nameless = {.metaname = std::nullopt, .server = "9.9"};
  const Settings empty = {.metaname = "", .server = "9.9"}, odd = {.table_type = 7, .init_version = 7, .server = "9.9"};
  return {
      {"null_old_library", Modify(Absent(), mall, named), BadParameter("mall%s")},
      {"null_new_library", Modify(mall, Absent(), named), BadParameter("mall%s")},
      {"null_name", Modify(mall, mall, nameless), BadParameter("(null)")},
      {"empty_name", Modify(mall, mall, empty), BadParameter("")},
      {"everything_null", Modify(Absent(), Absent(), nameless), BadParameter("(null)")},
      {"before_the_other_arguments", Modify(Absent(), mall, odd), BadParameter("mall%s")},
  };
}

Row TypeRow(const std::string& name, int type) {
  const Settings settings = {.table_type = type, .init_version = 3, .server = "3.29"};
  return {name, Modify(Mall(Protocol::kTlv, 9), Mall(), settings),
          Stopped(-1, "Table_type is invaild type:" + std::to_string(type) + ",please check the table type!table:'mall%s'",
                  settings)};
}

Row InitRow(const std::string& name, int version) {
  const Settings settings = {.init_version = version};
  return {
      name, Modify(Mall(Protocol::kTlv, 9), Mall(), settings),
      Stopped(-1, "init_qmx_version is invaild type\xef\xbc\x8cplease check the init_qmx_version!  table:'mall%s'", settings)};
}

// Only the flag word changes.
Row FlagRow(const std::string& name, std::int64_t old_word, std::int64_t new_word, bool refused) {
  const Outcome outcome = refused ? Stopped(-1, "Table can not be modified from TLV to QMX! table:'mall%s'") : kAllowed;
  return {name, Modify(Mall().With(Flag(old_word)), Mall().With(Flag(new_word))), outcome};
}

Outcome OlderVersion(int new_version, int old_version) {
  return Stopped(
      -1, "LibVersion invalid, newVersion " + std::to_string(new_version) + " < oldVersion " + std::to_string(old_version));
}

std::vector<Row> ArgumentRows() {
  const Library mall = Mall();
  const Outcome missing = Stopped(-2, "Get meta info failed, please check the table name ! table:'mall%s'");
  const Library shop = Of({{.name = "shop%s", .fields = {{"uid"}}, .key = {"uid"}}});
  return {
      TypeRow("table_type_two", 2),
      TypeRow("table_type_negative", -1),
      TypeRow("table_type_lowest", INT_MIN),
      InitRow("protocol_zero", 0),
      InitRow("protocol_three", 3),
      InitRow("protocol_negative", -1),
      FlagRow("tlv_to_record", 1, 0, true),
      FlagRow("tlv_to_unset", 1, -1, true),
      FlagRow("three_to_two", 3, 2, true),
      FlagRow("five_to_four", 5, 4, true),
      FlagRow("unset_to_record", -1, 0, false),
      FlagRow("unset_to_tlv", -1, 1, false),
      FlagRow("record_to_tlv", 0, 5, false),
      FlagRow("other_bits_to_record", 6, 0, false),
      {"tlv_to_record_before_the_versions", Modify(Mall(Protocol::kTlv, 9), Mall()),
       Stopped(-1, "Table can not be modified from TLV to QMX! table:'mall%s'")},
      {"older_library_version", Modify(mall, Mall(Protocol::kQmx, 4)), OlderVersion(4, 5)},
      {"older_library_version_before_the_name", Modify(shop, Mall(Protocol::kQmx, 4)), OlderVersion(4, 5)},
      {"new_version_negative", Modify(mall, Mall(Protocol::kQmx, -1)), OlderVersion(-1, 5)},
      {"equal_library_versions", Modify(mall, mall), kAllowed},
      {"newer_library_version", Modify(mall, Mall(Protocol::kQmx, 9)), kAllowed},
      {"table_only_in_new", Modify(shop, mall), missing},
      {"table_only_in_old", Modify(mall, shop), missing},
      {"table_in_neither_library", Modify(shop, shop), missing},
  };
}

std::vector<Row> RuleRows() {
  const Library mall = Mall();
  Library other_key = mall, split = mall, indexed = mall, shrunk = mall, moved = Grown(), early = Grown(), bad_name = Grown();
  other_key.tables[0].key = {"zone"};
  split.tables[0].split = {"uid"};
  indexed.tables[0].indexes = {{"by_zone", {"zone"}}};
  shrunk.tables[0].fields[1].type = "uint16";
  std::swap(moved.tables[0].fields[0], moved.tables[0].fields[1]);
  early.tables[0].fields[2].version = 5;
  bad_name.tables[0].fields[2].name = "no-te";
  const std::string key = "Primaykey can't be modified! primaykey:'zone' table:'mall%s'";
  const std::string split_text = "Splittablekey can't be modified! table:'mall%s'";
  const std::string index = "The number of index can't be modified! table:'mall%s'";
  const std::string size = "The size of entry can't be reduced! entry:'zone' metaname:'mall%s'";
  const std::string order = "Order of the entry can't be modified! entry:'zone' meta:'mall%s'";
  const std::string version =
      "new entry version lower than old metalib version or misspell 'version', please check both. entry:'note' meta:'mall%s'";
  const std::string name = "CheckFieldNameValidate failed! table:'mall%s'";
  return {
      {"field_added", Modify(mall, Grown()), kAllowedGrown},
      {"primary_key", Modify(mall, other_key),
       After(-4, key,
             {Error("CheckWhetherPrimaryKey", "The entry is not belong to primarykey,entry:'zone' table:'mall%s'"),
              Error("ComparePrimaryKey", key)})},
      {"splittable_key", Modify(mall, split), After(-5, split_text, {Error("CompareSplittableKey", split_text)})},
      {"index", Modify(mall, indexed), After(-6, index, {kNoSplit, Error("CompareIndex", index)})},
      {"record_fields", Modify(mall, shrunk), After(-3, size, {kNoSplit, Error("CompareEntryValueField", size)})},
      {"record_order", Modify(mall, moved), After(-8, order, {kNoSplit, Error("CompareOrder", order)})},
      {"record_version", Modify(mall, early), After(-8, version, {kNoSplit, Error("CompareVersion", version)})},
      {"field_name", Modify(mall, bad_name),
       After(-18, name,
             {kNoSplit, kUid, kZone, Info("CheckFieldNameValidate", "length of entry name no-te is 5"),
              Error("CheckFieldNameValidate", "field name[no-te] has illegal character."), Error(kEntry, name)})},
      {"index_of_a_list_table", Modify(indexed, indexed, {.table_type = 1}),
       After(-6, "List type table isn't allowed to configure index field! table:'mall%s'",
             {kNoSplit, Error("CompareIndex", "List type table isn't allowed to configure index field! table:'mall%s'")},
             {.table_type = 1})},
  };
}

// One refusal for each step, where all later steps would refuse too: the first one in order is reported.
std::vector<Row> OrderRows() {
  Library old_library = Mall(), new_library = Mall();
  old_library.tables[0].attr = "TableType=LIST;ListNum=8";
  new_library.tables[0].attr = "TableType=LIST;ListNum=7";
  new_library.tables[0].fields[1] = {.name = "zo-ne", .type = "uint16"};
  const Library index_too = [&] {
    Library library = new_library;
    library.tables[0].indexes = {{"by", {"uid"}}};
    return library;
  }();
  Library split_too = index_too, key_too = index_too;
  split_too.tables[0].split = {"uid"};
  key_too.tables[0].split = {"uid"};
  key_too.tables[0].key = {"uid", "zo-ne"};
  const std::string list = "Can't reduce list_num from 8 to 7";
  const std::string seen = Info("CheckListMetaInfo", "CheckListMetaInfo(mall%s) old_table_type:1,new_table_type:1");
  return {
      {"key_before_splittable_key", Modify(old_library, key_too),
       After(-4, "Primarykey number can't be modified!  table:'mall%s'",
             {Error("ComparePrimaryKey", "Primarykey number can't be modified!  table:'mall%s'")})},
      {"splittable_key_before_index", Modify(old_library, split_too),
       After(-5, "Splittablekey can't be modified! table:'mall%s'",
             {Error("CompareSplittableKey", "Splittablekey can't be modified! table:'mall%s'")})},
      {"index_before_list", Modify(old_library, index_too),
       After(-6, "The number of index can't be modified! table:'mall%s'",
             {kNoSplit, Error("CompareIndex", "The number of index can't be modified! table:'mall%s'")})},
      {"list_before_fields_and_always_minus_one", Modify(old_library, new_library),
       After(-1, list, {kNoSplit, seen, Error("CheckListMetaInfo", list)})},
  };
}

INSTANTIATE_TEST_SUITE_P(ModifyParameter, RuleTest, testing::ValuesIn(ParameterRows()), RowName);
INSTANTIATE_TEST_SUITE_P(ModifyArgument, RuleTest, testing::ValuesIn(ArgumentRows()), RowName);
INSTANTIATE_TEST_SUITE_P(ModifyRule, RuleTest, testing::ValuesIn(RuleRows()), RowName);
INSTANTIATE_TEST_SUITE_P(ModifyOrder, RuleTest, testing::ValuesIn(OrderRows()), RowName);

TEST(Modify, AllowsListTableWithGenericArguments) {
  const Settings list = {.table_type = 1};
  EXPECT_EQ(OutcomeOf(Modify(Mall(), Mall(), list)), After(0, kPreset, {kNoSplit, kUid, kZone, kDone}, list));
}

TEST(Modify, TraceShowsServerTableAndType) {
  const Settings settings = {.metaname = "nowhere%d", .table_type = 1, .server = "3.%s"};
  const std::string text = "Get meta info failed, please check the table name ! table:'nowhere%d'";
  const Outcome expected = {-2, text, {TraceLine("nowhere%d", 1, "3.%s"), Error(kEntry, text)}, {}, {}, "3.%s"};
  EXPECT_EQ(OutcomeOf(Modify(Mall(), Mall(), settings)), expected);
}

// The old library's version is read a second time after the order rule. A negative one ends the check without a text.
TEST(Modify, NegativeOldVersionIsRefusedWithoutText) {
  const Library unversioned = Mall(Protocol::kQmx, -1);
  EXPECT_EQ(OutcomeOf(Modify(unversioned, Mall())), After(-2, TraceText(), {kNoSplit}));
}

TEST(Modify, VersionZeroIsValid) { EXPECT_EQ(OutcomeOf(Modify(Mall(Protocol::kQmx, 0), Mall())), kAllowed); }

TEST(Modify, NegativeOldVersionIsDetectedAfterTheOrderRule) {
  Library moved = Mall();
  std::swap(moved.tables[0].fields[0], moved.tables[0].fields[1]);
  const std::string order = "Order of the entry can't be modified! entry:'zone' meta:'mall%s'";
  EXPECT_EQ(OutcomeOf(Modify(Mall(Protocol::kQmx, -1), moved)), After(-8, order, {kNoSplit, Error("CompareOrder", order)}));
}

TEST(Modify, NegativeOldVersionIsIgnoredIfOnlyTheTlvRulesRun) {
  const Outcome outcome = OutcomeOf(Modify(Mall(Protocol::kTlv, -1), Mall(Protocol::kTlv), {.init_version = 2}));
  EXPECT_EQ(outcome, kAllowed);
}

}  // namespace
}  // namespace rules
