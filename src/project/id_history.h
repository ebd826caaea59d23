// Finds ids of TLV fields that are used again with another type, over all versions of a schema.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "report/result/history.h"
#include "schema/source.h"

namespace korvel {

// Takes the versions one by one, oldest first. Keeps no source.
class IdHistory {
 public:
  // `tables`: those whose structures matter; empty: all.
  explicit IdHistory(const std::vector<std::string>& tables) : tables_(tables) {}

  // Adds the version at position `version`. `previous` is the one that was added before; null for the first. A version that is
  // not TLV identifies its fields by name and is ignored: ids that were used before are not forgotten.
  void Add(std::size_t version, const Source& source, const Source* previous);

  // The ids that a later version used with another type after some version did not use them, in the order in which they came
  // back.
  std::vector<ReusedId> Take() { return std::move(reused_); }

 private:
  using Key = std::pair<std::string, int>;  // structure and id

  // A field under an id.
  struct Use {
    ReusedId::Use use;
    int type = 0;
    std::string structure = {};  // of a composite field
    std::uint32_t meta = 0;      // positions in the version
    std::uint32_t entry = 0;
  };

  std::map<Key, Use> UsesOf(std::size_t version, const Source& source) const;
  void Compare(const std::map<Key, Use>& uses, const Source& source);

  const std::vector<std::string>& tables_;
  std::map<Key, Use> live_;  // in the last TLV version
  std::map<Key, Use> gone_;  // with locations
  std::vector<ReusedId> reused_;
  bool was_tlv_ = false;  // the version before
};

}  // namespace korvel
