// The case folders: what they hold and how they are read.
//
//   FAMILY/CASE/old.xml     the schema before
//   FAMILY/CASE/new.xml     the schema after
//   FAMILY/CASE/expected    the answers (case_run.h)
//   FAMILY/CASE/findings    the change taken apart (report/asked.h)
//   FAMILY/CASE/settings    optional lines "key: value"; the keys are type (generic, list), created-as (qmx, tlv),
//   server-version,
//                           whitelist, list-num and table
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "qmx/qmx_builder.h"

namespace cases {

// What is asked about the table, as the check takes it.
struct Settings {
  std::string table;           // the first table of the old schema when not given
  int table_type = 0;          // 0 generic, 1 list; from the old table's attributes when not given
  int created_as = 1;          // 1 record format, 2 TLV; from the old table's attributes, else from the old library
  std::string server_version;  // empty = field lengths are not checked
  std::string whitelist;
  int list_num = 0;  // from the old table's attributes when not given
};

struct Case {
  qmx::Metalib old_lib;
  qmx::Metalib new_lib;
  Settings settings;
};

// All cases as "FAMILY/CASE", sorted.
std::vector<std::string> Names();

// The folder of a case.
std::filesystem::path Folder(const std::string& name);

// The bytes of a file. Throws std::runtime_error when it cannot be read.
std::string ReadFile(const std::filesystem::path& path);

// Reads a case without its expected answers. Throws std::runtime_error, with the file named, when a file is missing or malformed.
Case Load(const std::string& name);

}  // namespace cases
