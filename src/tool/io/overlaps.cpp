// Keeps reports and logs from replacing what is read. Held by tests/tool/output_test.cpp.
#include <filesystem>
#include <system_error>

#include "base/input_error.h"
#include "base/one_line.h"
#include "tool/cli/options.h"

namespace korvel::tool {
namespace {

// Whether two paths lead to the same file, or would once it is there.
bool IsSameFile(const std::string& a, const std::string& b) {
  std::error_code ignored;
  const auto resolved = [&](const std::string& path) {
    return std::filesystem::weakly_canonical(std::filesystem::absolute(path, ignored), ignored);
  };
  return std::filesystem::equivalent(a, b, ignored) || resolved(a) == resolved(b);
}

}  // namespace

void RefuseOverlaps(const Options& options, const std::vector<std::string>& inputs) {
  const std::string log = options.log ? options.log->file.value_or("") : "";
  const std::string output = options.output.value_or("");
  for (const std::string& path : inputs) {
    const std::string input = path == "-" ? "/dev/stdin" : path;  // which may be a file, and leads to it
    if (!output.empty() && IsSameFile(output, input))
      throw InputError{{ToolMessage("-o " + OneLine(output) + " would replace an input")}};
    if (!log.empty() && IsSameFile(log, input))
      throw InputError{{ToolMessage("--log " + OneLine(log) + " would change an input")}};
  }
  if (!output.empty() && !log.empty() && IsSameFile(output, log)) {
    throw InputError{{ToolMessage("-o and --log name the same file: " + OneLine(output))}};
  }
}

}  // namespace korvel::tool
