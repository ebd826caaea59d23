// What a call remembers cannot be observed, and keeps the cost of a call linear.
#include <gtest/gtest.h>

#include <cstdlib>

#include "common/modify_table.h"
#include "linear/ask.h"
#include "linear/random_pair.h"
#include "support/log_capture.h"

namespace linear {
namespace {

constexpr Operation kOperations[] = {Operation::kModifyQmx, Operation::kModifyTlv, Operation::kCompat, Operation::kValuesQmx,
                                     Operation::kValuesTlv, Operation::kSame,      Operation::kRecord, Operation::kTlv,
                                     Operation::kVersion,   Operation::kOrder};

struct Gate {
  bool with_log;
  std::optional<int> low_bound;
};

// No category; one open to all; one closed to INFO; one closed to all.
constexpr Gate kGates[] = {{false, {}}, {true, {}}, {true, 300}, {true, 0}};

std::uint64_t Number(const char* variable, std::uint64_t otherwise) {
  const char* text = std::getenv(variable);
  return text == nullptr ? otherwise : std::strtoull(text, nullptr, 10);
}

// KORVEL_SEED and KORVEL_PAIRS choose another run.
TEST(Memory, CannotBeObserved) {
  const std::uint64_t seed = Number("KORVEL_SEED", 20261121);
  const std::uint64_t pairs = Number("KORVEL_PAIRS", 3000);
  std::uint64_t passed = 0;
  std::uint64_t left_text = 0;  // passed, with a lookup's text in the buffer
  for (std::uint64_t i = 0; i < pairs; ++i) {
    std::mt19937_64 random(seed + i);
    const Pair pair = RandomPair(random);
    const support::Schema old_schema = pair.old_lib.Build();
    const support::Schema new_schema = pair.new_lib.Build();
    for (const Operation operation : kOperations) {
      for (const Gate& gate : kGates) {
        const Question question{operation, old_schema.Lib(), new_schema.Lib(), gate.with_log, gate.low_bound};
        const Answer plain = AskPlain(question);
        const Answer product = AskProduct(question);
        ASSERT_EQ(product.code, plain.code) << "seed " << seed + i;
        ASSERT_EQ(product.buffer, plain.buffer) << "seed " << seed + i;
        ASSERT_EQ(product.log, plain.log) << "seed " << seed + i;
        ASSERT_EQ(product.grown, plain.grown) << "seed " << seed + i;
        passed += plain.code == 0;
        left_text += plain.code == 0 && plain.buffer.starts_with("Table dose not have entry");
      }
    }
  }
  RecordProperty("seed", std::to_string(seed));
  std::printf("seed %llu: %llu pairs, %llu answers 0, %llu of them with a text\n", static_cast<unsigned long long>(seed),
              static_cast<unsigned long long>(pairs), static_cast<unsigned long long>(passed),
              static_cast<unsigned long long>(left_text));
  // The comparison means little unless many pairs pass, with and without traces.
  EXPECT_GT(passed, pairs * 5);
  EXPECT_GT(left_text, pairs / 10);
}

// Each structure is two fields of the one below: walked for every path, this would never end.
support::Library Tower(int levels, bool empty_at_the_bottom) {
  support::Library library = support::Of({});
  library.protocol = qmx::Protocol::kTlv;
  for (int i = 0; i < levels; ++i) {
    const std::string below = i == 0 ? "int32" : "s" + std::to_string(i - 1);
    const std::string name = i + 1 == levels ? "t" : "s" + std::to_string(i);
    library.tables.push_back({.name = name, .fields = {{"n3", below, 0, 1}, {"n20", below, 0, 2}}});
  }
  library.tables.back().fields.push_back({"k", "int32", 0, 3});
  library.tables.back().key = {"k"};
  if (empty_at_the_bottom) library.pokes.push_back(support::EntryNumber("s0", 0));
  return library;
}

TEST(Memory, SharedStructuresAreWalkedOnce) {
  // Sizes double with each level and fit 64 bits up to here; both fields are whitelisted.
  const support::Schema tower = Tower(60, false).Build();
  for (const Operation operation : kOperations) {
    EXPECT_EQ(AskProduct({operation, tower.Lib(), tower.Lib(), false, {}}).code, 0);
    // Only the records of successes of one rule could not be left out.
    EXPECT_EQ(AskProduct({operation, tower.Lib(), tower.Lib(), true, 300}).code, 0);
  }
}

TEST(Memory, SharedStructuresThatLeaveATextAreWalkedOnceWhereNothingIsLogged) {
  const support::Schema old_tower = Tower(60, true).Build();
  const support::Schema new_tower = Tower(60, false).Build();
  const Answer quiet = AskProduct({Operation::kOrder, old_tower.Lib(), new_tower.Lib(), false, {}});
  EXPECT_EQ(quiet.code, 0);
  EXPECT_EQ(quiet.buffer, "Table dose not have entry, table:'s0'");
  const Answer closed = AskProduct({Operation::kOrder, old_tower.Lib(), new_tower.Lib(), true, 299});
  EXPECT_EQ(closed.buffer, "Table dose not have entry, table:'s0'");
}

// The text of the structure met last stays, also where it was met before.
TEST(Memory, APairPassedOverLeavesItsTextAgain) {
  support::Library filled = support::Of({{.name = "s0", .fields = {{"x"}}},
                                         {.name = "s1", .fields = {{"x"}}},
                                         {.name = "t", .fields = {{"a", "s0"}, {"b", "s1"}, {"c", "s0"}}, .key = {"a"}}});
  support::Library emptied = filled;
  emptied.pokes = {support::EntryNumber("s0", 0), support::EntryNumber("s1", 0)};
  const support::Schema old_schema = emptied.Build();
  const support::Schema new_schema = filled.Build();
  const Question question{Operation::kOrder, old_schema.Lib(), new_schema.Lib(), false, {}};
  EXPECT_EQ(AskProduct(question).buffer, "Table dose not have entry, table:'s0'");
  EXPECT_EQ(AskPlain(question), AskProduct(question));
}

constexpr Operation kRules[] = {Operation::kSame, Operation::kRecord, Operation::kTlv, Operation::kVersion, Operation::kOrder};

// Two structures of one name, in a table or in a structure of it. The second is the first one's, or "b", with which every rule
// finds fault.
support::Library TwoBoxes(int fields, bool deep, const std::string& second) {
  support::Table a{.name = "a"}, b{.name = "b"};
  for (int i = 0; i < fields; ++i) {
    a.fields.push_back({"f" + std::to_string(i), "int32", 0, i});
    b.fields.insert(b.fields.begin(), {"f" + std::to_string(i), "uint32", 0, i, 2});
  }
  const std::string owner = deep ? "outer" : "t";
  support::Library library = support::Of({a, b, {.name = owner, .fields = {{"first", "a", 0, 1}, {"second", second, 0, 2}}}});
  if (deep) library.tables.push_back({.name = "t", .fields = {{"box", "outer", 0, 1}}});
  return library.With(support::UnitSize(owner, "first", 64))
      .With(support::UnitSize(owner, "second", 64))
      .With([](const support::Schema& schema) { schema.Meta("b")->ptrName = schema.Meta("a")->ptrName; });
}

TEST(Memory, OfAPairSaysNothingOfAnotherWithTheSameOldOrNewStructure) {
  for (const auto& [fields, deep] : {std::pair(2, false), std::pair(12, false), std::pair(2, true), std::pair(12, true)}) {
    const support::Schema same = TwoBoxes(fields, deep, "a").Build(), again = TwoBoxes(fields, deep, "a").Build();
    const support::Schema other = TwoBoxes(fields, deep, "b").Build();
    for (const Operation rule : kRules) {
      EXPECT_EQ(AskProduct({rule, same.Lib(), again.Lib(), false, {}}).code, 0);
      for (const Gate& gate : kGates) {
        for (const auto& [old_lib, new_lib] : {std::pair(same.Lib(), other.Lib()), std::pair(other.Lib(), same.Lib())}) {
          const Question question{rule, old_lib, new_lib, gate.with_log, gate.low_bound};
          EXPECT_NE(AskProduct(question).code, 0);
          EXPECT_EQ(AskProduct(question), AskPlain(question));
        }
      }
    }
  }
}

// The last field stands behind as many as the old structure has, and is asked for before those that were indexed ahead of it.
TEST(Memory, OfALongListReachesItsEnd) {
  const auto table = [](const std::vector<int>& ids) {
    support::Table made{.name = "t"};
    for (const int id : ids) made.fields.push_back({"f" + std::to_string(id), "int32", 0, id});
    return support::Of({made}).Build();
  };
  const support::Schema old_schema = table({1, 2, 3, 4, 5, 12, 6, 7, 8, 9, 10, 11});
  const support::Schema new_schema = table({1, 2, 3, 4, 5, 99, 6, 7, 8, 9, 10, 11, 12});
  for (const Operation rule : {Operation::kRecord, Operation::kTlv}) {
    EXPECT_EQ(AskProduct({rule, old_schema.Lib(), new_schema.Lib(), false, {}}).code, 0);
  }
}

// A log category may ask an object of its own. What that one passes without a record is not passed for the first.
TEST(Memory, IsNotSharedWithAnObjectThatIsAskedWhileARecordIsWritten) {
  support::Library library = support::Of({{.name = "s0", .fields = {{"x", "int32", 0, -1}}},
                                          {.name = "t", .fields = {{"k", "int32", 0, 1}, {"a", "s0", 0, 2}}, .key = {"k"}}});
  library.protocol = qmx::Protocol::kTlv;
  const support::Schema schema = library.Build();
  const auto check = [&](LPVESKCATEGORYINST log) {
    ModifyTable checker;
    return checker.KorvelModifyTable(schema.Lib(), schema.Lib(), "t", 0, 2, log, "", "", 0);
  };
  support::CaptureCategory undisturbed;
  EXPECT_EQ(check(&undisturbed), 0);
  EXPECT_EQ(undisturbed.Lines().at(2), support::Error("CheckWhetherExistEntryById", "Entry_name or meta is invalid"));
  support::CaptureCategory disturbed;
  disturbed.on_record = [&] { EXPECT_EQ(check(nullptr), 0); };
  EXPECT_EQ(check(&disturbed), 0);
  EXPECT_EQ(disturbed.Lines(), undisturbed.Lines());
}

}  // namespace
}  // namespace linear
