// Log categories: write the records of vesk_category_logv to a file or to standard error, as lines of text or JSON.
//
//   vesk::LogSettings settings;
//   settings.file = "check.log";
//   std::string error;
//   auto log = vesk::LogCategory::Open(settings, error);   // null: `error` says why
//   checker.KorvelModifyTable(..., log->handle(), ...);
//   log->Close();
//
// Text line:  2031-05-04T09:30:00.125Z ERROR src/common/modify_table.cpp:42 KorvelModifyTable: message
// JSON line:  {"time":"2031-05-04T09:30:00.125Z","priority":300,"level":"ERROR","file":"...","line":42,"function":"...",
//              "message":"..."}                                                                            (one line, UTC)
// A record is always one line of valid UTF-8; src/vesk/record_line.h describes how other bytes are written.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "vesk/vesk_category.h"

namespace vesk {

enum class LineFormat { kText, kJson };

struct LogSettings {
  std::optional<std::string> file;  // appended to, created if missing (but not its directory); absent = standard error
  LineFormat format = LineFormat::kText;
  std::optional<int> min_priority;  // smallest number that is written; absent = no bound
  std::optional<int> max_priority;  // largest number that is written; absent or -1 = no bound
  // Bytes of lines after which the category stops itself: it writes a last line that says so, and closes the bounds behind its
  // handle, so that the checker goes on as without a log. With this limit, only one thread at a time may use the category, and
  // the caller must leave the bounds alone. Absent = no limit.
  std::optional<std::size_t> max_bytes = {};
};

// An open category. Several threads may use it at once while it lives, unless it has a limit. The caller may change the bounds
// behind its handle between checks. Lines reach the file with the next ERROR at the latest, or with Close().
class LogCategory {
 public:
  // Opens a category. If the file cannot be opened, returns null and sets `error` to the reason; otherwise leaves `error`
  // unchanged.
  static std::unique_ptr<LogCategory> Open(const LogSettings& settings, std::string& error);

  // Closes the category unless it is closed. No thread may use it any more.
  ~LogCategory();
  LogCategory(const LogCategory&) = delete;
  LogCategory& operator=(const LogCategory&) = delete;

  // The argument for the checker. Borrowed: valid as long as the category lives, closed or not.
  LPVESKCATEGORYINST handle();

  // Writes pending lines and closes the file; standard error stays open. Nothing can be written afterwards.
  void Close();

  // Whether records were left out because of LogSettings::max_bytes.
  bool ReachedLimit() const;

  // The first write failure ("cannot write the log: No space left on device"); empty if there was none so far. Later lines are
  // still tried. Complete only after Close(), because lines may be pending before.
  std::string WriteFailure() const;

 private:
  friend int ::vesk_category_can_write(LPVESKCATEGORYINST category, int priority, int id, int cls);
  friend void ::vesk_category_logv(LPVESKCATEGORYINST category, const struct tagVeskEvent* event, const char* format,
                                   va_list arguments);

  struct Instance;
  explicit LogCategory(std::unique_ptr<Instance> instance);

  std::unique_ptr<Instance> instance_;
};

}  // namespace vesk
