// What may be done instead of a refused change.
#pragma once

#include "report/diff.h"
#include "report/finding.h"
#include "report/settings.h"

namespace korvel::report {

// The new schema with every allowed edit and, for each refused one, its nearest legal form (which may be to leave it out).
struct Suggestion {
  Model model;
  bool allowed = false;  // the checker was asked about it
};

// Fills in way_out, has_legal_form and fix of every finding, asking the checker about each form before it is offered.
Suggestion FindWaysOut(const Difference& difference, const std::string& table, const Settings& settings, Changes& changes);

}  // namespace korvel::report
