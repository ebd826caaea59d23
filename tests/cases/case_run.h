// Runs a pair of schemas under every public operation of the checker.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "case_files.h"

namespace cases {

// What one operation answered.
struct Answer {
  std::string operation;
  std::optional<int> code;         // nullopt: the operation may not be asked, since the table is missing on a side
  std::string text;                // what the error buffer held afterwards
  std::vector<std::string> log;    // "ERROR Method: text"
  std::vector<std::string> texts;  // of the log records alone
};

// The main check first, then the others; each on an object of its own.
std::vector<Answer> AskAll(const Case& input);

// The result of the main check between two libraries.
int AskMain(LPQMXMETALIB old_lib, LPQMXMETALIB new_lib, const Settings& settings);

// The answers as they stand in `expected`:
//
//   OPERATION CODE NAME
//     "what the error buffer held"
//     PRIORITY METHOD: each record of the log
//
// "log only" behind a method marks a text that never was in the buffer.
std::string Print(const std::vector<Answer>& answers);

}  // namespace cases
