// Laws of the findings of all changes, on random pairs. KORVEL_SEED and KORVEL_PAIRS select another run.
#include <gtest/gtest.h>

#include <cstdio>

#include "change_check.h"
#include "models.h"

namespace report_test {
namespace {

using korvel::Changes;
using korvel::PartialSettings;
using korvel::Source;

PartialSettings RandomSettings(std::mt19937_64& random) {
  PartialSettings settings;
  if (random() % 4 == 0) settings.created_as = random() % 2 == 0 ? 1 : 2;
  if (random() % 4 == 0) settings.type = random() % 2 == 0 ? 0 : 1;
  if (random() % 3 == 0) settings.server_version = "3.0.0";
  return settings;
}

TEST(FindingsLaw, HoldsForRandomPairs) {
  const std::uint64_t seed = NumberFrom("KORVEL_SEED", 20261121);
  const std::uint64_t pairs = NumberFrom("KORVEL_PAIRS", 700);
  std::printf("KORVEL_SEED=%llu\n", static_cast<unsigned long long>(seed));
  std::mt19937_64 random(seed);
  std::uint64_t refused = 0;
  for (std::uint64_t i = 0; i < pairs && !testing::Test::HasFailure(); ++i) {
    SCOPED_TRACE("pair " + std::to_string(i));
    const ModelPair pair = RandomModels(random);
    const Source old_source = SourceOf("old", pair.old_model);
    const Source new_source = SourceOf("new", pair.new_model);
    const ChangeCheck check = MakeCheck(old_source, new_source, "t", RandomSettings(random));
    const Changes changes = check.Find();
    ExpectLaws(check, changes);
    refused += changes.findings.empty() ? 0 : 1;
    if (testing::Test::HasFailure()) std::printf("%s", ToText(changes).c_str());
  }
  EXPECT_GT(refused, pairs / 4) << "hardly any pair is refused";
  EXPECT_LT(refused, pairs) << "every pair is refused";
}

}  // namespace
}  // namespace report_test
