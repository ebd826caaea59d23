// Two libraries and what the checker is asked about them, as a value that can be made smaller and printed.
#pragma once

#include <string>
#include <vector>

#include "model/rules.h"
#include "model/schema_values.h"

namespace model {

enum class Operation { kModify, kCompatible, kValues, kFieldSet, kSortList, kPrimaryKey, kSplittableKey, kIndex, kList, kEnd };

// One call. Operations that take metas are handed those of the tables' names, null where there is none.
struct Question {
  Operation operation = Operation::kModify;
  Name old_table = "t";  // the only one for operations that take one name
  Name new_table = "t";
  bool without_old = false;  // a null library
  bool without_new = false;
  int table_type = 0;
  int init_version = 1;
  std::string server = {};
  std::string whitelist = {};
  int list_num = 0;
  bool operator==(const Question&) const = default;
};

// The questions are put to one checker, one after the other.
struct Scenario {
  LibraryDecl old_library;
  LibraryDecl new_library;
  LogGate gate;
  std::vector<Question> questions;
};

// What a question came to. The log holds what this question wrote.
struct Answer {
  int code = 0;
  State state;
  std::string refusal_fault = {};  // what is wrong with the checker's GetRefusal(); the model has no such fault
  bool operator==(const Answer&) const = default;
};

// Absent where a library cannot be laid out.
struct Answers {
  std::vector<Answer> checker;
  std::vector<Answer> model;
  std::optional<Said> last_failure;  // the model's, of the last question
};
std::optional<Answers> Ask(const Scenario& scenario);

// The same of libraries that lie there, whatever those of the scenario are: of both sides, and of the checker alone.
Answers Ask(const Scenario& scenario, LPQMXMETALIB old_library, LPQMXMETALIB new_library);
std::vector<Answer> AskChecker(const Scenario& scenario, LPQMXMETALIB old_library, LPQMXMETALIB new_library);

// Both libraries as schema files, the calls, and what each side answered where they differ.
std::string Print(const Scenario& scenario);
std::string PrintDifference(const Answers& answers);

}  // namespace model
