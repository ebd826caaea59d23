// Verifies an untrusted block in one pass: its header, the list and the nesting of its metas, and the hash table. Each meta is
// verified in image_verify_meta.cpp. Accepts what the builder produces. Tested by tests/qmx/image_verify_test.cpp.
#include <algorithm>
#include <cstring>
#include <span>
#include <vector>

#include "qmx/image_verify_meta.h"
#include "qmx/meta_slots.h"
#include "qmx/qmx_image.h"

namespace qmx {
namespace {

constexpr std::size_t kBlockHeaderSize = offsetof(tagQMXMetaLib, data);

// Verifies the parts in order and stops at the first fault. Each check is `condition || Refuse(...)`, which is false.
class Verifier {
 public:
  Verifier(const void* block, std::size_t size, const Limits& limits)
      : state_{static_cast<const char*>(block), size}, max_depth_(std::min(limits.max_depth, kMaxNesting)) {}

  std::optional<VerifyError> Run() {
    if (CheckHeader() && CheckList() && CheckMetas() && CheckNesting() && CheckSlots()) return std::nullopt;
    return std::move(state_.error);
  }

 private:
  bool CheckHeader() {
    if (state_.size < kBlockHeaderSize || reinterpret_cast<std::uintptr_t>(state_.block) % 8 != 0) {
      state_.error = {"block", 0,
                      "has " + std::to_string(state_.size) + " bytes; allowed: at least " + std::to_string(kBlockHeaderSize) +
                          ", at an address that is a multiple of 8"};
      return false;
    }
    library_ = reinterpret_cast<const tagQMXMetaLib*>(state_.block);
    state_.data = state_.block + kBlockHeaderSize;
    state_.data_size = static_cast<std::int64_t>(state_.size - kBlockHeaderSize);
    if (library_->iDataSize != state_.data_size || state_.data_size % 8 != 0) {
      return state_.Refuse(
          "library", "iDataSize", library_->iDataSize,
          "the number of bytes after the header, here " + std::to_string(state_.data_size) + ", and a multiple of 8");
    }
    const std::int64_t& name = library_->ptrName;
    const bool ends = name >= 0 && name < state_.data_size &&
                      std::memchr(state_.data + name, 0, static_cast<std::size_t>(state_.data_size - name)) != nullptr;
    return ends || state_.Refuse("library", "ptrName", name, "a terminated text");
  }

  // A list of the library may be anywhere: only the order of its items matters, which is checked with them.
  bool CheckLibraryList(const char* field, const std::int64_t& list, std::int64_t count, std::int64_t record_size) {
    if (count == 0) return list == QMX_NO_REF || state_.Refuse("library", field, list, "-1 for an empty list");
    const bool fits = list >= 0 && list % 8 == 0 && list <= state_.data_size && count <= (state_.data_size - list) / record_size;
    return fits || state_.Refuse("library", field, list, "a multiple of 8 with room for " + std::to_string(count) + " records");
  }

  bool CheckList() {
    const std::int32_t& count = library_->iMetaNum;
    if (count < 0 || static_cast<std::size_t>(count) > kMaxMetas) {
      return state_.Refuse("library", "iMetaNum", count, "0 to " + std::to_string(kMaxMetas));
    }
    if (!CheckLibraryList("ptrMetas", library_->ptrMetas, count, sizeof(std::int64_t))) return false;
    state_.metas = {state_.At<std::int64_t>(count == 0 ? 0 : library_->ptrMetas), static_cast<std::size_t>(count)};
    state_.table = MetaTable(state_.data_size);
    std::int64_t next = 0;
    for (const std::int64_t& meta : state_.metas) {
      const bool fits = meta >= next && meta % 8 == 0 && meta <= state_.data_size - kMetaSize;
      if (!fits) {
        return state_.Refuse("library", "list of metas", meta,
                             "a multiple of 8, at least " + std::to_string(next) + ", with room for a meta");
      }
      state_.table.Add(meta);
      next = meta + kMetaSize;
    }
    return true;
  }

  // The end of a meta: the next meta; for the last one, the first part of the library after it.
  std::int64_t EndOf(std::size_t position) const {
    if (position + 1 < state_.metas.size()) return state_.metas[position + 1];
    std::int64_t end = state_.data_size;
    for (const std::int64_t part : {library_->ptrMetas, library_->ptrMetaSlots, library_->ptrName}) {
      if (part >= state_.metas[position] + kMetaSize) end = std::min(end, part);
    }
    return end;
  }

