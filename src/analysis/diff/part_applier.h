// Applies all edits of a difference except a few, without visiting the fields that these do not concern: a change of one field of
// 10,000 takes as long as one of ten.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/diff/diff.h"
#include "analysis/diff/meta_surroundings.h"

namespace korvel {

// Borrows the difference. Not for several threads at once. REQUIRES: the entries of each new meta have different names, and
// different ids in a TLV library, as in every schema file.
class PartApplier {
 public:
  explicit PartApplier(const Difference& difference);

  // All edits but `left_out`. The part contains every entry that they change, the entries of the edits `touched`, what both refer
  // to, and the neighbours of all of them: what changes lies next to the same elements as in the whole meta. nullopt if the edits
  // belong to more than one meta or to the library, if an entry is moved back, or if structures are renamed: then use
  // Difference::Apply. Linear in the part, in keys and indexes; the first call for a meta is linear in it.
  std::optional<AppliedPart> ApplyAllBut(const std::vector<std::size_t>& left_out, const std::vector<std::size_t>& touched);

  // Whether the new meta has an entry of that name, or with that id, outside of the part. REQUIRES: the part is of this object.
  bool HasNameOutside(const AppliedPart& part, const std::string& name) const;
  bool HasIdOutside(const AppliedPart& part, std::int32_t id) const;

  // The edits that need any of these, transitively, without them. Linear in the edges it follows.
  std::vector<std::size_t> DependentsOf(const std::vector<std::size_t>& edits) const;

 private:
  std::optional<std::size_t> NodeOf(const std::vector<std::size_t>& left_out, const std::vector<std::size_t>& touched) const;
  MetaSurroundings& SurroundingsOf(std::size_t node);
  void AddReached(AppliedPart& part) const;

  const Difference& difference_;
  std::map<std::string_view, std::size_t> old_only_;                            // nodes that only the old side has
  std::vector<std::vector<std::size_t>> dependents_;                            // of each edit: the edits that need it directly
  std::map<std::string_view, std::unique_ptr<MetaSurroundings>> surroundings_;  // by the name of the meta
};

}  // namespace korvel
