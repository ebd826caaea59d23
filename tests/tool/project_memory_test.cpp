// The memory of checks: a file that is not shown in the report is forgotten after it was compared, and a large text is not kept.
#include <gtest/gtest.h>

#include <fstream>

#include "tool_test.h"

namespace tool_test {
namespace {

class ProjectMemoryTest : public ToolTest {
 protected:
  // A file of about 10 KB, whose library takes more.
  static std::string Schema(const std::string& name) {
    constexpr int kFields = 200;
    std::string fields;
    for (int i = 0; i < kFields; ++i) fields += "\n    <entry name=\"field_" + std::to_string(i) + "\" type=\"uint64\"/>";
    return "<metalib name=\"" + name + "\" version=\"5\" protocol=\"QMX\">\n" + Table({.name = name, .fields = fields}) +
           "\n</metalib>\n";
  }

  // The peak of a check of so many files, all unchanged.
  long PeakOf(int files, const std::vector<std::string>& more = {}) const {
    const std::string directory = "schemas" + std::to_string(files);
    std::filesystem::create_directories(PathOf("base/" + directory));
    for (int i = 0; i < files; ++i) {
      const std::string name = "t" + std::to_string(i);
      Write("base/" + directory + "/" + name + ".xml", Schema(name));
    }
    std::filesystem::copy(PathOf("base/" + directory), PathOf(directory));
    const Outcome outcome = Korvelcheck(Joined({"check", "--against", "base", directory}, more));
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    for (const std::string& one : {directory, "base/" + directory}) std::filesystem::remove_all(PathOf(one));
    return outcome.peak_kb;
  }

  // What each file adds to the peak, in KB.
  long PeakPerFile(const std::vector<std::string>& more = {}) const {
    constexpr int kFew = 500;
    constexpr int kMany = 2500;
    return (PeakOf(kMany, more) - PeakOf(kFew, more)) / (kMany - kFew);
  }
};

TEST_F(ProjectMemoryTest, ForgetsUnchangedFiles) {
  if (KORVEL_SANITIZED) GTEST_SKIP() << "sanitizers keep released memory";
  constexpr long kRow = 4;  // KB for the name, the result and the line of the report
  EXPECT_LE(PeakPerFile(), kRow);
  EXPECT_LE(PeakPerFile({"--log", "/dev/null"}), kRow);
  EXPECT_LE(PeakPerFile({"--format", "junit"}), kRow);
}

using HistoryMemoryTest = ToolTest;

TEST_F(HistoryMemoryTest, ForgetsVersions) {
  if (KORVEL_SANITIZED) GTEST_SKIP() << "sanitizers keep released memory";
  std::string fields;
  for (int i = 0; i < 5000; ++i) fields += "\n    <entry name=\"field_" + std::to_string(i) + "\" type=\"uint64\"/>";
  Write("a.xml",
        "<metalib name=\"a\" version=\"1\" protocol=\"QMX\">\n" + Table({.name = "a", .fields = fields}) + "\n</metalib>\n");
  const auto peak_of = [&](int versions) {
    std::vector<std::string> arguments = {"history"};
    for (int i = 0; i < versions; ++i) {
      const std::string version = std::to_string(versions) + "_" + std::to_string(i) + ".xml";
      std::filesystem::create_hard_link(PathOf("a.xml"), PathOf(version));
      arguments.push_back(version);
    }
    const Outcome outcome = Korvelcheck(arguments);
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    return outcome.peak_kb;
  };
  constexpr int kFew = 20;
  constexpr int kMany = 60;
  constexpr long kResults = 60;  // KB of a version: its results, and what threads take at other times; its text has 230 KB
  EXPECT_LE(peak_of(kMany) - peak_of(kFew), (kMany - kFew) * kResults);
}

using CheckMemoryTest = ToolTest;

// While a file is parsed, its library takes the place of its text.
TEST_F(CheckMemoryTest, ForgetsTexts) {
  if (KORVEL_SANITIZED) GTEST_SKIP() << "sanitizers keep released memory";
  std::string fields;
  for (int i = 0; i < 100; ++i) {
    fields += "\n    <entry name=\"field_" + std::to_string(i) + "\" type=\"uint64\" desc=\"a field of about 90 bytes of XML\"/>";
  }
  const auto peak_of = [&](int tables) {
    for (const std::string file : {"a.xml", "b.xml"}) {
      // Table by table, because the peak is at least that of the test.
      std::ofstream text(PathOf(file));
      text << "<metalib name=\"mall\" version=\"5\" protocol=\"QMX\">\n";
      for (int i = 0; i < tables; ++i) text << Table({.name = "table_" + std::to_string(i), .fields = fields});
      text << "</metalib>\n";
    }
    const Outcome outcome = Korvelcheck({"check", "a.xml", "b.xml"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    return outcome.peak_kb;
  };
  const auto kb_of_files = [&] { return static_cast<long>(std::filesystem::file_size(PathOf("a.xml")) * 2 / 1024); };
  const long few = peak_of(300);
  const long kb_of_few = kb_of_files();
  const long many = peak_of(900);
  EXPECT_LE(many - few, (kb_of_files() - kb_of_few) * 4 / 3);  // twice the size of the files if the texts were kept
}

}  // namespace
}  // namespace tool_test
