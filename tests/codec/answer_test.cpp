// Tests on random changes that records of an allowed change read back, or that the tool warns about the change.
// docs/reliability.md contains the printed figures.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <set>

#include "codec/exceptions.h"
#include "codec/random_change.h"
#include "codec/warnings.h"

namespace codec {
namespace {

// The number of records for each change and form. A refused change gets more: records that read back by chance must not count.
constexpr int kRecords = 4;
constexpr int kRecordsOfRefused = 64;
constexpr int kRecordsOfWarned = 64;

std::uint64_t Number(const char* variable, std::uint64_t default_value) {
  const char* text = std::getenv(variable);
  return text == nullptr ? default_value : std::strtoull(text, nullptr, 10);
}

struct Refusals {
  std::uint64_t changes = 0;
  std::uint64_t readable = 0;  // changes all of whose records read back
};

// Allowed changes with a warning, and those of them whose records do not read back.
struct Warned {
  std::uint64_t changes = 0;
  std::uint64_t unreadable = 0;
};

struct Tally {
  std::uint64_t allowed = 0;
  std::uint64_t edited = 0;  // allowed changes of more than the version and the protocol of the library
  std::uint64_t read_back = 0;
  std::map<std::string, std::uint64_t> exceptions;
  std::map<std::string, Refusals> refusals;
  Warned warned;
  std::map<std::string, Warned> warned_by;  // each rule; a change may have several
};

bool IsEdited(const Change& change) {
  support::Library old_lib = change.old_lib;
  old_lib.version = change.new_lib.version;
  old_lib.protocol = change.new_lib.protocol;
  return old_lib.Build().Bytes() != change.new_lib.Build().Bytes();
}

// A record that breaks may be rare: a change with a warning gets more records before it counts as readable.
void CountWarnings(const Change& change, bool is_broken, const std::set<std::string>& warnings, std::uint64_t seed,
                   Tally& tally) {
  if (warnings.empty()) return;
  std::mt19937_64 random(seed);
  std::uint64_t unused = 0;
  const bool is_unreadable = is_broken || ReadBack(change, kRecordsOfWarned, random, unused).has_value();
  const auto count = [&](Warned& warned) {
    ++warned.changes;
    if (is_unreadable) ++warned.unreadable;
  };
  count(tally.warned);
  for (const std::string& rule : warnings) count(tally.warned_by[rule]);
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
  const std::set<std::string> warnings = WarningsAbout(change);
  CountWarnings(change, broken.has_value(), warnings, seed, tally);
  if (!broken) return;
  const Exception* exception = ExplanationOf(change, *broken);
  ASSERT_NE(exception, nullptr) << "seed " << seed << ": " << broken->where << "\n" << Describe(change);
  EXPECT_FALSE(warnings.empty()) << "seed " << seed << ": no warning about " << exception->id << "\n" << Describe(change);
  ++tally.exceptions[exception->id];
}

void Print(const std::string& rule, const Warned& warned) {
  std::printf("  warned: %-24s %8ju, not readable: %ju\n", rule.c_str(), std::uintmax_t{warned.changes},
              std::uintmax_t{warned.unreadable});
}

void Print(std::uint64_t seed, std::uint64_t pairs, const Tally& tally) {
  std::printf("seed %ju: %ju changes, %ju allowed (%ju of them with an edit), %ju records read back\n", std::uintmax_t{seed},
              std::uintmax_t{pairs}, std::uintmax_t{tally.allowed}, std::uintmax_t{tally.edited},
              std::uintmax_t{tally.read_back});
  for (const auto& [id, changes] : tally.exceptions) {
    std::printf("  allowed, not readable: %-14s %ju\n", id.c_str(), std::uintmax_t{changes});
  }
  Print("all rules", tally.warned);
  for (const auto& [rule, warned] : tally.warned_by) Print(rule, warned);
  for (const auto& [id, refusals] : tally.refusals) {
    std::printf("  refused: %-26s %8ju, but readable: %ju\n", id.c_str(), std::uintmax_t{refusals.changes},
                std::uintmax_t{refusals.readable});
  }
}

// KORVEL_SEED and KORVEL_PAIRS select another run.
TEST(Answer, AllowedChangesReadBackOrHaveAWarning) {
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
