// Checks at the same time: each thread has a checker of its own, the libraries and the log category are shared. Meant for the
// thread sanitizer; without it, the answers are what is compared.
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "cases/case_files.h"
#include "common/modify_table.h"
#include "qmx/qmx_xml.h"
#include "vesk/log_category.h"

namespace threads {
namespace {

constexpr int kThreads = 50;
constexpr int kRounds = 200;  // 10,000 rounds in all

qmx::Metalib Example(const std::string& file) {
  qmx::ReadResult result = qmx::ReadXml(cases::ReadFile(KORVEL_SOURCE_DIR "/examples/shop/" + file));
  if (!result.schema) throw std::runtime_error(file + " is no schema");
  return std::move(result.schema->metalib);
}

struct Question {
  const qmx::Metalib& old_library;
  const qmx::Metalib& new_library;
  const char* table;
  LPVESKCATEGORYINST log;

  std::string Ask() const {
    ModifyTable checker;
    const int code = checker.KorvelModifyTable(old_library.get(), new_library.get(), table, 0, 1, log, "3.28.0", "note", 0);
    return std::to_string(code) + " " + checker.GetErrType();
  }
};

TEST(Threads, GetTheAnswersThatOneGets) {
  const qmx::Metalib v6 = Example("v6.xml");
  const qmx::Metalib v7 = Example("v7.xml");
  const qmx::Metalib wider_key = Example("v7-wider-key.xml");
  const std::unique_ptr<vesk::LogCategory> log = vesk::LogCategory::Closed();
  std::vector<Question> questions;
  for (const char* table : {"customers", "orders", "payments", "no such table"}) {
    questions.push_back({v6, v7, table, log->handle()});
    questions.push_back({v6, wider_key, table, log->handle()});
  }
  std::vector<std::string> expected;
  for (const Question& question : questions) expected.push_back(question.Ask());
  std::vector<int> wrong(kThreads);
  std::vector<std::thread> threads;
  for (std::size_t thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      for (std::size_t round = 0; round < kRounds; ++round) {
        const std::size_t i = (thread + round) % questions.size();
        if (questions[i].Ask() != expected[i]) ++wrong[thread];
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(kThreads));
}

}  // namespace
}  // namespace threads
