// Puts the same questions to the checker and to its plain model. Not here: choosing them (random_scenario.cpp). Tested by
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
  category.SetAnswer(gate.answer ? 1 : 0);
}

int AskChecker(const Question& question, LPQMXMETALIB old_library, LPQMXMETALIB new_library, LPVESKCATEGORYINST log,
               ModifyTable& checker) {
  if (question.without_old) old_library = nullptr;
  if (question.without_new) new_library = nullptr;
  const char* const old_table = TextOf(question.old_table);
  const char* const new_table = TextOf(question.new_table);
  const LPQMXMETA old_meta = qmx_get_meta_by_name(old_library, old_table);
  const LPQMXMETA new_meta = qmx_get_meta_by_name(new_library, new_table);
  switch (question.operation) {
    case Operation::kModify:
      return checker.KorvelModifyTable(old_library, new_library, old_table, question.table_type, question.init_version, log,
                                       question.server, question.whitelist, question.list_num);
    case Operation::kCompatible:
      return checker.CheckTableMetaCompatible(old_library, new_library, old_table, log);
    case Operation::kValues:
      if (old_meta == nullptr || new_meta == nullptr) return 0;  // not to be asked
      return checker.CompareValue(old_meta, new_meta, old_library, new_library, question.init_version, log);
    case Operation::kFieldSet:
      return checker.CompareTableField(old_meta, new_meta, log);
    case Operation::kSortList:
      return checker.CompareSortListInfo(old_table, new_table, old_library, new_library, log);
    case Operation::kPrimaryKey:
      return checker.ComparePrimaryKey(old_meta, new_meta, log);
    case Operation::kSplittableKey:
      return checker.CompareSplittableKey(old_meta, new_meta, log);
    case Operation::kIndex:
      return checker.CompareIndex(old_meta, new_meta, question.table_type, log);
    default:
      return checker.CheckListMetaInfo(old_table, old_library, new_library, log, question.table_type, question.list_num);
  }
}

bool BeginsAlike(std::string_view text, std::string_view format) { return text.starts_with(format.substr(0, format.find('%'))); }

// The row that the checker names must be that of the text in the buffer, and there must be one where a text refuses.
std::string RefusalFault(int code, const ModifyTable& checker, const std::string& buffer_before) {
  const std::string buffer = checker.GetErrType();
  const korvel::RefusalRow* const row = checker.GetRefusal();
  const korvel::RefusalRow* const of_text = korvel::Identify(buffer);
  if (code == 0) return row == nullptr ? "" : std::string("a success has the row ") + row->id;
  // A text that was cut may have lost what tells its row from others: then only its beginning counts.
  const bool is_cut = buffer.size() == korvel::kErrorTextSize - 1;
  if (row != nullptr && is_cut && BeginsAlike(buffer, row->text)) return "";
  if (row != nullptr) return row == of_text ? "" : std::string("the text is not that of the row ") + row->id;
  // A refusal without a text leaves what was there, or what a lookup wrote: that is no refusal of an operation.
  if (of_text == nullptr || of_text == &korvel::kNameOrMeta || buffer == buffer_before) return "";
  return std::string("there is no row, but the text of ") + of_text->id;
}

State StateOf(const ModifyTable& checker, const support::CaptureCategory& category) {
  State state;
  state.buffer = checker.GetErrType();
  state.white = checker.whiteVec;
  state.server = checker.m_svr_ver;
  for (const PrintNode& node : checker.printVec) state.grown.push_back({node.entry_name, node.before_sz, node.after_sz});
  for (const support::LogRecord& record : category.records) {
    const std::string method = record.is_valid ? record.function : record.function + " (event not as agreed)";
    state.log.push_back({record.priority, method, record.format == "%s", record.text});
  }
  for (const support::Question& question : category.questions) {
    const bool is_plain = question.id == 0 && question.cls == 0;
    state.asked.push_back(is_plain ? question.priority : -question.priority);
  }
  return state;
}

// --- The model ---

