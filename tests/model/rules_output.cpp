// The output of the plain model: the buffer, and the conditions for log records. Contains no rule. Tested by model_test.cpp.
#include "model/rules.h"

namespace model {
namespace {

constexpr std::size_t kBufferText = 1023;
constexpr int kError = 300;

bool IsLet(Checker& checker, int priority) {
  const LogGate& gate = checker.gate;
  if (gate.absent) return false;
  if (gate.low && *gate.low != -1 && *gate.low < priority) return false;
  if (gate.high && *gate.high > priority) return false;
  checker.state.can_write_calls.push_back(priority);
  return gate.can_write;
}

}  // namespace

std::string Shown(const Name& name) { return name ? *name : "(null)"; }

void Write(Checker& checker, const std::string& text) { checker.state.buffer = text.substr(0, kBufferText); }

void LogBuffer(Checker& checker, int priority, const char* method) {
  if (IsLet(checker, priority)) checker.state.log.push_back({priority, method, true, checker.state.buffer});
}

void LogOnly(Checker& checker, int priority, const char* method, TextId text_id, const Values& values) {
  const std::string text = Fill(text_id, values);
  if (IsLet(checker, priority)) checker.state.log.push_back({priority, method, false, text});
}

int Fail(Checker& checker, int code, const char* method, TextId text_id, const Values& values) {
  checker.last_failure = text_id;
  Write(checker, Fill(text_id, values));
  LogBuffer(checker, kError, method);
  return code;
}

}  // namespace model
