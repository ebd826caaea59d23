// The difference of two libraries for one table, as single edits that can be made one by one.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "analysis/diff/edit.h"
#include "schema/model.h"

namespace korvel {

struct DifferenceParts;

class Difference {
 public:
  // Takes the table apart on both sides. The sources outlive the difference, which borrows them for places alone.
  // REQUIRES: both have the meta. n log n in what the table reaches.
  //
  // Metas are the same if they have the same name; a composite entry that gets a meta of another name is one edit, whatever is in
  // it. Metas that only the new side reaches come along with the edit that reaches them. Entries are the same if they have the
  // same name and id, else the same name, else the same id; in two TLV libraries the id goes before the name. Of entries that
  // change places, the fewest are moved. What follows from an edit is no edit: a renamed field keeps its places in keys, a
  // removed one leaves them, and an index goes with the last of its fields.
  Difference(const Source& old_source, const Source& new_source, const std::string& table);

  const Model& old_model() const;
  const Model& new_model() const;
  // Those of the library, then those of each meta in the order of the new model: its kind, its attributes, its entries in the
  // order of the fields, its keys, its indexes.
  const std::vector<Edit>& edits() const;

  // The edits without which an edit cannot be made, transitively, in ascending order: an index needs the fields it is made of, a
  // name the edit that frees it. Two edits may need each other. Linear in what it returns.
  std::vector<std::size_t> Needs(std::size_t edit) const;

  // The old model with the chosen edits made, in whatever combination; with all of them, the new model.
  // REQUIRES: chosen.size() == edits().size(). Linear in the models.
  Model Apply(const std::vector<bool>& chosen) const;

  // As Build(Apply(chosen)), without the model in between.
  std::optional<qmx::Metalib> Build(const std::vector<bool>& chosen) const;

 private:
  std::shared_ptr<const DifferenceParts> parts_;  // copies share them; nothing changes them
};

}  // namespace korvel
