// A log category that remembers what is asked of it and what is written to it. Stands in for the logging library: whoever links
// this needs no other implementation of vesk_category.h.
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
  std::string format;      // "%s" where the text was taken from the checker's buffer
  std::string text;        // formatted, of any length
  bool as_agreed = false;  // the event's other members hold what a text event has, and the file is one of the checker's
};

// One call of vesk_category_can_write.
struct Question {
  int priority;
  int id;
  int cls;
  bool operator==(const Question&) const = default;
};

// Without bounds and with the answer "yes" unless told otherwise.
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
  void SetAnswer(int answer) { answer_ = answer; }

  // The records as lines: "ERROR Method: text", or "ERROR Method, log only: text" where the text never was in the buffer. An
  // event that is not as agreed gets a mark in front, so that it equals no expected line. The source line that the trace of the
  // main entry prints is replaced by LINE if it is the record's own line.
  std::vector<std::string> Lines() const;

  // `text` with its source line replaced by LINE if it is the text of a record; otherwise `text`.
  std::string WithoutLine(const std::string& text) const;

  std::vector<LogRecord> records;
  std::vector<Question> questions;
  std::function<void()> on_record;  // called after each record, if set

 private:
  friend int ::vesk_category_can_write(LPVESKCATEGORYINST, int, int, int);
  int high_ = 0;
  int low_ = 0;
  int answer_ = 1;
};

// How often the two operations were called with a null category, by all tests together.
int CallsWithoutCategory();

// Expected lines. `Info` and `ErrorLogOnly` are for texts that never were in the buffer.
std::string Error(const std::string& method, const std::string& text);
std::string Warn(const std::string& method, const std::string& text);
std::string Trace(const std::string& method, const std::string& text);
std::string Info(const std::string& method, const std::string& text);
std::string ErrorLogOnly(const std::string& method, const std::string& text);

// A print of any length into a string.
std::string FormatV(const char* format, va_list arguments);

}  // namespace support
