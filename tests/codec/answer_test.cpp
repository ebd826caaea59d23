// Tests on random changes that records of an allowed change read back. docs/reliability.md contains the printed figures.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>

#include "codec/exceptions.h"
#include "codec/random_change.h"

namespace codec {
namespace {

// The number of records for each change and form. A refused change gets more: records that read back by chance must not count.
constexpr int kRecords = 4;
constexpr int kRecordsOfRefused = 64;

std::uint64_t Number(const char* variable, std::uint64_t default_value) {
  const char* text = std::getenv(variable);
  return text == nullptr ? default_value : std::strtoull(text, nullptr, 10);
}

struct Refusals {
  std::uint64_t changes = 0;
  std::uint64_t readable = 0;  // changes all of whose records read back
};

struct Tally {
  std::uint64_t allowed = 0;
  std::uint64_t edited = 0;  // allowed changes of more than the version and the protocol of the library
  std::uint64_t read_back = 0;
  std::map<std::string, std::uint64_t> exceptions;
  std::map<std::string, Refusals> refusals;
};

bool IsEdited(const Change& change) {
  support::Library old_lib = change.old_lib;
  old_lib.version = change.new_lib.version;
  old_lib.protocol = change.new_lib.protocol;
  return old_lib.Build().Bytes() != change.new_lib.Build().Bytes();
}

void CheckChange(const Change& change, std::mt19937_64& random, std::uint64_t seed, Tally& tally) {
  const std::string refused = Refused(change);
  std::uint64_t read_back = 0;
  const std::optional<Broken> broken = ReadBack(change, refused.empty() ? kRecords : kRecordsOfRefused, random, read_back);
  if (!refused.empty()) {
    Refusals& refusals = tally.refusals[refused];
    ++refusals.changes;
    if (!broken) ++refusals.readable;
    return;
  }
  ++tally.allowed;
  if (IsEdited(change)) ++tally.edited;
  tally.read_back += read_back;
  if (!broken) return;
  const Exception* exception = ExplanationOf(change, *broken);
  ASSERT_NE(exception, nullptr) << "seed " << seed << ": " << broken->where << "\n" << Describe(change);
  ++tally.exceptions[exception->id];
}

void Print(std::uint64_t seed, std::uint64_t pairs, const Tally& tally) {
  std::printf("seed %ju: %ju changes, %ju allowed (%ju of them with an edit), %ju records read back\n", std::uintmax_t{seed},
              std::uintmax_t{pairs}, std::uintmax_t{tally.allowed}, std::uintmax_t{tally.edited},
              std::uintmax_t{tally.read_back});
  for (const auto& [id, changes] : tally.exceptions) {
    std::printf("  allowed, not readable: %-14s %ju\n", id.c_str(), std::uintmax_t{changes});
  }
  for (const auto& [id, refusals] : tally.refusals) {
    std::printf("  refused: %-26s %8ju, but readable: %ju\n", id.c_str(), std::uintmax_t{refusals.changes},
                std::uintmax_t{refusals.readable});
  }
}

// KORVEL_SEED and KORVEL_PAIRS select another run.
TEST(Answer, AllowedChangesReadBack) {
  const std::uint64_t seed = Number("KORVEL_SEED", 20261121);
  const std::uint64_t pairs = Number("KORVEL_PAIRS", 3000);
  Tally tally;
  for (std::uint64_t i = 0; i < pairs; ++i) {
    std::mt19937_64 random(seed + i);
    ASSERT_NO_FATAL_FAILURE(CheckChange(RandomChange(random), random, seed + i, tally));
  }
  Print(seed, pairs, tally);
  // The test is meaningless if few changes are allowed.
  EXPECT_GT(tally.edited, pairs / 5);
  EXPECT_GT(tally.read_back, tally.allowed * kRecords / 2);
}

}  // namespace
}  // namespace codec
