// The findings of a check by their fingerprints, for commands that take fingerprints.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "project/waivers.h"

namespace korvel::tool {

class FindingList {
 public:
  // Borrows the report, each fingerprint once: those of tables, then those about project files.
  explicit FindingList(Report& report);

  const std::vector<std::string_view>& fingerprints() const { return fingerprints_; }

  // "  FINGERPRINT  FILE: table NAME: CHANGE" of the first findings whose fingerprint begins with `prefix`, and how many more
  // there are, below a heading; one line for no findings.
  std::vector<std::string> Lines(std::string_view prefix = "") const;

 private:
  std::vector<std::string_view> fingerprints_;
  std::vector<std::string> descriptions_;
};

}  // namespace korvel::tool
