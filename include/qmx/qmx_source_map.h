// Where the elements of a schema library stand in the file they were read from.
//
// Kept beside the library's block, never in it: a library that came from elsewhere has no places.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace qmx {

// Names one element of a library by its position in declaration order. `meta`, `item` and `column` are 0-based and zero where
// the kind does not use them.
struct ElementId {
  enum class Kind : std::uint8_t { kMetalib, kMeta, kEntry, kPrimaryKey, kSplittableKey, kIndex, kColumn };
  Kind kind = Kind::kMetalib;
  std::uint32_t meta = 0;    // all but kMetalib
  std::uint32_t item = 0;    // the entry or index within the meta (kEntry, kIndex, kColumn)
  std::uint32_t column = 0;  // the column within the index (kColumn)
};

// Half-open range of bytes of a file.
struct Span {
  std::size_t begin = 0;
  std::size_t end = 0;
};

// A place as editors count: both from 1; columns in characters (UTF-8 code points), a tab being one.
struct LineColumn {
  std::size_t line = 1;
  std::size_t column = 1;
};

// The line and column of byte `offset` of `text`. An offset past the end is taken as the end; a byte inside a character counts as
// the character; a byte order mark at the start does not count. Lines end in LF, CR LF or CR. Linear in the offset.
LineColumn Locate(std::string_view text, std::size_t offset);

// Locates many offsets of one text in a single pass over it.
class PlaceCounter {
 public:
  // REQUIRES: the text outlives the counter.
  explicit PlaceCounter(std::string_view text) : text_(text) {}

  // As Locate. REQUIRES: no offset is smaller than the one asked before.
  LineColumn At(std::size_t offset);

 private:
  void Pass(char byte);

  std::string_view text_;
  std::size_t at_ = 0;
  LineColumn place_;
};

// The value of an attribute (between its quotes) of the element whose start tag begins at `element` of `text`; nullopt if the
// tag has no such attribute. REQUIRES: `text` was read without a syntax error. Linear in the length of the tag.
std::optional<Span> FindAttributeValue(std::string_view text, std::size_t element, std::string_view attribute);

// Maps elements to the byte offset of their start tag ('<'). Filled by the reader in file order.
class SourceMap {
 public:
  // Records the place of an element. REQUIRES: elements of one kind and parent arrive in order, each parent before its children;
  // keys at most once for each meta.
  void Add(const ElementId& id, std::size_t offset);

  // The place of an element; nullopt for one that was never added. Constant time.
  std::optional<std::size_t> Find(const ElementId& id) const;

 private:
  struct MetaPlaces {
    std::size_t meta = 0;
    std::optional<std::size_t> primary_key;
    std::optional<std::size_t> splittable_key;
    std::vector<std::size_t> entries;
    std::vector<std::vector<std::size_t>> indexes;  // the index itself, then its columns
  };

  std::optional<std::size_t> metalib_;
  std::vector<MetaPlaces> metas_;
};

}  // namespace qmx
