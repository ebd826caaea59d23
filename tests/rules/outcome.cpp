#include "rules/outcome.h"

#include <cstring>
#include <ostream>

namespace rules {
namespace {

void SetBuffer(ModifyTable& checker) { std::strcpy(checker.m_szErrorType, kUntouched); }

std::vector<std::string> Nodes(const std::vector<PrintNode>& nodes) {
  std::vector<std::string> texts;
  for (const PrintNode& node : nodes) {
    texts.push_back(node.entry_name + " " + std::to_string(node.before_sz) + " -> " + std::to_string(node.after_sz));
  }
  return texts;
}

void PrintList(const char* title, const std::vector<std::string>& lines, std::ostream* out) {
  for (const std::string& line : lines) *out << "\n  " << title << " [" << line << "]";
}

// Repeats the call without a log category.
void CheckQuiet(const Call& call, int code, const ModifyTable& loud) {
  ModifyTable checker;
  SetBuffer(checker);
  const int calls_before = support::CallsWithoutCategory();
  EXPECT_EQ(call(checker, nullptr), code) << "without a category";
  EXPECT_STREQ(checker.GetErrType(), loud.GetErrType()) << "without a category";
  EXPECT_EQ(support::CallsWithoutCategory(), calls_before);
}

}  // namespace

void PrintTo(const Outcome& outcome, std::ostream* out) {
  *out << "code " << outcome.code << "\n  buffer [" << outcome.buffer << "]";
  PrintList("log", outcome.log, out);
  PrintList("grown", outcome.grown, out);
  PrintList("white", outcome.white, out);
  *out << "\n  server [" << outcome.server << "]";
}

Outcome Refused(int code, const std::string& method, const std::string& text) { return {code, text, {Error(method, text)}}; }

Outcome Observe(ModifyTable& checker, support::CaptureCategory& log, const Call& call) {
  const int code = call(checker, &log);
  return {code,
          log.WithoutLine(checker.GetErrType()),
          log.Lines(),
          Nodes(checker.printVec),
          {checker.whiteVec.begin(), checker.whiteVec.end()},
          checker.m_svr_ver};
}

Outcome OutcomeOf(const Call& call, bool quiet) {
  ModifyTable checker;
  SetBuffer(checker);
  support::CaptureCategory log;
  const Outcome outcome = Observe(checker, log, call);
  if (quiet) CheckQuiet(call, outcome.code, checker);
  return outcome;
}

}  // namespace rules
