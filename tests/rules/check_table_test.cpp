// class CheckTable: derives the type of a table from the attributes of a meta.

#include "common/check_table.h"

#include <gtest/gtest.h>

#include <cstring>
#include <ostream>

#include "support/schema.h"

namespace {

using support::Field;
using support::Library;
using support::Of;
using support::Schema;

constexpr int kGood = 0, kOldWay = -46, kFaulty = -50;

// The results of CheckTable. The outputs have these values before the call.
struct Derived {
  int code = 0;
  int type = 91;
  int number = 92;
  int sort_fields = 93;
  int sort_rule = 94;
  std::string protocol = "before";
  std::string text = {};
  bool operator==(const Derived&) const = default;
};

void PrintTo(const Derived& derived, std::ostream* out) {
  *out << "code " << derived.code << " type " << derived.type << " number " << derived.number << " sort fields "
       << derived.sort_fields << " rule " << derived.sort_rule << " protocol [" << derived.protocol << "] text [" << derived.text
       << "]";
}

Derived Derive(const Library& library, const char* table = "mall") {
  const Schema schema = library.Build();
  CheckTable check("3.28.9");
  Derived derived;
  char protocol[8] = "before";
  derived.code = check.CheckTableTypeByCustomAttr(schema.Lib(), table, derived.type, derived.number, derived.sort_fields,
                                                  derived.sort_rule, protocol, false, nullptr);
  derived.protocol = protocol;
  derived.text = check.m_szErrorType;
  EXPECT_EQ(check.m_svr_ver, "3.28.9");
  return derived;
}

// A table "mall" with these attributes and, in addition to "uid", these fields.
Library Mall(std::optional<std::string> attr, std::vector<Field> fields = {}) {
  fields.insert(fields.begin(), {.name = "uid", .type = "uint64"});
  return Of({{.name = "mall", .fields = fields, .key = {"uid"}, .attr = std::move(attr)}});
}

Field Sort(const std::string& name, const std::string& attr2, const std::string& type = "uint32") {
  return {.name = name, .type = type, .attr2 = attr2};
}

constexpr char kSorted[] = "TableType=SORTLIST;ListNum=8";

TEST(CheckTable, TablesWithoutTypeHaveOldDefinition) {
  const Derived old_way = {.code = kOldWay};
  EXPECT_EQ(Derive(Mall({})), old_way);
  EXPECT_EQ(Derive(Mall("")), old_way);
}

TEST(CheckTable, GenericTables) {
  EXPECT_EQ(Derive(Mall("TableType=GENERIC")), (Derived{kGood, 0, 0, 0, 0, ""}));
  EXPECT_EQ(Derive(Mall("TableType=GENERIC;DataProtocol=TLV")), (Derived{kGood, 0, 0, 0, 0, "TLV"}));
}

TEST(CheckTable, ListTables) {
  EXPECT_EQ(Derive(Mall("TableType=LIST;ListNum=1024")), (Derived{kGood, 1, 1024, 0, 0, ""}));
  EXPECT_EQ(Derive(Mall("DataProtocol=QMX;ListNum=1;TableType=LIST")), (Derived{kGood, 1, 1, 0, 0, "QMX"}));
  EXPECT_EQ(Derive(Mall("TableType=LIST;ListNum=2147483647")), (Derived{kGood, 1, 2147483647, 0, 0, ""}));
}

TEST(CheckTable, SortedListTables) {
  EXPECT_EQ(Derive(Mall(kSorted, {Sort("a", "sort=1")})), (Derived{kGood, 2, 8, 1, 0, ""}));
  EXPECT_EQ(Derive(Mall("TableType=SORTLIST;ListNum=8;SortRule=DESC", {Sort("a", "sort=1")})), (Derived{kGood, 2, 8, 1, 1, ""}));
  EXPECT_EQ(Derive(Mall("TableType=SORTLIST;ListNum=8;SortRule=INSC", {Sort("a", "sort=1")})), (Derived{kGood, 2, 8, 1, 0, ""}));
}

// At most four sort fields, in any order, of any integer type; other attributes of fields are ignored.
TEST(CheckTable, SortFields) {
  static_assert(KORVEL_MAX_LIST_SORT_NUM == 4);
  const std::vector<Field> four = {Sort("a", "sort=3", "int8"), Sort("b", "sort=1", "uint64"), Sort("p", "pii", "double"),
                                   Sort("c", "sort=4", "int64"), Sort("d", "sort=2", "uint16")};
  EXPECT_EQ(Derive(Mall(kSorted, four)), (Derived{kGood, 2, 8, 4, 0, ""}));
}

TEST(CheckTable, TextIsFirstMember) {
  const CheckTable check;
  EXPECT_EQ(static_cast<const void*>(&check), static_cast<const void*>(check.m_szErrorType));
  EXPECT_STREQ(check.m_szErrorType, "");
  EXPECT_EQ(check.m_svr_ver, "");
}

// A fault: the code, the part of the attributes that the text must quote, and unchanged outputs.
struct Fault {
  const char* name;
  Library library;
  std::string quoted;
  int code = kFaulty;
  std::optional<std::string> table = "mall";
};

void PrintTo(const Fault& fault, std::ostream* out) { *out << fault.name; }

std::vector<Fault> Faults() {
  return {
      {"unknown_key", Mall("TableType=GENERIC;Colour=red"), "Colour"},
      {"unknown_key_without_a_type", Mall("Colour=red"), "Colour"},
      {"key_in_other_letter_case", Mall("tabletype=GENERIC"), "tabletype"},
      {"duplicate_key", Mall("TableType=LIST;ListNum=8;ListNum=8"), "ListNum"},
      {"duplicate_key_without_a_type", Mall("ListNum=8;ListNum=8"), "ListNum"},
      {"pair_without_a_sign", Mall("TableType"), "TableType"},
      {"unknown_type", Mall("TableType=HEAP"), "HEAP"},
      {"type_in_other_letter_case", Mall("TableType=list;ListNum=8"), "list"},
      {"list_without_a_length", Mall("TableType=LIST"), "ListNum"},
      {"sorted_list_without_a_length", Mall("TableType=SORTLIST", {Sort("a", "sort=1")}), "ListNum"},
      {"length_zero", Mall("TableType=LIST;ListNum=0"), "ListNum"},
      {"length_negative", Mall("TableType=LIST;ListNum=-8"), "-8"},
      {"length_with_a_sign", Mall("TableType=LIST;ListNum=+8"), "+8"},
      {"length_with_letters", Mall("TableType=LIST;ListNum=8x"), "8x"},
      {"length_empty", Mall("TableType=LIST;ListNum="), "ListNum"},
      {"length_too_large", Mall("TableType=LIST;ListNum=2147483648"), "2147483648"},
      {"length_far_too_large", Mall("TableType=LIST;ListNum=99999999999999999999999"), "99999999999999999999999"},
      {"bad_length_without_a_type", Mall("ListNum=x"), "ListNum"},
      {"unknown_sort_rule", Mall("TableType=SORTLIST;ListNum=8;SortRule=ASC", {Sort("a", "sort=1")}), "ASC"},
      {"unknown_protocol", Mall("TableType=LIST;ListNum=8;DataProtocol=XML"), "XML"},
      {"protocol_of_eight_bytes", Mall("TableType=LIST;ListNum=8;DataProtocol=QMXQMXQM"), "QMXQMXQM"},
      {"no_sort_field", Mall(kSorted), "sort"},
      {"sort_fields_with_a_gap", Mall(kSorted, {Sort("a", "sort=1"), Sort("b", "sort=3")}), "sort"},
      {"sort_fields_not_from_one", Mall(kSorted, {Sort("a", "sort=2")}), "sort"},
      {"sort_number_twice", Mall(kSorted, {Sort("a", "sort=1"), Sort("b", "sort=1")}), "sort=1"},
      {"sort_number_zero", Mall(kSorted, {Sort("a", "sort=0")}), "sort=0"},
      {"sort_number_five", Mall(kSorted, {Sort("a", "sort=5")}), "sort=5"},
      {"sort_number_of_two_digits", Mall(kSorted, {Sort("a", "sort=12")}), "sort=12"},
      {"sort_number_missing", Mall(kSorted, {Sort("a", "sort=")}), "sort="},
      {"sort_number_no_digit", Mall(kSorted, {Sort("a", "sort=x")}), "sort=x"},
      {"sort_field_nameless", Mall(kSorted, {Sort("a", "sort=9")}).With(support::NoName("mall", "a")), "sort=9"},
      {"sort_field_of_a_structure",
       Of({{.name = "mall", .fields = {{.name = "at", .type = "box", .attr2 = "sort=1"}}, .attr = kSorted},
           {.name = "box", .fields = {{.name = "x"}}}}),
       "at"},
      {"sort_field_of_text", Mall(kSorted, {{.name = "a", .type = "string", .size = 8, .attr2 = "sort=1"}}), "a"},
      {"sort_field_of_a_float", Mall(kSorted, {Sort("a", "sort=1", "float")}), "a"},
      {"blank_before_a_value", Mall("TableType= GENERIC"), "GENERIC"},
      {"no_such_table", Mall({}), "shop", -2, "shop"},
      {"null_name", Mall({}), "", -1, std::nullopt},
      {"empty_name", Mall({}), "", -1, ""},
      {"null_library", support::Absent(), "", -1},
  };
}

class CheckTableFault : public testing::TestWithParam<Fault> {};

bool IsOneLine(const std::string& text) { return !text.empty() && text.find_first_of("\r\n") == std::string::npos; }

// The wording is free, but the text is one line that names the table and the fault, and the outputs are unchanged.
TEST_P(CheckTableFault, WritesOneLineAndKeepsOutputs) {
  const Fault& fault = GetParam();
  Derived derived = Derive(fault.library, fault.table ? fault.table->c_str() : nullptr);
  EXPECT_PRED1(IsOneLine, derived.text);
  EXPECT_NE(derived.text.find(fault.quoted), std::string::npos) << derived.text;
  const bool has_table = fault.code != -1;
  EXPECT_TRUE(!has_table || derived.text.find(*fault.table) != std::string::npos) << derived.text;
  derived.text.clear();
  EXPECT_EQ(derived, (Derived{.code = fault.code}));
}

std::string FaultName(const testing::TestParamInfo<Fault>& info) { return info.param.name; }
INSTANTIATE_TEST_SUITE_P(Attributes, CheckTableFault, testing::ValuesIn(Faults()), FaultName);

TEST(CheckTable, EmptyPairsAreFaults) {
  for (const char* attr : {";", "TableType=GENERIC;", ";TableType=GENERIC", "TableType=LIST;;ListNum=8"}) {
    const Derived derived = Derive(Mall(attr));
    EXPECT_EQ(derived.code, kFaulty) << attr;
    EXPECT_PRED1(IsOneLine, derived.text) << attr;
  }
}

TEST(CheckTable, RefusesNullProtocolBuffer) {
  const Schema schema = Mall("TableType=GENERIC").Build();
  CheckTable check;
  int type = 0, number = 0, fields = 0, rule = 0;
  EXPECT_EQ(check.CheckTableTypeByCustomAttr(schema.Lib(), "mall", type, number, fields, rule, nullptr, false, nullptr), -1);
  EXPECT_PRED1(IsOneLine, std::string(check.m_szErrorType));
}

TEST(CheckTable, FlagHasNoEffect) {
  const Schema schema = Mall("TableType=LIST;ListNum=8").Build();
  CheckTable check;
  int type = 0, number = 0, fields = 0, rule = 0;
  char protocol[8] = {};
  EXPECT_EQ(check.CheckTableTypeByCustomAttr(schema.Lib(), "mall", type, number, fields, rule, protocol, true, nullptr), 0);
  EXPECT_EQ(number, 8);
}

TEST(CheckTable, TruncatesLongTexts) {
  const std::string value(5000, 'v');
  const Derived derived = Derive(Mall("TableType=" + value));
  EXPECT_EQ(derived.code, kFaulty);
  EXPECT_EQ(derived.text.size(), 1023U);
}

}  // namespace
