#include "support/log_capture.h"

#include <cstdio>

namespace support {
namespace {

constexpr char kLogOnly[] = ", log only";
constexpr std::size_t kMaxBufferText = 1023;

int calls_without_category = 0;

std::string PriorityName(int priority) {
  switch (priority) {
    case VESK_PRIORITY_ERROR:
      return "ERROR";
    case VESK_PRIORITY_WARN:
      return "WARN";
    case VESK_PRIORITY_INFO:
      return "INFO";
    default:
      return std::to_string(priority);
  }
}

std::string Line(const std::string& priority, const std::string& method, const std::string& text) {
  return priority + " " + method + ": " + text;
}

bool IsValid(const tagVeskEvent& event) {
  const std::string file = event.evt_loc->loc_file;
  return event.evt_is_msg_binary == 0 && event.evt_id == 0 && event.evt_cls == 0 && event.evt_loc->loc_data == nullptr &&
         event.evt_loc->loc_line > 0 && file.starts_with("src/common/modify_table") && file.ends_with(".cpp");
}

LogRecord MakeRecord(const tagVeskEvent& event, const char* format, va_list arguments) {
  LogRecord record;
  record.priority = event.evt_priority;
  record.function = event.evt_loc->loc_function;
  record.file = event.evt_loc->loc_file;
  record.line = event.evt_loc->loc_line;
  record.format = format;
  record.text = FormatV(format, arguments);
  record.is_valid = IsValid(event);
  return record;
}

// A truncated text keeps its length, because LINE and the number may differ in length.
std::string ReplaceLine(const LogRecord& record) {
  const std::string place = record.file + "(" + std::to_string(record.line) + ")-<";
  if (!record.text.starts_with(place)) return record.text;
  std::string text = record.file + "(LINE)-<" + record.text.substr(place.size());
  if (record.text.size() == kMaxBufferText) text.resize(kMaxBufferText);
  return text;
}

}  // namespace

std::vector<std::string> CaptureCategory::Lines() const {
  std::vector<std::string> lines;
  for (const LogRecord& record : records) {
    const std::string method = record.function + (record.format == "%s" ? "" : kLogOnly);
    const std::string mark = record.is_valid ? "" : "[invalid event] ";
    lines.push_back(mark + Line(PriorityName(record.priority), method, ReplaceLine(record)));
  }
  return lines;
}

std::string CaptureCategory::WithoutLine(const std::string& text) const {
  for (const LogRecord& record : records) {
    if (record.text == text) return ReplaceLine(record);
  }
  return text;
}

int CallsWithoutCategory() { return calls_without_category; }

std::string Error(const std::string& method, const std::string& text) { return Line("ERROR", method, text); }
std::string Warn(const std::string& method, const std::string& text) { return Line("WARN", method, text); }
std::string Trace(const std::string& method, const std::string& text) { return Line("INFO", method, text); }
std::string Info(const std::string& method, const std::string& text) { return Line("INFO", method + kLogOnly, text); }
std::string ErrorLogOnly(const std::string& method, const std::string& text) { return Line("ERROR", method + kLogOnly, text); }

std::string FormatV(const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::string text(length < 0 ? 0 : static_cast<std::size_t>(length), '\0');
  if (length > 0) std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  return text;
}

}  // namespace support

extern "C" {

int vesk_category_can_write(LPVESKCATEGORYINST category, int priority, int id, int cls) {
  if (category == nullptr) return support::calls_without_category++, 0;
  auto* capture = static_cast<support::CaptureCategory*>(category);
  capture->can_write_calls.push_back({priority, id, cls});
  return capture->can_write_;
}

// Owns nothing when it calls `on_record`, which may never return.
void vesk_category_logv(LPVESKCATEGORYINST category, const tagVeskEvent* event, const char* format, va_list arguments) {
  if (category == nullptr) {
    ++support::calls_without_category;
    return;
  }
  auto* capture = static_cast<support::CaptureCategory*>(category);
  capture->records.push_back(support::MakeRecord(*event, format, arguments));
  if (capture->on_record) capture->on_record();
}

}  // extern "C"
