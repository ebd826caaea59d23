// Turns the elements of a schema file into calls of the builder, and refuses everything else.
//
// An element that is refused as a whole (unknown, or in the wrong place) is skipped with its content. An element with an invalid
// attribute still counts under its name, so that one mistake does not turn every reference to it into another error.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qmx/qmx_xml.h"
#include "qmx_xml/start_tag.h"
#include "qmx_xml/xml_faults.h"

namespace qmx {

class SchemaHandler {
 public:
  // Both must outlive the handler. Errors are located in the text: if it is empty, their locations mean nothing.
  SchemaHandler(std::string_view text, ErrorList& errors) : text_(text), errors_(errors) {}

  // Events of the parser; offsets are positions in the file.
  void OnStart(const char* name, const char** attributes, std::size_t offset);
  void OnEnd();
  void OnText(std::string_view piece, std::size_t offset);

  // Whether OnText would ignore the text, as most texts: the line ends and indents between elements.
  static bool IsBlank(std::string_view text);

  // The innermost open element, for messages: "element 'meta'", "a refused element", or empty if none is open.
  std::string InnermostOpen() const;

  // Whether elements nest too deep. Then there is an error, and parsing must stop: the parser keeps each open element in memory.
  bool is_too_deep() const { return is_too_deep_; }

  // Whether the library has begun: then the file is a schema, although it may have errors.
  bool HasLibrary() const { return builder_.has_value(); }

  // The number of metas so far.
  std::size_t metas() const { return metas_; }

  // Offsets of the tags of all elements that may be open: the library and the last meta and index.
  std::array<std::size_t, 3> OpenTags() const {
    return {source_map_.Find({ElementId::Kind::kMetalib}).value_or(0), meta_.offset, index_.offset};
  }

  // Resolves the elements that were read. REQUIRES: the whole file was read without a syntax error. Nullopt if the file has
  // errors.
  std::optional<Schema> Finish();

 private:
  // The meta that is being read.
  struct OpenMeta {
    std::string name;
    std::size_t offset = 0;
    std::uint32_t entries = 0;
    std::uint32_t indexes = 0;
    bool is_empty = true;  // contains neither entries nor refused elements
    bool has_primary_key = false;
    bool has_splittable_key = false;
  };

  struct OpenIndex {
    std::optional<std::string> name;
    std::size_t offset = 0;
    bool is_empty = true;
    std::vector<std::pair<std::string, bool>> columns;  // entry, descending
  };

  bool Refuses(const ElementForm* form, std::string_view name, std::size_t offset);
  void Dispatch(StartTag& tag);
  void StartMetalib(const StartTag& tag);
  void StartMeta(const StartTag& tag);
  void StartEntry(StartTag& tag);
  // Reported once, for the first element above the limit.
  void RefuseMore(const StartTag& tag, const std::string& what, std::size_t max);
  void CheckSize(StartTag& tag, std::string_view name);
  void CheckId(StartTag& tag, std::string_view name);
  void StartKey(StartTag& tag);
  void StartIndex(const StartTag& tag);
  void StartColumn(const StartTag& tag);
  void EndMeta();
  void EndIndex();
  void RefuseRepeat(std::size_t element, const std::string& what);
  std::string InMeta() const;
  void ReportRepeatedIds();
  void ReportBuildErrors(const std::vector<BuildError>& errors);

  // Offset of an attribute's value, or of the element if it has no such attribute.
  std::size_t OffsetOf(std::size_t element, std::string_view attribute) const;

  ElementId Id(ElementId::Kind kind, std::uint32_t item = 0, std::uint32_t column = 0) const {
    return {kind, metas_ - 1, item, column};
  }

  std::string_view text_;
  ErrorList& errors_;
  std::vector<const ElementForm*> open_;
  std::size_t refused_depth_ = 0;  // number of open elements, counted from the refused one
  bool is_too_deep_ = false;
  bool has_root_ = false;
  bool is_text_reported_ = false;  // since the last tag
  std::optional<MetalibBuilder> builder_;
  SourceMap source_map_;
  Protocol protocol_ = Protocol::kUnset;
  std::uint32_t metas_ = 0;
  OpenMeta meta_;
  std::vector<std::pair<std::uint64_t, std::size_t>> ids_;  // of its entries, with the offset of the element
  OpenIndex index_;
};

}  // namespace qmx
