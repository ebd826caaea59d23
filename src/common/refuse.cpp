// Formatting into the error buffer, and the gate that every log record passes. Held by tests/rules/text_test.cpp.
#include "common/refuse.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace korvel {
namespace {

thread_local Traces traces;

bool MayLog(LPVESKCATEGORYINST log, int priority) {
  if (log == nullptr) return false;
  if (log->piPriorityLow != nullptr && *log->piPriorityLow != -1 && *log->piPriorityLow < priority) return false;
  if (log->piPriorityHigh != nullptr && *log->piPriorityHigh > priority) return false;
  ++traces.records;
  return vesk_category_can_write(log, priority, 0, 0) != 0;
}

}  // namespace

Traces TracesOfThread() { return traces; }

void FormatText(char* buffer, const char* format, ...) {
  char text[kErrorTextSize] = "";  // formatted aside: an argument may be the text that the buffer still holds
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(text, sizeof(text), format, arguments);
  va_end(arguments);
  if (length < 0) text[0] = '\0';
  std::memcpy(buffer, text, std::strlen(text) + 1);
  ++traces.texts;
}

void LogRecord(const Site& site, int priority, const char* format, ...) {
  if (!MayLog(site.log, priority)) return;
  tagVeskEvent event{};
  event.evt_priority = priority;
  event.evt_loc = &site.loc;
  va_list arguments;
  va_start(arguments, format);
  vesk_category_logv(site.log, &event, format, arguments);
  va_end(arguments);
}

int RefuseWithFormat(const Site& site, int code, const char* format) {
  std::size_t length = 0;
  for (const char* p = format; *p != '\0' && length < kErrorTextSize - 1; ++p) {
    if (*p == '%' && p[1] == '\0') {
      length = 0;
      break;
    }
    if (*p == '%' && p[1] == '%') ++p;
    site.buffer[length++] = *p;
  }
  site.buffer[length] = '\0';
  LogBuffer(site, VESK_PRIORITY_ERROR);
  return code;
}

}  // namespace korvel
