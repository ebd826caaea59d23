// The calls that a user may run next about the findings of a check.
#pragma once

#include <string>

#include "tool/commands/run_check.h"

namespace korvel::tool {

// The call that fixes what the check refuses; "" if NEW is not a file to write to.
// `names_baseline`: the options of the call name the baselines of the request.
std::string FixCommand(const CheckRequest& request, bool names_baseline);

// The call that waives a finding of the check, to complete.
std::string WaiveCommand(const CheckRequest& request, bool names_baseline, const std::string& fingerprint);

}  // namespace korvel::tool
