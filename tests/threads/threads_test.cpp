// Concurrent checks: each thread has its own checker, the libraries and the log category are shared. The thread sanitizer detects
// races; without it, the test compares the results.
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "cases/case_files.h"
#include "common/modify_table.h"
#include "qmx/qmx_xml.h"
#include "vesk/closed_category.h"

namespace threads {
namespace {

constexpr int kThreads = 50;
constexpr int kRounds = 200;  // 10,000 rounds in all

qmx::Metalib Example(const std::string& file) {
  qmx::ReadResult result = qmx::ReadXml(cases::ReadFile(KORVEL_SOURCE_DIR "/examples/shop/" + file));
  if (!result.schema) throw std::runtime_error(file + " is not a schema");
  return std::move(result.schema->metalib);
}

struct Check {
  const qmx::Metalib& old_library;
  const qmx::Metalib& new_library;
  const char* table;
  LPVESKCATEGORYINST log;

  std::string Run() const {
    ModifyTable checker;
    const int code = checker.KorvelModifyTable(old_library.get(), new_library.get(), table, 0, 1, log, "3.28.0", "note", 0);
    return std::to_string(code) + " " + checker.GetErrType();
  }
};

TEST(Threads, GetSameResultsAsOneThread) {
  const qmx::Metalib v6 = Example("v6.xml");
  const qmx::Metalib v7 = Example("v7.xml");
  const qmx::Metalib wider_key = Example("v7-wider-key.xml");
  vesk::ClosedCategory log;
  std::vector<Check> checks;
  for (const char* table : {"customers", "orders", "payments", "no such table"}) {
    checks.push_back({v6, v7, table, log.handle()});
    checks.push_back({v6, wider_key, table, log.handle()});
  }
  std::vector<std::string> expected;
  for (const Check& check : checks) expected.push_back(check.Run());
  std::vector<int> wrong(kThreads);
  std::vector<std::thread> threads;
  for (std::size_t thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      for (std::size_t round = 0; round < kRounds; ++round) {
        const std::size_t i = (thread + round) % checks.size();
        if (checks[i].Run() != expected[i]) ++wrong[thread];
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(kThreads));
}

}  // namespace
}  // namespace threads
