// The examples of the pages of rules, as parameters of tests.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <ostream>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "rule_docs/rule_docs.h"

namespace korvel {

inline void PrintTo(const RuleDoc& doc, std::ostream* out) { *out << doc.row->id; }

}  // namespace korvel

namespace tool_test {

inline std::vector<korvel::RuleDoc> WithExample(std::span<const korvel::RuleDoc> all) {
  std::vector<korvel::RuleDoc> docs;
  std::ranges::copy_if(all, std::back_inserter(docs), [](const korvel::RuleDoc& doc) { return doc.example.has_value(); });
  return docs;
}

// The name of a test.
inline std::string Id(const testing::TestParamInfo<korvel::RuleDoc>& info) {
  std::string name = info.param.row->id;
  std::ranges::replace_if(
      name, [](char c) { return c == '.' || c == '-'; }, '_');
  return name;
}

// The words of a call.
inline std::vector<std::string> Words(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

}  // namespace tool_test
