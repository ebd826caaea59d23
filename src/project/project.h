// The project file, korvelcheck.toml: what every call about the project's schemas must know.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "qmx/qmx_source_map.h"
#include "schema/settings.h"

namespace korvel {

inline constexpr char kProjectFileName[] = "korvelcheck.toml";

// A string of the project file.
struct ProjectText {
  std::string text;
  qmx::LineColumn location;
};

// What a waiver covers.
enum class WaiverForm {
  kExact,  // what rule, table, path, change and file name: one change, as it was accepted
  kWide,   // any change that the rule refuses at an entry of a table
  kFile,   // what a change of project files hides in one file, or in the files of a directory
  kBare,   // nothing: it has only a fingerprint, as earlier versions wrote it
};

// A temporary exception for a finding: an entry of [[waivers]].
struct WaiverEntry {
  qmx::LineColumn location = {};
  WaiverForm form = WaiverForm::kExact;
  std::string rule = {};
  std::string table = {};        // kExact, kWide
  std::string path = {};         // kExact: Finding::path in that table
  std::string change = {};       // kExact: as AcceptedChange gives it
  std::string file = {};         // kExact: the schema file, a path from the project file; kFile: or a directory
  std::string fingerprint = {};  // kExact, kFile: of the finding, may be empty; kBare: of an earlier version
  std::string entry = {};        // kWide: the path in the table, "" for the table as a whole
  std::string reason = {};
  std::string until = {};  // the last day of the waiver
  std::string fault = {};  // what is wrong with it and what is allowed; empty if it is valid
};

struct TableSettings {
  qmx::LineColumn location;
  PartialSettings settings;
};

struct Project {
  std::string file;                  // as shown
  std::string directory;             // in which it lies, and where its paths start; "" = the working directory
  std::vector<ProjectText> paths;    // patterns of schema files
  std::vector<ProjectText> exclude;  // and of those among them that are none
  std::vector<ProjectText> against;  // baselines; see ResolveBaseline
  PartialSettings defaults;
  bool fails_on_warnings = false;
  std::map<std::string, TableSettings> tables;
  std::vector<WaiverEntry> waivers;
};

// Reads the project file that the call names. Throws InputError with all of its errors, one line each: "file:line:column: error:
// what; allowed".
Project ReadProject(const std::string& path);

// The same of a text.
Project ParseProject(const std::string& file, const std::string& text);

// The path of the project file in the working directory or the nearest one above it, up to the top of its repository,
// or nullopt. Throws InputError if it is on another file system than the working directory: such a file is not used unless it is
// named, and ignoring it could turn refused into allowed. See ReadFoundProject.
std::optional<std::string> FindProjectFile();

// The top of the repository that the working directory is in: the nearest directory with .git. "" outside of repositories.
std::string RepositoryTop();

// The settings given for a table: those of the call first, then the project's for the table, then the project's defaults.
// `project` may be null.
PartialSettings GivenFor(const PartialSettings& given, const Project* project, const std::string& table);

}  // namespace korvel
