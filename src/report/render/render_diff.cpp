// The output of `diff` as text and JSON; docs/command-line.md describes both. Tested by tests/tool/diff_test.cpp.
#include <algorithm>
#include <array>
#include <utility>

#include "base/text.h"
#include "report/render/json_stream.h"
#include "report/render/json_values.h"
#include "report/render/render.h"
#include "report/result/notes.h"
#include "report/result/text_ranges.h"
#include "report/result/words.h"

namespace korvel {
namespace {

struct Totals {
  std::size_t changed = 0;
  std::size_t same = 0;
  std::size_t added = 0;
  std::size_t removed = 0;
  std::size_t changes = 0;  // each edit once
};

Totals TotalsOf(const Listing& listing) {
  Totals totals;
  totals.changes = listing.library.size();
  for (const TableEdits& table : listing.tables) {
    totals.added += table.status == TableEdits::Status::kNew ? 1 : 0;
    totals.removed += table.status == TableEdits::Status::kRemoved ? 1 : 0;
    if (table.status == TableEdits::Status::kCompared) ++(table.HasEdits() ? totals.changed : totals.same);
    totals.changes += table.edits.size();
  }
  for (const StructureEdits& structure : listing.structures) totals.changes += structure.edits.size();
  return totals;
}

// Calls `take` with each edit.
template <class Take>
void ForEachEdit(const Listing& listing, Take take) {
  for (const Edit& edit : listing.library) take(edit);
  for (const TableEdits& table : listing.tables) std::ranges::for_each(table.edits, take);
  for (const StructureEdits& structure : listing.structures) std::ranges::for_each(structure.edits, take);
}

TextRanges TextRangesOf(const Listing& listing) {
  std::vector<Location> locations;
  for (const TableEdits& table : listing.tables) locations.push_back(table.declared);
  ForEachEdit(listing, [&](const Edit& edit) {
    locations.push_back(edit.old_location);
    locations.push_back(edit.new_location);
  });
  return TextRanges(std::move(locations));
}

const char* WordFor(const TableEdits& table) {
  if (table.status == TableEdits::Status::kNew) return "new";
  if (table.status == TableEdits::Status::kRemoved) return "removed";
  return table.HasEdits() ? "changed" : "same";
}

// --- Text ---

class DiffText {
 public:
  explicit DiffText(const Listing& listing) : listing_(listing), ranges_(TextRangesOf(listing)) {}

  std::string Text() {
    if (!listing_.library.empty()) text_ += "library: " + Counted(listing_.library.size(), "change") + "\n";
    AddEdits(listing_.library);
    for (const TableEdits& table : listing_.tables) AddTable(table);
    for (const StructureEdits& structure : listing_.structures) AddStructure(structure);
    AddTotals();
    return std::move(text_);
  }

 private:
  std::string PositionOf(const Location& location) const { return ToText(*ranges_.Find(location)); }

  // An element that was removed is listed at its old location.
  void AddEdits(const std::vector<Edit>& edits) {
    for (const Edit& edit : edits) {
      const bool is_removed = RemovesElement(edit);
      const bool has_two = edit.old_location && !is_removed;
      text_ += "  " + PositionOf(is_removed ? edit.old_location : edit.new_location) + ": " + Describe(edit);
      text_ += has_two ? " (was at " + PositionOf(edit.old_location) + ")\n" : "\n";
    }
  }

  void AddTable(const TableEdits& table) {
    text_ += PositionOf(table.declared) + ": table " + OneLine(table.table) + ": ";
    if (table.status != TableEdits::Status::kCompared) {
      text_ += std::string(WordFor(table)) + "\n";
    } else if (!table.HasEdits()) {
      text_ += "no change\n";
    } else {
      text_ +=
          (table.edits.empty() ? "changes" : Counted(table.edits.size(), "change") + (table.structures.empty() ? "" : "; more"));
      text_ += InStructures(table) + "\n";
      AddEdits(table.edits);
    }
  }

  static std::string InStructures(const TableEdits& table) {
    return table.structures.empty() ? "" : " in " + Join(table.structures, ", ", OneLine);
  }

  void AddStructure(const StructureEdits& structure) {
    text_ += "structure " + OneLine(structure.structure) + ": " + Counted(structure.edits.size(), "change") + "; embedded as ";
    bool is_first = true;
    for (const Embedding& embedding : structure.embeddings) {
      for (const std::string& path : embedding.paths) {
        text_.append(is_first ? "" : ", ").append(OneLine(path));
        is_first = false;
      }
      if (embedding.path_count > embedding.paths.size()) {
        text_ += " and " + std::to_string(embedding.path_count - embedding.paths.size()) + " more paths";
      }
    }
    text_ += "\n";
    AddEdits(structure.edits);
  }

  void AddTotals() {
    const Totals totals = TotalsOf(listing_);
    text_ += Counted(totals.changes, "change") + "; " + Counted(totals.changed, "table") + " changed, " +
             std::to_string(totals.same) + " unchanged, " + std::to_string(totals.added) + " new, " +
             std::to_string(totals.removed) + " removed\n";
  }

  const Listing& listing_;
  TextRanges ranges_;
  std::string text_;
};

// --- JSON ---

class DiffJson {
 public:
  explicit DiffJson(const Listing& listing) : listing_(listing), ranges_(TextRangesOf(listing)) {}

