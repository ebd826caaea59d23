// Case directories: their files, and how they are read.
//
//   FAMILY/CASE/old.xml     the old schema
//   FAMILY/CASE/new.xml     the new schema
//   FAMILY/CASE/settings    optional lines "key: value"; the keys are type (generic, list), created-as (qmx, tlv),
//                           server-version, whitelist, list-num and table
//   FAMILY/CASE/expected    every result (expected_text.h)
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "qmx/qmx_builder.h"
#include "schema/settings.h"

namespace cases {

// The table to check and its settings, as the checker takes them.
struct Settings {
  std::string table;           // default: the first table of the old schema
  int table_type = 0;          // 0 generic, 1 list; default: from the attributes of the old table
  int created_as = 1;          // 1 record format, 2 TLV; default: from the attributes of the old table, else from the old library
  std::string server_version;  // empty: field lengths are not checked
  std::string whitelist;
  int list_num = 0;  // default: from the attributes of the old table
};

struct Case {
  qmx::Metalib old_lib;
  qmx::Metalib new_lib;
  Settings settings;
};

// The same settings for the analysis. All members are set.
korvel::PartialSettings ToCheckerSettings(const Settings& settings);

// All cases as "FAMILY/CASE", sorted.
std::vector<std::string> Names();

// The directory of a case.
std::filesystem::path Folder(const std::string& name);

// The bytes of a file. Throws std::runtime_error if it cannot be read.
std::string ReadFile(const std::filesystem::path& path);

// Reads the input of a case. Throws std::runtime_error with the name of the file if one is missing or malformed.
Case Load(const std::string& name);

}  // namespace cases
