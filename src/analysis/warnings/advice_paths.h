// The paths of edits that advice is about.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

#include "analysis/diff/edit.h"
#include "analysis/diff/meta_paths.h"
#include "schema/model.h"

namespace korvel {

// The paths of a table to its structures, as far as they begin at certain fields.
class TablePaths {
 public:
  explicit TablePaths(Model model) : model_(std::move(model)), paths_(model_) {}
  TablePaths(const TablePaths&) = delete;
  TablePaths& operator=(const TablePaths&) = delete;

  // Sets the paths of an edit. False, without a change, if there are none.
  bool AddTo(Edit& edit) const;

 private:
  Model model_;
  MetaPaths paths_;
};

// Not for several threads at once.
class AdvicePaths {
 public:
  AdvicePaths(const Source& old_source, const std::string& table) : model_(ModelOf(old_source, table)), all_(model_) {}

  // Sets the paths of an edit: all of them, or those that begin at a member of the table's keys.
  void AddTo(Edit& edit, bool only_in_keys);

 private:
  Model model_;
  TablePaths all_;
  std::optional<TablePaths> in_keys_;  // once it is needed
};

}  // namespace korvel
