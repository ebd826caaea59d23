// Edits a model: the changes of which alternatives to refused edits consist. Does not run the checker.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/name_index.h"
#include "schema/model.h"

namespace korvel {

// Whether a schema file can contain the model: names and, in a TLV library, ids are unique, every structure has entries, and
// every counter is valid. Linear.
bool CanBeWritten(const Model& model);

// Operations on a meta or entry that does not exist do nothing, except for Add. Not for several threads at once.
class ModelEditor {
 public:
  explicit ModelEditor(Model model) : model_(std::move(model)) {}

  // Raises the library's version to at least `version`.
  void RaiseVersion(std::int32_t version);

  // Null if there is no such meta or entry. Valid until the next change of the model. The name must not be changed through it.
  MetaModel* FindMeta(const std::string& meta);
  EntryModel* Find(const std::string& meta, const std::string& entry);

  // Appends an entry, unless the meta has the same one. If there is no such meta, or if it has another entry of that name, Take
  // returns nullopt.
  void Add(const std::string& meta, EntryModel entry);
  // Adds the meta that a type names and those that it reaches, as `from` has them, as far as they are missing.
  void ImportMeta(const Model& from, const std::string& type);
  // Moves an entry after all others when the model is taken. Entries moved this way keep their order.
  void MoveToEnd(const std::string& meta, const std::string& entry);
  // Renames an entry, also in keys, columns and refers.
  void Rename(const std::string& meta, const std::string& entry, const std::string& name);

  // The model, which leaves the editor empty; nullopt if an entry could not be added, or if one of the metas that were accessed
  // cannot be written.
  std::optional<Model> Take();

 private:
  struct EditedMeta {
    std::optional<std::size_t> meta;  // its position; nullopt: there is no such meta
    NameIndex positions = {};         // of its entries
    std::set<std::string> to_end = {};
  };

  EditedMeta& MetaFor(const std::string& name);
  MetaModel& MetaOf(const EditedMeta& edited) { return model_.metas[*edited.meta]; }
  // Adds the position of an entry; does nothing if an entry of that name has one.
  void AddPosition(EditedMeta& edited, std::size_t position);

  Model model_;
  std::map<std::string, EditedMeta> edited_;
  bool has_failed_ = false;
};

}  // namespace korvel
