// Checks every step between the versions of schema files, and each version against the newest.
#pragma once

#include <vector>

#include "project/check_tables.h"
#include "project/file_versions.h"
#include "report/result/history.h"

namespace korvel {

struct HistoryCheck {
  std::vector<FileVersions> files;
  CheckOptions options;  // waivers of the project apply to every step
  bool fails_on_warnings = false;
  bool strict_waivers = false;
  // Whether a version that cannot be read is a fault of the history, which goes on without it. Otherwise the call fails.
  bool allows_faults = false;
  bool keeps_texts = false;  // for formats that show them
};

// Loads and checks the versions of each file. Uses all cores. Has only some of the versions in memory at the same time: the
// memory grows with the results, not with the size of the versions.
//
// Throws InputError with the errors of every version that cannot be loaded, unless faults are allowed; for a requested table that
// no version has; and if nothing was compared.
Histories CheckHistories(const HistoryCheck& check);

}  // namespace korvel
