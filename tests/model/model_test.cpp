// Compares the checker with its plain model on random pairs of libraries: code, buffer, log records and members after each call.
// KORVEL_SEED and KORVEL_PAIRS select another run. A pair with different results is printed as small as possible.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "model/edits.h"
#include "model/mutations.h"
#include "model/random_scenario.h"
#include "model/shrink.h"
#include "qmx/qmx_metalib_kernel.h"

namespace model {
namespace {

constexpr std::uint64_t kUsualPairs = 50000;
constexpr std::uint64_t kMaxPrinted = 3;
constexpr std::uint64_t kPairsWithUnreadMembers = 10000;
constexpr int kTriesPerMutation = 60;

std::uint64_t NumberFrom(const char* variable, std::uint64_t default_value) {
  const char* const text = std::getenv(variable);
  return text == nullptr ? default_value : std::strtoull(text, nullptr, 10);
}

bool Differ(const Scenario& scenario) {
  const std::optional<Results> results = RunBoth(scenario);
  return results && results->checker != results->model;
}

struct Counts {
  std::uint64_t pairs = 0;
  std::uint64_t calls = 0;
  std::uint64_t not_laid_out = 0;
  std::uint64_t differences = 0;
};

void PrintShrunk(const Scenario& scenario, std::uint64_t seed) {
  const Scenario smallest = Shrink(scenario, Differ);
  ADD_FAILURE() << "KORVEL_SEED=" << seed << " KORVEL_PAIRS=1\n" << Print(smallest) << PrintDifference(*RunBoth(smallest));
}

Counts Compare(std::uint64_t seed, std::uint64_t pairs) {
  Counts counts;
  for (std::uint64_t i = 0; i < pairs; ++i) {
    Random random(seed + i);
    const Scenario scenario = RandomScenario(random);
    const std::optional<Results> results = RunBoth(scenario);
    counts.pairs += results ? 1 : 0;
    counts.not_laid_out += results ? 0 : 1;
    counts.calls += results ? results->model.size() : 0;
    if (!results || results->checker == results->model) continue;
    if (++counts.differences <= kMaxPrinted) PrintShrunk(scenario, seed + i);
  }
  return counts;
}

// Texts that no public operation writes: rules check the condition before they call the helper that would write it.
const std::vector<TextId> kNeverUsed = {TextId::kNoKey};

void PrintTimesUsed() {
  for (const TextRow& row : Texts()) {
    std::printf("%12llu  %s\n", static_cast<unsigned long long>(TimesUsed()[static_cast<std::size_t>(row.text_id)]),
                std::string(row.wording).c_str());
  }
}

TEST(Model, AgreesWithCheckerOnRandomPairs) {
  const std::uint64_t seed = NumberFrom("KORVEL_SEED", 20261121);
  const std::uint64_t pairs = NumberFrom("KORVEL_PAIRS", kUsualPairs);
  TimesUsed().fill(0);
  const Counts counts = Compare(seed, pairs);
  std::printf("seed %llu: %llu pairs compared, %llu calls, %llu differences; %llu pairs could not be laid out\n",
              static_cast<unsigned long long>(seed), static_cast<unsigned long long>(counts.pairs),
              static_cast<unsigned long long>(counts.calls), static_cast<unsigned long long>(counts.differences),
              static_cast<unsigned long long>(counts.not_laid_out));
  EXPECT_EQ(counts.differences, 0U);
  if (pairs > kUsualPairs) PrintTimesUsed();
  if (pairs < kUsualPairs) return;
  EXPECT_LT(counts.not_laid_out, pairs / 10);
  for (const TextRow& row : Texts()) {
    const bool is_never_used = std::ranges::find(kNeverUsed, row.text_id) != kNeverUsed.end();
    EXPECT_EQ(TimesUsed()[static_cast<std::size_t>(row.text_id)] == 0, is_never_used) << row.wording;
  }
}

TEST(Model, TextsAreInOrderOfTheirIds) {
  ASSERT_EQ(Texts().size(), static_cast<std::size_t>(TextId::kEnd));
  for (std::size_t i = 0; i < Texts().size(); ++i)
    EXPECT_EQ(static_cast<std::size_t>(Texts()[i].text_id), i) << Texts()[i].wording;
}

// --- Members of an entry that the checker does not compare (src/common/entry_match.h) ---

// The same schema with other offsets.
LibraryDecl Moved(LibraryDecl library) {
  library.metas.insert(library.metas.begin(), {.name = "only_to_move_the_others", .fields = {{.name = "x"}}});
  return library;
}

constexpr std::uint8_t kKeyBit = 0x10;

// Changes all members of an entry that no rule reads.
void ChangeUnreadMembers(LPQMXMETAENTRY entry, LPQMXMETAENTRY another, LPQMXMETA meta, Random& random) {
  for (std::uint8_t& byte : entry->chReserved) byte = static_cast<std::uint8_t>(random.Below(256));
  entry->chDBFlag = static_cast<std::uint8_t>((entry->chDBFlag & kKeyBit) | (random.Below(256) & ~std::size_t{kKeyBit}));
  if (entry->ptrRefer != -1) entry->ptrRefer = another->ptrEntry;
  if (entry->iType != 0 && entry->iType != 1) entry->ptrTypeMeta = meta->ptrMeta;
}

void ChangeUnreadMembers(LPQMXMETALIB library, Random& random) {
  for (int i = 0; i < qmx_get_meta_num(library); ++i) {
    const LPQMXMETA meta = qmx_get_meta_by_index(library, i);
    for (int j = 0; j < qmx_get_entry_num(meta); ++j) {
      ChangeUnreadMembers(qmx_get_entry_by_index(meta, j), qmx_get_entry_by_index(meta, 0), meta, random);
    }
  }
}

TEST(Model, UncomparedMembersDoNotChangeResults) {
  const std::uint64_t seed = NumberFrom("KORVEL_SEED", 20261121);
  for (std::uint64_t i = 0; i < kPairsWithUnreadMembers; ++i) {
    Random random(seed + i);
    const Scenario scenario = RandomScenario(random);
    const std::optional<Results> before = RunBoth(scenario);
    if (!before) continue;
    const std::optional<qmx::Metalib> old_library = Build(scenario.old_library);
    const std::optional<qmx::Metalib> new_library = Build(Moved(scenario.new_library));
    ASSERT_TRUE(old_library && new_library);
    ChangeUnreadMembers(old_library->get(), random);
    ChangeUnreadMembers(new_library->get(), random);
    const Results after = RunBoth(scenario, old_library->get(), new_library->get());
    ASSERT_EQ(after.checker, before->checker) << "KORVEL_SEED=" << seed + i << "\n" << Print(scenario);
    ASSERT_EQ(after.checker, after.model) << "KORVEL_SEED=" << seed + i << "\n" << Print(scenario) << PrintDifference(after);
  }
}

// The flag of an entry and the list of key members may contradict each other in a library that another program has written.
TEST(Model, AgreesWithCheckerOnKeyFlagsAlone) {
  const std::uint64_t seed = NumberFrom("KORVEL_SEED", 20261121);
  for (std::uint64_t i = 0; i < kPairsWithUnreadMembers; ++i) {
    Random random(seed + i);
    const Scenario scenario = RandomScenario(random);
    const std::optional<qmx::Metalib> old_library = Build(scenario.old_library);
    const std::optional<qmx::Metalib> new_library = Build(scenario.new_library);
    if (!old_library || !new_library) continue;
    for (int meta = 0; meta < qmx_get_meta_num(old_library->get()); ++meta) {
      const LPQMXMETA changed = qmx_get_meta_by_index(old_library->get(), meta);
      for (int j = 0; j < qmx_get_entry_num(changed); ++j) {
        if (random.Below(4) == 0) qmx_get_entry_by_index(changed, j)->chDBFlag ^= kKeyBit;
      }
    }
    const Results results = RunBoth(scenario, old_library->get(), new_library->get());
    ASSERT_EQ(results.checker, results.model) << "KORVEL_SEED=" << seed + i << "\n"
                                              << Print(scenario) << PrintDifference(results);
  }
}

// --- Changes with a known verdict ---

std::vector<Mutation> KnownMutations() {
  std::vector<Mutation> known(FieldMutations().begin(), FieldMutations().end());
  known.insert(known.end(), TableMutations().begin(), TableMutations().end());
  std::erase_if(known, [](const Mutation& one) { return one.record == TextId::kEnd && one.tlv == TextId::kEnd; });
  return known;
}

class MutationTest : public testing::TestWithParam<Mutation> {};

// Expects the verdict for a change of a valid library; false if the change does not apply to it.
bool ExpectVerdict(const Mutation& mutation, std::int64_t flag, TextId verdict, Random& random) {
  Scenario scenario;
  scenario.old_library = RandomLibrary(LibraryKind::kValid, random);
  scenario.old_library.flag = flag;
  scenario.new_library = scenario.old_library;
  scenario.calls = {MainCheckCall(scenario.old_library)};
  if (!mutation.apply(scenario.new_library, random)) return false;
  const std::optional<Results> results = RunBoth(scenario);
  if (!results) return false;
  EXPECT_EQ(results->checker, results->model) << Print(scenario) << PrintDifference(*results);
  EXPECT_EQ(results->checker[0].code == 0, verdict == TextId::kSucceeded) << Print(scenario) << results->checker[0].state.buffer;
  if (verdict == TextId::kSucceeded) return true;
  EXPECT_EQ(results->last_failure, verdict) << Print(scenario) << results->checker[0].state.buffer;
  return true;
}

TEST_P(MutationTest, HasKnownVerdict) {
  const Mutation& mutation = GetParam();
  const std::uint64_t seed = NumberFrom("KORVEL_SEED", 20261121);
  for (const std::int64_t flag : {0, 1}) {
    const TextId verdict = flag == 0 ? mutation.record : mutation.tlv;
    int applied = verdict == TextId::kEnd ? 1 : 0;
    for (std::uint64_t i = 0; i < kTriesPerMutation && verdict != TextId::kEnd && !HasFailure(); ++i) {
      SCOPED_TRACE(std::string(mutation.label) + ", KORVEL_SEED=" + std::to_string(seed + i));
      Random random(seed + i);
      applied += ExpectVerdict(mutation, flag, verdict, random) ? 1 : 0;
    }
    EXPECT_GT(applied, 0) << mutation.label;
  }
}

std::string LabelOf(const testing::TestParamInfo<Mutation>& info) {
  std::string name = info.param.label;
  std::ranges::replace_if(
      name, [](char byte) { return std::isalnum(static_cast<unsigned char>(byte)) == 0; }, '_');
  return name;
}
INSTANTIATE_TEST_SUITE_P(Known, MutationTest, testing::ValuesIn(KnownMutations()), LabelOf);

// --- Shrinking ---

TEST(Shrink, RemovesEverythingUnneeded) {
  const auto is_out_of_order = [](const Scenario& scenario) {
    const std::optional<Results> results = RunBoth(scenario);
    return results && results->checker.back().state.buffer.starts_with("Order of the entry");
  };
  std::uint64_t seed = 1;
  Scenario scenario;
  do {
    Random random(seed++);
    scenario.old_library = RandomLibrary(LibraryKind::kValid, random);
    scenario.new_library = scenario.old_library;
    std::swap(Table(scenario.new_library)->fields.front(), Table(scenario.new_library)->fields.back());
    scenario.calls = RandomCalls(scenario.old_library, scenario.new_library, random);
  } while (!is_out_of_order(scenario) || scenario.old_library.metas.size() < 3);
  const Scenario smallest = Shrink(scenario, is_out_of_order);
  SCOPED_TRACE(Print(scenario) + "\nshrunk to\n" + Print(smallest));
  EXPECT_EQ(smallest.calls.size(), 1U);
  ASSERT_EQ(smallest.old_library.metas.size(), 1U);
  ASSERT_EQ(smallest.new_library.metas.size(), 1U);
  EXPECT_EQ(smallest.old_library.metas[0].fields.size(), 2U);
  EXPECT_EQ(smallest.new_library.metas[0].attr, std::nullopt);
}

}  // namespace
}  // namespace model
