// The paths from a table to the structures that it embeds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "schema/model.h"

namespace korvel {

// Counts of paths stop here.
inline constexpr std::uint64_t kMaxPathCount = std::uint64_t{1} << 32;

class MetaPaths {
 public:
  // Borrows the model. Linear in the model times kMaxPaths, however many paths there are. REQUIRES: no meta contains itself.
  explicit MetaPaths(const Model& model);

  // The first kMaxPaths paths to a meta (by its position in the model), in field order: "orders.items[]".
  std::vector<std::string> PathsTo(std::size_t meta) const;
  // The number of all paths, up to kMaxPathCount.
  std::uint64_t CountTo(std::size_t meta) const { return counts_[meta]; }

 private:
  // An entry that embeds a meta.
  struct Step {
    std::size_t entry;
    std::size_t meta;
  };
  // A meta visited on a path.
  struct Visit {
    std::size_t before;  // the visit of the embedding meta; kNowhere for the table
    std::size_t meta;
    std::size_t entry;  // the embedding entry of that meta
  };

  void FindSteps();
  void Add(const Visit& visit);
  void Count();
  std::string PathOf(std::size_t visit) const;

  const Model& model_;
  std::vector<std::vector<Step>> steps_;  // of each meta
  std::vector<Visit> visits_;
  std::vector<std::vector<std::size_t>> visits_of_;  // of each meta
  std::vector<std::size_t> finished_;                // each meta once, after all that it embeds
  std::vector<std::uint64_t> counts_;
};

}  // namespace korvel
