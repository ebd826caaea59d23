// What a question to the checker comes to, as a value: result code, buffer, log records in their order, what stays in the object.
// Tests list all of it, byte for byte. One thing more fails as surely as one less.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "common/modify_table.h"
#include "support/log_capture.h"

namespace rules {

using support::Error;
using support::ErrorLogOnly;
using support::Info;
using support::Trace;
using support::Warn;

// What the buffer holds before every question.
inline constexpr char kUntouched[] = "what was written before";

// Everything a caller can see after a question.
struct Outcome {
  int code = 0;
  std::string buffer = kUntouched;
  std::vector<std::string> log = {};    // as CaptureCategory::Lines gives them
  std::vector<std::string> grown = {};  // printVec: "name before -> after"
  std::vector<std::string> white = {};  // whiteVec
  std::string server = {};              // m_svr_ver
  bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* out);

// A refusal whose text stands in the buffer and, as the only record, in the log.
Outcome Refused(int code, const std::string& method, const std::string& text);

// One question to a checker.
using Ask = std::function<int(ModifyTable&, LPVESKCATEGORYINST)>;

// What a checker that already exists, and holds what it holds, answers now. The log has room for more than one question.
Outcome Observe(ModifyTable& checker, support::CaptureCategory& log, const Ask& ask);

// What a new checker answers. Unless `quiet` is false, asks another one without a log category too: it must leave the same code
// and the same text, and ask nothing of the logging library.
Outcome Judge(const Ask& ask, bool quiet = true);

}  // namespace rules
