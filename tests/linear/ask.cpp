// Compiled twice: ASK is AskProduct or AskPlain, and for the latter ModifyTable is the checker without a memory.
#include "linear/ask.h"

#include <cstring>

#include "common/modify_table.h"
#include "qmx/qmx_metalib_kernel.h"
#include "support/log_capture.h"

namespace linear {
namespace {

int Run(ModifyTable& checker, const Question& question, LPVESKCATEGORYINST log) {
  const LPQMXMETA old_meta = qmx_get_meta_by_name(question.old_lib, "t");
  const LPQMXMETA new_meta = qmx_get_meta_by_name(question.new_lib, "t");
  const auto modify = [&](int init) {
    return checker.KorvelModifyTable(question.old_lib, question.new_lib, "t", 0, init, log, log == nullptr ? "" : "3.28.0",
                                     "n3;n20;name_of_number_3;name_of_number_20", 0);
  };
  switch (question.operation) {
    case Operation::kModifyQmx:
      return modify(1);
    case Operation::kModifyTlv:
      return modify(2);
    case Operation::kCompat:
      return checker.CheckTableMetaCompatible(question.old_lib, question.new_lib, "t", log);
    case Operation::kValuesQmx:
      return checker.CompareValue(old_meta, new_meta, question.old_lib, question.new_lib, 1, log);
    case Operation::kValuesTlv:
      return checker.CompareValue(old_meta, new_meta, question.old_lib, question.new_lib, 2, log);
    case Operation::kSame:
      return checker.CompareTableField(old_meta, new_meta, log);
    case Operation::kRecord:
      return checker.CompareEntryValueField(old_meta, new_meta, log);
    case Operation::kTlv:
      return checker.CompareEntryValueFieldTLV(old_meta, new_meta, log);
    case Operation::kVersion:
      return checker.CompareVersion(old_meta, new_meta, 5, log);
    case Operation::kOrder:
      break;
  }
  return checker.CompareOrder(old_meta, new_meta, log);
}

}  // namespace

Answer ASK(const Question& question) {
  ModifyTable checker;
  std::strcpy(checker.m_szErrorType, "untouched");
  support::CaptureCategory log;
  if (question.low_bound) log.SetLow(*question.low_bound);
  Answer answer;
  answer.code = Run(checker, question, question.with_log ? &log : nullptr);
  answer.buffer = checker.GetErrType();
  answer.log = log.Lines();
  for (const PrintNode& node : checker.printVec) {
    answer.grown.push_back(node.entry_name + " " + std::to_string(node.before_sz) + " " + std::to_string(node.after_sz));
  }
  return answer;
}

}  // namespace linear
