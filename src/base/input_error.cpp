// Makes faults and their messages. Tested by tests/report/input_error_test.cpp.
#include "base/input_error.h"

#include <string_view>
#include <utility>

#include "base/text.h"

namespace korvel {
namespace {

struct Position {
  std::size_t line;
  std::size_t column;
};

// Names from the file are in the first part: what is allowed begins at the last separator.
InputFault Split(FaultKind kind, const std::string& file, const std::string& what) {
  constexpr std::string_view kSeparator = "; allowed: ";
  const std::size_t end = what.rfind(kSeparator);
  InputFault fault{.kind = kind, .file = file, .text = what.substr(0, end)};
  if (end != std::string::npos) fault.allowed = what.substr(end + kSeparator.size());
  return fault;
}

std::string WithoutPrefix(const std::string& line, const std::string& prefix) {
  return line.starts_with(prefix) ? line.substr(prefix.size()) : line;
}

}  // namespace

InputFault FaultAt(FaultKind kind, const std::string& file, std::size_t line, std::size_t column, const std::string& what) {
  InputFault fault = Split(kind, file, what);
  fault.line = line;
  fault.column = column;
  fault.message = OneLine(FileLineColumn(PathText(file), Position{line, column}) + ": error: " + what);
  return fault;
}

InputFault FaultIn(FaultKind kind, const std::string& file, const std::string& what) {
  InputFault fault = Split(kind, file, what);
  fault.message = OneLine(PathText(file) + ": error: " + what);
  return fault;
}

InputFault FaultAbout(FaultKind kind, const std::string& file, const std::string& what) {
  InputFault fault = Split(kind, file, what);
  fault.message = ToolMessage(OneLine(file) + ": " + what);
  return fault;
}

std::vector<InputFault> FaultsOf(const InputError& error, const std::string& file) {
  if (!error.faults.empty()) return error.faults;
  std::vector<InputFault> faults;
  for (const std::string& line : error.lines) {
    faults.push_back(
        Split(FaultKind::kUnreadable, file, WithoutPrefix(WithoutPrefix(line, ToolMessage("")), OneLine(file) + ": ")));
    faults.back().message = line;
  }
  return faults;
}

std::vector<InputFault> FaultsOfCall(const InputError& error) {
  if (!error.faults.empty()) return error.faults;
  std::vector<InputFault> faults;
  for (const std::string& line : error.lines) {
    faults.push_back({.text = WithoutPrefix(line, ToolMessage("")), .message = line});
  }
  return faults;
}

std::vector<std::string> LinesOf(const std::vector<InputFault>& faults) {
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < faults.size(); ++i) {
    const InputFault& fault = faults[i];
    lines.push_back(fault.message);
    const bool is_last = i + 1 == faults.size() || faults[i + 1].file != fault.file || faults[i + 1].needed_by != fault.needed_by;
    if (fault.needed_by.empty() || !is_last) continue;
    lines.push_back(ToolMessage(OneLine(fault.needed_by) + ": cannot be compared with " + OneLine(fault.file)));
  }
  return lines;
}

InputError ErrorOf(std::vector<InputFault> faults) {
  std::vector<std::string> lines = LinesOf(faults);
  return {std::move(lines), std::move(faults)};
}

}  // namespace korvel
