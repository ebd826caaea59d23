// The search for refused edits, with rules that a test defines: which sets of edits are refused, and by what.
#include "analysis/findings/search.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <random>

namespace report_test {
namespace {

using korvel::CheckAnswer;
using korvel::EditSet;
using korvel::RejectedSet;
using korvel::Search;
using korvel::SearchInput;
using korvel::SearchResult;
using korvel::Verdict;
using testing::ElementsAre;
using testing::IsEmpty;

using Edits = std::vector<std::size_t>;

// Refuses sets that contain all of some edits and none of others. The first rule that refuses gives the verdict, as in the
// checker.
struct Rule {
  Edits all_of;
  Edits none_of = {};
  bool no_schema = false;
};

class World {
 public:
  explicit World(std::size_t edits, std::vector<Rule> rules = {}) : rules_(std::move(rules)) {
    input_.needs.resize(edits);
    input_.check = [this](const std::vector<EditSet>& sets) {
      std::vector<CheckAnswer> verdicts;
      for (const EditSet& set : sets) verdicts.push_back(VerdictOn(set));
      checked_ += sets.size();
      return verdicts;
    };
  }
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  void SetNeeds(std::size_t edit, Edits needs) { input_.needs[edit] = std::move(needs); }
  const Edits& Needs(std::size_t edit) const { return input_.needs[edit]; }
  SearchInput& input() { return input_; }
  std::size_t checked() const { return checked_; }

  SearchResult Find() {
    checked_ = 0;
    return Search(input_);
  }

  CheckAnswer VerdictOn(const EditSet& set) const {
    for (std::size_t i = 0; i < rules_.size(); ++i) {
      if (!Matches(rules_[i], set)) continue;
      if (rules_[i].no_schema) return std::nullopt;
      return Verdict{-1, "rule " + std::to_string(i), ""};
    }
    return Verdict{};
  }

  EditSet Closed(const Edits& edits) const {
    EditSet set(input_.needs.size());
    for (const std::size_t edit : edits) {
      set[edit] = true;
      for (const std::size_t needed : input_.needs[edit]) set[needed] = true;
    }
    return set;
  }

 private:
  static bool Matches(const Rule& rule, const EditSet& set) {
    return std::ranges::all_of(rule.all_of, [&](std::size_t edit) { return set[edit]; }) &&
           std::ranges::none_of(rule.none_of, [&](std::size_t edit) { return set[edit]; });
  }

