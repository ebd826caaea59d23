// What a difference knows beside its edits; seen by the files that make it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "analysis/diff/diff.h"
#include "analysis/diff/meta_pair.h"

namespace korvel {

// A name of a meta and what either side reaches under it.
struct MetaNode {
  std::string_view name;
  const MetaModel* old_meta = nullptr;  // null: only the new side
  const MetaModel* new_meta = nullptr;  // null: only the old side
  std::optional<MetaPair> pair = {};    // of metas that both sides have and that differ
  std::size_t first_edit = 0;           // its edits are [first_edit, end_edit)
  std::size_t end_edit = 0;
};

struct DifferenceParts {
  Model old_model;
  Model new_model;
  std::vector<MetaNode> nodes;  // those of the new model in its order, then those of the old one alone; the table is the first
  std::vector<Edit> edits;
  std::vector<Slot> slots;                      // of each edit: the entry or index in its pair; 0 for the others
  std::vector<std::vector<std::size_t>> needs;  // of each edit: what it needs directly
};

// Adds the edits of the library and of all nodes.
void ListEdits(const Source& old_source, const Source& new_source, DifferenceParts& parts);

// Finds what each edit needs directly.
void FindNeeds(DifferenceParts& parts);

// What an edit needs, directly and through others, ascending.
std::vector<std::size_t> AllNeeds(const DifferenceParts& parts, std::size_t edit);

}  // namespace korvel
