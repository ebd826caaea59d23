// How a call ends.
#pragma once

namespace korvel::tool {

// Part of the interface: scripts depend on them.
enum ExitCode : int { kAllAllowed = 0, kSomeRefused = 1, kNotAsked = 2, kFault = 3 };

}  // namespace korvel::tool
