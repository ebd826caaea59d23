// Tests log categories through the interface that the checker uses: which records pass, what the file contains, and write
// failures.
#include "vesk/log_category.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <cstdarg>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "vesk/closed_category.h"
#include "vesk/vesk_event.h"

namespace vesk {
namespace {

void LogAt(LPVESKCATEGORYINST category, const vesk_loc_info_t* location, int priority, const char* format, ...) {
  VESKEVENT event = {priority, location, 0, 0, 0};
  va_list arguments;
  va_start(arguments, format);
  vesk_category_logv(category, &event, format, arguments);
  va_end(arguments);
}

constexpr vesk_loc_info_t kHere = {"src/common/modify_table.cpp", 42, "KorvelModifyTable", nullptr};

// A new directory for each test.
class LogCategoryTest : public ::testing::Test {
 protected:
  LogCategoryTest() {
    std::string name = (std::filesystem::temp_directory_path() / "vesk-XXXXXX").string();
    directory_ = mkdtemp(name.data()) != nullptr ? name : std::string();
  }
  ~LogCategoryTest() override { std::filesystem::remove_all(directory_); }
  void SetUp() override { ASSERT_FALSE(directory_.empty()); }

  std::string Path(const std::string& name) const { return directory_ + "/" + name; }

  LogSettings ToFile(LineFormat format = LineFormat::kText) const {
    LogSettings settings;
    settings.file = Path("log");
    settings.format = format;
    return settings;
  }

