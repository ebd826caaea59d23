// A model in the making: the changes that forms of an edit consist of.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "schema/model.h"

namespace korvel {

// Whether a file can hold it: names and, where they are needed, ids that differ, entries in each structure, counts with what
// holds them. Linear.
bool CanBeWritten(const Model& model);

// What is to be changed and is not there is passed over: a form that loses its field that way is refused by whoever is asked.
class Draft {
 public:
  explicit Draft(Model model) : model_(std::move(model)) {}

  // The library's version is at least this.
  void RaiseVersion(std::int32_t version);

  // Null if there is no such meta or entry. The name must not be changed through it.
  MetaModel* FindMeta(const std::string& meta);
  EntryModel* Find(const std::string& meta, const std::string& entry);

  // Adds an entry at the end, unless there is one of its name.
  void Add(const std::string& meta, EntryModel entry);
  // Adds the metas that a type needs, as another model has them, so far as they are not there.
  void ImportMeta(const Model& from, const std::string& type);
  // Entries that are moved stand behind all others, in the order in which they stood.
  void MoveToEnd(const std::string& meta, const std::string& entry);
  // Keys, columns and refers follow.
  void Rename(const std::string& meta, const std::string& entry, const std::string& name);

  // The model; nullopt if no file can hold it, so far as its changed metas tell.
  std::optional<Model> Take();

 private:
  struct EditedMeta {
    std::optional<std::size_t> meta;                         // its position; none: there is no such meta
    std::unordered_map<std::string, std::size_t> positions;  // of entries; filled when the first one is looked for
    std::unordered_set<std::string> to_end;
  };

  EditedMeta& MetaFor(const std::string& name);
  MetaModel& MetaOf(const EditedMeta& touched) { return model_.metas[*touched.meta]; }

  Model model_;
  std::unordered_map<std::string, EditedMeta> touched_;
};

}  // namespace korvel
