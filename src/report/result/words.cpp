// Wordings that several formats share. What is special to one stands there. Held by tests/report/formats_test.cpp.
#include "report/result/words.h"

#include <algorithm>

#include "base/one_line.h"
#include "common/result_codes.h"

namespace korvel {

const char* WordOf(Status status) {
  constexpr const char* kWords[] = {"allowed", "refused", "new"};
  return kWords[static_cast<std::size_t>(status)];
}

const char* WordOf(EditStatus status) {
  constexpr const char* kWords[] = {"allowed", "refused", "waits"};
  return kWords[static_cast<std::size_t>(status)];
}

Status VerdictOf(const Summary& summary) { return summary.refused == 0 ? Status::kAllowed : Status::kRefused; }

const char* RemarkOn(const Summary& summary) {
  if (summary.refused > 0 && summary.failing == 0) return " (all waived)";
  if (summary.compared == 0 && summary.added > 0) return " (nothing was compared: all tables are new)";
  return "";
}

std::string Counted(std::size_t number, const std::string& noun) {
  return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

std::string ToText(const Summary& summary) {
  const auto number = [](std::size_t n) { return std::to_string(n); };
  std::string told = Counted(summary.refused, "table") + " refused, " + number(summary.allowed) + " allowed; " +
                     number(summary.compared) + " compared, " + number(summary.added) + " new, " + number(summary.removed) +
                     " gone";
  if (summary.findings > 0) told += "; " + Counted(summary.findings, "finding") + ", " + number(summary.waived) + " waived";
  if (summary.files_added + summary.files_deleted + summary.files_moved > 0) {
    told += "; files: " + number(summary.files_added) + " added, " + number(summary.files_deleted) + " deleted, " +
            number(summary.files_moved) + " moved";
  }
  return told;
}

std::string TextOf(const std::string& text) { return text.empty() ? "(the checker gives no text)" : OneLine(text); }

std::string ToText(const TextRange& mark) {
  std::string file = OneLine(mark.file);
  if (!mark.begin) return file;
  return file + ":" + std::to_string(mark.begin->line) + ":" + std::to_string(mark.begin->column);
}

std::string ToText(const FileNote& note) {
  switch (note.kind) {
    case FileNote::Kind::kAdded:
      return "added: " + OneLine(note.new_file) + " (nothing to compare it with)";
    case FileNote::Kind::kDeleted:
      return "deleted: " + OneLine(note.old_file);
    case FileNote::Kind::kMoved:
      break;
  }
  return "moved: " + OneLine(note.old_file) + " -> " + OneLine(note.new_file);
}

std::string CodeNameOf(int code) {
  const char* const name = ResultCodeName(code);
  return name == nullptr ? "" : name;
}

namespace {

// Whether nothing of what the edit is about is left on the new side. What moved to the front stands behind nothing there.
bool IsRemoval(const Edit& edit) {
  const bool moves = edit.kind == EditKind::kEntryMoved || edit.kind == EditKind::kIndexMoved;
  return RemovesElement(edit) || (!moves && edit.after.empty() && !edit.before.empty());
}

}  // namespace

const Location& LeadOf(const TableResult& table, const Finding& finding) {
  const bool is_removal = finding.edits.empty() ? table.removed : IsRemoval(table.changes->edits[finding.edits.front()]);
  const bool is_old = finding.old_location && (is_removal || !finding.new_location);
  return is_old ? finding.old_location : finding.new_location;
}

std::vector<std::string> EditsOf(const TableResult& table, const Finding& finding) {
  std::vector<std::string> told;
  for (const std::size_t i : finding.edits) told.push_back(OneLine(Describe(table.changes->edits[i])));
  return told;
}

bool WasRefusedBefore(const TableResult& table) { return !table.removed && table.first != table.second; }

std::vector<std::string> AlsoOf(const FoldedFinding& folded) {
  std::vector<std::string> told;
  for (const FoldedFinding::Embedding& also : folded.also) {
    told.push_back(OneLine(also.path.empty() ? "table " + also.table->table : also.path));
  }
  return told;
}

std::size_t NumberOf(const Changes& changes, EditStatus status) {
  return static_cast<std::size_t>(std::ranges::count(changes.status, status));
}

std::string AllowedPart(const Changes& changes) {
  const std::size_t allowed = NumberOf(changes, EditStatus::kAllowed);
  const std::size_t all = changes.edits.size();
  if (allowed == 0) return "none of " + Counted(all, "change") + " may go now";
  const std::string part = std::to_string(allowed) + " of " + Counted(all, "change");
  const Verdict& together = changes.allowed_together;
  if (!together.Refused()) return part + " may go now (asked as one change: allowed)";
  return part +
         " changed nothing about the refusal (asked as one change: refused as the schema already was: " + TextOf(together.text) +
         ")";
}

std::vector<Location> LocationsOf(const Report& report, bool with_edits) {
  std::vector<Location> locations;
  const auto add = [&](const auto& placed) {
    locations.push_back(placed.old_location);
    locations.push_back(placed.new_location);
  };
  for (const TableResult& table : report.tables) {
    locations.push_back(table.declared);
    if (!table.changes) continue;
    for (const Finding& finding : table.changes->findings) {
      add(finding);
      for (const std::size_t i : finding.edits) add(table.changes->edits[i]);
    }
    if (with_edits) std::ranges::for_each(table.changes->edits, add);
  }
  return locations;
}

}  // namespace korvel
