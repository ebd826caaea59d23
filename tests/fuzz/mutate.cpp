// What a fuzzer does to a scenario: the changes that random pairs are made with (tests/model/mutations_*.cpp), one at a time, so
// that those worth keeping add up. Not here: any rule, or which change is refused. Tested by mutate_test.cpp.
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
  if (model::Table(library) == nullptr) library = model::RandomLibrary(model::Taste::kSound, random);  // all changes need one
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
    {3, [](Scenario& s, Random& r) { s.questions = model::RandomQuestions(s.old_library, s.new_library, r); }},
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
