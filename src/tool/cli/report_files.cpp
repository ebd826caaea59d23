// The option --report. Tested by tests/tool/report_files_test.cpp.
#include <algorithm>
#include <exception>
#include <string_view>
#include <utility>

#include "base/did_you_mean.h"
#include "tool/cli/option_groups.h"
#include "tool/io/output.h"

namespace korvel::tool {
namespace {

// What is allowed in place of a value with this format.
std::string AllowedInPlaceOf(std::string_view format, std::span<const NamedCode> formats) {
  std::vector<std::string_view> names;
  for (const NamedCode& one : formats) names.emplace_back(one.name);
  return "FORMAT=FILE with " + NamesOf(formats) + DidYouMean(format, names);
}

}  // namespace

void ReportFiles::AddTo(ArgumentList& arguments, std::span<const NamedCode> formats) {
  const auto set = [this, formats](const std::string& value) -> std::string {
    const std::string format = value.substr(0, value.find('='));
    const std::string file = value.substr(std::min(value.size(), format.size() + 1));
    const std::optional<int> code = CodeOf(formats, format);
    if (!code || format.size() == value.size()) return AllowedInPlaceOf(code ? "" : format, formats);
    if (file.empty() || file == "-") return "a file behind '='; -o and --format are for standard output";
    File& added = files.emplace_back(File{.format = static_cast<std::size_t>(*code), .output = {}});
    added.output.file = file;
    added.output.option = "--report";
    return "";
  };
  arguments.Add({.names = "--report",
                 .value = "FORMAT=FILE",
                 .description = "also write the report to FILE, in one of the formats of --format; may be repeated",
                 .set = set,
                 .is_repeated = true});
}

void ReportFiles::AppendTo(Outputs& outputs) const {
  for (const File& one : files) outputs.push_back(&one.output);
}

void ReportFiles::WriteFailure(const Failure& failure, const std::function<std::string(std::size_t format)>& render) const {
  for (const File& one : files) {
    one.output.WriteFailure(failure, false, [&] { return render(one.format); });
  }
  try {
    for (const std::string& path : FindReportFiles(failure.words)) {
      const bool is_known = std::ranges::any_of(files, [&](const File& one) { return one.output.file == path; });
      // Wrong usage kept the option from being read.
      if (!is_known && !MayBeInput(path, failure.words)) DiscardFile(path);
    }
  } catch (const std::exception&) {
    // Out of memory: the call ends with its own error.
  }
}

}  // namespace korvel::tool
