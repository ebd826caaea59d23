// Tested by tests/tool/suggest_test.cpp and suggest_project_test.cpp.
#include "tool/commands/suggest_files.h"

#include <filesystem>
#include <system_error>

#include "base/input_error.h"
#include "base/text.h"
#include "project/git.h"
#include "schema/file_bytes.h"
#include "schema/source.h"
#include "tool/io/exit.h"
#include "tool/io/output.h"

namespace korvel::tool {
namespace {

void RequireUnmodified(const std::vector<const FixedFile*>& files) {
  for (const FixedFile* const file : files) {
    RequireReplaceable(file->path);
    const Bytes now = ReadAll(OpenRegular(file->path));
    if (now.View() == file->input.text->Bytes()) continue;
    throw InputError{
        {ToolMessage(OneLine(file->input.name) + " was modified in the meantime; nothing was written; run the command again")}};
  }
}

// Returns a line for each file. If an error leaves some of them written, prints their lines.
std::string WriteAllOf(const std::vector<const FixedFile*>& files, const BlockedSignals& signals) {
  std::vector<FileToWrite> contents;
  contents.reserve(files.size());
  for (const FixedFile* const file : files) contents.push_back({file->path, file->suggestion.text});
  std::vector<std::string> done;
  try {
    WriteFiles(
        contents, signals, [&] { RequireUnmodified(files); },
        [&](std::size_t i) { done.push_back(PathText(files[i]->input.name) + ": fixed"); });
  } catch (...) {
    for (std::string& line : done) line = ToolMessage("written before the error: " + line);
    PrintErrors(done);
    throw;
  }
  return Join(done, "", [](const std::string& line) { return line + "\n"; });
}

}  // namespace

std::string StaysRefused(const std::string& file, const std::string& table, const Verdict& verdict) {
  const std::string rule = verdict.rule.empty() ? "" : " [" + verdict.rule + "]";
  return OneLine(PathText(file) + ": error: no suggestion: table " + QuoteWhole(table) + " stays refused" + rule + " " +
                 verdict.text);
}

void AddReasons(const FixedFile& file, NothingAllowed& reasons) {
  for (const TableRefusal& one : file.suggestion.refused) {
    reasons.lines.push_back(StaysRefused(file.input.name, one.table, one.verdict));
    for (const std::string& line : one.suggestions) reasons.lines.push_back("   " + OneLine(line));
  }
  if (file.suggestion.reached_work_limit && !file.suggestion.refused.empty()) {
    reasons.lines.emplace_back("   the search reached its limit for one call; use --table to search for one table at a time");
  }
}

void RequireReplaceable(const std::string& path) {
  std::error_code ignored;
  const std::filesystem::file_status status = std::filesystem::symlink_status(path, ignored);
  std::string fault;
  if (path == "-") fault = "is standard input";
  if (ParseGitPath(path)) fault = "is a file of a commit";
  if (std::filesystem::is_symlink(status)) fault = "is a symbolic link";
  if (fault.empty() && std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
    fault = "is not a regular file";
  if (fault.empty()) return;
  throw InputError{{ToolMessage(OneLine(path) + " " + fault + "; allowed with --write: a regular file on the disk")}};
}

std::vector<const FixedFile*> FilesToReplace(const std::vector<FixedFile>& files) {
  std::vector<const FixedFile*> changed;
  for (const FixedFile& file : files) {
    if (!file.input.text)
      throw InputError{{ToolMessage(OneLine(file.input.name) + " is an image; allowed with --write: a schema file")}};
    if (file.suggestion.is_changed) changed.push_back(&file);
  }
  RequireUnmodified(changed);
  for (const FixedFile* const file : changed) RequireWritable(file->path);
  return changed;
}

std::string WriteInPlace(const std::vector<FixedFile>& files, const BlockedSignals& signals) {
  return WriteAllOf(FilesToReplace(files), signals);
}

}  // namespace korvel::tool
