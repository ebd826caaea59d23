// Scenarios and differences as text for people. Not here: libraries (schema_values.cpp).
#include "model/scenario.h"

namespace model {
namespace {

constexpr const char* kCalls[] = {"KorvelModifyTable",   "CheckTableMetaCompatible", "CompareValue",         "CompareTableField",
                                  "CompareSortListInfo", "ComparePrimaryKey",        "CompareSplittableKey", "CompareIndex",
                                  "CheckListMetaInfo"};
static_assert(std::size(kCalls) == static_cast<std::size_t>(Operation::kEnd));

std::string Quoted(const Name& name) { return name ? "'" + *name + "'" : "null"; }

std::string Print(const Question& question) {
  std::string text = std::string(kCalls[static_cast<int>(question.operation)]) + "(";
  text += std::string(question.without_old ? "null" : "old") + ", " + (question.without_new ? "null" : "new");
  text += ", tables " + Quoted(question.old_table) + " " + Quoted(question.new_table);
  text += ", type " + std::to_string(question.table_type) + ", created in " + std::to_string(question.init_version);
  text += ", server '" + question.server + "', whitelist '" + question.whitelist + "'";
  return text + ", list of " + std::to_string(question.list_num) + ")\n";
}

std::string Print(const LogGate& gate) {
  if (gate.absent) return "log: none\n";
  std::string text = "log:";
  if (gate.high) text += " high " + std::to_string(*gate.high);
  if (gate.low) text += " low " + std::to_string(*gate.low);
  return text + (gate.answer ? " open\n" : " closed\n");
}

std::string Print(const Answer& answer) {
  std::string text = "  code " + std::to_string(answer.code) + "\n  buffer [" + answer.state.buffer + "]\n";
  for (const Record& record : answer.state.log) {
    text += "  log " + std::to_string(record.priority) + " " + record.method + (record.from_buffer ? ": " : ", log only: ");
    text += record.text + "\n";
  }
  for (const Grown& one : answer.state.grown) {
    text += "  grown " + one.name + " " + std::to_string(one.before) + " -> " + std::to_string(one.after) + "\n";
  }
  for (const std::string& name : answer.state.white) text += "  white [" + name + "]\n";
  text += "  server [" + answer.state.server + "]\n  asked";
  for (const int priority : answer.state.asked) text += " " + std::to_string(priority);
  text += "\n";
  if (!answer.refusal_fault.empty()) text += "  GetRefusal(): " + answer.refusal_fault + "\n";
  return text;
}

}  // namespace

std::string Print(const Scenario& scenario) {
  std::string text = "<!-- old -->\n" + Print(scenario.old_library) + "<!-- new -->\n" + Print(scenario.new_library);
  text += Print(scenario.gate);
  for (const Question& question : scenario.questions) text += Print(question);
  return text;
}

std::string PrintDifference(const Answers& answers) {
  std::string text;
  for (std::size_t i = 0; i < answers.checker.size(); ++i) {
    if (answers.checker[i] == answers.model[i]) continue;
    text += "question " + std::to_string(i + 1) + ", the checker:\n" + Print(answers.checker[i]);
    text += "question " + std::to_string(i + 1) + ", the model:\n" + Print(answers.model[i]);
  }
  return text;
}

}  // namespace model
