// Tested by tests/tool/waiver_test.cpp.
#include <filesystem>
#include <string_view>
#include <system_error>

#include "base/calendar.h"
#include "base/input_error.h"
#include "base/text.h"
#include "project/project.h"
#include "schema/file_bytes.h"
#include "tool/cli/command.h"
#include "tool/cli/option_groups.h"
#include "tool/io/exit.h"
#include "tool/io/output.h"

namespace korvel::tool {
namespace {

struct WaiveArguments {
  std::vector<std::string> fingerprints;
  std::optional<std::string> reason;
  std::optional<std::string> until;
  std::optional<std::string> project_file;
  OutputOption output;

  void AddTo(ArgumentList& arguments) {
    arguments.AddPositional("FINGERPRINT", "", fingerprints, "fingerprint of the finding, as shown in reports").is_required =
        true;
    arguments.AddText("--reason", "TEXT", reason, "reason for the waiver").is_required = true;
    arguments.AddText("--until", "DAY", until, "last day of the waiver, such as 2027-01-31").is_required = true;
    arguments.AddText("--project", "FILE", project_file,
                      "project file; default: the nearest korvelcheck.toml in this directory or above, else a new one");
    output.AddTo(arguments);
  }
};

[[noreturn]] void Refuse(const std::string& what) { throw InputError{{ToolMessage("waive: " + what)}}; }

bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == '\x7f'; }

// A TOML string on one line.
std::string QuoteForToml(std::string_view text) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string quoted = "\"";
  for (const char c : text) {
    if (IsControl(c)) {
      quoted.append("\\u00").append(1, kDigits[(c >> 4) & 0xf]).append(1, kDigits[c & 0xf]);
    } else {
      quoted.append(c == '"' || c == '\\' ? "\\" : "").append(1, c);
    }
  }
  return quoted + "\"";
}

// Appends the waiver to the text, with the line ends of the text.
std::string WithWaiver(const std::string& text, const WaiverEntry& waiver) {
  const std::size_t line_end = text.find('\n');
  const std::string end = line_end != std::string::npos && line_end > 0 && text[line_end - 1] == '\r' ? "\r\n" : "\n";
  std::string longer = text;
  if (!text.empty()) longer += (text.ends_with('\n') ? "" : end) + end;
  for (const std::string& line : {std::string("[[waivers]]"), "fingerprint = " + QuoteForToml(waiver.fingerprint),
                                  "reason = " + QuoteForToml(waiver.reason), "until = " + QuoteForToml(waiver.until)}) {
    longer += line + end;
  }
  return longer;
}

std::string TextOf(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) return "";
  return std::string(ReadAll(OpenInput(path)).View());
}

// Reads the text before it is written: the reader of project files knows what a waiver is, and whether one can follow.
void RequireWaiver(const std::string& path, const std::string& text, std::size_t number) {
  Project project;
  try {
    project = ParseProject(path, "", text);
  } catch (const InputError&) {
    Refuse(OneLine(path) + " cannot take another waiver: 'waivers' is not a list of [[waivers]], or the reason is not UTF-8");
  }
  if (project.waivers.size() != number) Refuse(OneLine(path) + " cannot take another waiver");
  if (const std::string& fault = project.waivers.back().fault; !fault.empty()) Refuse(fault);
  const WaiverEntry& waiver = project.waivers.back();
  if (const std::string today = Today(); waiver.until < today) Refuse(waiver.until + " is in the past (today is " + today + ")");
}

int Run(const WaiveArguments& arguments) {
  const std::string path = arguments.project_file.value_or(FindProjectFile().value_or(kProjectFileName));
  if (path == "-") Refuse("--project is '-'; allowed: a file");
  const std::string text = TextOf(path);
  const Project project = ParseProject(path, "", text);
  const WaiverEntry waiver{.fingerprint = arguments.fingerprints.front(),
                           .reason = arguments.reason.value_or(""),
                           .until = arguments.until.value_or("")};
  const std::string longer = WithWaiver(text, waiver);
  RequireWaiver(path, longer, project.waivers.size() + 1);
  WriteFile(path, AsProducer(longer));
  arguments.output.Write(OneLine(path) + ": waived " + waiver.fingerprint + " until " + waiver.until + "\n");
  return kAllAllowed;
}

}  // namespace

const Command kWaiveCommand{"waive", "add a temporary waiver to the project file", Declare<WaiveArguments, Run>};

}  // namespace korvel::tool
