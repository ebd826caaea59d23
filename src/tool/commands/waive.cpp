// waive: adds a waiver to the project file. Held by tests/tool/waiver_test.cpp.
#include <filesystem>
#include <string_view>
#include <system_error>

#include "base/calendar.h"
#include "base/input_error.h"
#include "base/one_line.h"
#include "base/quote.h"
#include "project/project.h"
#include "schema/file_bytes.h"
#include "tool/cli/command.h"
#include "tool/io/output.h"

namespace korvel::tool {
namespace {

[[noreturn]] void Refuse(const std::string& what) { throw InputError{{ToolMessage("waive: " + what)}}; }

bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == '\x7f'; }

// A text of TOML between quotes, on one line.
std::string Quoted(std::string_view text) {
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

// The text with the waiver behind it, in lines that end as its own do.
std::string WithWaiver(const std::string& text, const WaiverEntry& waiver) {
  const std::size_t line_end = text.find('\n');
  const std::string end = line_end != std::string::npos && line_end > 0 && text[line_end - 1] == '\r' ? "\r\n" : "\n";
  std::string longer = text;
  if (!text.empty()) longer += (text.ends_with('\n') ? "" : end) + end;
  for (const std::string& line : {std::string("[[waivers]]"), "fingerprint = " + Quoted(waiver.fingerprint),
                                  "reason = " + Quoted(waiver.reason), "until = " + Quoted(waiver.until)}) {
    longer += line + end;
  }
  return longer;
}

std::string TextOf(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) return "";
  return std::string(ReadAll(OpenInput(path)).View());
}

// Reads what would be written: the reader of project files knows what a waiver is, and whether one can stand at the end.
void RequireWaiver(const std::string& path, const std::string& text, std::size_t number) {
  Project project;
  try {
    project = ParseProject(path, "", text);
  } catch (const InputError&) {
    Refuse(OneLine(path) +
           " cannot have a waiver at its end: 'waivers' is no list of [[waivers]] there, or the reason is not UTF-8");
  }
  if (project.waivers.size() != number) Refuse(OneLine(path) + " cannot have a waiver at its end");
  if (const std::string& fault = project.waivers.back().fault; !fault.empty()) Refuse(fault);
  const WaiverEntry& waiver = project.waivers.back();
  if (const std::string today = Today(); waiver.until < today) Refuse(waiver.until + " is over; today is " + today);
}

std::string Make(const Options& options) {
  const std::string path = options.project_file.value_or(FindProjectFile().value_or(kProjectFileName));
  if (path == "-") Refuse("--project is '-'; allowed: a file");
  const std::string text = TextOf(path);
  const Project project = ParseProject(path, "", text);
  const WaiverEntry waiver{{}, options.word, "", "", "", options.reason, options.until, ""};
  const std::string longer = WithWaiver(text, waiver);
  RequireWaiver(path, longer, project.waivers.size() + 1);
  WriteFile(path, longer);
  return OneLine(path) + ": waived " + waiver.fingerprint + " until " + waiver.until + "\n";
}

}  // namespace

const Command kWaiveCommand{
    .name = "waive",
    .summary = "let a finding pass until a day, by an entry in the project file",
    .first = {"FINGERPRINT", "the finding's, as reports show it"},
    .second = kNoInput,
    .options = kTakesWord | kWaiverOptions,
    .make = Make,
};

}  // namespace korvel::tool
