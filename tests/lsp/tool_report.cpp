#include "tool_report.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "base/input_error.h"
#include "tool/cli/command.h"
#include "tool/io/exit.h"

namespace lsp_test {
namespace {

// Standard output or standard error of this process, in memory while the object lives.
class Captured {
 public:
  explicit Captured(int stream) : stream_(stream), kept_(::dup(stream)), memory_(::memfd_create("output", MFD_CLOEXEC)) {
    std::fflush(nullptr);
    ::dup2(memory_, stream_);
  }
  Captured(const Captured&) = delete;
  Captured& operator=(const Captured&) = delete;
  ~Captured() {
    std::fflush(nullptr);
    ::dup2(kept_, stream_);
    ::close(kept_);
    ::close(memory_);
  }

  std::string Text() const {
    std::fflush(nullptr);
    std::string text(static_cast<std::size_t>(::lseek(memory_, 0, SEEK_END)), '\0');
    const ssize_t size = ::pread(memory_, text.data(), text.size(), 0);
    return size == static_cast<ssize_t>(text.size()) ? text : "";
  }

 private:
  int stream_;
  int kept_;
  int memory_;
};

// The begin of a line, counted from 1. Lines end in LF, CR LF or CR.
std::size_t BeginOfLine(const std::string& text, int line) {
  std::size_t begin = 0;
  for (int i = 1; i < line && begin < text.size(); ++i) {
    begin = std::min(text.find_first_of("\r\n", begin), text.size());
    begin += text.compare(begin, 2, "\r\n") == 0 ? 2 : 1;
  }
  return begin;
}

// The position of a line and column of the report, which counts characters from 1. Independent of the server's own conversion.
std::string PositionText(const std::string& text, int line, int column) {
  int units = 0;
  std::size_t at = BeginOfLine(text, line);
  for (int i = 1; i < column && at < text.size(); ++i) {
    const auto lead = static_cast<unsigned char>(text[at]);
    units += lead >= 0xF0 ? 2 : 1;
    at += lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
  }
  return std::to_string(line - 1) + ":" + std::to_string(units);
}

std::string RangeText(const Json& region, const std::string& text) {
  const int line = region.at("startLine");
  const std::string begin = PositionText(text, line, region.value("startColumn", 1));
  return region.contains("endColumn") ? begin + "-" + PositionText(text, region.value("endLine", line), region["endColumn"])
                                      : begin;
}

// The report has no end of a fault.
std::string WithoutEndOfFault(const std::string& range, const std::string& rule) {
  return rule.starts_with("schema.") ? range.substr(0, range.find('-')) : range;
}

int SeverityOf(const Json& result) {
  const bool is_waived = result.contains("suppressions") && !result["suppressions"].empty();
  if (is_waived || result.at("level") == "note") return 3;
  return result["level"] == "error" ? 1 : 2;
}

std::string PlaceOf(const Json& result, const std::string& file, const std::string& text) {
  const Json no_region = Json::object();
  const Json& place = result.at("locations").at(0).at("physicalLocation");
  const bool is_here = place.at("artifactLocation").at("uri") == file && place.contains("region");
  return is_here ? RangeText(place["region"], text) : "0:0-0:0";
}

Problems Sorted(Problems problems) {
  std::ranges::sort(problems);
  return problems;
}

}  // namespace

Problems ProblemsOf(const Json& diagnostics) {
  Problems problems;
  for (const Json& one : diagnostics) {
    const auto position = [&](const char* end) {
      const Json& at = one.at("range").at(end);
      return std::to_string(at.at("line").get<int>()) + ":" + std::to_string(at.at("character").get<int>());
    };
    const std::string rule = one.at("code");
    problems.push_back(WithoutEndOfFault(position("start") + "-" + position("end"), rule) + " " +
                       std::to_string(one.at("severity").get<int>()) + " " + rule + " " +
                       one.at("data").at("fingerprint").get<std::string>() + " " + one.at("message").get<std::string>());
  }
  return Sorted(std::move(problems));
}

Problems ProblemsOfReport(const Json& sarif, const std::string& file, const std::string& text) {
  Problems problems;
  for (const Json& result : sarif.at("runs").at(0).at("results")) {
    const std::string rule = result.at("ruleId");
    problems.push_back(WithoutEndOfFault(PlaceOf(result, file, text), rule) + " " + std::to_string(SeverityOf(result)) + " " +
                       rule + " " + result.at("partialFingerprints").at("korvelcheck/v1").get<std::string>() + " " +
                       result.at("message").at("text").get<std::string>());
  }
  return Sorted(std::move(problems));
}

std::string CallProgram(const std::vector<std::string>& arguments) {
  const Captured output(STDOUT_FILENO);
  const Captured errors(STDERR_FILENO);
  try {
    korvel::tool::RunCommandLine(arguments);
  } catch (const korvel::InputError&) {
  } catch (const korvel::tool::NothingAllowed&) {
  }
  return output.Text();
}

}  // namespace lsp_test
