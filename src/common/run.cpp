// The run of one operation: how it writes a log record, and the row that it leaves in the object.
// Tested by tests/rules/text_test.cpp and callback_test.cpp.
#include "common/run.h"

#include <cstdarg>

namespace korvel {

Run::Run(const ModifyTable& object, LPVESKCATEGORYINST log_handle)
    : object_(object), buffer_(object.m_szErrorType), log_(log_handle) {
  object_.m_refusal = nullptr;
}

Run::~Run() { object_.m_refusal = refusal_; }

// CheckTable's other failures are not in the catalog: the caller has ruled them out, or the collaborator is a store's own.
int Run::RefuseWithFormat(const Here& here, int code, const char* format, int check_result) {
  CopyFormat(buffer_, format);
  LogBuffer(here, VESK_PRIORITY_ERROR);
  if (check_result == kTableAttributes.code) Refused(kTableAttributes);
  return code;
}

void Run::PassToLog(const Here& here, int priority, const char* format, ...) {
  tagVeskEvent event{};
  event.evt_priority = priority;
  event.evt_loc = &here;
  va_list arguments;
  va_start(arguments, format);
  vesk_category_logv(log_, &event, format, arguments);
  va_end(arguments);
}

}  // namespace korvel
