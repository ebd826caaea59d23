// Mutates a scenario for a fuzzer: applies one of the changes of tests/model/mutations_*.cpp at a time, so that useful ones
// accumulate. Contains no rule and does not know which change is refused. Tested by mutate_test.cpp.
#include "fuzz/mutate.h"

#include <utility>

#include "model/edits.h"
#include "model/mutations.h"
#include "model/random_scenario.h"

namespace fuzz {
namespace {

using model::LibraryDecl;
using model::Random;
using model::Scenario;

void Change(LibraryDecl& library, Random& random) {
  if (model::Table(library) == nullptr)
    library = model::RandomLibrary(model::LibraryKind::kValid, random);  // all changes need a table
  const std::size_t kind = random.Below(8);
  const auto mutations = kind < 4 ? model::FieldMutations() : kind < 6 ? model::TableMutations() : model::OddMutations();
  model::ApplyAny(mutations, library, random);
}

struct Step {
  std::size_t weight;
  void (*take)(Scenario& scenario, Random& random);
};

constexpr Step kSteps[] = {
    {10, [](Scenario& s, Random& r) { Change(s.new_library, r); }},
    {3, [](Scenario& s, Random& r) { Change(s.old_library, r); }},
    {2, [](Scenario& s, Random& r) { Change(s.new_library = s.old_library, r); }},
    {2, [](Scenario& s, Random& r) { Change(s.old_library = s.new_library, r); }},
    {1, [](Scenario& s, Random&) { std::swap(s.old_library, s.new_library); }},
    {3, [](Scenario& s, Random& r) { s.calls = model::RandomCalls(s.old_library, s.new_library, r); }},
    {1, [](Scenario& s, Random& r) { s.gate = model::RandomGate(r); }},
    {1, [](Scenario& s, Random& r) { s = model::RandomScenario(r); }},
};

}  // namespace

void Mutate(Scenario& scenario, Random& random) {
  std::size_t all = 0;
  for (const Step& step : kSteps) all += step.weight;
  do {
    std::size_t left = random.Below(all);
    const Step* step = kSteps;
    for (; left >= step->weight; ++step) left -= step->weight;
    step->take(scenario, random);
  } while (random.OneIn(2));
}

}  // namespace fuzz
