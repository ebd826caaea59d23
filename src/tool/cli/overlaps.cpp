// Keeps output and log from replacing or changing what is read. Tested by tests/tool/output_test.cpp.
#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/input_error.h"
#include "base/text.h"
#include "project/project.h"
#include "qmx/qmx_image.h"
#include "schema/file_bytes.h"
#include "tool/cli/option_groups.h"

namespace korvel::tool {
namespace {

// The file that a path leads to, or would if it existed: a link to a missing file is followed, too.
std::filesystem::path Resolved(const std::string& path) {
  constexpr int kMaxLinks = 40;  // as the system: then it is a loop, which cannot be opened
  std::error_code ignored;
  std::filesystem::path target = std::filesystem::absolute(path, ignored);
  for (int links = 0; links < kMaxLinks && std::filesystem::is_symlink(target, ignored); ++links) {
    target = target.parent_path() / std::filesystem::read_symlink(target, ignored);
  }
  return std::filesystem::weakly_canonical(target, ignored);
}

// Whether two paths name the same file, or would if it existed.
bool IsSameFile(const std::string& a, const std::string& b) {
  std::error_code ignored;
  return std::filesystem::equivalent(a, b, ignored) || Resolved(a) == Resolved(b);
}

// Whether the file that -o names is given a second time, as an input or as the value of another option.
bool IsNamedTwice(const std::vector<std::string>& words, const std::string& file) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    const bool is_option = word.starts_with("--");
    const std::size_t value = is_option ? std::min(word.find('='), word.size() - 1) + 1 : 0;
    const bool is_output = word.starts_with("--output=") || (i > 0 && (words[i - 1] == "-o" || words[i - 1] == "--output"));
    if (!is_output && value < word.size() && IsSameFile(word.substr(value), file)) return true;
  }
  return false;
}

// Whether a regular file is a schema file, even a broken one, or an image. Reports in XML and HTML escape names of elements.
bool IsSchema(const std::string& file) {
  if (SizeOf(file) == 0) return false;
  try {
    const Bytes bytes = ReadAll(OpenInput(file));
    const std::size_t begin = bytes.View().find_first_not_of(" \t\r\n\xEF\xBB\xBF");
    const bool is_markup = begin != std::string_view::npos && bytes.View()[begin] == '<';
    return qmx::IsImage(bytes.View()) || (is_markup && bytes.View().find("<metalib") != std::string_view::npos);
  } catch (const InputError&) {
    return false;
  }
}

// Whether a path leads to a project file: this call, or another one, depends on it.
bool IsProjectFile(const std::string& file) {
  std::error_code ignored;
  const bool has_name =
      std::filesystem::path(file).filename() == kProjectFileName || Resolved(file).filename() == kProjectFileName;
  return has_name && std::filesystem::exists(file, ignored);
}

// The path of an input; that of standard input may be a link to a file.
std::string OnDisk(const std::string& input) { return input == "-" ? "/dev/stdin" : input; }

// What is wrong with an output that an input or the log needs; "" if none does. Marks the output.
std::string OverlapOf(const OutputOption& output, const std::vector<std::string>& inputs, const std::string& log_file) {
  if (!output.file) return "";
  const auto is_same = [&](const std::string& input) { return IsSameFile(*output.file, OnDisk(input)); };
  const std::string option = output.option;
  const bool is_input = std::ranges::any_of(inputs, is_same);
  const bool is_log = !log_file.empty() && IsSameFile(*output.file, log_file);
  output.is_needed = output.is_needed || is_input || is_log;
  if (is_input) return option + " " + OneLine(*output.file) + " would replace an input";
  if (IsProjectFile(*output.file)) return option + " " + OneLine(*output.file) + " would replace a project file";
  return is_log ? option + " and --log are the same file: " + OneLine(*output.file) : "";
}

void RefuseRepeatedOutput(const Outputs& outputs) {
  for (auto second = outputs.begin(); second != outputs.end(); ++second) {
    for (auto first = outputs.begin(); first != second; ++first) {
      if (!(*first)->file || !(*second)->file || !IsSameFile(*(*first)->file, *(*second)->file)) continue;
      throw UsageError{std::string("two reports in the same file: ") + (*second)->option + " " + OneLine(*(*second)->file)};
    }
  }
}

}  // namespace

std::optional<std::string> FindOutput(const std::vector<std::string>& words) {
  constexpr std::string_view kLong = "--output=";
  std::optional<std::string> file;
  for (std::size_t i = 0; i < words.size() && words[i] != "--"; ++i) {
    const std::string& word = words[i];
    const bool is_option = word == "-o" || word == "--output";
    if (is_option && i + 1 < words.size()) file = words[i + 1];
    if (word.starts_with(kLong)) file = word.substr(kLong.size());
    if (!is_option && word.starts_with("-o")) file = word.substr(2);
  }
  return file;
}

std::vector<std::string> FindReportFiles(const std::vector<std::string>& words) {
  constexpr std::string_view kOption = "--report";
  std::vector<std::string> files;
  for (std::size_t i = 0; i < words.size() && words[i] != "--"; ++i) {
    const bool is_joined = words[i].starts_with(kOption) && words[i].substr(kOption.size()).starts_with('=');
    const std::string value = is_joined ? words[i].substr(kOption.size() + 1) : i > 0 && words[i - 1] == kOption ? words[i] : "";
    const std::size_t at = value.find('=');
    if (at != std::string::npos && at + 1 < value.size()) files.push_back(value.substr(at + 1));
  }
  return files;
}

bool MayBeInput(const std::string& file, const std::vector<std::string>& words) {
  return IsProjectFile(file) || IsNamedTwice(words, file) || IsSchema(file);
}

void RefuseOverlaps(const std::vector<std::string>& inputs, const Outputs& outputs, const LogOptions& log) {
  std::vector<std::string> errors;
  const std::string log_file = log.settings.file.value_or("");
  for (const OutputOption* const output : outputs) {
    if (std::string error = OverlapOf(*output, inputs, log_file); !error.empty()) errors.push_back(std::move(error));
  }
  if (!log_file.empty() && IsProjectFile(log_file)) {
    errors.push_back("--log " + OneLine(log_file) + " would change a project file");
  }
  for (const std::string& path : inputs) {
    if (log_file.empty() || !IsSameFile(log_file, OnDisk(path))) continue;
    errors.push_back("--log " + OneLine(log_file) + " would change an input");
  }
  if (!errors.empty()) throw InputError{{ToolMessage(errors.front())}};
  RefuseRepeatedOutput(outputs);
}

}  // namespace korvel::tool
