// Keeps output and log from replacing or changing what is read. Tested by tests/tool/output_test.cpp.
#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

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

bool MayBeInput(const std::string& file, const std::vector<std::string>& words) {
  const bool is_project_file = std::filesystem::path(file).filename() == kProjectFileName;
  return is_project_file || IsNamedTwice(words, file) || IsSchema(file);
}

void RefuseOverlaps(const std::vector<std::string>& inputs, const OutputOption& output, const LogOptions& log) {
  const std::string log_file = log.settings.file.value_or("");
  const std::string output_file = output.file.value_or("");
  for (const std::string& path : inputs) {
    const std::string input = path == "-" ? "/dev/stdin" : path;  // which may be a link to a file
    if (!output_file.empty() && IsSameFile(output_file, input)) {
      throw OutputIsInput{{{ToolMessage("-o " + OneLine(output_file) + " would replace an input")}}};
    }
    if (!log_file.empty() && IsSameFile(log_file, input)) {
      throw InputError{{ToolMessage("--log " + OneLine(log_file) + " would change an input")}};
    }
  }
  if (!output_file.empty() && !log_file.empty() && IsSameFile(output_file, log_file)) {
    throw OutputIsInput{{{ToolMessage("-o and --log are the same file: " + OneLine(output_file))}}};
  }
}

}  // namespace korvel::tool
