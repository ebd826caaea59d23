// Runs the same calls on the checker and on its plain model. Random calls are made by random_scenario.cpp. Tested by
// model_test.cpp.
#include "model/scenario.h"

#include <functional>

#include "common/check_table.h"
#include "common/error_text.h"
#include "common/modify_table.h"
#include "common/refusals.h"
#include "qmx/qmx_metalib_kernel.h"
#include "support/log_capture.h"

namespace model {
namespace {

const char* TextOf(const Name& name) { return name ? name->c_str() : nullptr; }

// --- The checker ---

void SetGate(const LogGate& gate, support::CaptureCategory& category) {
  if (gate.high) category.SetHigh(*gate.high);
  if (gate.low) category.SetLow(*gate.low);
  category.SetCanWrite(gate.can_write ? 1 : 0);
}

int RunChecker(const Call& call, LPQMXMETALIB old_library, LPQMXMETALIB new_library, LPVESKCATEGORYINST log,
               ModifyTable& checker) {
  if (call.without_old) old_library = nullptr;
  if (call.without_new) new_library = nullptr;
  const char* const old_table = TextOf(call.old_table);
  const char* const new_table = TextOf(call.new_table);
  const LPQMXMETA old_meta = qmx_get_meta_by_name(old_library, old_table);
  const LPQMXMETA new_meta = qmx_get_meta_by_name(new_library, new_table);
  switch (call.operation) {
    case Operation::kModify:
      return checker.KorvelModifyTable(old_library, new_library, old_table, call.table_type, call.init_version, log, call.server,
                                       call.whitelist, call.list_num);
    case Operation::kCompatible:
      return checker.CheckTableMetaCompatible(old_library, new_library, old_table, log);
    case Operation::kValues:
      if (old_meta == nullptr || new_meta == nullptr) return 0;  // must not be called
      return checker.CompareValue(old_meta, new_meta, old_library, new_library, call.init_version, log);
    case Operation::kFieldSet:
      return checker.CompareTableField(old_meta, new_meta, log);
    case Operation::kSortList:
      return checker.CompareSortListInfo(old_table, new_table, old_library, new_library, log);
    case Operation::kPrimaryKey:
      return checker.ComparePrimaryKey(old_meta, new_meta, log);
    case Operation::kSplittableKey:
      return checker.CompareSplittableKey(old_meta, new_meta, log);
    case Operation::kIndex:
      return checker.CompareIndex(old_meta, new_meta, call.table_type, log);
    default:
      return checker.CheckListMetaInfo(old_table, old_library, new_library, log, call.table_type, call.list_num);
  }
}

bool BeginsAlike(std::string_view text, std::string_view format) { return text.starts_with(format.substr(0, format.find('%'))); }

// The row that GetRefusal() returns must be that of the text in the buffer, and a refusal with a text must have one.
std::string RefusalFault(int code, const ModifyTable& checker, const std::string& buffer_before) {
  const std::string buffer = checker.GetErrType();
  const korvel::RefusalRow* const row = checker.GetRefusal();
  const korvel::RefusalRow* const of_text = korvel::Identify(buffer);
  if (code == 0) return row == nullptr ? "" : std::string("a success has row ") + row->id;
  // A truncated text may have lost the part that distinguishes its row: then only the beginning is compared.
  const bool is_cut = buffer.size() == korvel::kErrorTextSize - 1;
  if (row != nullptr && is_cut && BeginsAlike(buffer, row->text)) return "";
  if (row != nullptr) return row == of_text ? "" : std::string("the text is not that of row ") + row->id;
  // A refusal without a text leaves the previous text, or that of a lookup, which is not the refusal of an operation.
  if (of_text == nullptr || of_text == &korvel::kNameOrMeta || buffer == buffer_before) return "";
  return std::string("no row, but the text of ") + of_text->id;
}

State StateOf(const ModifyTable& checker, const support::CaptureCategory& category) {
  State state;
  state.buffer = checker.GetErrType();
  state.white = checker.whiteVec;
  state.server = checker.m_svr_ver;
  for (const PrintNode& node : checker.printVec) state.grown.push_back({node.entry_name, node.before_sz, node.after_sz});
  for (const support::LogRecord& record : category.records) {
    const std::string method = record.is_valid ? record.function : record.function + " (invalid event)";
    state.log.push_back({record.priority, method, record.format == "%s", record.text});
  }
  for (const support::CanWriteCall& call : category.can_write_calls) {
    const bool is_plain = call.id == 0 && call.cls == 0;
    state.can_write_calls.push_back(is_plain ? call.priority : -call.priority);
  }
  return state;
}

// --- The model ---

int RunModel(const Call& call, const PlainLibrary* old_library, const PlainLibrary* new_library, Checker& checker) {
  if (call.without_old) old_library = nullptr;
  if (call.without_new) new_library = nullptr;
  const Name& old_table = call.old_table;
  const Name& new_table = call.new_table;
  const PlainMeta* const old_meta = old_library == nullptr ? nullptr : old_library->Find(old_table);
  const PlainMeta* const new_meta = new_library == nullptr ? nullptr : new_library->Find(new_table);
  switch (call.operation) {
    case Operation::kModify:
      return KorvelModifyTable(checker, old_library, new_library, old_table, call.table_type, call.init_version, call.server,
                               call.whitelist, call.list_num);
    case Operation::kCompatible:
      return CheckTableMetaCompatible(checker, old_library, new_library, old_table);
    case Operation::kValues:
      if (old_meta == nullptr || new_meta == nullptr) return 0;
      return CompareValue(checker, old_meta, new_meta, old_library, new_library, call.init_version);
    case Operation::kFieldSet:
      return CompareTableField(checker, old_meta, new_meta);
    case Operation::kSortList:
      return CompareSortListInfo(checker, old_table, new_table, old_library, new_library);
    case Operation::kPrimaryKey:
      return ComparePrimaryKey(checker, old_meta, new_meta);
    case Operation::kSplittableKey:
      return CompareSplittableKey(checker, old_meta, new_meta);
    case Operation::kIndex:
      return CompareIndex(checker, old_meta, new_meta, call.table_type);
    default:
      return CheckListMetaInfo(checker, old_table, old_library, new_library, call.table_type, call.list_num);
  }
}

// CheckTable's text for the attributes of a table.
std::string Wording(LPQMXMETALIB library, const Name& table) {
  CheckTable collaborator;
  int type = 0, number = 0, fields = 0, rule = 0;
  char protocol[8] = {};
  collaborator.CheckTableTypeByCustomAttr(library, TextOf(table), type, number, fields, rule, protocol, false, nullptr);
  return collaborator.m_szErrorType;
}

// The record of the checker's trace, determined once.
const support::LogRecord& TraceRecord() {
  static const support::LogRecord record = [] {
    const std::optional<qmx::Metalib> library = Build({});
    ModifyTable checker;
    support::CaptureCategory category;
    checker.KorvelModifyTable(library->get(), library->get(), "t", 0, 1, &category, "", "", 0);
    return category.records.at(0);
  }();
  return record;
}

std::vector<CallResult> RunModel(const Scenario& scenario, LPQMXMETALIB old_library, LPQMXMETALIB new_library,
                                 std::optional<TextId>& last_failure) {
  const PlainLibrary old_plain(old_library);
  const PlainLibrary new_plain(new_library);
  Checker checker;
  checker.gate = scenario.gate;
  checker.trace_file = TraceRecord().file;
  checker.trace_line = TraceRecord().line;
  checker.wording = [&](const PlainLibrary* plain, const Name& table) {
    const LPQMXMETALIB library = plain == &old_plain ? old_library : new_library;
    return Wording(plain == nullptr ? nullptr : library, table);
  };
  std::vector<CallResult> results;
  for (const Call& call : scenario.calls) {
    checker.state.log.clear();
    checker.state.can_write_calls.clear();
    checker.last_failure.reset();
    const int code = RunModel(call, &old_plain, &new_plain, checker);
    results.push_back({code, checker.state, {}});
  }
  last_failure = checker.last_failure;
  return results;
}

}  // namespace

std::vector<CallResult> RunChecker(const Scenario& scenario, LPQMXMETALIB old_library, LPQMXMETALIB new_library) {
  ModifyTable checker;
  support::CaptureCategory category;
  SetGate(scenario.gate, category);
  std::vector<CallResult> results;
  for (const Call& call : scenario.calls) {
    category.records.clear();
    category.can_write_calls.clear();
    const LPVESKCATEGORYINST log = scenario.gate.absent ? nullptr : &category;
    const std::string buffer_before = checker.GetErrType();
    checker.m_refusal = nullptr;  // some calls are skipped
    const int code = RunChecker(call, old_library, new_library, log, checker);
    results.push_back({code, StateOf(checker, category), RefusalFault(code, checker, buffer_before)});
  }
  return results;
}

Results RunBoth(const Scenario& scenario, LPQMXMETALIB old_library, LPQMXMETALIB new_library) {
  Results results;
  results.checker = RunChecker(scenario, old_library, new_library);
  results.model = RunModel(scenario, old_library, new_library, results.last_failure);
  return results;
}

std::optional<Results> RunBoth(const Scenario& scenario) {
  const std::optional<qmx::Metalib> old_library = Build(scenario.old_library);
  const std::optional<qmx::Metalib> new_library = Build(scenario.new_library);
  if (!old_library || !new_library) return std::nullopt;
  return RunBoth(scenario, old_library->get(), new_library->get());
}

}  // namespace model