int AskModel(const Question& question, const PlainLibrary* old_library, const PlainLibrary* new_library, Checker& checker) {
  if (question.without_old) old_library = nullptr;
  if (question.without_new) new_library = nullptr;
  const Name& old_table = question.old_table;
  const Name& new_table = question.new_table;
  const PlainMeta* const old_meta = old_library == nullptr ? nullptr : old_library->Find(old_table);
  const PlainMeta* const new_meta = new_library == nullptr ? nullptr : new_library->Find(new_table);
  switch (question.operation) {
    case Operation::kModify:
      return KorvelModifyTable(checker, old_library, new_library, old_table, question.table_type, question.init_version,
                               question.server, question.whitelist, question.list_num);
    case Operation::kCompatible:
      return CheckTableMetaCompatible(checker, old_library, new_library, old_table);
    case Operation::kValues:
      if (old_meta == nullptr || new_meta == nullptr) return 0;
      return CompareValue(checker, old_meta, new_meta, old_library, new_library, question.init_version);
    case Operation::kFieldSet:
      return CompareTableField(checker, old_meta, new_meta);
    case Operation::kSortList:
      return CompareSortListInfo(checker, old_table, new_table, old_library, new_library);
    case Operation::kPrimaryKey:
      return ComparePrimaryKey(checker, old_meta, new_meta);
    case Operation::kSplittableKey:
      return CompareSplittableKey(checker, old_meta, new_meta);
    case Operation::kIndex:
      return CompareIndex(checker, old_meta, new_meta, question.table_type);
    default:
      return CheckListMetaInfo(checker, old_table, old_library, new_library, question.table_type, question.list_num);
  }
}

// What the collaborator says is wrong with a table's attributes.
std::string Wording(LPQMXMETALIB library, const Name& table) {
  CheckTable collaborator;
  int type = 0, number = 0, fields = 0, rule = 0;
  char protocol[8] = {};
  collaborator.CheckTableTypeByCustomAttr(library, TextOf(table), type, number, fields, rule, protocol, false, nullptr);
  return collaborator.m_szErrorType;
}

// Where the checker writes its trace: asked once.
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

std::vector<Answer> AskModel(const Scenario& scenario, LPQMXMETALIB old_library, LPQMXMETALIB new_library,
                             std::optional<Said>& last_failure) {
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
  std::vector<Answer> answers;
  for (const Question& question : scenario.questions) {
    checker.state.log.clear();
    checker.state.asked.clear();
    checker.last_failure.reset();
    const int code = AskModel(question, &old_plain, &new_plain, checker);
    answers.push_back({code, checker.state, {}});
  }
  last_failure = checker.last_failure;
  return answers;
}

}  // namespace

std::vector<Answer> AskChecker(const Scenario& scenario, LPQMXMETALIB old_library, LPQMXMETALIB new_library) {
  ModifyTable checker;
  support::CaptureCategory category;
  SetGate(scenario.gate, category);
  std::vector<Answer> answers;
  for (const Question& question : scenario.questions) {
    category.records.clear();
    category.questions.clear();
    const LPVESKCATEGORYINST log = scenario.gate.absent ? nullptr : &category;
    const std::string buffer_before = checker.GetErrType();
    checker.m_refusal = nullptr;  // some questions are not asked
    const int code = AskChecker(question, old_library, new_library, log, checker);
    answers.push_back({code, StateOf(checker, category), RefusalFault(code, checker, buffer_before)});
  }
  return answers;
}

Answers Ask(const Scenario& scenario, LPQMXMETALIB old_library, LPQMXMETALIB new_library) {
  Answers answers;
  answers.checker = AskChecker(scenario, old_library, new_library);
  answers.model = AskModel(scenario, old_library, new_library, answers.last_failure);
  return answers;
}

std::optional<Answers> Ask(const Scenario& scenario) {
  const std::optional<qmx::Metalib> old_library = Build(scenario.old_library);
  const std::optional<qmx::Metalib> new_library = Build(scenario.new_library);
  if (!old_library || !new_library) return std::nullopt;
  return Ask(scenario, old_library->get(), new_library->get());
}

}  // namespace model
