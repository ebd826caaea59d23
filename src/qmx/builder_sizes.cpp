// Computes sizes and nesting of structures and unions, and reports cycles, overflow and excessive depth.
//
// Every meta is visited once, no matter how often it is used, and the traversal has its own stack: neither a wide nor a deep
// library can make it slow or overflow the stack.
#include <algorithm>
#include <span>

#include "base/text.h"
#include "qmx/builder_state.h"

namespace qmx {
namespace {

using korvel::Quote;

using Kind = ElementId::Kind;
using Stage = BuildErrors::Stage;

// Maximum number of metas of a cycle that a message names; the middle of a longer cycle is left out.
constexpr std::size_t kMaxCycleShown = 8;
constexpr auto kFarthest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());

// The attribute to report for an entry that is too large.
std::string_view SizeAttribute(const tagQMXMetaEntry& entry) {
  if (entry.iCount > 1) return "count";
  return entry.iType == QMX_TYPE_STRING || entry.iType == QMX_TYPE_BYTES ? "size" : "type";
}

// Adds the entry to the size of its meta; false if the size overflows.
bool Grow(tagQMXMeta& meta, const tagQMXMetaEntry& entry) {
  std::uint64_t size = 0;
  if (__builtin_mul_overflow(entry.iUnitSize, Elements(entry), &size)) return false;
  if (meta.iType != QMX_TYPE_UNION) return !__builtin_add_overflow(meta.iUnitSize, size, &meta.iUnitSize);
  meta.iUnitSize = std::max(meta.iUnitSize, size);
  return true;
}

// Offsets of the entries in a packed record, in bytes; all zero in a union.
std::vector<std::uint64_t> RecordOffsets(Library& library, std::uint32_t meta) {
  std::vector<std::uint64_t> offsets(library.EntryNum(meta));
  if (library.Meta(meta).iType == QMX_TYPE_UNION) return offsets;
  std::uint64_t offset = 0;
  for (std::uint32_t i = 0; i < offsets.size(); ++i) {
    offsets[i] = offset;
    offset += library.Entry(meta, i).iUnitSize * Elements(library.Entry(meta, i));
  }
  return offsets;
}

void PlaceKey(Library& library, const ElementId& key, std::span<tagQMXDBKeyInfo> members,
              const std::vector<std::uint64_t>& offsets) {
  const std::int64_t first_entry = library.metas[key.meta] + std::int64_t{sizeof(tagQMXMeta)};
  for (tagQMXDBKeyInfo& member : members) {
    if (member.ptrEntry == QMX_NO_REF) continue;  // already reported
    const auto entry = Position(static_cast<std::size_t>(member.ptrEntry - first_entry) / sizeof(tagQMXMetaEntry));
    member.iHOff = static_cast<std::int64_t>(offsets[entry]);
    if (offsets[entry] <= kFarthest) continue;
    library.errors.Add(Stage::kKeys, key, "entries",
                       "key member " + Quote(library.EntryName(key.meta, entry)) + " starts at byte " +
                           std::to_string(offsets[entry]) + " of the record; allowed: at most byte " + std::to_string(kFarthest));
  }
}

// Sets the offsets of key members in a record.
void PlaceKeys(Library& library, std::uint32_t position) {
  tagQMXMeta& meta = library.Meta(position);
  const auto members = [&](std::int64_t base, std::int32_t count) {
    return std::span(&library.block.At<tagQMXDBKeyInfo>(meta.ptrMeta + base), static_cast<std::size_t>(count));
  };
  if (meta.ptrPrimayKeyBase == QMX_NO_REF && meta.ptrSplitTableKeyBase == QMX_NO_REF) return;
  const std::vector<std::uint64_t> offsets = RecordOffsets(library, position);
  if (meta.ptrPrimayKeyBase != QMX_NO_REF) {
    PlaceKey(library, {Kind::kPrimaryKey, position}, members(meta.ptrPrimayKeyBase, meta.nPrimayKeyMemberNum), offsets);
  }
  if (meta.ptrSplitTableKeyBase != QMX_NO_REF) {
    const auto key = members(meta.ptrSplitTableKeyBase, meta.iSplitTableKeyMemberNum);
    PlaceKey(library, {Kind::kSplittableKey, position}, key, offsets);
    meta.stSplitTableKey = key.front();
  }
}

class Sizer {
 public:
  explicit Sizer(Library& library)
      : library_(library), states_(library.metas.size(), State::kDone), levels_(library.metas.size(), 1) {
    composites_.reserve(states_.size() + 1);
    std::size_t next = 0;
    for (std::uint32_t meta = 0; meta < states_.size(); ++meta) {
      composites_.push_back(next);
      while (next < library.composites.size() && library.composites[next].meta == meta) ++next;
      if (next > composites_.back()) states_[meta] = State::kUntouched;
    }
    composites_.push_back(next);
    depths_.resize(states_.size());
  }

