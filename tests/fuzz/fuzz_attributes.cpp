// Table attributes: the first two lines of the input are the attributes of a table before and after, the third a sort mark.
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

#include "common/check_table.h"
#include "fuzz/check_all.h"
#include "fuzz/input.h"
#include "fuzz/require.h"
#include "qmx/qmx_builder.h"

namespace {

qmx::Metalib Build(const std::string& attributes, const std::string& mark) {
  qmx::MetalibBuilder builder("fuzz", 5, qmx::Protocol::kQmx);
  builder.AddMeta("t", QMX_TYPE_STRUCT, attributes);
  builder.AddEntry({.name = "uid", .type = "uint64", .customattr2 = mark});
  builder.AddEntry({.name = "score", .type = "int32", .customattr2 = "sort=2"});
  builder.SetPrimaryKey({"uid"});
  return *builder.Finish().metalib;
}

void RequireKind(LPQMXMETALIB library) {
  CheckTable table;
  int table_type = -7;
  int list_num = -7;
  int sort_field_num = -7;
  int sort_rule = -7;
  char protocol[8] = "none";
  const int code =
      table.CheckTableTypeByCustomAttr(library, "t", table_type, list_num, sort_field_num, sort_rule, protocol, true, nullptr);
  fuzz::Require(std::memchr(protocol, 0, sizeof(protocol)) != nullptr, "the protocol is terminated");
  fuzz::Require(std::memchr(table.m_szErrorType, 0, sizeof(table.m_szErrorType)) != nullptr, "the error text is terminated");
  if (code != 0) {
    fuzz::Require(table_type == -7 && list_num == -7 && std::strcmp(protocol, "none") == 0,
                  "a failure leaves the outputs unchanged");
    return;
  }
  fuzz::Require(table_type >= TABLE_TYPE_GENERIC && table_type <= TABLE_TYPE_SORTLIST, "a table type is one of three");
  fuzz::Require(sort_rule == SORT_RULE_INSC || sort_rule == SORT_RULE_DESC, "a sort rule is one of two");
  fuzz::Require(sort_field_num >= 0 && sort_field_num <= KORVEL_MAX_LIST_SORT_NUM, "sort fields are limited");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::string old_attributes = input.Text();
  const std::string new_attributes = input.Text();
  const std::string mark = input.Text();
  const qmx::Metalib old_library = Build(old_attributes, mark);
  const qmx::Metalib new_library = Build(new_attributes, mark);
  RequireKind(old_library.get());
  RequireKind(new_library.get());
  for (const int type : {0, 1}) {
    fuzz::Settings settings;
    settings.type = type;
    fuzz::CheckAll(old_library.get(), new_library.get(), settings);
  }
  return 0;
}
