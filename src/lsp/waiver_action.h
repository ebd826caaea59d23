// The quick fix that waives a finding for some time.
#pragma once

#include <optional>
#include <string>

#include "lsp/document_check.h"
#include "lsp/documents.h"
#include "lsp/json.h"

namespace korvel::lsp {

// How long a waiver lasts that is added in the editor, in days.
inline constexpr int kWaiverDays = 30;

struct WaiverAction {
  std::string title;
  std::string uri;  // of the project file
  Json edit;        // one TextEdit
};

// Adds a waiver of the issue, which has a finding, or extends one that has expired. Nothing without a project file, and unless
// the project file is valid and takes the waiver.
std::optional<WaiverAction> WaiverActionFor(const Issue& issue, const DocumentCheck& check, const Documents& documents);

}  // namespace korvel::lsp
