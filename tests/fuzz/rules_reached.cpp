// Records which rules were reached: looks up texts in the catalog. Tested by mutate_test.cpp.
#include "fuzz/rules_reached.h"

#include <cstdio>

#include "common/refusals.h"

namespace fuzz {
namespace {

constexpr int kWarning = 400;  // records above it are no refusals

void Collect(const std::string& text, std::set<std::string>& ids) {
  if (const korvel::RefusalRow* row = korvel::Identify(text)) ids.insert(row->id);
}

struct Reached {
  ~Reached() {
    std::string missing;
    for (const korvel::RefusalRow* row : korvel::AllRefusals()) {
      if (!ids.contains(row->id)) missing.append(" ").append(row->id);
    }
    std::fprintf(stderr, "rules reached: %zu of %zu; not reached:%s\n", ids.size(), korvel::AllRefusals().size(),
                 missing.empty() ? " none" : missing.c_str());
  }

  std::set<std::string> ids;
};

}  // namespace

void CollectRules(const std::vector<model::CallResult>& results, std::set<std::string>& ids) {
  for (const model::CallResult& result : results) {
    if (result.code != 0) Collect(result.state.buffer, ids);
    for (const model::Record& record : result.state.log) {
      if (record.priority <= kWarning) Collect(record.text, ids);
    }
  }
}

void CountRules(const std::vector<model::CallResult>& results) {
  static Reached reached;
  CollectRules(results, reached.ids);
}

}  // namespace fuzz
