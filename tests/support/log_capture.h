// A log category that records its calls. It replaces the logging library: a program that links this needs no other implementation
// of vesk_category.h.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "vesk/vesk_category.h"

namespace support {

// One call of vesk_category_logv.
struct LogRecord {
  int priority = 0;
  std::string function;
  std::string file;
  int line = 0;
  std::string format;     // "%s" if the text comes from the checker's buffer
  std::string text;       // formatted, of any length
  bool is_valid = false;  // the other members are those of a text event, and the file belongs to the checker
};

// One call of vesk_category_can_write.
struct CanWriteCall {
  int priority;
  int id;
  int cls;
  bool operator==(const CanWriteCall&) const = default;
};

// By default without bounds, and can_write returns 1.
class CaptureCategory : public tagVeskCategoryInst {
 public:
  CaptureCategory() : tagVeskCategoryInst{nullptr, nullptr} {}
  CaptureCategory(const CaptureCategory&) = delete;
  CaptureCategory& operator=(const CaptureCategory&) = delete;

  void SetHigh(int bound) {
    high_ = bound;
    piPriorityHigh = &high_;
  }
  void SetLow(int bound) {
    low_ = bound;
    piPriorityLow = &low_;
  }
  void SetCanWrite(int can_write) { can_write_ = can_write; }

  // The records as lines: "ERROR Method: text", or "ERROR Method, log only: text" if the text was never in the buffer. An invalid
  // event has a prefix, so that it equals no expected line. The source line in the trace of the main check is replaced by LINE if
  // it is the line of the record.
  std::vector<std::string> Lines() const;

  // `text` with its source line replaced by LINE if it is the text of a record; otherwise `text`.
  std::string WithoutLine(const std::string& text) const;

  std::vector<LogRecord> records;
  std::vector<CanWriteCall> can_write_calls;
  std::function<void()> on_record;  // called after each record, if set

 private:
  friend int ::vesk_category_can_write(LPVESKCATEGORYINST, int, int, int);
  int high_ = 0;
  int low_ = 0;
  int can_write_ = 1;
};

// The number of calls of both operations with a null category, in all tests.
int CallsWithoutCategory();

// Expected lines. `Info` and `ErrorLogOnly` are for texts that were never in the buffer.
std::string Error(const std::string& method, const std::string& text);
std::string Warn(const std::string& method, const std::string& text);
std::string Trace(const std::string& method, const std::string& text);
std::string Info(const std::string& method, const std::string& text);
std::string ErrorLogOnly(const std::string& method, const std::string& text);

// Formats into a string of any length.
std::string FormatV(const char* format, va_list arguments);

}  // namespace support
