// The one place from which reports ask. No rule is decided here. Held by tests/report/ask_checker_test.cpp.
#include "analysis/findings/ask_checker.h"

#include "common/catalog.h"
#include "vesk/log_category.h"

namespace korvel {

Verdict VerdictOf(int code, const ModifyTable& checker) {
  Verdict verdict;
  verdict.code = code;
  if (code == 0) return verdict;
  verdict.text = checker.GetErrType();
  if (const RefusalRow* row = Identify(verdict.text)) verdict.rule = row->id;
  return verdict;
}

Verdict AskChecker(LPQMXMETALIB old_library, LPQMXMETALIB new_library, const std::string& table, const Settings& settings) {
  // Field lengths are checked only where there is a category.
  const std::unique_ptr<vesk::LogCategory> log = vesk::LogCategory::Closed();
  ModifyTable checker;
  const int code = checker.KorvelModifyTable(old_library, new_library, table.c_str(), *settings.type, *settings.created_as,
                                             log->handle(), *settings.server_version, *settings.whitelist, *settings.list_num);
  return VerdictOf(code, checker);
}

}  // namespace korvel
