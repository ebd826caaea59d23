// Ends a call because of wrong usage or bad input: a file that cannot be read, an invalid schema, nothing to compare.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace korvel {

// Why a file could not be checked. Each kind is a rule with a page: rule_docs/fault_rules.h.
enum class FaultKind : std::uint8_t {
  kSyntax,      // not well-formed XML
  kInvalid,     // well-formed, but no valid schema
  kImage,       // an image that was refused
  kNoTable,     // a valid schema without a table, where one is required
  kUnreadable,  // its bytes cannot be read
  kCall         // no single file: the call as a whole could not be carried out
};

// A fault of one file, as data.
struct InputFault {
  FaultKind kind = FaultKind::kCall;
  std::string file = {};       // as messages show it, not escaped; empty for kCall
  std::size_t line = 0;        // line and column from 1; both 0 for a fault without a location
  std::size_t column = 0;      // in characters
  std::string text = {};       // what is wrong
  std::string allowed = {};    // what would be right; may be empty
  std::string message = {};    // the whole fault as main prints it: one line
  std::string needed_by = {};  // the file that was to be compared with this one; empty if the fault is in the checked file itself
};

// Thrown; main prints the lines on standard error and ends with exit code 2. Lines are complete and have no line end.
struct InputError {
  std::vector<std::string> lines;
  std::vector<InputFault> faults = {};  // the lines as data, if they are about single schema files; else empty
};

// A message of the program itself: "korvelcheck: text".
inline std::string ToolMessage(const std::string& text) { return "korvelcheck: " + text; }

// A fault of a file. `what` is "what is wrong; allowed: what would be right", or only the first part. The message is
// "FILE:LINE:COLUMN: error: WHAT", without a location "FILE: error: WHAT".
InputFault FaultAt(FaultKind kind, const std::string& file, std::size_t line, std::size_t column, const std::string& what);
InputFault FaultIn(FaultKind kind, const std::string& file, const std::string& what);

// A fault that is no error in the content of the file. The message is "korvelcheck: FILE: WHAT".
InputFault FaultAbout(FaultKind kind, const std::string& file, const std::string& what);

// What an error means for `file`, which it kept from being read: its faults, or its lines as kUnreadable.
std::vector<InputFault> FaultsOf(const InputError& error, const std::string& file);

// What is wrong with a call that failed: the faults of the error, or its lines as kCall.
std::vector<InputFault> FaultsOfCall(const InputError& error);

// The messages, one a line. A file that could not be compared is named behind the faults of the file that it needs.
std::vector<std::string> LinesOf(const std::vector<InputFault>& faults);

// An error with these faults.
InputError ErrorOf(std::vector<InputFault> faults);

}  // namespace korvel
