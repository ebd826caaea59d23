// The settings of a check.
#pragma once

#include <cstddef>

#include "base/limits.h"
#include "korvelcheck/korvelcheck.h"
#include "project/project.h"

namespace korvel::capi {

struct CheckSettings {
  Project project = {};  // of a project file without a file: what applies to all tables and to single ones
  std::size_t max_findings = kMaxFindings;
};

}  // namespace korvel::capi

struct kc_settings {
  korvel::capi::CheckSettings values;
};
