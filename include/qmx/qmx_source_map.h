// Locations of the elements of a schema library in the file that they were read from.
//
// Kept separately from the library's block: a library that was not read from a schema file has no locations.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace qmx {

// Identifies one element of a library by its position in declaration order. `meta`, `item` and `column` are 0-based, and zero if
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

// A location as editors count it: both from 1; columns in characters (UTF-8 code points); a tab is one character.
struct LineColumn {
  std::size_t line = 1;
  std::size_t column = 1;
};

// Where a start tag lies: from its '<' to behind its '>'.
struct TagRange {
  Span span;
  LineColumn begin;
  LineColumn end;
};

// The line and column of byte `offset` of `text`. An offset past the end is taken as the end; a byte inside a character counts as
// the character; a byte order mark at the start does not count. Lines end in LF, CR LF or CR. Linear in the offset.
LineColumn Locate(std::string_view text, std::size_t offset);

// Locates many offsets of one text in a single pass over it.
class LineCounter {
 public:
  // REQUIRES: the text outlives the counter.
  explicit LineCounter(std::string_view text) : text_(text) {}

  // Same as Locate. REQUIRES: no offset is smaller than that of the previous call.
  LineColumn At(std::size_t offset);

 private:
  // Skips the lines that end before the offset without looking at each of their characters, if all lines end in LF.
  void PassLines(std::size_t offset);
  void Pass(char byte);

  std::string_view text_;
  std::size_t at_ = 0;
  LineColumn location_;
};

// The value of an attribute (between its quotes) of the element whose start tag begins at `element` of `text`; nullopt if the
// tag has no such attribute. REQUIRES: `text` was read without a syntax error. Linear in the length of the tag.
std::optional<Span> FindAttributeValue(std::string_view text, std::size_t element, std::string_view attribute);

// Maps elements to the byte offset of their start tag ('<'). Filled by the reader in file order; 4 bytes an element.
class SourceMap {
 public:
  // Records the location of an element. REQUIRES: elements of one kind and parent are added in order, each parent before its
  // children and after the children of the previous parent; keys at most once for each meta; offsets below 2^32.
  void Add(const ElementId& id, std::size_t offset);

  // The location of an element; nullopt for an element that was not added. Constant time.
  std::optional<std::size_t> Find(const ElementId& id) const;

 private:
  using Offset = std::uint32_t;
  static constexpr Offset kNowhere = 0xFFFFFFFF;

  // Children are in lists of their own, grouped by parent: each parent knows where its group begins.
  struct MetaOffsets {
    Offset meta = 0;
    Offset primary_key = kNowhere;
    Offset splittable_key = kNowhere;
    std::uint32_t first_entry = 0;
    std::uint32_t first_index = 0;
  };
  struct IndexOffsets {
    Offset index = 0;
    std::uint32_t first_column = 0;
  };

  std::optional<std::size_t> FindColumn(std::uint32_t index, std::uint32_t column) const;

  std::optional<std::size_t> metalib_;
  std::vector<MetaOffsets> metas_;
  std::vector<Offset> entries_;
  std::vector<IndexOffsets> indexes_;
  std::vector<Offset> columns_;
};

}  // namespace qmx
