// Finds the step of a history that a refusal against the newest version comes from. Knows the refusals of all steps, also those
// that the report does not list.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "report/result/history.h"

namespace korvel {

class StepIndex {
 public:
  // What identifies the refusals of a step, as hashes, sorted.
  using Keys = std::vector<std::uint64_t>;
  static Keys KeysOf(const std::vector<TableResult>& tables);

  // Adds the next step, which begins at version `from`.
  void Add(std::size_t from, Keys keys);

  // Whether a step at or after version `from` refuses the table. Unless `is_waived`, only steps count in which the refusals are
  // not waived.
  bool Refuses(std::size_t from, const std::string& table, bool is_waived) const;

  // Sets NewestRefusal::step and has_cause.
  void FindStep(std::size_t from, NewestRefusal& refusal) const;

 private:
  struct Step {
    std::size_t from;
    Keys keys;

    bool Has(std::uint64_t key) const;
  };

  bool FindLast(std::size_t from, std::uint64_t key, NewestRefusal& refusal) const;

  std::vector<Step> steps_;
};

}  // namespace korvel
