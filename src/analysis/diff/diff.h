// The difference of two libraries for one table, as single edits that can be applied in any combination.
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

// Immutable; copies share their data. Threads may use one difference at the same time.
class Difference {
 public:
  // Compares the table on both sides. Borrows the sources: the locations of edits refer to them.
  // REQUIRES: both sources have the table. n log n in what the table reaches.
  //
  // Metas match by name, and if the library has lost the name, by content (FindRenamedStructures): one edit, of which other names
  // in the types of entries are consequences. A composite entry that gets another meta is one edit, whatever the meta contains.
  // Metas that only the new side reaches are added by the edit that reaches them. Entries match by name and id, else by name,
  // else by id; in two TLV libraries id comes before name. What is left matches if it is at the same place and only a misspelled
  // name differs (PairRenamed). As few entries as possible count as moved. Consequences of an edit are no edits: a renamed field
  // stays in its keys, a removed one leaves them, and an index disappears with its last field.
  Difference(const Source& old_source, const Source& new_source, const std::string& table);

  const Model& old_model() const;
  const Model& new_model() const;
  // Edits of the library, then of each meta in the order of the new model: its kind, attributes, entries in field order, keys,
  // indexes.
  const std::vector<Edit>& edits() const;

  // The edits without which an edit cannot be made, transitively, in ascending order: an index needs its fields, a new name needs
  // the edit that frees the name. Two edits may need each other. Linear in the edges it follows.
  std::vector<std::size_t> Needs(std::size_t edit) const;

  // The old model after the chosen edits, in any combination; with all of them, the new model. Linear in the models.
  // REQUIRES: chosen.size() == edits().size().
  Model Apply(const std::vector<bool>& chosen) const;

  // The library of Apply(chosen), without the model in between; nullopt if it cannot be laid out (see korvel::Build).
  std::optional<qmx::Metalib> Build(const std::vector<bool>& chosen) const;

  // For the files of this directory.
  const DifferenceParts& parts() const { return *parts_; }

 private:
  std::shared_ptr<const DifferenceParts> parts_;  // never null
};

}  // namespace korvel
