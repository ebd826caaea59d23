// Prints scenarios and differences as text. Libraries are printed by schema_values.cpp.
#include "model/scenario.h"

namespace model {
namespace {

constexpr const char* kCalls[] = {"KorvelModifyTable",   "CheckTableMetaCompatible", "CompareValue",         "CompareTableField",
                                  "CompareSortListInfo", "ComparePrimaryKey",        "CompareSplittableKey", "CompareIndex",
                                  "CheckListMetaInfo"};
static_assert(std::size(kCalls) == static_cast<std::size_t>(Operation::kEnd));

std::string Quoted(const Name& name) { return name ? "'" + *name + "'" : "null"; }

std::string Print(const Call& call) {
  std::string text = std::string(kCalls[static_cast<int>(call.operation)]) + "(";
  text += std::string(call.without_old ? "null" : "old") + ", " + (call.without_new ? "null" : "new");
  text += ", tables " + Quoted(call.old_table) + " " + Quoted(call.new_table);
  text += ", type " + std::to_string(call.table_type) + ", created in " + std::to_string(call.init_version);
  text += ", server '" + call.server + "', whitelist '" + call.whitelist + "'";
  return text + ", list of " + std::to_string(call.list_num) + ")\n";
}

std::string Print(const LogGate& gate) {
  if (gate.absent) return "log: none\n";
  std::string text = "log:";
  if (gate.high) text += " high " + std::to_string(*gate.high);
  if (gate.low) text += " low " + std::to_string(*gate.low);
  return text + (gate.can_write ? " open\n" : " closed\n");
}

std::string Print(const CallResult& result) {
  std::string text = "  code " + std::to_string(result.code) + "\n  buffer [" + result.state.buffer + "]\n";
  for (const Record& record : result.state.log) {
    text += "  log " + std::to_string(record.priority) + " " + record.method + (record.from_buffer ? ": " : ", log only: ");
    text += record.text + "\n";
  }
  for (const Grown& one : result.state.grown) {
    text += "  grown " + one.name + " " + std::to_string(one.before) + " -> " + std::to_string(one.after) + "\n";
  }
  for (const std::string& name : result.state.white) text += "  white [" + name + "]\n";
  text += "  server [" + result.state.server + "]\n  can_write";
  for (const int priority : result.state.can_write_calls) text += " " + std::to_string(priority);
  text += "\n";
  if (!result.refusal_fault.empty()) text += "  GetRefusal(): " + result.refusal_fault + "\n";
  return text;
}

}  // namespace

std::string Print(const Scenario& scenario) {
  std::string text = "<!-- old -->\n" + Print(scenario.old_library) + "<!-- new -->\n" + Print(scenario.new_library);
  text += Print(scenario.gate);
  for (const Call& call : scenario.calls) text += Print(call);
  return text;
}

std::string PrintDifference(const Results& results) {
  std::string text;
  for (std::size_t i = 0; i < results.checker.size(); ++i) {
    if (results.checker[i] == results.model[i]) continue;
    text += "call " + std::to_string(i + 1) + ", checker:\n" + Print(results.checker[i]);
    text += "call " + std::to_string(i + 1) + ", model:\n" + Print(results.model[i]);
  }
  return text;
}

}  // namespace model
