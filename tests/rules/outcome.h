// The result of a call of the checker as a value: result code, buffer, log records in order, members of the object. Tests list
// all of it exactly.
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

// The text in the buffer before every call.
inline constexpr char kUntouched[] = "what was written before";

// Everything that is visible after a call.
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

// A refusal whose text is in the buffer and, as the only record, in the log.
Outcome Refused(int code, const std::string& method, const std::string& text);

// A call of one operation.
using Call = std::function<int(ModifyTable&, LPVESKCATEGORYINST)>;

// The outcome of a call on an existing checker with its current state. The log may contain earlier calls.
Outcome Observe(ModifyTable& checker, support::CaptureCategory& log, const Call& call);

// The outcome of a call on a new checker. If `quiet` is true, calls another one without a log category too, which must leave the
// same code and the same text, and must not call the logging library.
Outcome OutcomeOf(const Call& call, bool quiet = true);

}  // namespace rules
