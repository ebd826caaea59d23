// The difference of two libraries for one table, as single edits that can be made one by one.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "report/edit.h"
#include "report/model.h"

namespace korvel::report {

class Difference {
 public:
  // Takes the table apart on both sides. The sources outlive the difference, which borrows them for places alone.
  // REQUIRES: both have the meta. n log n in what the table reaches.
  //
  // Metas are the same if they have the same name; a composite entry that gets a meta of another name is one edit, whatever is in
  // it. Entries are the same if they have the same name, else the same id; in two TLV libraries the same id, else the same name.
  // Of entries that change places, the fewest are moved.
  // What follows from an edit is no edit: a renamed field keeps its places in keys, a removed one leaves them.
  Difference(const Source& old_source, const Source& new_source, const std::string& table);

  const Model& old_model() const { return old_model_; }
  const Model& new_model() const { return new_model_; }
  const std::vector<Edit>& edits() const { return edits_; }

  // The edits without which an edit cannot be made, transitively, in ascending order: an index needs the fields it is made of.
  const std::vector<std::size_t>& Needs(std::size_t edit) const { return needs_[edit]; }

  // The old model with the chosen edits made, in whatever combination; with all of them, the new model.
  // REQUIRES: chosen.size() == edits().size(). Linear in the models.
  Model Apply(const std::vector<bool>& chosen) const;

 private:
  Model old_model_;
  Model new_model_;
  std::vector<Edit> edits_;
  std::vector<std::vector<std::size_t>> needs_;
  // ... what Apply knows about each edit
};

}  // namespace korvel::report
