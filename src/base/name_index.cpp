// The growth of the table. Tested by tests/qmx/name_index_test.cpp.
#include "base/name_index.h"

#include <utility>

namespace korvel {

void NameIndex::Double() {
  const std::vector<Slot> old = std::exchange(slots_, std::vector<Slot>(2 * slots_.size()));
  for (const Slot& slot : old) {
    if (slot.end == 0) continue;
    std::size_t at = slot.hash & (slots_.size() - 1);
    while (slots_[at].end != 0) at = (at + 1) & (slots_.size() - 1);
    slots_[at] = slot;
  }
}

}  // namespace korvel
