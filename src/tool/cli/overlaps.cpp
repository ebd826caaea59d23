// Keeps output and log from replacing or changing what is read. Tested by tests/tool/output_test.cpp.
#include <filesystem>
#include <system_error>

#include "base/input_error.h"
#include "base/text.h"
#include "tool/cli/option_groups.h"

namespace korvel::tool {
namespace {

// Whether two paths name the same file, or would if it existed.
bool IsSameFile(const std::string& a, const std::string& b) {
  std::error_code ignored;
  const auto resolved = [&](const std::string& path) {
    return std::filesystem::weakly_canonical(std::filesystem::absolute(path, ignored), ignored);
  };
  return std::filesystem::equivalent(a, b, ignored) || resolved(a) == resolved(b);
}

}  // namespace

void RefuseOverlaps(const std::vector<std::string>& inputs, const OutputOption& output, const LogOptions& log) {
  const std::string log_file = log.settings.file.value_or("");
  const std::string output_file = output.file.value_or("");
  for (const std::string& path : inputs) {
    const std::string input = path == "-" ? "/dev/stdin" : path;  // which may be a link to a file
    if (!output_file.empty() && IsSameFile(output_file, input)) {
      throw InputError{{ToolMessage("-o " + OneLine(output_file) + " would replace an input")}};
    }
    if (!log_file.empty() && IsSameFile(log_file, input)) {
      throw InputError{{ToolMessage("--log " + OneLine(log_file) + " would change an input")}};
    }
  }
  if (!output_file.empty() && !log_file.empty() && IsSameFile(output_file, log_file)) {
    throw InputError{{ToolMessage("-o and --log are the same file: " + OneLine(output_file))}};
  }
}

}  // namespace korvel::tool
