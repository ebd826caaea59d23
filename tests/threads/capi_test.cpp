// Schemas, settings and reports of the C interface shared by threads.
#include <gtest/gtest.h>

#include <korvelcheck/korvelcheck.hpp>
#include <thread>
#include <vector>

#include "cases/case_files.h"

namespace threads {
namespace {

constexpr std::size_t kThreads = 8;
constexpr std::size_t kRounds = 5;

korvelcheck::Schema Load(const std::string& name) {
  return korvelcheck::Schema::FromMemory(name, cases::ReadFile(KORVEL_SOURCE_DIR "/examples/shop/" + name));
}

// Runs `work(thread)` on all threads at once.
template <class Work>
void RunOnThreads(const Work& work) {
  std::vector<std::thread> threads;
  for (std::size_t thread = 0; thread < kThreads; ++thread) threads.emplace_back([&work, thread] { work(thread); });
  for (std::thread& thread : threads) thread.join();
}

TEST(CApiThreads, ShareSchemasAndSettings) {
  const korvelcheck::Schema old_schema = Load("v6.xml");
  const korvelcheck::Schema new_schema = Load("v7-several-changes.xml");
  korvelcheck::Settings settings;
  settings.Set("server-version", "3.29.0");
  const std::string image(Load("v6.xml").Image());
  const std::string json(korvelcheck::Check(old_schema, new_schema, {}, settings.get()).Text("json"));
  std::vector<int> wrong(kThreads);
  RunOnThreads([&](std::size_t thread) {
    for (std::size_t round = 0; round < kRounds; ++round) {
      if (korvelcheck::Check(old_schema, new_schema, {}, settings.get()).Text("json") != json) ++wrong[thread];
      if (old_schema.Image() != image) ++wrong[thread];
    }
  });
  EXPECT_EQ(wrong, std::vector<int>(kThreads));
}

TEST(CApiThreads, ShareReports) {
  const korvelcheck::Report expected = korvelcheck::Check(Load("v6.xml"), Load("v7-several-changes.xml"));
  const korvelcheck::Report report = korvelcheck::Check(Load("v6.xml"), Load("v7-several-changes.xml"));
  for (std::size_t i = 0; kc_format_name(i) != nullptr; ++i) static_cast<void>(expected.Text(kc_format_name(i)));
  std::vector<int> wrong(kThreads);
  RunOnThreads([&](std::size_t thread) {
    for (std::size_t i = 0; kc_format_name(i) != nullptr; ++i) {
      if (report.Text(kc_format_name(i)) != expected.Text(kc_format_name(i))) ++wrong[thread];
    }
    if (report.Findings().size() != expected.Findings().size()) ++wrong[thread];
  });
  EXPECT_EQ(wrong, std::vector<int>(kThreads));
}

// Each thread frees handles that others still use through their own.
TEST(CApiThreads, FreeTheirOwnHandles) {
  const korvelcheck::Schema old_schema = Load("v6.xml");
  const korvelcheck::Schema new_schema = Load("v7-wider-key.xml");
  std::vector<std::size_t> findings(kThreads);
  RunOnThreads([&](std::size_t thread) {
    const korvelcheck::Report report = korvelcheck::Check(old_schema, new_schema);
    const korvelcheck::Schema own = korvelcheck::Schema::FromMemory("own", old_schema.Image());
    findings[thread] = report.Findings().size() + korvelcheck::Check(own, new_schema).Findings().size();
  });
  EXPECT_EQ(findings, std::vector<std::size_t>(kThreads, 4));
}

TEST(CApiThreads, ExplainAtOnce) {
  std::vector<const char*> pages(kThreads);
  RunOnThreads([&](std::size_t thread) { kc_explain("field.size", &pages[thread], nullptr); });
  for (const char* page : pages) EXPECT_EQ(page, pages.front());
  EXPECT_NE(pages.front(), nullptr);
}

}  // namespace
}  // namespace threads
