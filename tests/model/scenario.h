// Two libraries and the calls of the checker on them, as a value that can be shrunk and printed.
#pragma once

#include <string>
#include <vector>

#include "model/rules.h"
#include "model/schema_values.h"

namespace model {

enum class Operation { kModify, kCompatible, kValues, kFieldSet, kSortList, kPrimaryKey, kSplittableKey, kIndex, kList, kEnd };

// One call. Operations that take metas get those with the tables' names, null if there are none.
struct Call {
  Operation operation = Operation::kModify;
  Name old_table = "t";  // the only table for operations that take one name
  Name new_table = "t";
  bool without_old = false;  // a null library
  bool without_new = false;
  int table_type = 0;
  int init_version = 1;
  std::string server = {};
  std::string whitelist = {};
  int list_num = 0;
  bool operator==(const Call&) const = default;
};

// The calls are made on one checker, one after the other.
struct Scenario {
  LibraryDecl old_library;
  LibraryDecl new_library;
  LogGate gate;
  std::vector<Call> calls;
};

// The result of a call. The log contains the records of this call.
struct CallResult {
  int code = 0;
  State state;
  std::string refusal_fault = {};  // a fault of the checker's GetRefusal(); always empty for the model
  bool operator==(const CallResult&) const = default;
};

// Absent if a library cannot be laid out.
struct Results {
  std::vector<CallResult> checker;
  std::vector<CallResult> model;
  std::optional<TextId> last_failure;  // of the model, in the last call
};
std::optional<Results> RunBoth(const Scenario& scenario);

// The same for libraries in memory, ignoring those of the scenario: of both sides, and of the checker alone.
Results RunBoth(const Scenario& scenario, LPQMXMETALIB old_library, LPQMXMETALIB new_library);
std::vector<CallResult> RunChecker(const Scenario& scenario, LPQMXMETALIB old_library, LPQMXMETALIB new_library);

// Both libraries as schema files, the calls, and the results of both sides if they differ.
std::string Print(const Scenario& scenario);
std::string PrintDifference(const Results& results);

}  // namespace model
