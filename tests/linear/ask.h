// Puts one question to the checker: once to the product's, once to the same rules with a memory that remembers nothing.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "qmx/qmx_types.h"

namespace linear {

enum class Operation { kModifyQmx, kModifyTlv, kCompat, kValuesQmx, kValuesTlv, kSame, kRecord, kTlv, kVersion, kOrder };

struct Question {
  Operation operation;
  LPQMXMETALIB old_lib;
  LPQMXMETALIB new_lib;
  bool with_log;
  std::optional<int> low_bound;  // of the log category
};

struct Answer {
  int code = 0;
  std::string buffer;
  std::vector<std::string> log;
  std::vector<std::string> grown;
  bool operator==(const Answer&) const = default;
};

// About table "t" of both libraries.
Answer AskProduct(const Question& question);
Answer AskPlain(const Question& question);

}  // namespace linear
