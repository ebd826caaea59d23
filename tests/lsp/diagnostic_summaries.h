// Diagnostics in short.
#pragma once

#include <string>
#include <vector>

#include "client.h"

namespace lsp_test {

// "LINE:CHARACTER-LINE:CHARACTER SEVERITY CODE" of each diagnostic.
inline std::vector<std::string> Summaries(const Json& diagnostics) {
  std::vector<std::string> summaries;
  for (const Json& one : diagnostics) {
    const auto position = [&](const char* end) {
      const Json& at = one["range"][end];
      return std::to_string(at["line"].get<int>()) + ":" + std::to_string(at["character"].get<int>());
    };
    summaries.push_back(position("start") + "-" + position("end") + " " + std::to_string(one["severity"].get<int>()) + " " +
                        one["code"].get<std::string>());
  }
  return summaries;
}

}  // namespace lsp_test