  void Run() {
    for (std::uint32_t meta = 0; meta < states_.size() && !library_.errors.IsFull(); ++meta) {
      if (states_[meta] == State::kUntouched) Visit(meta);
    }
  }

 private:
  enum class State : std::uint8_t { kUntouched, kOpen, kDone };

  struct Step {
    std::uint32_t meta;
    std::size_t next;  // composite entry
  };

  void Open(std::uint32_t meta) {
    states_[meta] = State::kOpen;
    depths_[meta] = stack_.size();
    stack_.push_back({meta, composites_[meta]});
  }

  void Visit(std::uint32_t root) {
    Open(root);
    while (!stack_.empty() && !library_.errors.IsFull()) {
      Step& step = stack_.back();
      if (step.next == composites_[step.meta + 1]) {
        Close(step.meta);
      } else {
        Descend(library_.composites[step.next++]);
      }
    }
  }

  // Opens the meta of an entry, or skips the entry.
  void Descend(CompositeEntry& composite) {
    const std::uint32_t inner = composite.type_meta;
    if (inner == kNone || states_[inner] == State::kDone) return;
    if (states_[inner] == State::kUntouched) return Open(inner);
    composite.type_meta = kNone;
    library_.errors.Add(Stage::kSizes, {Kind::kEntry, composite.meta, composite.entry}, "type", CycleText(inner));
  }

  // REQUIRES: `meta` is on the stack.
  std::string CycleText(std::uint32_t meta) const {
    const std::size_t first = depths_[meta];
    const std::size_t length = stack_.size() - first;
    std::string path;
    for (std::size_t i = 0; i < length; ++i) {
      if (i == kMaxCycleShown / 2 && length > kMaxCycleShown) {
        path += "... -> ";
        i = length - kMaxCycleShown / 2;
      }
      path += Quote(library_.MetaName(stack_[first + i].meta)) + " -> ";
    }
    const std::string name = Quote(library_.MetaName(meta));
    return "structure " + name + " contains itself: " + path + name + "; allowed: structures without cycles";
  }

  void Close(std::uint32_t meta) {
    stack_.pop_back();
    states_[meta] = State::kDone;
    for (std::size_t i = composites_[meta]; i < composites_[meta + 1]; ++i) {
      const CompositeEntry& composite = library_.composites[i];
      if (composite.type_meta == kNone) continue;
      library_.Entry(meta, composite.entry).iUnitSize = library_.Meta(composite.type_meta).iUnitSize;
      Deepen({Kind::kEntry, meta, composite.entry}, levels_[composite.type_meta]);
    }
    SizeMeta(library_, meta);
  }

  // A meta that is too deep counts as one level too deep for all metas above it, so that the fault is reported once, at its
  // origin.
  void Deepen(const ElementId& where, int inner_levels) {
    int& levels = levels_[where.meta];
    if (inner_levels == kMaxNesting && levels <= kMaxNesting) {
      library_.errors.Add(Stage::kSizes, where, "type",
                          "meta " + Quote(library_.MetaName(where.meta)) + " nests structures " +
                              std::to_string(kMaxNesting + 1) + " levels deep; allowed: at most " + std::to_string(kMaxNesting));
    }
    levels = std::min(std::max(levels, inner_levels + 1), kMaxNesting + 1);
  }

  Library& library_;
  std::vector<State> states_;            // metas without composite entries are finished
  std::vector<int> levels_;              // 1 if no entry is composite
  std::vector<std::size_t> composites_;  // where the composite entries of each meta begin
  std::vector<std::size_t> depths_;      // of an open meta: its position on the stack
  std::vector<Step> stack_;
};

}  // namespace

void SizeMeta(Library& library, std::uint32_t position) {
  tagQMXMeta& meta = library.Meta(position);
  for (std::uint32_t i = 0; i < library.EntryNum(position); ++i) {
    const tagQMXMetaEntry& entry = library.Entry(position, i);
    if (Grow(meta, entry)) continue;
    library.errors.Add(Stage::kSizes, {Kind::kEntry, position, i}, SizeAttribute(entry),
                       "entry " + Quote(library.EntryName(position, i)) + " makes meta " + Quote(library.MetaName(position)) +
                           " too large; allowed: at most 18446744073709551615 bytes");
    meta.iUnitSize = 0;  // so that the fault is reported once, at its origin
    return;
  }
  if (!library.errors.IsFull()) PlaceKeys(library, position);
}

void SizeComposites(Library& library) {
  if (!library.composites.empty()) Sizer(library).Run();
}

}  // namespace qmx
