// The ways from a table to the metas that it embeds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "schema/model.h"

namespace korvel {

// So many ways, or more.
inline constexpr std::uint64_t kMaxShownPaths = std::uint64_t{1} << 32;

class MetaPaths {
 public:
  // Linear in the model times kMaxPaths, however many ways there are. REQUIRES: the model outlives this; no meta contains itself.
  explicit MetaPaths(const Model& model);

  // The first kMaxPaths ways to a meta, in the order of the fields: "orders.items[]".
  std::vector<std::string> PathsTo(std::size_t meta) const;
  // The number of all ways, up to kMaxShownPaths.
  std::uint64_t CountTo(std::size_t meta) const { return counts_[meta]; }

 private:
  // An entry that embeds a meta.
  struct Step {
    std::size_t entry;
    std::size_t meta;
  };
  // A meta met on a way.
  struct Visit {
    std::size_t before;  // the visit of the meta that embeds it; kNowhere for the table
    std::size_t meta;
    std::size_t entry;  // of the meta before
  };

  void FindSteps();
  void Meet(const Visit& visit);
  void Count();
  std::string PathOf(std::size_t visit) const;

  const Model& model_;
  std::vector<std::vector<Step>> steps_;  // of each meta
  std::vector<Visit> visits_;
  std::vector<std::vector<std::size_t>> met_;  // visits of each meta
  std::vector<std::size_t> finished_;          // each meta once, behind all that it embeds
  std::vector<std::uint64_t> counts_;
};

}  // namespace korvel
