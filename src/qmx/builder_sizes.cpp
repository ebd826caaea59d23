// Sizes of structures and unions, how deep they nest, and whether they can be at all.
//
// Every meta is visited once, however often it is used, and the walk keeps its own stack: neither a wide nor a deep library can
// make it slow or overflow.
#include <algorithm>

#include "qmx/builder_state.h"
#include "qmx/quote.h"

namespace qmx {
namespace {

using Kind = ElementId::Kind;

// Most metas that a message names of a cycle; of a longer one the middle is left out.
constexpr std::size_t kMaxCycleShown = 8;

// The attribute that makes an entry large.
std::string_view SizeAttribute(const DeclaredEntry& entry) {
  if (entry.decl.count > 1) return "count";
  return entry.type == QMX_TYPE_STRING || entry.type == QMX_TYPE_BYTES ? "size" : "type";
}

class Sizer {
 public:
  Sizer(DeclaredLibrary& library, BuildErrors& errors)
      : metas_(library.metas), errors_(errors), states_(metas_.size(), State::kUntouched), depths_(metas_.size()) {}

  void Run() {
    for (std::uint32_t meta = 0; meta < metas_.size() && !errors_.IsFull(); ++meta) {
      if (states_[meta] == State::kUntouched) Visit(meta);
    }
  }

 private:
  enum class State : std::uint8_t { kUntouched, kOpen, kDone };

  struct Step {
    std::uint32_t meta;
    std::uint32_t next_entry;
  };

  void Open(std::uint32_t meta) {
    states_[meta] = State::kOpen;
    depths_[meta] = stack_.size();
    stack_.push_back({meta, 0});
  }

  void Visit(std::uint32_t root) {
    Open(root);
    while (!stack_.empty() && !errors_.IsFull()) {
      Step& step = stack_.back();
      if (step.next_entry == metas_[step.meta].entries.size()) {
        Close(step.meta);
      } else {
        Descend(step);
      }
    }
  }

  // Opens the meta of the step's next entry, or passes the entry over.
  void Descend(Step& step) {
    const std::uint32_t entry = step.next_entry++;
    const std::uint32_t inner = metas_[step.meta].entries[entry].type_meta;
    if (inner == kNone || states_[inner] == State::kDone) return;
    if (states_[inner] == State::kUntouched) return Open(inner);
    metas_[step.meta].entries[entry].type_meta = kNone;
    errors_.Add({Kind::kEntry, step.meta, entry}, "type", CycleText(inner));
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
      path += Quote(metas_[stack_[first + i].meta].name) + " -> ";
    }
    const std::string name = Quote(metas_[meta].name);
    return "structure " + name + " contains itself: " + path + name + "; allowed: structures without cycles";
  }

  void Close(std::uint32_t meta) {
    stack_.pop_back();
    states_[meta] = State::kDone;
    SumUp(meta);
  }

  // Size and levels of a meta whose composite entries all are done. After an error the meta counts as empty or, too deep, as one
  // level too deep for all above it, so that a fault is reported once, where it begins.
  void SumUp(std::uint32_t position) {
    DeclaredMeta& meta = metas_[position];
    meta.levels = 1;
    for (std::uint32_t i = 0; i < meta.entries.size(); ++i) {
      DeclaredEntry& entry = meta.entries[i];
      if (entry.type_meta != kNone) {
        entry.unit_size = metas_[entry.type_meta].unit_size;
        Deepen(meta, {Kind::kEntry, position, i}, metas_[entry.type_meta].levels);
      }
      if (!Grow(meta, entry)) {
        errors_.Add({Kind::kEntry, position, i}, SizeAttribute(entry),
                    "entry " + Quote(entry.decl.name) + " makes meta " + Quote(meta.name) +
                        " larger than can be counted; allowed: at most 18446744073709551615 bytes");
        meta.unit_size = 0;
        break;
      }
    }
  }

  void Deepen(DeclaredMeta& meta, const ElementId& where, int inner_levels) {
    if (inner_levels == kMaxNesting && meta.levels <= kMaxNesting) {
      errors_.Add(where, "type",
                  "meta " + Quote(meta.name) + " nests structures " + std::to_string(kMaxNesting + 1) +
                      " levels deep; allowed: at most " + std::to_string(kMaxNesting));
    }
    meta.levels = std::min(std::max(meta.levels, inner_levels + 1), kMaxNesting + 1);
  }

  // Adds the entry to the size of its meta; false if the size overflows.
  static bool Grow(DeclaredMeta& meta, const DeclaredEntry& entry) {
    std::uint64_t size = 0;
    if (__builtin_mul_overflow(entry.unit_size, Elements(entry), &size)) return false;
    if (meta.kind != QMX_TYPE_UNION) return !__builtin_add_overflow(meta.unit_size, size, &meta.unit_size);
    meta.unit_size = std::max(meta.unit_size, size);
    return true;
  }

  std::vector<DeclaredMeta>& metas_;
  BuildErrors& errors_;
  std::vector<State> states_;
  std::vector<std::size_t> depths_;  // of an open meta: its position on the stack
  std::vector<Step> stack_;
};

}  // namespace

void ResolveSizes(DeclaredLibrary& library, BuildErrors& errors) { Sizer(library, errors).Run(); }

}  // namespace qmx