  std::vector<Rule> rules_;
  SearchInput input_;
  std::size_t checked_ = 0;
};

Edits Chosen(const EditSet& set) {
  Edits chosen;
  for (std::size_t i = 0; i < set.size(); ++i) {
    if (set[i]) chosen.push_back(i);
  }
  return chosen;
}

// "1: rule 0" for each refusal.
std::vector<std::string> ToText(const std::vector<RejectedSet>& refusals) {
  std::vector<std::string> shown;
  for (const RejectedSet& refusal : refusals) {
    std::string text;
    for (const std::size_t edit : refusal.edits) text += (text.empty() ? "" : "+") + std::to_string(edit);
    shown.push_back(text + ": " + refusal.verdict.text);
  }
  return shown;
}

TEST(Search, NothingRefused) {
  World world(5);
  const SearchResult result = world.Find();
  EXPECT_THAT(Chosen(result.allowed), ElementsAre(0, 1, 2, 3, 4));
  EXPECT_THAT(result.refusals, IsEmpty());
  EXPECT_FALSE(result.stopped);
}

TEST(Search, NoEditsAtAll) {
  World world(0);
  const SearchResult result = world.Find();
  EXPECT_THAT(result.refusals, IsEmpty());
  EXPECT_FALSE(result.together->Refused());
}

TEST(Search, EachRefusedEditHasItsOwnRefusal) {
  World world(6, {{{4}}, {{1}}});
  const SearchResult result = world.Find();
  EXPECT_THAT(Chosen(result.allowed), ElementsAre(0, 2, 3, 5));
  EXPECT_THAT(ToText(result.refusals), ElementsAre("1: rule 1", "4: rule 0"));
  EXPECT_FALSE(result.together->Refused());
}

TEST(Search, CombinationIsSmallestSet) {
  World world(20, {{{3, 7, 16}}});
  const SearchResult result = world.Find();
  EXPECT_THAT(ToText(result.refusals), ElementsAre("3+7+16: rule 0"));
  EXPECT_EQ(Chosen(result.allowed).size(), 19u);
}

TEST(Search, ReportsOneOfTwoCombinationsWithCommonEdit) {
  World world(8, {{{0, 6}}, {{1, 6}}});
  const SearchResult result = world.Find();
  EXPECT_THAT(Chosen(result.allowed), ElementsAre(0, 1, 2, 3, 4, 5, 7));
  EXPECT_THAT(ToText(result.refusals), ElementsAre("0+6: rule 0"));
}

TEST(Search, AllowsEditThatAnotherCompensatesFor) {
  World world(8, {{{5}, {2}}, {{7}}});
  const SearchResult result = world.Find();
  EXPECT_THAT(Chosen(result.allowed), ElementsAre(0, 1, 2, 3, 4, 5, 6));
  EXPECT_THAT(ToText(result.refusals), ElementsAre("7: rule 1"));
}

TEST(Search, EditsMayCompensateForEachOther) {
  World world(8, {{{1}, {6}}, {{6}, {1}}, {{3}}});
  EXPECT_THAT(ToText(world.Find().refusals), ElementsAre("1: rule 0", "3: rule 2", "6: rule 1"));
  world.input().clusters = {{0, 1, 6}};
  const SearchResult result = world.Find();
  EXPECT_THAT(ToText(result.refusals), ElementsAre("3: rule 2"));
  EXPECT_THAT(Chosen(result.allowed), ElementsAre(0, 1, 2, 4, 5, 6, 7));
}

// 0 is refused without 1; 7 is refused with 0, which is visible only if 1 is present too.
TEST(Search, CombinationContainsCompensatingEdits) {
  World world(8, {{{0}, {1}}, {{0, 7}}});
  const SearchResult result = world.Find();
  EXPECT_THAT(Chosen(result.allowed), ElementsAre(0, 1, 2, 3, 4, 5, 6));
  EXPECT_THAT(ToText(result.refusals), ElementsAre("0+1+7: rule 1"));
}

TEST(Search, EditIsBlockedIfANeededOneIsRefused) {
  World world(4, {{{1}}});
  world.SetNeeds(0, {1});
  const SearchResult result = world.Find();
  EXPECT_THAT(ToText(result.refusals), ElementsAre("1: rule 0"));  // 0 is blocked by it
  EXPECT_THAT(Chosen(result.allowed), ElementsAre(2, 3));
}

TEST(Search, EditHasItsOwnRefusalIfItDiffersFromThatOfNeededEdit) {
  World world(3, {{{0}}, {{1}}});
  world.SetNeeds(0, {1});
  EXPECT_THAT(ToText(world.Find().refusals), ElementsAre("0: rule 0", "1: rule 1"));
}

TEST(Search, RefusesFirstOfEditsThatNeedEachOther) {
  World world(4, {{{1, 3}}});
  world.SetNeeds(1, {3});
  world.SetNeeds(3, {1});
  const SearchResult result = world.Find();
  EXPECT_THAT(ToText(result.refusals), ElementsAre("1: rule 0"));
  EXPECT_THAT(Chosen(result.allowed), ElementsAre(0, 2));
}

TEST(Search, PreexistingRefusalsDoNotRefuseEdits) {
  World world(4, {{{2}}, {{}}});  // the last rule refuses every set
  const SearchResult result = world.Find();
  EXPECT_THAT(ToText(result.refusals), ElementsAre("2: rule 0"));
  EXPECT_THAT(Chosen(result.allowed), ElementsAre(0, 1, 3));
  EXPECT_EQ(result.together->text, "rule 1");
}

TEST(Search, KnownPreexistingRefusalsMayAppearLater) {
  World world(3, {{{}, {1}}, {{}, {}}});  // 1 removes the first reason, so that the second is visible
  EXPECT_THAT(ToText(world.Find().refusals), ElementsAre("1: rule 1"));
  world.input().preexisting = {Verdict{-1, "rule 1", ""}};
  EXPECT_THAT(world.Find().refusals, IsEmpty());
}

TEST(Search, KnownRefusedEditsAreNeverAllowed) {
  World world(4);
  world.SetNeeds(3, {1});
  world.input().known_refused = {false, true, false, false};
  const SearchResult result = world.Find();
  EXPECT_THAT(Chosen(result.allowed), ElementsAre(0, 2));
  EXPECT_THAT(result.refusals, IsEmpty());
}

TEST(Search, EditsThatCannotBeBuiltAloneAreTriedWithOthers) {
  World world(6, {{{1}, {4}, true}, {{5}, {}, true}, {{2}}});
  const SearchResult result = world.Find();
  EXPECT_THAT(Chosen(result.allowed), ElementsAre(0, 1, 3, 4));
  EXPECT_THAT(ToText(result.refusals), ElementsAre("2: rule 2"));
}

TEST(Search, StopsAtMaxRefusals) {
  std::vector<Rule> rules;
  for (std::size_t i = 0; i < 1000; ++i) rules.push_back({{i}});
  World world(1000, rules);
  world.input().max_refusals = 3;
  const SearchResult result = world.Find();
  EXPECT_THAT(ToText(result.refusals), ElementsAre("0: rule 0", "1: rule 1", "2: rule 2"));
  EXPECT_TRUE(result.stopped);
  EXPECT_LT(world.checked(), 600u);  // not the 2,000 of all edits
}

TEST(Search, ContinuesIfTheLastRefusalIsCompensated) {
  World world(200, {{{0}, {1}}, {{199}}});
  world.input().max_refusals = 1;
  const SearchResult result = world.Find();
  EXPECT_THAT(ToText(result.refusals), ElementsAre("199: rule 1"));
}

TEST(Search, StopsAtCombinations) {
  World world(6, {{{0, 3}}, {{0, 5}}});
  world.input().max_refusals = 1;
  const SearchResult result = world.Find();
  EXPECT_EQ(result.refusals.size(), 1u);
  EXPECT_TRUE(result.stopped);
}

// The number of checks is that of refused edits times the logarithm of all edits, not the number of all edits.
TEST(Search, FewRefusalsNeedFewChecks) {
  World world(100000, {{{123}}, {{55555}}, {{99999}}});
  EXPECT_EQ(world.Find().refusals.size(), 3u);
  EXPECT_LT(world.checked(), 2u * 3u * 17u + 10u);
}

TEST(Search, CombinationNeedsFewChecks) {
  World world(1 << 14, {{{5, 9000, 16000}}});
  EXPECT_THAT(ToText(world.Find().refusals), ElementsAre("5+9000+16000: rule 0"));
  EXPECT_LT(world.checked(), 200u);
}

// --- Random rules ---

std::uint64_t Seed() {
  const char* given = std::getenv("KORVEL_SEED");
  return given != nullptr ? std::strtoull(given, nullptr, 10) : std::random_device()();
}

class RandomWorld {
 public:
  explicit RandomWorld(std::mt19937_64& random) : random_(random), edits_(1 + Below(24)), world_(edits_, Rules()) {
    // Needed edits come before those that need them; half of the time the positions are reversed.
    for (std::size_t edit = 1; edit < edits_ && Below(2) == 0; ++edit) {
      if (Below(4) != 0) continue;
      const std::size_t needed = Below(edit);
      Edits needs = world_.Needs(needed);
      needs.push_back(needed);
      std::ranges::sort(needs);
      world_.SetNeeds(edit, needs);
    }
    world_.input().max_refusals = Below(4) == 0 ? 1 + Below(3) : 1000;
    if (Below(3) == 0) world_.input().clusters = {SomeEdits(4), SomeEdits(6)};
  }

