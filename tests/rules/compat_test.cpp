// CheckTableMetaCompatible.

#include "rules/rule_test.h"

namespace rules {
namespace {

using qmx::Protocol;

constexpr char kEntry[] = "CheckTableMetaCompatible";

Call Compatible(const Library& old_library, const Library& new_library, std::optional<std::string> metaname = "mall%s") {
  return Between(
      old_library, new_library, [=](ModifyTable& checker, const Schema& old_schema, const Schema& new_schema, auto log) {
        const std::string name = support::TableName(metaname.value_or(""));
        return checker.CheckTableMetaCompatible(old_schema.Lib(), new_schema.Lib(), metaname ? name.c_str() : nullptr, log);
      });
}

Library Mall(Protocol protocol = Protocol::kQmx, int version = 5) {
  return {.version = version,
          .protocol = protocol,
          .tables = {{.fields = {{.name = "uid", .id = 1}, {.name = "zone", .id = 2}}, .key = {"uid"}}}};
}

// A refusal by the operation itself: it is only logged, the buffer is unchanged.
Outcome Logged(int code, const std::string& text) { return {.code = code, .log = {ErrorLogOnly(kEntry, text)}}; }

Outcome BadParameter(const std::string& name) {
  return Logged(-1, "invaild parameter, please check the parameter! table: '" + name + "'");
}

// A refusal by a rule: its text stays, and the operation logs which rule it was.
Outcome RefusedBy(int code, const std::string& rule, const std::string& text) {
  return {code, text, {Error(rule, text), ErrorLogOnly(kEntry, rule + " failed! table:'mall%s'")}};
}

std::vector<Row> Rows() {
  const Library mall = Mall();
  const Library shop = Of({{.name = "shop%s", .fields = {{"uid"}}, .key = {"uid"}}});
  Library keyless = mall, wider = mall, shrunk = mall, moved = mall, early = mall, odd = Mall(Protocol::kTlv, 1);
  keyless.tables[0].key = {};
  wider.tables[0].key = {"uid", "zone"};
  shrunk.tables[0].fields[1].type = "uint16";
  std::swap(moved.tables[0].fields[0], moved.tables[0].fields[1]);
  early.tables[0].fields.push_back({.name = "note", .version = 5});
  odd.tables[0].fields.push_back({.name = "9-", .version = 6});
  odd.tables[0].split = {"uid"};
  odd.tables[0].indexes = {{"by", {"uid"}}};
  odd.tables[0].attr = "TableType=LIST;ListNum=8";
  const Outcome missing = Logged(-2, "Get meta info failed, please check the table name ! table:'mall%s'");
  const Outcome no_version = Logged(-2, "Get metalib version failed! table:'mall%s'");
  const Outcome order = RefusedBy(-8, "CompareOrder", "Order of the entry can't be modified! entry:'zone' meta:'mall%s'");
  return {
      {"null_old_library", Compatible(Absent(), mall), BadParameter("mall%s")},
      {"null_new_library", Compatible(mall, Absent()), BadParameter("mall%s")},
      {"null_name", Compatible(mall, mall, std::nullopt), BadParameter("(null)")},
      {"empty_name", Compatible(mall, mall, ""), BadParameter("")},
      {"table_only_in_new", Compatible(shop, mall), missing},
      {"table_only_in_old", Compatible(mall, shop), missing},
      {"same", Compatible(mall, mall), {}},
      {"primary_key", Compatible(mall, keyless), RefusedBy(-4, "ComparePrimaryKey", "Primaykey is invalid! table:'mall%s'")},
      {"primary_key_of_more_fields", Compatible(mall, wider),
       RefusedBy(-4, "ComparePrimaryKey", "Primarykey number can't be modified!  table:'mall%s'")},
      {"fields", Compatible(mall, shrunk),
       RefusedBy(-3, "CompareEntryValueField", "The size of entry can't be reduced! entry:'zone' metaname:'mall%s'")},
      {"order", Compatible(mall, moved), order},
      {"version_of_the_old_library", Compatible(Mall(Protocol::kQmx, -1), mall), no_version},
      {"version_zero_of_the_old_library", Compatible(Mall(Protocol::kQmx, 0), mall), {}},
      {"order_before_the_version_of_the_library", Compatible(Mall(Protocol::kQmx, -1), moved), order},
      {"version_of_an_entry", Compatible(mall, early),
       RefusedBy(-8, "CompareVersion",
                 "new entry version lower than old metalib version or misspell 'version', please check both. entry:'note' "
                 "meta:'mall%s'")},
      {"nothing_else_is_examined", Compatible(mall, odd), {}},
      {"library_versions_are_not_compared", Compatible(mall, Mall(Protocol::kQmx, 4)), {}},
      {"tlv_to_record_is_not_refused", Compatible(Mall(Protocol::kTlv), mall), {}},
  };
}

INSTANTIATE_TEST_SUITE_P(Compatible, RuleTest, testing::ValuesIn(Rows()), RowName);

// Two TLV libraries are checked by the rules of the record format too: by name, not by id.
TEST(Compatible, ChecksTlvLibrariesLikeOthers) {
  Library renamed = Mall(Protocol::kTlv);
  renamed.tables[0].fields[1].name = "area";
  EXPECT_EQ(OutcomeOf(Compatible(Mall(Protocol::kTlv), renamed)),
            RefusedBy(-3, "CompareEntryValueField", "The entry can't be found! entry_name:'zone' metaname:'mall%s'"));
}

}  // namespace
}  // namespace rules
