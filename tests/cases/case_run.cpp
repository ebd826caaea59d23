#include "case_run.h"

#include "common/modify_table.h"
#include "qmx/qmx_metalib_kernel.h"
#include "support/log_capture.h"

namespace cases {
namespace {

// The two sides of a case as the operations take them.
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
  std::optional<int> (*ask)(ModifyTable& check, const Sides& sides, LPVESKCATEGORYINST log);
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

Answer Ask(const Operation& operation, const Sides& sides) {
  ModifyTable check;
  support::CaptureCategory log;
  Answer answer;
  answer.operation = operation.name;
  answer.code = operation.ask(check, sides, &log);
  answer.text = check.GetErrType();
  answer.log = log.Lines();
  for (const support::LogRecord& record : log.records) answer.texts.push_back(record.text);
  return answer;
}

std::string CodeText(std::optional<int> code) {
  if (!code) return "not asked: the table is missing on a side";
  const char* name = ResultCodeName(*code);
  return std::to_string(*code) + " " + (name == nullptr ? "(no result code)" : name);
}

}  // namespace

std::vector<Answer> AskAll(const Case& input) {
  const Sides sides = MakeSides(input.old_lib.get(), input.new_lib.get(), input.settings);
  std::vector<Answer> answers;
  for (const Operation& operation : kOperations) answers.push_back(Ask(operation, sides));
  return answers;
}

int AskMain(LPQMXMETALIB old_lib, LPQMXMETALIB new_lib, const Settings& settings) {
  return *Ask(kOperations[0], MakeSides(old_lib, new_lib, settings)).code;
}

std::string Print(const std::vector<Answer>& answers) {
  std::string out;
  for (const Answer& answer : answers) {
    out += answer.operation + " " + CodeText(answer.code) + "\n  \"" + answer.text + "\"\n";
    for (const std::string& line : answer.log) out += "  " + line + "\n";
  }
  return out;
}

}  // namespace cases
