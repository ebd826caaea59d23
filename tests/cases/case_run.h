// Runs every public operation of the checker on a case.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "case_files.h"

namespace cases {

// The result of one operation.
struct OperationResult {
  std::string operation;
  std::optional<int> code;         // nullopt: not called, because the old or the new schema lacks the table
  std::string text;                // the error buffer afterwards
  std::vector<std::string> log;    // the log records as lines, see support::CaptureCategory::Lines
  std::vector<std::string> texts;  // the texts of the log records
};

// The main check first, then the other operations. Each runs on its own object.
std::vector<OperationResult> RunOperations(const Case& input);

// The main check alone.
OperationResult RunMainCheck(LPQMXMETALIB old_lib, LPQMXMETALIB new_lib, const Settings& settings);

}  // namespace cases
