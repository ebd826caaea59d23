// Tests the parts of the fuzzers: scenarios as bytes, mutations of these and of images, and what the corpora reach.
#include "fuzz/mutate.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>

#include "common/refusals.h"
#include "fuzz/mutate_image.h"
#include "fuzz/rules_reached.h"
#include "fuzz/scenario_bytes.h"
#include "model/random_scenario.h"
#include "qmx/image_reading.h"

namespace fuzz {
namespace {

using model::Random;
using model::Scenario;

// Rules that no pair of valid libraries triggers, whatever operations are called.
const std::map<std::string, std::string> kNotReached = {
    {"primary-key.none", "keys are compared only if both exist"},
    {"index.null", "an index is compared only if both exist"},
    {"arguments.name-meta", "names are checked only if the table exists"},
    {"table.new-field", "counted fields always exist"},
    {"table.old-field", "counted fields always exist"},
    {"length.field-missing", "counted fields always exist"},
};

std::string Contents(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// The parts that the verifier names, except the seed of the slots: nearly every seed is valid.
const std::set<std::string> kVerified = {"iColumnNum",
                                         "iDataSize",
                                         "iEntriesNum",
                                         "iHash",
                                         "iIndexesNum",
                                         "iMeta",
                                         "iMetaNum",
                                         "iMetaSlotNum",
                                         "iSortKeyMemberNum",
                                         "iSplitTableKeyMemberNum",
                                         "iType",
                                         "iUnitSize",
                                         "metas",
                                         "nPrimayKeyMemberNum",
                                         "ptrColumnBase",
                                         "ptrCustomAttr",
                                         "ptrCustomAttr2",
                                         "ptrEntries",
                                         "ptrEntry",
                                         "ptrIndexes",
                                         "ptrMeta",
                                         "ptrMetaSlots",
                                         "ptrMetas",
                                         "ptrName",
                                         "ptrPrimayKeyBase",
                                         "ptrRefer",
                                         "ptrSortKeyBase",
                                         "ptrSplitTableKeyBase",
                                         "ptrTypeMeta",
                                         "stSplitTableKey.iHOff",
                                         "stSplitTableKey.ptrEntry"};

std::uint64_t Seed() {
  const char* const text = std::getenv("KORVEL_SEED");
  return text == nullptr ? 20261121 : std::strtoull(text, nullptr, 10);
}

Scenario Parsed(const std::string& bytes) {
  return ScenarioOf(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

bool Same(const Scenario& one, const Scenario& other) {
  return one.old_library == other.old_library && one.new_library == other.new_library && one.gate == other.gate &&
         one.calls == other.calls;
}

void Collect(const Scenario& scenario, std::set<std::string>& ids) {
  const auto old_library = model::Build(scenario.old_library);
  const auto new_library = model::Build(scenario.new_library);
  if (old_library && new_library) CollectRules(model::RunChecker(scenario, old_library->get(), new_library->get()), ids);
}

void ExpectAllReached(const std::set<std::string>& ids) {
  for (const korvel::RefusalRow* row : korvel::AllRefusals()) {
    EXPECT_NE(ids.contains(row->id), kNotReached.contains(row->id))
        << row->id << (ids.contains(row->id) ? ": reached, but listed as unreachable" : ": not reached");
  }
}

TEST(ScenarioBytes, RestoreTheScenario) {
  const std::uint64_t seed = Seed();
  for (std::uint64_t i = 0; i < 500; ++i) {
    Random random(seed + i);
    const Scenario scenario = model::RandomScenario(random);
    const std::string bytes = BytesOf(scenario);
    EXPECT_TRUE(Same(Parsed(bytes), scenario)) << "KORVEL_SEED=" << seed + i;
    const Scenario cut = Parsed(bytes.substr(0, random.Below(bytes.size())));
    EXPECT_TRUE(Same(Parsed(BytesOf(cut)), cut)) << "truncated, KORVEL_SEED=" << seed + i;
  }
}

TEST(Mutate, ReachesEveryRuleFromEmptyScenario) {
  const std::uint64_t seed = Seed();
  Random random(seed);
  Scenario scenario;
  Scenario before;
  std::set<std::string> ids;
  const std::size_t all = korvel::AllRefusals().size() - kNotReached.size();
  for (int i = 0; i < 100'000 && ids.size() < all; ++i) {
    Mutate(scenario, random);
    Collect(scenario, ids);
    if (random.OneIn(30)) std::swap(scenario, before);
  }
  SCOPED_TRACE("KORVEL_SEED=" + std::to_string(seed));
  ExpectAllReached(ids);
}

// Each part of the format is damaged at some point, with a valid checksum, and enough images are accepted to be worth reading.
TEST(MutateImage, PassesTheVerifierOftenAndFailsInEveryPart) {
  const std::uint64_t seed = Seed();
  Random random(seed);
  std::string image;
  std::set<std::string> fields;
  int accepted = 0;
  for (int i = 0; i < 20'000; ++i) {
    const std::string before = image;
    MutateImage(image, random);
    ASSERT_EQ(Fixed(image), image);
    const qmx::ImageResult result = image::Load(image);
    accepted += result.metalib ? 1 : 0;
    if (result.metalib) continue;
    fields.insert(result.error.part.substr(result.error.part.rfind(' ') + 1));
    image = before;
  }
  SCOPED_TRACE("KORVEL_SEED=" + std::to_string(seed));
  EXPECT_GT(accepted, 2'000);
  EXPECT_EQ(fields, kVerified);
}

// A new function of the interface must be called by ReadEverything.
TEST(ReadEverything, CallsEveryReadOperation) {
  const std::string header = Contents(KORVEL_SOURCE "/include/qmx/qmx_metalib_kernel.h");
  const std::string reader = Contents(KORVEL_SOURCE "/tests/qmx/image_reading.cpp");
  const std::regex operation("qmx_get_[a-z0-9_]+\\(");
  int operations = 0;
  for (std::sregex_iterator found(header.begin(), header.end(), operation), end; found != end; ++found, ++operations) {
    EXPECT_NE(reader.find(found->str()), std::string::npos) << found->str();
  }
  EXPECT_GT(operations, 15);
}

TEST(Corpus, ReachesEveryRule) {
  std::set<std::string> ids;
  for (const auto& file : std::filesystem::directory_iterator(KORVEL_SOURCE "/tests/fuzz/corpus/check")) {
    Collect(Parsed(Contents(file.path())), ids);
  }
  ExpectAllReached(ids);
}

TEST(Corpus, ListedUnreachableRowsExist) {
  std::set<std::string> ids;
  for (const korvel::RefusalRow* row : korvel::AllRefusals()) ids.insert(row->id);
  for (const auto& [id, reason] : kNotReached) EXPECT_TRUE(ids.contains(id)) << id;
}

}  // namespace
}  // namespace fuzz
