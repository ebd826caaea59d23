// Groups the edits of tables by the structure that they belong to. Tested by tests/tool/diff_test.cpp.
#include "report/result/listing.h"

#include <algorithm>
#include <map>
#include <utility>

#include "analysis/diff/diff.h"

namespace korvel {
namespace {

class Lister {
 public:
  Lister(const Source& old_source, const Source& new_source, const std::vector<std::string>& old_tables)
      : listing_{&old_source, &new_source, {}, {}, {}} {
    for (const std::string& table : old_tables) {
      if (new_source.HasMeta(table)) compared_.emplace(table, compared_.size());
    }
    edits_of_tables_.resize(compared_.size());
  }

  void AddCompared(const std::string& table) {
    const Source& after = *listing_.new_source;
    if (!compared_.contains(table)) {
      listing_.tables.push_back({table, TableEdits::Status::kRemoved, DeclaredAt(*listing_.old_source, table), {}, {}});
      return;
    }
    TableEdits& added = listing_.tables.emplace_back();
    added.table = table;
    added.declared = DeclaredAt(after, table);
    const Difference difference(*listing_.old_source, after, table);
    const std::vector<Edit>& edits = difference.edits();
    for (auto first = edits.begin(); first != edits.end();) {
      const auto end = std::find_if(first, edits.end(), [&](const Edit& edit) { return edit.meta != first->meta; });
      AddGroup(added, {first, end});
      first = end;
    }
  }

  void AddNew(const std::string& table) {
    listing_.tables.push_back({table, TableEdits::Status::kNew, DeclaredAt(*listing_.new_source, table), {}, {}});
  }

  // The edits of a table that other tables embed are listed with the table itself.
  Listing Take() {
    for (TableEdits& table : listing_.tables) {
      if (const auto found = compared_.find(table.table); found != compared_.end()) {
        table.edits = std::move(edits_of_tables_[found->second]);
      }
    }
    return std::move(listing_);
  }

 private:
  // The edits of one meta, or of the library.
  void AddGroup(TableEdits& table, std::vector<Edit> edits) {
    const std::string meta = edits.front().meta;
    if (edits.front().kind <= EditKind::kLibraryProtocol) {
      listing_.library = std::move(edits);
    } else if (meta == table.table) {
      edits_of_tables_[compared_.at(meta)] = std::move(edits);
    } else {
      table.structures.push_back(meta);
      if (!compared_.contains(meta)) AddStructure(table, meta, std::move(edits));
    }
  }

  void AddStructure(const TableEdits& table, const std::string& meta, std::vector<Edit> edits) {
    const auto [found, is_new] = structures_.emplace(meta, listing_.structures.size());
    if (is_new) listing_.structures.push_back({meta, {}, {}});
    StructureEdits& structure = listing_.structures[found->second];
    structure.embeddings.push_back(EmbeddingOf(table, edits.front()));
    if (is_new) structure.edits = std::move(edits);
  }

  // The paths of an edit are those of its meta, followed by the entry.
  static Embedding EmbeddingOf(const TableEdits& table, const Edit& edit) {
    const std::size_t tail = edit.kind >= EditKind::kEntryAdded ? edit.item.size() + 1 : 0;
    Embedding embedding{table.table, edit.paths, edit.path_count};
    for (std::string& path : embedding.paths) path.resize(path.size() - tail);
    return embedding;
  }

  Listing listing_;
  std::map<std::string, std::size_t> compared_;  // tables of both sides
  std::vector<std::vector<Edit>> edits_of_tables_;
  std::map<std::string, std::size_t> structures_;
};

}  // namespace

Listing ListChanges(const Source& old_source, const Source& new_source, const std::vector<std::string>& old_tables,
                    const std::vector<std::string>& added_tables) {
  Lister lister(old_source, new_source, old_tables);
  for (const std::string& table : old_tables) lister.AddCompared(table);
  for (const std::string& table : added_tables) lister.AddNew(table);
  return lister.Take();
}

}  // namespace korvel