  std::string Written() const {
    std::ifstream file(Path("log"), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  std::vector<std::string> Lines() const {
    std::ifstream file(Path("log"), std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
  }

 private:
  std::string directory_;
};

std::unique_ptr<LogCategory> OpenOrFail(const LogSettings& settings) {
  std::string error;
  auto category = LogCategory::Open(settings, error);
  EXPECT_NE(category, nullptr) << error;
  return category;
}

std::string OpenError(const std::string& file) {
  LogSettings settings;
  settings.file = file;
  std::string error;
  EXPECT_EQ(LogCategory::Open(settings, error), nullptr);
  return error;
}

TEST_F(LogCategoryTest, TextLineContainsRecord) {
  const auto category = OpenOrFail(ToFile());
  LogAt(category->handle(), &kHere, VESK_PRIORITY_ERROR, "%s is %d", "count", 7);
  category->Close();
  const std::regex line(
      R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z ERROR src/common/modify_table\.cpp:42 KorvelModifyTable: count is 7\n)");
  EXPECT_TRUE(std::regex_match(Written(), line)) << Written();
  EXPECT_EQ(category->WriteFailure(), "");
}

TEST_F(LogCategoryTest, JsonLineContainsRecord) {
  const auto category = OpenOrFail(ToFile(LineFormat::kJson));
  LogAt(category->handle(), &kHere, VESK_PRIORITY_WARN, "%s", "one\ntwo \x80 %s");
  category->Close();
  ASSERT_EQ(Lines().size(), 1U);
  const auto object = nlohmann::json::parse(Lines()[0], nullptr, false);
  ASSERT_TRUE(object.is_object()) << Lines()[0];
  EXPECT_EQ(object.size(), 7U);
  EXPECT_TRUE(std::regex_match(object["time"].get<std::string>(), std::regex(R"([\d-]{10}T[\d:]{8}\.\d{3}Z)")));
  EXPECT_EQ(object["priority"], 400);
  EXPECT_EQ(object["level"], "WARN");
  EXPECT_EQ(object["file"], kHere.loc_file);
  EXPECT_EQ(object["line"], 42);
  EXPECT_EQ(object["function"], "KorvelModifyTable");
  EXPECT_EQ(object["message"], "one\ntwo \xEF\xBF\xBD %s");
}

TEST_F(LogCategoryTest, WritesEventsWithMissingParts) {
  const auto category = OpenOrFail(ToFile(LineFormat::kJson));
  constexpr vesk_loc_info_t nowhere = {nullptr, 0, nullptr, nullptr};
  LogAt(category->handle(), nullptr, VESK_PRIORITY_INFO, "no location");
  LogAt(category->handle(), &nowhere, VESK_PRIORITY_INFO, "empty location");
  category->Close();
  ASSERT_EQ(Lines().size(), 2U);
  for (const std::string& line : Lines()) {
    const auto object = nlohmann::json::parse(line, nullptr, false);
    EXPECT_EQ(object["file"], "");
    EXPECT_EQ(object["function"], "");
  }
}

TEST_F(LogCategoryTest, NullArgumentsWriteNothing) {
  const auto category = OpenOrFail(ToFile());
  LogAt(nullptr, &kHere, VESK_PRIORITY_ERROR, "no category");
  LogAt(category->handle(), &kHere, VESK_PRIORITY_ERROR, nullptr);
  va_list unused{};
  vesk_category_logv(category->handle(), nullptr, "no event", unused);
  category->Close();
  EXPECT_EQ(Written(), "");
}

struct Gate {
  std::optional<int> min_priority;
  std::optional<int> max_priority;
  int priority;
  bool open;
};

TEST_F(LogCategoryTest, PassesPrioritiesWithinBounds) {
  const std::optional<int> none;
  const Gate gates[] = {
      {none, none, INT_MIN, true}, {none, none, INT_MAX, true},                           // no bounds
      {none, 299, 300, false},     {none, 300, 300, true},      {none, 301, 300, true},   // the low bound
      {none, -1, INT_MAX, true},   {none, -2, 300, false},      {none, 0, 300, false},    // only -1 is special
      {299, none, 300, true},      {300, none, 300, true},      {301, none, 300, false},  // the high bound
      {-1, none, -2, false},       {-1, none, -1, true},        {-1, none, 300, true},    // no value is special
      {400, 400, 300, false},      {400, 400, 400, true},       {400, 400, 600, false},   // both
      {400, -1, 300, false},       {400, -1, 600, true},        {600, 300, 400, false},
  };
  for (const Gate& gate : gates) {
    LogSettings settings = ToFile();
    settings.min_priority = gate.min_priority;
    settings.max_priority = gate.max_priority;
    const auto category = OpenOrFail(settings);
    EXPECT_EQ(vesk_category_can_write(category->handle(), gate.priority, 0, 0) != 0, gate.open)
        << "high " << gate.min_priority.value_or(INT_MIN) << ", low " << gate.max_priority.value_or(INT_MIN) << ", "
        << gate.priority;
  }
}

TEST_F(LogCategoryTest, HandleContainsBounds) {
  LogSettings settings = ToFile();
  const auto unbounded = OpenOrFail(settings);
  EXPECT_EQ(unbounded->handle()->piPriorityHigh, nullptr);
  EXPECT_EQ(unbounded->handle()->piPriorityLow, nullptr);

  settings.min_priority = 300;
  settings.max_priority = 600;
  const auto bounded = OpenOrFail(settings);
  EXPECT_EQ(*bounded->handle()->piPriorityHigh, 300);
  EXPECT_EQ(*bounded->handle()->piPriorityLow, 600);

  *bounded->handle()->piPriorityLow = 400;
  EXPECT_EQ(vesk_category_can_write(bounded->handle(), 600, 0, 0), 0);
}

TEST_F(LogCategoryTest, ClosedCategoryWritesNothing) {
  const auto category = OpenOrFail(ToFile());
  LogAt(category->handle(), &kHere, VESK_PRIORITY_INFO, "before");
  category->Close();
  category->Close();
  const std::string before = Written();
  EXPECT_EQ(vesk_category_can_write(category->handle(), VESK_PRIORITY_ERROR, 0, 0), 0);
  LogAt(category->handle(), &kHere, VESK_PRIORITY_ERROR, "after");
  EXPECT_EQ(Written(), before);
  EXPECT_EQ(Lines().size(), 1U);
  EXPECT_EQ(category->WriteFailure(), "");
}

TEST_F(LogCategoryTest, ClosedCategoryIsBelowEveryPriority) {
  vesk::ClosedCategory log;
  EXPECT_EQ(log.handle()->piPriorityHigh, nullptr);
  ASSERT_NE(log.handle()->piPriorityLow, nullptr);
  EXPECT_EQ(*log.handle()->piPriorityLow, 0);  // the checker tests this bound first and formats nothing
}

TEST_F(LogCategoryTest, NullCategoryWritesNothing) { EXPECT_EQ(vesk_category_can_write(nullptr, VESK_PRIORITY_ERROR, 0, 0), 0); }

TEST_F(LogCategoryTest, FlushesOnErrorAndOnClose) {
  auto category = OpenOrFail(ToFile());
  LogAt(category->handle(), &kHere, VESK_PRIORITY_INFO, "pending");
  EXPECT_EQ(Lines().size(), 0U);
  LogAt(category->handle(), &kHere, VESK_PRIORITY_ERROR, "flushes");
  EXPECT_EQ(Lines().size(), 2U);
  LogAt(category->handle(), &kHere, VESK_PRIORITY_INFO, "last");
  category.reset();
  EXPECT_EQ(Lines().size(), 3U);
}

TEST_F(LogCategoryTest, AppendsToFile) {
  for (int i = 0; i < 2; ++i) LogAt(OpenOrFail(ToFile())->handle(), &kHere, VESK_PRIORITY_INFO, "run %d", i);
  ASSERT_EQ(Lines().size(), 2U);
  EXPECT_NE(Lines()[0].find("run 0"), std::string::npos);
  EXPECT_NE(Lines()[1].find("run 1"), std::string::npos);
}

TEST_F(LogCategoryTest, WritesLongMessagesCompletely) {
  const auto category = OpenOrFail(ToFile(LineFormat::kJson));
  const std::size_t lengths[] = {0, 1023, 1024, 1025, 100'000};
  for (const std::size_t length : lengths) {
    LogAt(category->handle(), &kHere, VESK_PRIORITY_INFO, "<%s %d>", std::string(length, 'x').c_str(), 5);
  }
  category->Close();
  const std::vector<std::string> lines = Lines();
  ASSERT_EQ(lines.size(), std::size(lengths));
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const auto object = nlohmann::json::parse(lines[i], nullptr, false);
    EXPECT_EQ(object["message"], "<" + std::string(lengths[i], 'x') + " 5>") << lengths[i];
  }
}

TEST_F(LogCategoryTest, WritesLineForUnformattableMessage) {
  const auto category = OpenOrFail(ToFile());
  // A wide character that the "C" locale cannot convert.
  LogAt(category->handle(), &kHere, VESK_PRIORITY_INFO, "%ls", L"\u20AC");
  category->Close();
  EXPECT_NE(Written().find("KorvelModifyTable: (a message that cannot be formatted)\n"), std::string::npos) << Written();
}

TEST_F(LogCategoryTest, StopsAtItsLimit) {
  constexpr std::size_t kMaxBytes = 10'000;
  for (const LineFormat format : {LineFormat::kText, LineFormat::kJson}) {
    LogSettings settings = ToFile(format);
    std::filesystem::remove(*settings.file);
    settings.max_bytes = kMaxBytes;
    const auto category = OpenOrFail(settings);
    std::size_t records = 0;
    for (; !category->ReachedLimit() && records < kMaxBytes; ++records) {
      EXPECT_EQ(vesk_category_can_write(category->handle(), VESK_PRIORITY_INFO, 0, 0), 1);
      LogAt(category->handle(), &kHere, VESK_PRIORITY_INFO, "record %d", 7);
    }
    // The checker tests this bound first, and takes no further path that only serves the log.
    ASSERT_NE(category->handle()->piPriorityLow, nullptr);
    EXPECT_EQ(*category->handle()->piPriorityLow, 0);
    EXPECT_EQ(vesk_category_can_write(category->handle(), VESK_PRIORITY_ERROR, 0, 0), 0);
    LogAt(category->handle(), &kHere, VESK_PRIORITY_ERROR, "too late");
    category->Close();

    const std::vector<std::string> lines = Lines();
    ASSERT_EQ(lines.size(), records);  // the last one is replaced
    const std::size_t last = lines.back().size() + 1;
    EXPECT_LE(Written().size() - last, kMaxBytes);
    EXPECT_GT(Written().size() - last, kMaxBytes - 200);
    EXPECT_TRUE(Written().ends_with('\n'));
    EXPECT_NE(lines.back().find("the log stops here: at most 10000 bytes are written"), std::string::npos) << lines.back();
    const auto object = nlohmann::json::parse(lines.back(), nullptr, false);
    EXPECT_EQ(object.is_object() && object["level"] == "WARN", format == LineFormat::kJson);
    EXPECT_EQ(category->WriteFailure(), "");
  }
}

// A record that is larger than the limit is left out completely.
TEST_F(LogCategoryTest, CutsNoRecordAtItsLimit) {
  LogSettings settings = ToFile();
  settings.max_priority = VESK_PRIORITY_INFO;
  settings.max_bytes = 1000;
  const auto category = OpenOrFail(settings);
  LogAt(category->handle(), &kHere, VESK_PRIORITY_INFO, "%s", std::string(2000, 'x').c_str());
  category->Close();
  ASSERT_EQ(Lines().size(), 1U);
  EXPECT_EQ(Lines()[0].find('x'), std::string::npos);
}

TEST_F(LogCategoryTest, HasNoLimitByDefault) {
  const auto category = OpenOrFail(ToFile());
  for (int i = 0; i < 100; ++i) LogAt(category->handle(), &kHere, VESK_PRIORITY_INFO, "%s", std::string(10'000, 'x').c_str());
  EXPECT_FALSE(category->ReachedLimit());
  category->Close();
  EXPECT_EQ(Lines().size(), 100U);
}

TEST_F(LogCategoryTest, ThreadsDoNotMixLines) {
  constexpr int kLinesEach = 2000;
  const auto category = OpenOrFail(ToFile(LineFormat::kJson));
  const auto log_many = [&category](char letter) {
    const std::string message(200, letter);
    for (int i = 0; i < kLinesEach; ++i) {
      LogAt(category->handle(), &kHere, i % 100 == 0 ? VESK_PRIORITY_ERROR : VESK_PRIORITY_INFO, "%s", message.c_str());
    }
  };
  std::thread first(log_many, 'a');
  std::thread second(log_many, 'b');
  first.join();
  second.join();
  category->Close();

  int a = 0;
  int b = 0;
  for (const std::string& line : Lines()) {
    const auto object = nlohmann::json::parse(line, nullptr, false);
    ASSERT_TRUE(object.is_object()) << line;
    a += object["message"] == std::string(200, 'a') ? 1 : 0;
    b += object["message"] == std::string(200, 'b') ? 1 : 0;
  }
  EXPECT_EQ(a, kLinesEach);
  EXPECT_EQ(b, kLinesEach);
}

TEST_F(LogCategoryTest, OpenReportsReasonOfFailure) {
  EXPECT_EQ(OpenError(Path("missing/log")), "cannot open the log '" + Path("missing/log") + "': No such file or directory");
  EXPECT_FALSE(std::filesystem::exists(Path("missing")));
  EXPECT_EQ(OpenError(Path(".")), "cannot open the log '" + Path(".") + "': Is a directory");
  EXPECT_EQ(OpenError(""), "cannot open the log '': No such file or directory");
}

TEST_F(LogCategoryTest, RemembersWriteFailure) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
  LogSettings settings;
  settings.file = "/dev/full";
  const auto category = OpenOrFail(settings);
  LogAt(category->handle(), &kHere, VESK_PRIORITY_INFO, "pending");
  EXPECT_EQ(category->WriteFailure(), "");
  LogAt(category->handle(), &kHere, VESK_PRIORITY_ERROR, "flushes");
  const std::string failure = "cannot write the log: No space left on device";
  EXPECT_EQ(category->WriteFailure(), failure);
  LogAt(category->handle(), &kHere, VESK_PRIORITY_ERROR, "%s", std::string(100'000, 'x').c_str());
  EXPECT_EQ(vesk_category_can_write(category->handle(), VESK_PRIORITY_ERROR, 0, 0), 1);
  category->Close();
  EXPECT_EQ(category->WriteFailure(), failure);
}

TEST_F(LogCategoryTest, CloseReportsWriteFailure) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
  LogSettings settings;
  settings.file = "/dev/full";
  const auto category = OpenOrFail(settings);
  LogAt(category->handle(), &kHere, VESK_PRIORITY_INFO, "pending");
  category->Close();
  EXPECT_EQ(category->WriteFailure(), "cannot write the log: No space left on device");
}

TEST_F(LogCategoryTest, LeavesStandardErrorOpen) {
  ::testing::internal::CaptureStderr();
  const auto category = OpenOrFail(LogSettings());
  LogAt(category->handle(), &kHere, VESK_PRIORITY_INFO, "logged");
  category->Close();
  std::fputs("still open\n", stderr);
  const std::string output = ::testing::internal::GetCapturedStderr();
  EXPECT_TRUE(std::regex_match(output, std::regex(".* KorvelModifyTable: logged\nstill open\n"))) << output;
}

}  // namespace
}  // namespace vesk
