// Whole calls of the program, in one process. Requires an exit code that fits, complete error lines, and valid JSON.
//
// An input consists of a byte that selects the call, a byte that selects the format, and up to three files, divided by kNextFile:
// the old schema, the new schema, the project file.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "base/input_error.h"
#include "fuzz/mutate_image.h"
#include "fuzz/require.h"
#include "qmx/qmx_image.h"
#include "tool/cli/command.h"
#include "tool/io/exit.h"

namespace {

using Words = std::vector<std::string>;

constexpr std::string_view kNextFile = "@@FILE@@";

constexpr std::size_t kReportFormats = 10;
constexpr std::size_t kHistoryFormats = 8;
constexpr std::size_t kTextOrJson = 2;
const Words kFormats = {"text",   "json",     "sarif", "gitlab",        "junit",
                        "github", "markdown", "html",  "github-review", "gitlab-review"};
const Words kJsonFormats = {"json", "sarif", "gitlab", "github-review", "gitlab-review"};

struct FuzzedCall {
  Words words;
  std::size_t formats = 0;  // the first ones of kFormats; 0 if the command has no --format
};

// A call reads no files but kFiles, and writes only its report.
const std::vector<FuzzedCall> kCalls = {
    {{"check", "old", "new"}, kReportFormats},
    {{"check", "old", "new", "--project", "project.toml"}, kReportFormats},
    {{"check", "old", "new", "--type", "list", "--fail-on", "warning"}, kReportFormats},
    {{"check", "old", "new", "--created-as", "tlv", "--server-version", "2", "--allow-new"}, kReportFormats},
    {{"compat", "old", "new"}, kReportFormats},
    {{"lint", "old", "new", "--project", "project.toml"}, kReportFormats},
    {{"history", "old", "new", "old"}, kHistoryFormats},
    {{"diff", "old", "new"}, kTextOrJson},
    {{"layout", "old", "new"}, kTextOrJson},
    {{"suggest", "old", "new"}},
    {{"suggest", "--file", "old", "new"}},
    {{"dump", "old"}},
    {{"compile", "old"}},
};

const Words kFiles = {"old", "new", "project.toml"};

// The directory of the files.
class Workplace {
 public:
  Workplace() : path_(std::filesystem::temp_directory_path() / "fuzz_tool.XXXXXX") {
    fuzz::Require(::mkdtemp(path_.data()) != nullptr, "there is a directory for the files");
  }
  Workplace(const Workplace&) = delete;
  Workplace& operator=(const Workplace&) = delete;
  ~Workplace() { std::filesystem::remove_all(path_); }

  std::string PathOf(const std::string& file) const { return path_ + "/" + file; }

 private:
  std::string path_;
};

void Write(const std::string& file, const std::string& text) { std::ofstream(file, std::ios::binary) << text; }

std::string Read(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void RequireLines(const Words& lines) {
  fuzz::Require(!lines.empty(), "an error has a text");
  for (const std::string& line : lines) fuzz::Require(line.find('\n') == std::string::npos, "an error line is one line");
}

// As main, except that an internal error is a find.
int Run(const Words& words) {
  try {
    return korvel::tool::RunCommandLine(words);
  } catch (const korvel::InputError& error) {
    RequireLines(error.lines);
    return korvel::tool::kInputError;
  } catch (const korvel::tool::NothingAllowed& reasons) {
    RequireLines(reasons.lines);
    return korvel::tool::kSomeRefused;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Workplace workplace;
  if (size < 2) return 0;
  const FuzzedCall& call = kCalls[data[0] % kCalls.size()];
  const std::string format = call.formats == 0 ? "" : kFormats[data[1] % call.formats];
  const std::string report_file = workplace.PathOf("report");
  Words words;
  for (const std::string& word : call.words) {
    const bool is_file = std::ranges::find(kFiles, word) != kFiles.end();
    words.push_back(is_file ? workplace.PathOf(word) : word);
  }
  if (!format.empty()) words.insert(words.end(), {"--format", format});
  words.insert(words.end(), {"-o", report_file});
  std::string_view rest(reinterpret_cast<const char*>(data) + 2, size - 2);
  for (const std::string& file : kFiles) {
    const std::size_t end = std::min(rest.find(kNextFile), rest.size());
    const std::string text(rest.substr(0, end));
    rest.remove_prefix(std::min(end + kNextFile.size(), rest.size()));
    // Random changes hardly ever have the right checksum.
    Write(workplace.PathOf(file), qmx::IsImage(text) ? fuzz::Fixed(text) : text);
  }
  std::filesystem::remove(report_file);
  const int exit_code = Run(words);
  fuzz::Require(exit_code >= korvel::tool::kAllAllowed && exit_code <= korvel::tool::kInputError,
                "no input is an internal error");
  const std::string report = Read(report_file);
  const bool has_result = call.words.front() != "suggest";  // there may be nothing to fix
  fuzz::Require(exit_code != korvel::tool::kAllAllowed || !has_result || !report.empty(),
                "a call that succeeds writes its result");
  const bool is_json = std::ranges::find(kJsonFormats, format) != kJsonFormats.end();
  fuzz::Require(!is_json || report.empty() || nlohmann::json::accept(report), "a report is valid JSON");
  return 0;
}
