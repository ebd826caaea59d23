// What a log category may do while a record is written: start another check, close its bounds, throw, leave by longjmp, switch
// stacks. State of an interrupted or abandoned run must not affect another run.

#include <ucontext.h>

#include <csetjmp>
#include <stdexcept>

#include "common/refusals.h"
#include "rules/rule_test.h"

namespace rules {
namespace {

using support::CaptureCategory;

// Enough fields that lookups are indexed; and enough that a run needs more memory than its initial buffer, which is leaked if the
// run is abandoned.
constexpr int kSomeFields = 20;
constexpr int kManyFields = 200;

// A table with two fields of one structure, so that passed pairs are remembered. The structure has a field without an id: the TLV
// rules log that at each visit.
Library Shop(int fields) {
  Table table{.name = "t", .fields = {{"k", "int32", 0, fields}}, .key = {"k"}};
  for (int i = 0; i < fields; ++i) table.fields.push_back({"f" + std::to_string(i), "int32", 0, i});
  table.fields.push_back({"first", "s", 0, fields + 1});
  table.fields.push_back({"second", "s", 0, fields + 2});
  Library library = Of({{.name = "s", .fields = {{"x", "int32", 0, -1}, {"y", "int32", 0, 2}}}, table});
  library.protocol = qmx::Protocol::kTlv;
  return library;
}

// An old and a new library that are equal until the new one is changed in place.
struct Change {
  explicit Change(int fields) : old_schema(Shop(fields).Build()), new_schema(Shop(fields).Build()) {}
  // From this call on, the change must be refused.
  void MakeRefused() const { ++new_schema.Entry("t", "f" + std::to_string(kSomeFields - 1))->iVersion; }

  Schema old_schema;
  Schema new_schema;
};

constexpr int kAllowed = 0;
constexpr int kRefused = -8;

int Check(ModifyTable& checker, const Change& change, LPVESKCATEGORYINST log) {
  return checker.KorvelModifyTable(change.old_schema.Lib(), change.new_schema.Lib(), "t", 0, 1, log, "", "", 0);
}

std::vector<std::string> UndisturbedLog(int fields = kSomeFields) {
  const Change change(fields);
  ModifyTable checker;
  CaptureCategory log;
  EXPECT_EQ(Check(checker, change, &log), kAllowed);
  EXPECT_GT(log.records.size(), 20U);
  return log.Lines();
}

// Whether the run has only its return left.
bool IsAtTheEnd(const CaptureCategory& log) { return log.records.back().text.starts_with("ModifyTable successed!"); }

// --- Another check ---

// A pair that the other check passes without a record must still be logged by the first one.
TEST(Callback, MayUseAnotherObject) {
  const Change change(kSomeFields);
  ModifyTable checker;
  CaptureCategory log;
  log.on_record = [&] {
    ModifyTable other;
    EXPECT_EQ(Check(other, change, nullptr), kAllowed);
  };
  EXPECT_EQ(Check(checker, change, &log), kAllowed);
  EXPECT_EQ(log.Lines(), UndisturbedLog());
}

TEST(Callback, MayUseTheSameObject) {
  const Change change(kSomeFields);
  ModifyTable checker;
  CaptureCategory log;
  log.on_record = [&] { EXPECT_EQ(Check(checker, change, nullptr), kAllowed); };
  EXPECT_EQ(Check(checker, change, &log), kAllowed);
  EXPECT_EQ(log.Lines().size(), UndisturbedLog().size());
}

// Two records: that of the key field's lookup, and that of the rule, whose text replaces the lookup's text.
class SameObjectAtRecord : public testing::TestWithParam<std::size_t> {};

TEST_P(SameObjectAtRecord, OuterRunContinuesWithTextInBuffer) {
  const Schema old_schema = Of({{.fields = {{"uid"}, {"zone"}}, .key = {"uid"}}}).Build();
  const Schema new_schema = Of({{.fields = {{"uid"}, {"zone"}}, .key = {"zone"}}}).Build();
  ModifyTable checker;
  EXPECT_EQ(checker.ComparePrimaryKey(nullptr, nullptr, nullptr), -1);
  CaptureCategory log;
  log.on_record = [&] {
    if (log.records.size() != GetParam()) return;
    EXPECT_EQ(checker.GetRefusal(), nullptr) << "while an operation runs";
    EXPECT_EQ(checker.ComparePrimaryKey(nullptr, nullptr, nullptr), -1);
    EXPECT_EQ(checker.GetRefusal(), &korvel::kMetaNull);
  };
  EXPECT_EQ(checker.ComparePrimaryKey(old_schema.Meta(), new_schema.Meta(), &log), -4);
  const std::string text = "Primaykey can't be modified! primaykey:'zone' table:'mall%s'";
  ASSERT_EQ(log.records.size(), 2U);
  EXPECT_EQ(log.records[1].text, text);
  EXPECT_EQ(checker.GetErrType(), GetParam() == 1 ? text : "Invalid parameter, meta is null");
  EXPECT_EQ(checker.GetRefusal(), &korvel::kPrimaryKeyField);
}

INSTANTIATE_TEST_SUITE_P(Callback, SameObjectAtRecord, testing::Values(1U, 2U));

TEST(Callback, UsingTheSameObjectAtTheLastRecordLeavesItsText) {
  const Change change(kSomeFields);
  ModifyTable checker;
  CaptureCategory log;
  log.on_record = [&] {
    if (IsAtTheEnd(log)) {
      EXPECT_EQ(checker.ComparePrimaryKey(nullptr, nullptr, nullptr), -1);
    }
  };
  EXPECT_EQ(Check(checker, change, &log), kAllowed);
  EXPECT_STREQ(checker.GetErrType(), "Invalid parameter, meta is null");
  EXPECT_EQ(checker.GetRefusal(), nullptr) << "the operation that ended last was a success";
}

// --- Bounds ---

// Structures that each contain the next one twice, so that 2^60 paths lead to the last one.
Library Paths() {
  constexpr int kLevels = 60;
  Library library = Of({{.name = "t", .fields = {{"k", "int32"}, {"s", "s0"}}, .key = {"k"}}});
  for (int i = 0; i < kLevels; ++i) {
    const std::string inner = i + 1 < kLevels ? "s" + std::to_string(i + 1) : "int8";
    library.tables.push_back({.name = "s" + std::to_string(i), .fields = {{"a", inner}, {"b", inner}}});
  }
  return library;
}

// A log that stays open gets a record for each path.
TEST(Callback, MayCloseItsBoundsToEndTheWalk) {
  const Schema old_schema = Paths().Build();
  const Schema new_schema = Paths().Build();
  ModifyTable checker;
  CaptureCategory log;
  log.on_record = [&] {
    if (log.records.size() == 1000U) log.SetLow(0);
  };
  EXPECT_EQ(checker.CompareTableField(old_schema.Meta(), new_schema.Meta(), &log), 0);
  EXPECT_EQ(log.records.size(), 1000U);
}

// --- Throw ---

TEST(Callback, MayThrow) {
  const Change change(kSomeFields);
  ModifyTable checker;
  CaptureCategory log;
  log.on_record = [&] {
    if (IsAtTheEnd(log)) throw std::runtime_error("the disk is full");
  };
  EXPECT_THROW(Check(checker, change, &log), std::runtime_error);
  change.MakeRefused();
  EXPECT_EQ(Check(checker, change, nullptr), kRefused);
}

// --- longjmp ---

constexpr int kLeft = 1;

std::jmp_buf landing;

int CheckAndLand(ModifyTable& checker, const Change& change, LPVESKCATEGORYINST log) {
  if (setjmp(landing) != 0) return kLeft;
  return Check(checker, change, log);
}

// Regression: a checker that kept the pairs of an abandoned run, by the addresses of the records, allowed the change.
TEST(Callback, MayLeaveByLongjmp) {
  const Change change(kSomeFields);
  ModifyTable checker;
  CaptureCategory log;
  log.on_record = [&] {
    if (IsAtTheEnd(log)) std::longjmp(landing, kLeft);
  };
  EXPECT_EQ(CheckAndLand(checker, change, &log), kLeft);
  EXPECT_EQ(checker.GetRefusal(), nullptr);
  change.MakeRefused();
  EXPECT_EQ(Check(checker, change, nullptr), kRefused);
  ModifyTable other;
  EXPECT_EQ(Check(other, change, nullptr), kRefused);
}

// --- Stacks ---

// A check on its own stack, which switches back to its starter at every record.
class Fiber {
 public:
  explicit Fiber(const Change& change) : change_(change), stack_(std::size_t{1} << 18) {
    log.on_record = [this] { swapcontext(&fiber_, &starter_); };
    getcontext(&fiber_);
    fiber_.uc_stack.ss_sp = stack_.data();
    fiber_.uc_stack.ss_size = stack_.size();
    fiber_.uc_link = &starter_;
    makecontext(&fiber_, &Fiber::Body, 0);
  }
  Fiber(const Fiber&) = delete;
  Fiber& operator=(const Fiber&) = delete;

