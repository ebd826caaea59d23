// Which rules were reached: texts are looked up in the catalogue. Tested by mutate_test.cpp.
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

void CollectRules(const std::vector<model::Answer>& answers, std::set<std::string>& ids) {
  for (const model::Answer& answer : answers) {
    if (answer.code != 0) Collect(answer.state.buffer, ids);
    for (const model::Record& record : answer.state.log) {
      if (record.priority <= kWarning) Collect(record.text, ids);
    }
  }
}

void CountRules(const std::vector<model::Answer>& answers) {
  static Reached reached;
  CollectRules(answers, reached.ids);
}

}  // namespace fuzz