  World& world() { return world_; }

 private:
  std::size_t Below(std::size_t bound) { return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_); }

  Edits SomeEdits(std::size_t max) {
    Edits edits;
    for (std::size_t i = 1 + Below(max); i > 0; --i) edits.push_back(Below(edits_));
    std::ranges::sort(edits);
    edits.erase(std::unique(edits.begin(), edits.end()), edits.end());
    return edits;
  }

  std::vector<Rule> Rules() {
    std::vector<Rule> rules;
    for (std::size_t i = Below(8); i > 0; --i) {
      Rule rule{SomeEdits(Below(2) == 0 ? 1 : 4)};
      if (Below(4) == 0) rule.none_of = SomeEdits(2);
      rule.no_schema = Below(12) == 0;
      rules.push_back(rule);
    }
    if (Below(6) == 0) rules.push_back({{}});
    return rules;
  }

  std::mt19937_64& random_;
  std::size_t edits_;
  World world_;
};

class SearchLaws {
 public:
  explicit SearchLaws(World& world) : world_(world), result_(world.Find()), nothing_(world.VerdictOn(world.Closed({}))) {}

  void Check() const {
    ASSERT_TRUE(nothing_);
    EXPECT_TRUE(Passes(world_.VerdictOn(result_.allowed)));
    EXPECT_EQ(world_.VerdictOn(result_.allowed)->text, result_.together->text);
    EXPECT_EQ(world_.Closed(Chosen(result_.allowed)), result_.allowed);
    EXPECT_LE(result_.refusals.size(), world_.input().max_refusals);
    for (const RejectedSet& refusal : result_.refusals) CheckRefusal(refusal);
    CheckThatTheWholeIsExplained();
  }