  // All members but the header.
  Json Document() const {
    Json json;
    json["inputs"] = {{{"role", "old"}, {"file", listing_.old_source->name}},
                      {{"role", "new"}, {"file", listing_.new_source->name}}};
    json["library"] = EditsJson(listing_.library);
    Json& tables = json["tables"] = Json::array();
    for (const TableEdits& table : listing_.tables) tables.push_back(TableJson(table));
    Json& structures = json["structures"] = Json::array();
    for (const StructureEdits& structure : listing_.structures) structures.push_back(StructureJson(structure));
    const Totals totals = TotalsOf(listing_);
    json["summary"] = {{"changes", totals.changes},
                       {"changed", totals.changed},
                       {"same", totals.same},
                       {"new", totals.added},
                       {"removed", totals.removed}};
    return json;
  }

 private:
  Json LocationJson(const Location& location) const {
    const TextRange* const range = ranges_.Find(location);
    if (range == nullptr) return nullptr;
    const bool has_line = range->begin.has_value();
    return {{"file", range->file},
            {"line", has_line ? Json(range->begin->line) : Json()},
            {"column", has_line ? Json(range->begin->column) : Json()}};
  }

  Json EditsJson(const std::vector<Edit>& edits) const {
    Json list = Json::array();
    for (const Edit& edit : edits) {
      list.push_back({{"kind", NameOf(edit.kind)},
                      {"meta", edit.meta},
                      {"item", edit.item},
                      {"text", Describe(edit)},
                      {"before", edit.before},
                      {"after", edit.after},
                      {"old_location", LocationJson(edit.old_location)},
                      {"new_location", LocationJson(edit.new_location)}});
    }
    return list;
  }

  Json TableJson(const TableEdits& table) const {
    return {{"table", table.table},
            {"status", WordFor(table)},
            {"location", LocationJson(table.declared)},
            {"changes", EditsJson(table.edits)},
            {"structures", table.structures}};
  }

  Json StructureJson(const StructureEdits& structure) const {
    Json embeddings = Json::array();
    for (const Embedding& one : structure.embeddings) {
      embeddings.push_back({{"table", one.table}, {"paths", one.paths}, {"path_count", one.path_count}});
    }
    return {{"structure", structure.structure}, {"embedded", embeddings}, {"changes", EditsJson(structure.edits)}};
  }

  const Listing& listing_;
  TextRanges ranges_;
};

// --- Projects ---

// What the files of a project have together.
class ProjectTotals {
 public:
  void Add(const FileListing& file) {
    ++files_[static_cast<std::size_t>(file.kind)];
    const Totals totals = TotalsOf(file.listing);
    changed_ += totals.changed;
    added_ += totals.added;
    removed_ += totals.removed;
  }

  std::string Text() const {
    return Counted(files_[0], "file") + " changed, " + std::to_string(files_[1]) + " added, " + std::to_string(files_[2]) +
           " deleted; " + Counted(changed_, "table") + " changed, " + std::to_string(added_) + " new, " +
           std::to_string(removed_) + " removed";
  }

 private:
  std::array<std::size_t, 3> files_ = {};  // by FileListing::Kind
  std::size_t changed_ = 0;
  std::size_t added_ = 0;
  std::size_t removed_ = 0;
};

std::string HeadOf(const FileListing& file) {
  const std::string old_name = OneLine(PathText(file.listing.old_source->name));
  const std::string new_name = OneLine(PathText(file.listing.new_source->name));
  if (file.kind == FileListing::Kind::kAdded) return new_name + ": added\n";
  if (file.kind == FileListing::Kind::kDeleted) return old_name + ": deleted\n";
  return old_name + " -> " + new_name + ":\n";
}

// The schemas of a file: an added or deleted one has only one.
Json InputsOf(const FileListing& file) {
  Json inputs = Json::array();
  if (file.kind != FileListing::Kind::kAdded) inputs.push_back({{"role", "old"}, {"file", file.listing.old_source->name}});
  if (file.kind != FileListing::Kind::kDeleted) inputs.push_back({{"role", "new"}, {"file", file.listing.new_source->name}});
  return inputs;
}

}  // namespace

std::string RenderDiffText(const Listing& listing) { return DiffText(listing).Text(); }

std::string RenderDiffJson(const Listing& listing) {
  Json json = HeaderToJson(kJsonVersion, "diff");
  json.update(DiffJson(listing).Document());
  return JsonText(json) + "\n";
}

std::string RenderProjectDiffText(const Report& report, const std::vector<FileListing>& listings) {
  std::string text;
  for (const std::string& note : NotesOf(report)) text += note + "\n";
  for (std::size_t i = 0; i < report.baselines.size(); ++i) {
    ProjectTotals totals;
    for (const FileListing& file : listings) {
      if (file.baseline != i) continue;
      text += HeadOf(file) + RenderDiffText(file.listing);
      totals.Add(file);
    }
    text += (report.baselines.size() > 1 ? "since " + OneLine(report.baselines[i].name) + ": " : "") + totals.Text() + "\n";
  }
  return text;
}

std::string RenderProjectDiffJson(const Report& report, const std::vector<FileListing>& listings) {
  Json json = HeaderToJson(kJsonVersion, "diff");
  Json& baselines = json["baselines"] = Json::array();
  for (const ReportBaseline& baseline : report.baselines) baselines.push_back(ToJson(baseline));
  Json& files = json["files"] = Json::array();
  for (const FileNote& note : report.files) files.push_back(ToJson(note));
  Json& diffs = json["diffs"] = Json::array();
  for (const FileListing& file : listings) {
    Json diff{{"baseline", report.baselines[file.baseline].name}};
    diff.update(DiffJson(file.listing).Document());
    diff["inputs"] = InputsOf(file);
    diffs.push_back(std::move(diff));
  }
  return JsonText(json) + "\n";
}

}  // namespace korvel