  // Runs to the next record, or to the end.
  void Resume() {
    running = this;
    swapcontext(&starter_, &fiber_);
  }
  bool IsDone() const { return code.has_value(); }

  ModifyTable checker;
  CaptureCategory log;
  std::optional<int> code;

 private:
  static void Body() {
    Fiber& fiber = *running;
    fiber.code = Check(fiber.checker, fiber.change_, &fiber.log);
  }

  static Fiber* running;
  const Change& change_;
  std::vector<char> stack_;
  ucontext_t fiber_{};
  ucontext_t starter_{};
};

Fiber* Fiber::running = nullptr;

TEST(Callback, MayUseAnotherObjectOnAnotherStack) {
  const Change change(kManyFields);
  Fiber one(change), two(change);
  while (!one.IsDone() || !two.IsDone()) {
    for (Fiber* fiber : {&one, &two}) {
      if (!fiber->IsDone()) fiber->Resume();
    }
  }
  const std::vector<std::string> undisturbed = UndisturbedLog(kManyFields);
  for (Fiber* fiber : {&one, &two}) {
    EXPECT_EQ(fiber->code, kAllowed);
    EXPECT_EQ(fiber->log.Lines(), undisturbed);
  }
  change.MakeRefused();
  for (Fiber* fiber : {&one, &two}) EXPECT_EQ(Check(fiber->checker, change, nullptr), kRefused);
}

// The second begins while the first is running, and ends before it.
TEST(Callback, MaySwitchBackInAnyOrder) {
  const Change change(kManyFields);
  Fiber one(change), two(change);
  one.Resume();
  two.Resume();
  while (!one.IsDone()) one.Resume();
  change.MakeRefused();
  while (!two.IsDone()) two.Resume();
  EXPECT_EQ(one.code, kAllowed);
  EXPECT_EQ(two.code, kRefused);
  EXPECT_EQ(Check(one.checker, change, nullptr), kRefused);
}

TEST(Callback, MayNeverReturn) {
  const Change change(kSomeFields);
  ModifyTable other;
  {
    Fiber abandoned(change);
    while (abandoned.log.records.empty() || !IsAtTheEnd(abandoned.log)) abandoned.Resume();
    change.MakeRefused();
    EXPECT_EQ(Check(abandoned.checker, change, nullptr), kRefused);
  }
  EXPECT_EQ(Check(other, change, nullptr), kRefused);
}

}  // namespace
}  // namespace rules
