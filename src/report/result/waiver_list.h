// The waivers of project files and what became of them in a check, before they have a format.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "qmx/qmx_source_map.h"

namespace korvel {

enum class WaiverState { kInUse, kUnused, kExpired, kMalformed };

struct WaiverList {
  // A finding that a waiver covers, in one table.
  struct Match {
    std::string file;
    std::string table;
    std::string path;
    std::string fingerprint;
  };

  struct Row {
    std::string project_file;
    qmx::LineColumn position;
    WaiverState state = WaiverState::kUnused;
    bool is_wide = false;
    // As in the project file; "" for a key that it does not have.
    std::string rule, table, path, change, file, entry, fingerprint, reason, until;
    std::optional<long long> days_left;  // 0 on the last day, negative afterwards; nullopt if `until` is no day
    std::string fault;                   // of a malformed waiver
    std::string suggestion;              // for it; may have several lines
    std::vector<Match> matches;          // an expired waiver would cover them
  };

  std::string project_file;  // of the call, or the first nested one
  std::vector<Row> rows;     // in the order of each file
};

}  // namespace korvel
