// The checker object, the formatting of error texts, and the conditions for log records.

#include <cstring>
#include <cwchar>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>

#include "common/error_text.h"
#include "rules/rule_test.h"

namespace rules {
namespace {

using support::CanWriteCall;
using support::CaptureCategory;

// A call that logs one record at the given priority.
int LogAt(int priority, ModifyTable& checker, LPVESKCATEGORYINST log) {
  if (priority == VESK_PRIORITY_ERROR) return checker.CompareSplittableKey(nullptr, nullptr, log);
  if (priority == VESK_PRIORITY_INFO) {
    const Schema schema = Of({{.fields = {{"uid"}}}}).Build();
    return checker.CompareSplittableKey(schema.Meta(), schema.Meta(), log);
  }
  checker.printVec = {{"history", 1, 2}};
  const Schema schema = Of({{.fields = {{"uid"}}}}).Build();
  return checker.CheckWhiteListFieldLen("mall%s", schema.Lib(), schema.Lib(), "1", "", log);
}

enum class Gate { kNotCalled, kRefused, kWritten };

struct GateRow {
  const char* name;
  int priority;
  std::optional<int> low;
  std::optional<int> high;
  int answer;
  Gate expected;
};

void PrintTo(const GateRow& row, std::ostream* out) { *out << row.name; }

constexpr int kNone = std::numeric_limits<int>::min();

const GateRow kGateRows[] = {
    {"no_bounds", 300, {}, {}, 1, Gate::kWritten},
    {"no_bounds_but_refused", 300, {}, {}, 0, Gate::kRefused},
    {"any_nonzero_result_writes", 300, {}, {}, -5, Gate::kWritten},
    {"low_just_below", 300, 299, {}, 1, Gate::kNotCalled},
    {"low_equal", 300, 300, {}, 1, Gate::kWritten},
    {"low_above", 300, 301, {}, 1, Gate::kWritten},
    {"low_minus_one_is_no_bound", 300, -1, {}, 1, Gate::kWritten},
    {"low_minus_one_calls_can_write", 300, -1, {}, 0, Gate::kRefused},
    {"low_minus_two_suppresses", 300, -2, {}, 1, Gate::kNotCalled},
    {"low_zero_suppresses", 300, 0, {}, 1, Gate::kNotCalled},
    {"low_lowest_suppresses", 300, kNone, {}, 1, Gate::kNotCalled},
    {"high_just_above", 300, {}, 301, 1, Gate::kNotCalled},
    {"high_equal", 300, {}, 300, 1, Gate::kWritten},
    {"high_below", 300, {}, 299, 1, Gate::kWritten},
    {"high_minus_one_is_a_number", 300, {}, -1, 1, Gate::kWritten},
    {"both_bounds_admit", 300, 600, 100, 1, Gate::kWritten},
    {"both_bounds_admit_but_refused", 300, 600, 100, 0, Gate::kRefused},
    {"low_refuses_before_high", 300, 100, 100, 1, Gate::kNotCalled},
    {"high_refuses_where_low_is_minus_one", 300, -1, 400, 1, Gate::kNotCalled},
    {"warning_low_just_below", 400, 399, {}, 1, Gate::kNotCalled},
    {"warning_low_equal", 400, 400, {}, 1, Gate::kWritten},
    {"warning_low_minus_one", 400, -1, {}, 1, Gate::kWritten},
    {"warning_high_just_above", 400, {}, 401, 1, Gate::kNotCalled},
    {"warning_high_equal", 400, {}, 400, 1, Gate::kWritten},
    {"info_low_just_below", 600, 599, {}, 1, Gate::kNotCalled},
    {"info_low_equal", 600, 600, {}, 1, Gate::kWritten},
    {"info_low_minus_one", 600, -1, {}, 1, Gate::kWritten},
    {"info_high_just_above", 600, {}, 601, 1, Gate::kNotCalled},
    {"info_high_equal", 600, {}, 600, 1, Gate::kWritten},
    {"info_refused", 600, 600, 600, 0, Gate::kRefused},
};

class LogGate : public testing::TestWithParam<GateRow> {};

TEST_P(LogGate, PassesPrioritiesWithinBounds) {
  const GateRow& row = GetParam();
  CaptureCategory log;
  if (row.low) log.SetLow(*row.low);
  if (row.high) log.SetHigh(*row.high);
  log.SetCanWrite(row.answer);
  ModifyTable checker;
  LogAt(row.priority, checker, &log);
  const std::vector<CanWriteCall> one_call = {{row.priority, 0, 0}};
  EXPECT_EQ(log.can_write_calls, row.expected == Gate::kNotCalled ? std::vector<CanWriteCall>{} : one_call);
  ASSERT_EQ(log.records.size(), row.expected == Gate::kWritten ? 1U : 0U);
  for (const support::LogRecord& record : log.records) EXPECT_EQ(record.priority, row.priority);
}

std::string GateName(const testing::TestParamInfo<GateRow>& info) { return info.param.name; }
INSTANTIATE_TEST_SUITE_P(Log, LogGate, testing::ValuesIn(kGateRows), GateName);

TEST(LogRecord, BufferIsAlwaysWritten) {
  CaptureCategory log;
  log.SetLow(299);
  ModifyTable checker;
  EXPECT_EQ(checker.ComparePrimaryKey(nullptr, nullptr, &log), -1);
  EXPECT_STREQ(checker.GetErrType(), "Invalid parameter, meta is null");
  EXPECT_TRUE(log.records.empty());
}

TEST(LogRecord, CanWriteIsCalledForEveryRecord) {
  const Library old_library = Of({{.fields = {{"uid"}, {"zone"}}, .key = {"uid"}}});
  const Library new_library = Of({{.fields = {{"uid"}, {"zone"}}, .key = {"zone"}}});
  const Schema old_schema = old_library.Build(), new_schema = new_library.Build();
  CaptureCategory log;
  ModifyTable checker;
  checker.ComparePrimaryKey(old_schema.Meta(), new_schema.Meta(), &log);
  EXPECT_EQ(log.records.size(), 2U);
  EXPECT_EQ(log.can_write_calls, (std::vector<CanWriteCall>{{300, 0, 0}, {300, 0, 0}}));
}

TEST(LogRecord, HasFileAndLineOfTheMethod) {
  CaptureCategory log;
  ModifyTable checker;
  checker.ComparePrimaryKey(nullptr, nullptr, &log);
  checker.CompareSplittableKey(nullptr, nullptr, &log);
  ASSERT_EQ(log.records.size(), 2U);
  EXPECT_EQ(log.records[0].function, "ComparePrimaryKey");
  EXPECT_EQ(log.records[1].function, "CompareSplittableKey");
  EXPECT_NE(log.records[0].line, log.records[1].line);
  for (const support::LogRecord& record : log.records) {
    EXPECT_TRUE(record.is_valid);
    EXPECT_EQ(record.format, "%s");
    EXPECT_TRUE(record.file.starts_with("src/common/modify_table")) << record.file;
  }
}

// A text of this many bytes: "Primaykey is invalid! table:''" has 30 without the name.
std::string KeylessText(std::size_t length, ModifyTable& checker) {
  const Library library = Of({{.name = std::string(length - 30, 'n'), .fields = {{"uid"}}}});
  const Schema schema = library.Build();
  checker.ComparePrimaryKey(schema.Meta(), schema.Meta(), nullptr);
  return "Primaykey is invalid! table:'" + std::string(length - 30, 'n') + "'";
}

TEST(ErrorText, IsTruncatedAt1023Bytes) {
  for (const std::size_t length : {1022U, 1023U, 1024U, 1025U, 5000U}) {
    ModifyTable checker;
    const std::string text = KeylessText(length, checker);
    ASSERT_EQ(text.size(), length);
    EXPECT_EQ(checker.GetErrType(), text.substr(0, 1023)) << length;
  }
}

TEST(ErrorText, LaterTextReplacesLongOne) {
  ModifyTable checker;
  KeylessText(5000, checker);
  checker.ComparePrimaryKey(nullptr, nullptr, nullptr);
  EXPECT_STREQ(checker.GetErrType(), "Invalid parameter, meta is null");
}

TEST(ErrorText, FormatTextIsTruncatedAt1023Bytes) {
  struct {
    char text[korvel::kErrorTextSize];
    char behind = '!';
  } buffer;
  korvel::CopyFormat(buffer.text, std::string(1022, 't').append("%%%%").c_str());
  EXPECT_EQ(buffer.text, std::string(1022, 't') + "%");
  EXPECT_EQ(buffer.behind, '!');
}

TEST(ErrorText, NothingIsWrittenAfterFormatText) {
  std::string buffer(korvel::kErrorTextSize, 'x');
  korvel::CopyFormat(buffer.data(), "wrong");
  EXPECT_EQ(buffer, "wrong" + std::string(1, '\0') + std::string(korvel::kErrorTextSize - 6, 'x'));
}

TEST(ErrorText, ArgumentMayBeTheBufferItself) {
  ModifyTable checker;
  std::strcpy(checker.m_szErrorType, "orders");
  EXPECT_EQ(checker.KorvelModifyTable(nullptr, nullptr, checker.GetErrType(), 0, 1, nullptr, "", "", 0), -1);
  EXPECT_STREQ(checker.GetErrType(), "Tnvaild parameter，please check the parameter! table: 'orders'");
}

// Only a name of two gigabytes would cause this; a wide character that the locale cannot convert does, too.
TEST(ErrorText, FormattingErrorLeavesBufferEmpty) {
  char buffer[korvel::kErrorTextSize] = "what was written before";
  korvel::FormatText(buffer, "all of it: %lc", static_cast<std::wint_t>(0x7FFFFFFF));
  EXPECT_STREQ(buffer, "");
}

TEST(Checker, BeginsWithEmptyText) {
  const ModifyTable checker;
  EXPECT_STREQ(checker.GetErrType(), "");
  EXPECT_TRUE(checker.printVec.empty());
  EXPECT_TRUE(checker.whiteVec.empty());
  EXPECT_EQ(checker.m_svr_ver, "");
}

TEST(Checker, FillsTheWholeBufferWithZeros) {
  alignas(ModifyTable) unsigned char memory[sizeof(ModifyTable)];
  std::memset(memory, 0xA5, sizeof memory);
  ModifyTable* checker = new (memory) ModifyTable;
  const std::string zeros(1024, '\0');
  EXPECT_EQ(std::string(checker->m_szErrorType, 1024), zeros);
  std::destroy_at(checker);
}

TEST(Checker, MembersAreInOrder) {
  ModifyTable checker;
  static_assert(sizeof(checker.m_szErrorType) == 1024);
  static_assert(!std::is_polymorphic_v<ModifyTable>);
  const auto address = [](const auto& member) { return reinterpret_cast<std::uintptr_t>(&member); };
  EXPECT_EQ(address(checker), address(checker.m_szErrorType));
  EXPECT_LT(address(checker.m_szErrorType), address(checker.printVec));
  EXPECT_LT(address(checker.printVec), address(checker.whiteVec));
  EXPECT_LT(address(checker.whiteVec), address(checker.m_svr_ver));
}

TEST(Checker, ReturnsItsOwnBuffer) {
  const ModifyTable checker;
  EXPECT_EQ(checker.GetErrType(), checker.m_szErrorType);
}

TEST(Checker, DescribesTableTypes) {
  ModifyTable checker;
  EXPECT_STREQ(checker.GetDescStr(0), "GENERIC");
  for (const int type : {1, 2, -5, -1, kNone}) EXPECT_STREQ(checker.GetDescStr(type), "LIST") << type;
}

TEST(Checker, DescribesSortRules) {
  ModifyTable checker;
  EXPECT_STREQ(checker.GetOrderStr(0), "INSC");
  for (const int rule : {1, 2, -1, kNone}) EXPECT_STREQ(checker.GetOrderStr(rule), "DESC") << rule;
}

TEST(Checker, ObjectsShareNothing) {
  ModifyTable one;
  const ModifyTable other;
  one.ComparePrimaryKey(nullptr, nullptr, nullptr);
  EXPECT_STREQ(other.GetErrType(), "");
}

}  // namespace
}  // namespace rules
