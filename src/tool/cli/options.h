// The options of a call.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "analysis/findings/findings.h"
#include "project/project.h"
#include "report/render/render.h"
#include "rule_docs/rule_doc_format.h"
#include "schema/settings.h"
#include "vesk/log_category.h"

namespace korvel::tool {

struct Command;

struct Options {
  std::vector<std::string> inputs;       // paths, "-" = standard input
  std::vector<std::string> tables;       // --table; empty = all
  std::optional<std::string> dst_table;  // --dst-table; absent = as --table
  std::optional<std::string> against;    // --against: "git:REV" or a directory
  bool allow_new = false;                // --allow-new
  Settings given;
  std::optional<std::string> project_file;  // --project
  bool no_project = false;
  bool git_history = false;                 // --git
  std::string reason;                       // --reason
  std::string until;                        // --until
  std::optional<Project> project;           // that of the call, once it was read
  std::size_t max_findings = kMaxFindings;  // --max-findings
  const Format* format = Formats().data();
  bool json = false;                           // --format of commands that take kTextOrJson
  std::string word;                            // of commands that take kTakesWord
  const RuleDocFormat* rule_doc_format = &kRuleDocText;  // --format of commands that take kRuleDocOption
  bool codes = false;                          // --codes
  bool whole_file = false;                     // --file of commands that take kSuggestOptions
  std::optional<std::string> output;           // absent = standard output
  std::optional<vesk::LogSettings> log;
};

// The project of a call: the one that it names, else the nearest one, unless it wants none.
std::optional<Project> ProjectOf(const Options& options);

// The settings that a call and its project give for a table.
inline Settings GivenFor(const Options& options, const std::string& table) {
  return korvel::GivenFor(options.given, options.project, table);
}

// Throws InputError if the report or the log would replace or change one of the files that are read.
void RefuseOverlaps(const Options& options, const std::vector<std::string>& inputs);

// Throws InputError about wrong usage of a command.
[[noreturn]] void RefuseUsage(const Command& command, const std::string& what);

// Reads the arguments behind the command's name. Returns nullopt, and the text in `help`, when help is asked for.
// Throws InputError for wrong usage.
std::optional<Options> ParseOptions(const Command& command, const std::vector<std::string>& arguments, std::string& help);

}  // namespace korvel::tool
