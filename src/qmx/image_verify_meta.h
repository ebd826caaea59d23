// Verifies one meta of an untrusted block, and holds the state that this shares with the verification of the library.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "qmx/image_walk.h"
#include "qmx/qmx_image.h"
#include "qmx/qmx_limits.h"
#include "qmx/qmx_types.h"

namespace qmx {

// The block that is verified, what is known of it so far, and its first fault. Does not own the block.
struct VerifyState {
  // REQUIRES: the record lies in the data area.
  template <class Record>
  const Record* At(std::int64_t offset) const {
    return reinterpret_cast<const Record*>(data + offset);
  }
  std::int64_t OffsetOf(const void* record) const { return static_cast<const char*>(record) - data; }

  // The meta that begins at that offset, as errors name it: "meta 2". REQUIRES: `metas` lists it.
  std::string MetaPart(std::int64_t offset) const {
    return "meta " + std::to_string(std::ranges::lower_bound(metas, offset) - metas.begin());
  }

  // Sets the error: a field of `part` has the value `found`. Returns false. REQUIRES: `found` lies in the block; its address is
  // the offset of the error.
  template <class Number>
  bool Refuse(const std::string& part, const char* field, const Number& found, const std::string& allowed) {
    const auto offset = static_cast<std::uint64_t>(reinterpret_cast<const char*>(&found) - block);
    error = VerifyError{part + ": " + field, offset, "is " + std::to_string(found) + "; allowed: " + allowed};
    return false;
  }

  const char* block;
  std::size_t size;  // of the block, in bytes

  const char* data = nullptr;  // the data area, where all offsets count from
  std::int64_t data_size = 0;
  std::span<const std::int64_t> metas = {};  // their offsets, ascending; none overlaps the next
  MetaTable table = MetaTable();             // the same metas

  std::optional<VerifyError> error = std::nullopt;
};

// Verifies the metas of a block one after the other. Not checked here: nesting, and whether the hash table has the names.
class MetaVerifier {
 public:
  // REQUIRES: the data area, `metas` and `table` of the state are set. Keeps a reference to the state. One object verifies all
  // metas of a block, because the repetitions of long names are limited for all of them together.
  explicit MetaVerifier(VerifyState& state) : state_(state), repeats_left_(state.size * kMaxRepeatedNames) {}

  // Checks the meta in [begin, end) of the data area: its record, lists, texts, entries, keys and columns. REQUIRES: a meta
  // begins there, and its record fits.
  //
  // Returns true if the meta is valid; its name is then terminated, and its nesting level is set in the table if no entry is
  // composite. Otherwise returns false and sets the error of the state to the first fault.
  bool Check(std::int64_t begin, std::int64_t end);

 private:
  // "meta 2", and "meta 2, column 5" for an item of one of its lists.
  std::string Part() const { return state_.MetaPart(begin_); }
  std::string Part(const char* list, std::int64_t item) const;

  // REQUIRES: the list was checked.
  template <class Record>
  std::span<const Record> List(std::int64_t list, std::int32_t count) const;
  std::span<const tagQMXMetaIndex> Indexes() const;
  TextRange Texts() const { return {state_.data, texts_, end_}; }
  bool IsEntry(std::int64_t offset) const;

  // Each check returns true, or false with the error set.
  template <class Record, class Count>
  bool CheckList(const char* field, const std::int64_t& list, const char* count_field, const Count& count);
  bool CheckLists();
  bool CheckColumnLists();
  bool CheckTexts();
  bool CheckEntries();
  template <class Record>
  bool CheckMembers(const char* list, std::span<const Record> members);
  bool CheckKeys();
  bool CheckColumns();

  // Set the error and return false.
  bool RefuseText(const std::string& part, const char* field, const std::int64_t& offset);
  bool RefuseEntry(const tagQMXMetaEntry& entry, EntryWalk::Fault fault);

  VerifyState& state_;
  std::size_t repeats_left_;  // bytes of entry names that key members and columns may still repeat
  TypeSizes type_sizes_;

  const tagQMXMeta* meta_ = nullptr;  // in [begin_, end_)
  std::int64_t begin_ = 0;
  std::int64_t end_ = 0;
  std::int64_t texts_ = 0;  // where the records of the meta end and its texts begin
};

}  // namespace qmx
