// Log categories: what vesk_category_logv writes, to a file or to standard error, as lines of text or of JSON.
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
// A record is one line always, in valid UTF-8; record_line.h says how other bytes are written.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "vesk/vesk_category.h"

namespace vesk {

enum class LineFormat { kText, kJson };

struct LogSettings {
  std::optional<std::string> file;  // appended to, made when missing, its directory never; absent = standard error
  LineFormat format = LineFormat::kText;
  std::optional<int> gravest;      // least number that is written; absent = no bound
  std::optional<int> least_grave;  // greatest number that is written; absent or -1 = no bound
};

// An open category. Several threads may log to one and ask it anything while it lives; the bounds behind its handle are the
// caller's to change, between checks. Lines reach the file at the latest with the next ERROR, or with Close().
class LogCategory {
 public:
  // Opens a category. Returns null, and the reason in `error`, when the file cannot be opened; `error` is left alone otherwise.
  static std::unique_ptr<LogCategory> Open(const LogSettings& settings, std::string& error);

  // A category that nothing can be written to, for callers that want no log where the checker insists on a category. Takes next
  // to no time.
  static std::unique_ptr<LogCategory> Closed();

  // Closes the category if that is still to do. No thread may be logging to it any more.
  ~LogCategory();
  LogCategory(const LogCategory&) = delete;
  LogCategory& operator=(const LogCategory&) = delete;

  // What the checker takes. Borrowed: valid as long as the category lives, closed or not.
  LPVESKCATEGORYINST handle();

  // Writes out what is pending and closes the file; standard error stays open. From then on nothing can be written here.
  void Close();

  // The first failure to write ("cannot write the log: No space left on device"); empty when everything was written so far.
  // Later lines are still tried. Complete after Close() only, since lines may be pending before.
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