  bool CheckMetas() {
    MetaVerifier verifier(state_);
    names_.reserve(state_.metas.size());
    for (std::size_t i = 0; i < state_.metas.size(); ++i) {
      const std::int64_t begin = state_.metas[i];
      if (!verifier.Check(begin, EndOf(i))) return false;
      names_.emplace_back(state_.data + state_.At<tagQMXMeta>(begin)->ptrName);
    }
    return true;
  }

  // The table must equal the one that the builder makes of the names: then every name is found in few steps.
  bool CheckSlots() {
    const std::int32_t& count = library_->iMetaSlotNum;
    const std::size_t allowed = MetaSlotNum(names_.size());
    if (count < 0 || static_cast<std::size_t>(count) != allowed) {
      return state_.Refuse("library", "iMetaSlotNum", count, std::to_string(allowed));
    }
    if (!CheckLibraryList("ptrMetaSlots", library_->ptrMetaSlots, count, sizeof(tagQMXMetaSlot))) return false;
    MetaSlots made{{}, library_->iMetaSlotSeed};
    if (!FillMetaSlots(made, names_, kMaxProbes)) {
      return state_.Refuse("library", "iMetaSlotSeed", library_->iMetaSlotSeed,
                           "a seed under which every name is found in few steps");
    }
    for (std::size_t i = 0; i < allowed; ++i) {
      const tagQMXMetaSlot& slot = state_.At<tagQMXMetaSlot>(library_->ptrMetaSlots)[i];
      if (slot.iHash == made.slots[i].iHash && slot.iMeta == made.slots[i].iMeta) continue;
      const std::string part = "slot " + std::to_string(i);
      if (slot.iHash != made.slots[i].iHash) return state_.Refuse(part, "iHash", slot.iHash, std::to_string(made.slots[i].iHash));
      return state_.Refuse(part, "iMeta", slot.iMeta, std::to_string(made.slots[i].iMeta));
    }
    return true;
  }

  bool CheckNesting() {
    for (const std::int64_t meta : state_.metas) {
      if (state_.table.Levels(meta) == MetaTable::kUnknown && !FindLevels(meta, 1)) return false;
    }
    return true;
  }

  // Visits each meta once. `depth` is the level of its entries, at most max_depth_.
  bool FindLevels(std::int64_t offset, int depth) {
    state_.table.Levels(offset) = MetaTable::kOpen;
    int inner = 0;
    const tagQMXMeta& meta = *state_.At<tagQMXMeta>(offset);
    const std::span entries(state_.At<tagQMXMetaEntry>(offset + kMetaSize), static_cast<std::size_t>(meta.iEntriesNum));
    for (const tagQMXMetaEntry& entry : entries) {
      if (entry.ptrTypeMeta == QMX_NO_REF) continue;
      const std::uint8_t& levels = state_.table.Levels(entry.ptrTypeMeta);
      const auto refuse = [&](const std::string& allowed) {
        return state_.Refuse(state_.MetaPart(offset) + ", entry " + std::to_string(&entry - entries.data()), "ptrTypeMeta",
                             entry.ptrTypeMeta, allowed);
      };
      if (levels == MetaTable::kOpen) return refuse("structures that do not contain themselves");
      if (levels == MetaTable::kUnknown && depth < max_depth_ && !FindLevels(entry.ptrTypeMeta, depth + 1)) return false;
      if (levels == MetaTable::kUnknown || levels >= max_depth_) {
        return refuse("structures nested up to " + std::to_string(max_depth_) + " levels deep");
      }
      inner = std::max<int>(inner, levels);
    }
    state_.table.Levels(offset) = static_cast<std::uint8_t>(inner + 1);
    return true;
  }

  VerifyState state_;
  int max_depth_;
  const tagQMXMetaLib* library_ = nullptr;
  std::vector<std::string_view> names_;  // names of the metas
};

}  // namespace

std::optional<VerifyError> Verify(const void* block, std::size_t size, const Limits& limits) {
  return Verifier(block, size, limits).Run();
}

}  // namespace qmx
