#include "case_run.h"

#include "common/modify_table.h"
#include "qmx/qmx_metalib_kernel.h"
#include "support/log_capture.h"

namespace cases {
namespace {

// The arguments of the operations.
struct Sides {
  LPQMXMETALIB old_lib;
  LPQMXMETALIB new_lib;
  LPQMXMETA old_meta;
  LPQMXMETA new_meta;
  const Settings& settings;
  const char* table() const { return settings.table.c_str(); }
};

Sides MakeSides(LPQMXMETALIB old_lib, LPQMXMETALIB new_lib, const Settings& settings) {
  const char* table = settings.table.c_str();
  return {old_lib, new_lib, qmx_get_meta_by_name(old_lib, table), qmx_get_meta_by_name(new_lib, table), settings};
}

struct Operation {
  const char* name;
  std::optional<int> (*run)(ModifyTable& check, const Sides& sides, LPVESKCATEGORYINST log);
};

std::optional<int> Main(ModifyTable& check, const Sides& s, LPVESKCATEGORYINST log) {
  return check.KorvelModifyTable(s.old_lib, s.new_lib, s.table(), s.settings.table_type, s.settings.created_as, log,
                                 s.settings.server_version, s.settings.whitelist, s.settings.list_num);
}

std::optional<int> Compatible(ModifyTable& check, const Sides& s, LPVESKCATEGORYINST log) {
  return check.CheckTableMetaCompatible(s.old_lib, s.new_lib, s.table(), log);
}

std::optional<int> Value(ModifyTable& check, const Sides& s, LPVESKCATEGORYINST log) {
  if (s.old_meta == nullptr || s.new_meta == nullptr) return std::nullopt;
  return check.CompareValue(s.old_meta, s.new_meta, s.old_lib, s.new_lib, s.settings.created_as, log);
}

std::optional<int> PrimaryKey(ModifyTable& check, const Sides& s, LPVESKCATEGORYINST log) {
  return check.ComparePrimaryKey(s.old_meta, s.new_meta, log);
}

std::optional<int> SplittableKey(ModifyTable& check, const Sides& s, LPVESKCATEGORYINST log) {
  return check.CompareSplittableKey(s.old_meta, s.new_meta, log);
}

std::optional<int> Index(ModifyTable& check, const Sides& s, LPVESKCATEGORYINST log) {
  return check.CompareIndex(s.old_meta, s.new_meta, s.settings.table_type, log);
}

std::optional<int> TableField(ModifyTable& check, const Sides& s, LPVESKCATEGORYINST log) {
  return check.CompareTableField(s.old_meta, s.new_meta, log);
}

std::optional<int> ListMetaInfo(ModifyTable& check, const Sides& s, LPVESKCATEGORYINST log) {
  return check.CheckListMetaInfo(s.table(), s.old_lib, s.new_lib, log, s.settings.table_type, s.settings.list_num);
}

std::optional<int> SortListInfo(ModifyTable& check, const Sides& s, LPVESKCATEGORYINST log) {
  return check.CompareSortListInfo(s.table(), s.table(), s.old_lib, s.new_lib, log);
}

constexpr Operation kOperations[] = {
    {"KorvelModifyTable", Main},       {"CheckTableMetaCompatible", Compatible}, {"CompareValue", Value},
    {"ComparePrimaryKey", PrimaryKey}, {"CompareSplittableKey", SplittableKey},  {"CompareIndex", Index},
    {"CompareTableField", TableField}, {"CheckListMetaInfo", ListMetaInfo},      {"CompareSortListInfo", SortListInfo},
};

OperationResult Run(const Operation& operation, const Sides& sides) {
  ModifyTable check;
  support::CaptureCategory log;
  OperationResult result;
  result.operation = operation.name;
  result.code = operation.run(check, sides, &log);
  result.text = check.GetErrType();
  result.log = log.Lines();
  for (const support::LogRecord& record : log.records) result.texts.push_back(record.text);
  return result;
}

}  // namespace

std::vector<OperationResult> RunOperations(const Case& input) {
  const Sides sides = MakeSides(input.old_lib.get(), input.new_lib.get(), input.settings);
  std::vector<OperationResult> results;
  for (const Operation& operation : kOperations) results.push_back(Run(operation, sides));
  return results;
}

OperationResult RunMainCheck(LPQMXMETALIB old_lib, LPQMXMETALIB new_lib, const Settings& settings) {
  return Run(kOperations[0], MakeSides(old_lib, new_lib, settings));
}

}  // namespace cases
