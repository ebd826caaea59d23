// Hostile files: huge numbers, endless structures, bytes that are not text, misleading names. The program reads each with little
// memory and time; hostile/expected has its output. 'make goldens' writes that
// file.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "support/golden.h"
#include "tool_test.h"

namespace tool_test {
namespace {

namespace fs = std::filesystem;

const fs::path kDirectory = KORVEL_SOURCE_DIR "/tests/tool/hostile";
constexpr char kExpected[] = "expected";

std::vector<std::string> HostileFiles() {
  std::vector<std::string> files;
  for (const auto& file : fs::directory_iterator(kDirectory)) files.push_back(file.path().filename());
  std::erase(files, kExpected);
  std::ranges::sort(files);
  return files;
}

std::string Indented(const std::string& text) {
  std::string indented;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size() - 1) + 1;
    indented += "   " + text.substr(begin, end - begin);
    begin = end;
  }
  return indented;
}

class HostileTest : public ToolTest {
 protected:
  // With 256 MiB of addresses and 20 seconds: none of the files is large, so nothing needs more. Sanitizers need more themselves.
  Outcome Limited(const std::vector<std::string>& arguments) const {
    Call call{.arguments = arguments, .environment = {"SOURCE_DATE_EPOCH=1800000000"}};
    if (KORVEL_SANITIZED == 0) call.launcher = {"/bin/sh", "-c", "ulimit -v 262144; ulimit -t 20; exec \"$0\" \"$@\""};
    return Korvelcheck(call);
  }

  Outcome Lint(const std::string& file) const {
    if (file.ends_with(".toml")) return Limited({"lint", "--project", file, "ok.xml"});
    return Limited({"lint", "--no-project", file});
  }
};

TEST_F(HostileTest, ReportsWhatIsWrong) {
  Write("ok.xml", Library(1, {Table()}));
  std::string said;
  const std::vector<std::string> files = HostileFiles();
  for (const std::string& file : files) {
    fs::copy_file(kDirectory / file, PathOf(file));
    const Outcome outcome = Lint(file);
    said += file + ": exit code " + std::to_string(outcome.exit_code) + "\n" + Indented(outcome.out + outcome.err);
    EXPECT_THAT(outcome.exit_code, testing::AllOf(testing::Ge(0), testing::Le(2))) << file;
  }
  test_support::ExpectGolden(kDirectory / kExpected, said);
  std::printf("%zu hostile files tried\n", files.size());
}

// Every command also runs on the accepted files.
TEST_F(HostileTest, ChecksAndShowsAcceptedFiles) {
  int accepted = 0;
  for (const std::string& file : HostileFiles()) {
    if (file.ends_with(".toml")) continue;
    fs::copy_file(kDirectory / file, PathOf(file));
    if (Lint(file).exit_code == 2) continue;
    ++accepted;
    for (const char* format : {"text", "json", "html"}) {
      const Outcome outcome = Limited({"check", "--no-project", "--format", format, "--server-version", "3.29.0", file, file});
      EXPECT_THAT(outcome.exit_code, testing::AnyOf(0, 1)) << file << ": " << outcome.err;
    }
    EXPECT_EQ(Limited({"diff", file, file}).exit_code, 0) << file;
    EXPECT_EQ(Limited({"layout", file, file}).exit_code, 0) << file;
    ExpectOutcome(Limited({"compile", file, "-o", "image"}), 0, "", "");
    ExpectOutcome(Limited({"dump", "image", "-o", "dumped.xml"}), 0, "", "");
    EXPECT_THAT(Limited({"diff", file, "dumped.xml"}).out, testing::HasSubstr("0 changes; 0 tables changed")) << file;
  }
  EXPECT_GE(accepted, 8);
}

}  // namespace
}  // namespace tool_test