 private:
  bool Refuses(const CheckAnswer& verdict) const { return verdict && verdict->Refused() && verdict->text != nothing_->text; }
  bool Passes(const CheckAnswer& verdict) const { return verdict && !Refuses(verdict); }

  void CheckRefusal(const RejectedSet& refusal) const {
    const CheckAnswer verdict = world_.VerdictOn(world_.Closed(refusal.edits));
    ASSERT_TRUE(Refuses(verdict));
    EXPECT_EQ(verdict->text, refusal.verdict.text);
    const auto stays_out = std::ranges::find_if(refusal.edits, [&](std::size_t edit) { return !result_.allowed[edit]; });
    ASSERT_NE(stays_out, refusal.edits.end());
    EXPECT_FALSE(Passes(world_.VerdictOn(Joined(*stays_out)))) << "edit " << *stays_out << " could be allowed";
    if (refusal.edits.size() > 1) CheckThatAllAreNeeded(refusal.edits, *stays_out);
  }

  void CheckThatAllAreNeeded(const Edits& edits, std::size_t refused) const {
    for (const std::size_t edit : edits) {
      Edits rest = edits;
      std::erase(rest, edit);
      if (!Refuses(world_.VerdictOn(world_.Closed(rest)))) continue;
      // The removed edit compensated for another one.
      std::erase(rest, refused);
      EXPECT_FALSE(Passes(world_.VerdictOn(world_.Closed(rest)))) << "edit " << edit << " is not needed";
    }
  }

  // Every edit is allowed, refused, blocked by a refused one, impossible to build, or was not checked.
  void CheckThatTheWholeIsExplained() const {
    if (result_.stopped) return;
    EditSet refused(result_.allowed.size());
    for (const RejectedSet& refusal : result_.refusals) {
      for (const std::size_t edit : refusal.edits) refused[edit] = true;
    }
    for (std::size_t edit = 0; edit < refused.size(); ++edit) {
      if (result_.allowed[edit] || refused[edit]) continue;
      const bool blocked = std::ranges::any_of(world_.Needs(edit), [&](std::size_t needed) { return refused[needed]; });
      EXPECT_TRUE(blocked || !world_.VerdictOn(Joined(edit))) << "edit " << edit << " is not explained";
    }
  }

  EditSet Joined(std::size_t edit) const {
    Edits edits = Chosen(result_.allowed);
    edits.push_back(edit);
    return world_.Closed(edits);
  }

  World& world_;
  SearchResult result_;
  CheckAnswer nothing_;
};

TEST(Search, LawsHoldForRandomRules) {
  const std::uint64_t seed = Seed();
  std::mt19937_64 random(seed);
  for (int i = 0; i < 3000 && !testing::Test::HasFailure(); ++i) {
    SCOPED_TRACE("KORVEL_SEED=" + std::to_string(seed) + ", run " + std::to_string(i));
    RandomWorld one(random);
    SearchLaws(one.world()).Check();
  }
}

}  // namespace
}  // namespace report_test
