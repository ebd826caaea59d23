// Proposes alternatives to refused edits: other ways to make the same change. Proposals only: the checker decides whether one is
// allowed (suggestions.cpp runs it).
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "analysis/diff/diff.h"
#include "analysis/suggest/model_editor.h"
#include "analysis/suggest/unused_names.h"
#include "schema/reserved_fields.h"
#include "schema/settings.h"

namespace korvel {

// What to do instead of an edit. Copies share nothing; it must not outlive the Difference that its AlternativeMaker borrows.
struct Alternative {
  bool makes_edit = true;                    // whether the edit itself is made, too; if not, `change` replaces it
  std::function<void(ModelEditor&)> change;  // applied after the edits; may be empty
  std::string text;                          // for people, one line: "set the version of note to 6"; empty: the edit as it is
  std::vector<std::size_t> left_out = {};    // further edits that are not made: all that change the same field
};

// Proposes alternatives for the edits of one difference. Names and ids that it proposes differ from those of both schemas, from
// the reserved ones and from each other, so alternatives of several edits can be combined.
//
// Borrows its arguments. Not for several threads at once. Construction is linear in the models; the first
// proposal for a structure is n log n in its fields, every other one logarithmic. May throw std::bad_alloc.
class AlternativeMaker {
 public:
  AlternativeMaker(const Difference& difference, const Settings& settings, const ReservedFields* reserved = nullptr);
  AlternativeMaker(const AlternativeMaker&) = delete;
  AlternativeMaker& operator=(const AlternativeMaker&) = delete;

  // The alternatives to an edit of the difference, those that change least first. Empty for kinds of edits that can only be made
  // or left out. A repeated call for an edit may propose another name or id.
  std::vector<Alternative> AlternativesOf(const Edit& edit);

 private:
  // A new field that takes the new values, while the old field is kept.
  struct ReplacementField {
    EntryModel entry;
    std::optional<EntryModel> counter;  // of the new field, if it needs one: the old counter counts the old field
    bool is_possible = false;
  };

  std::vector<Alternative> OfAdded(const Edit& edit);
  std::vector<Alternative> OfChanged(const Edit& edit);
  std::vector<Alternative> OfAttribute(const Edit& edit) const;

  const ReplacementField& ReplacementFieldOf(const Edit& edit);
  // Whether the primary key of the table, which has the old field of the edit, is as before if this field is kept: nothing else
  // changes it.
  bool KeepsKey(const Edit& edit) const;
  // A new field that counts the elements of a new one, like the field `refer` counts others. nullopt if the new schema has no
  // field `refer`, or if that is a new field itself.
  std::optional<EntryModel> CounterLike(const std::string& meta, const std::string& refer);
  // The entry at a location; null if the location is not an entry of the model.
  const EntryModel* EntryAt(const Model& model, const Location& location) const;

  const Difference& difference_;
  const Settings& settings_;
  MetasByName old_metas_;
  MetasByName new_metas_;
  UnusedNames names_;  // reads old_metas_ and new_metas_
  std::map<std::uint32_t, const MetaModel*> old_positions_;
  std::map<std::uint32_t, const MetaModel*> new_positions_;
  std::map<std::pair<std::string, std::string>, std::vector<std::size_t>> edits_of_;  // of old fields, by meta and name
  std::set<std::pair<std::string, std::string>> added_;                               // new fields, likewise
  std::set<std::string> changed_keys_;                                                // metas with an edit of the primary key
  std::map<std::string, ReplacementField> replacements_;                              // by meta and item
  std::int64_t version_;  // of new fields: above the old library's version
};

}  // namespace korvel
