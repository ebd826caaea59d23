// Writes the fixed versions of schema files in place.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "analysis/suggest/suggest.h"
#include "schema/input.h"
#include "tool/io/blocked_signals.h"
#include "tool/io/exit.h"

namespace korvel::tool {

// A new schema file and its fixed version.
struct FixedFile {
  Input input;
  std::string path;  // to the file, as the call or the project names it
  SchemaSuggestion suggestion;
};

// The line about a table without an allowed form.
std::string StaysRefused(const std::string& file, const std::string& table, const Verdict& verdict);

// Adds why tables of a file stay refused.
void AddReasons(const FixedFile& file, NothingAllowed& reasons);

// Throws InputError if the path does not lead to a regular file that can be replaced: links, standard input and files of commits
// are refused. A file that does not exist passes; reading it fails.
void RequireReplaceable(const std::string& path);

// The files that have changes. Throws InputError if one of them is an image, or is not as it was when it was read;
// std::runtime_error if one cannot be written.
std::vector<const FixedFile*> FilesToReplace(const std::vector<FixedFile>& files);

// Replaces these files, as WriteFiles does, and returns a line for each. Throws as both.
std::string WriteInPlace(const std::vector<FixedFile>& files, const BlockedSignals& signals);

}  // namespace korvel::tool
