// The analysis of a case: edits, findings, suggestions, fixes, warnings and notes.
#pragma once

#include <memory>
#include <string>

#include "analysis/findings/finding.h"
#include "case_files.h"
#include "schema/source.h"

namespace cases {

struct Analysis {
  std::unique_ptr<korvel::Source> old_source;  // named "old.xml"; `changes` refers to it
  std::unique_ptr<korvel::Source> new_source;  // named "new.xml"
  korvel::Changes changes;
  korvel::Advice advice;
  std::vector<std::vector<std::size_t>> needs;  // for each edit, the positions of the edits that it needs
};

// A table that only the new schema has is checked as the operations check it: it has one finding and no suggestion.
Analysis Analyze(const std::string& name, const Settings& settings);

}  // namespace cases
