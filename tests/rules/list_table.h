// Tables whose attributes give their type, and CheckTable's texts for faulty ones.
#pragma once

#include <optional>
#include <string>

#include "common/check_table.h"
#include "rules/rule_test.h"

namespace rules {

// A table with these attributes, and sort attributes of its fields "level" and "score".
inline Library Mall(std::optional<std::string> attr, std::optional<std::string> level = {},
                    std::optional<std::string> score = {}) {
  return Of({{.fields = {{"uid"}, {.name = "level", .attr2 = level}, {.name = "score", .attr2 = score}},
              .key = {"uid"},
              .attr = attr}});
}

// CheckTable's text for this table, as the rules must show it. They use the text as a format string, so CheckTable doubles every
// percent sign that it quotes, and each becomes a single one again.
inline std::string TableText(const Library& library, const std::string& table) {
  const Schema schema = library.Build();
  CheckTable check;
  int type = 0, number = 0, fields = 0, rule = 0;
  char protocol[8] = {};
  EXPECT_EQ(check.CheckTableTypeByCustomAttr(schema.Lib(), table.c_str(), type, number, fields, rule, protocol, false, nullptr),
            -50);
  std::string text = check.m_szErrorType;
  for (std::size_t at = text.find("%%"); at != std::string::npos; at = text.find("%%", at + 1)) text.erase(at, 1);
  return text;
}

}  // namespace rules
