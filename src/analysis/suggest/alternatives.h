// Legal forms that an edit might have instead: proposals, for the checker to judge.
#pragma once

#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "analysis/diff/diff.h"
#include "analysis/suggest/draft.h"
#include "schema/settings.h"

namespace korvel {

struct Alternative {
  bool is_made = true;                 // whether the edit itself is made; if not, something is put in its place
  std::function<void(Draft&)> change;  // what is done to the model then; may be empty
  std::string text;                    // for people: "give note version 6"
};

// Makes up forms, each with names and ids of its own. The difference outlives it.
class AlternativeMaker {
 public:
  AlternativeMaker(const Difference& difference, const Settings& settings);

  // Those of one edit, the nearest first; none for an edit that can only be made or left out.
  std::vector<Alternative> AlternativesOf(const Edit& edit);

 private:
  // What is taken already in a meta, on both sides together.
  struct Taken {
    std::unordered_set<std::string> names;
    std::unordered_set<std::int32_t> old_ids;
    std::int32_t largest_id = -1;
  };
  // A field that is put beside a kept one.
  struct ReplacementField {
    EntryModel entry;
    std::int32_t kept_version = 1;  // of the kept one, whose new version was meant for this one
    bool can_be = false;
  };

  std::vector<Alternative> OfAdded(const Edit& edit);
  std::vector<Alternative> OfChanged(const Edit& edit);
  std::vector<Alternative> OfAttribute(const Edit& edit) const;

  Taken& TakenIn(const std::string& meta);
  std::string UniqueName(const std::string& meta, const std::string& wish);
  std::int32_t NextId(const std::string& meta);
  const ReplacementField& ReplacementFieldOf(const Edit& edit);
  // The entry that an edit is about; null on a side that has it not.
  const EntryModel* EntryAt(const Model& model, const Location& place) const;

  const Difference& difference_;
  const Settings& settings_;
  std::unordered_map<std::string, const MetaModel*> old_metas_;
  std::unordered_map<std::string, const MetaModel*> new_metas_;
  std::unordered_map<std::uint32_t, const MetaModel*> old_positions_;
  std::unordered_map<std::uint32_t, const MetaModel*> new_positions_;
  std::unordered_map<std::string, Taken> taken_;
  std::unordered_map<std::string, ReplacementField> beside_;
  std::int64_t version_;  // that fields get which are new
};

}  // namespace korvel
