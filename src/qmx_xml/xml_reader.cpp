// Reads the text form of a schema library: handles the events of expat. Only this file and xml_faults.cpp use the parser.
#include <expat.h>

#include <algorithm>
#include <new>
#include <utility>

#include "base/text.h"
#include "qmx/qmx_xml.h"
#include "qmx_xml/parsed_pages.h"
#include "qmx_xml/schema_handler.h"
#include "qmx_xml/xml_faults.h"

namespace qmx {
namespace {

using korvel::Quote;

class XmlReader {
 public:
  // `text` lies in the parser's buffer.
  XmlReader(XML_Parser parser, std::string_view text) : text_(text), parser_(parser), handler_(text, errors_) {}

  ReadResult Run() {
    ReadResult result;
    result.schema = Parse(OnStart);
    result.errors = errors_.Locate(text_);
    return result;
  }

 protected:
  // A reader that only finds out whether the file has an error.
  struct WithoutLocations {};
  XmlReader(XML_Parser parser, std::string_view text, WithoutLocations)
      : text_(text), parser_(parser), errors_(1), handler_({}, errors_) {}

  // Nullopt if the file has errors.
  std::optional<Schema> Parse(XML_StartElementHandler on_start) {
    if (auto fault = FindFileFault(text_)) {
      errors_.AddSyntax(std::move(*fault));
      return std::nullopt;
    }
    return ParseXml(on_start) ? handler_.Finish() : std::nullopt;
  }

  const SchemaHandler& handler() const { return handler_; }
  bool is_stopped() const { return is_stopped_; }

  void Start(const char* name, const char** attributes, std::size_t offset) {
    handler_.OnStart(name, attributes, offset);
    if (errors_.IsFull() || handler_.is_too_deep()) Stop();
  }

  // Position of the current event; the end of the file if the parser has none.
  std::size_t Offset() const {
    const XML_Index index = XML_GetCurrentByteIndex(parser_);
    return index < 0 ? text_.size() : static_cast<std::size_t>(index);
  }

  // The bytes of the current event.
  std::size_t Length() const { return static_cast<std::size_t>(XML_GetCurrentByteCount(parser_)); }

  static XmlReader& Self(void* self) { return *static_cast<XmlReader*>(self); }

 private:
  // Returns false if parsing stopped early.
  bool ParseXml(XML_StartElementHandler on_start) {
    XML_SetUserData(parser_, this);
    XML_SetElementHandler(parser_, on_start, OnEnd);
    XML_SetCharacterDataHandler(parser_, OnText);
    XML_SetXmlDeclHandler(parser_, OnXmlDeclaration);
    XML_SetStartDoctypeDeclHandler(parser_, OnDoctype);
    // The whole file at once: expat would scan a long tag again for each piece of it. kMaxFileBytes fits its int.
    if (XML_ParseBuffer(parser_, static_cast<int>(text_.size()), XML_TRUE) == XML_STATUS_OK) return !is_stopped_;
    // Then the file is not at fault.
    if (XML_GetErrorCode(parser_) == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
    if (!is_stopped_) {
      errors_.AddSyntax(
          DescribeSyntaxError(XML_GetErrorCode(parser_), text_, Offset(), handler_.InnermostOpen(), handler_.HasLibrary()));
    }
    return false;
  }

  void Stop() {
    is_stopped_ = true;
    XML_StopParser(parser_, XML_FALSE);
  }

  static void OnStart(void* self, const char* name, const char** attributes) {
    XmlReader& reader = Self(self);
    if (!reader.is_stopped_) reader.Start(name, attributes, reader.Offset());
  }

  static void OnEnd(void* self, const char*) {
    XmlReader& reader = Self(self);
    if (reader.is_stopped_) return;
    reader.handler_.OnEnd();
    if (reader.errors_.IsFull()) reader.Stop();
  }

  static void OnText(void* self, const char* piece, int size) {
    XmlReader& reader = Self(self);
    const std::string_view text(piece, static_cast<std::size_t>(size));
    if (reader.is_stopped_ || SchemaHandler::IsBlank(text)) return;
    reader.handler_.OnText(text, reader.Offset());
    if (reader.errors_.IsFull()) reader.Stop();
  }

  static void OnXmlDeclaration(void* self, const char* version, const char* encoding, int) {
    XmlReader& reader = Self(self);
    if (version != nullptr && std::string_view(version) != "1.0") {
      reader.RefuseDeclaration("version", "XML version " + Quote(version) + "; allowed: 1.0");
    } else if (encoding != nullptr && !IsAllowedEncoding(encoding)) {
      reader.RefuseDeclaration("encoding", "encoding " + Quote(encoding) + "; allowed: UTF-8, US-ASCII");
    }
  }

  void RefuseDeclaration(std::string_view attribute, std::string what) {
    const std::size_t declaration = Offset();
    const auto value = FindAttributeValue(text_, declaration, attribute);
    errors_.Add(value ? value->begin : declaration, std::move(what));
    Stop();
  }

  static void OnDoctype(void* self, const char*, const char*, const char*, int) {
    XmlReader& reader = Self(self);
    const std::size_t begin = reader.text_.rfind("<!DOCTYPE", reader.Offset());
    reader.errors_.Add(begin == std::string_view::npos ? 0 : begin, "a document type (DTD); allowed: none");
    reader.Stop();
  }

  std::string_view text_;
  XML_Parser parser_;
  ErrorList errors_;
  SchemaHandler handler_;
  bool is_stopped_ = false;
};

// Gives the memory of the file back while it is parsed, so an error could not be located: stops at the first one.
class ReleasingReader : private XmlReader {
 public:
  ReleasingReader(XML_Parser parser, char* bytes, std::size_t size)
      : XmlReader(parser, {bytes, size}, WithoutLocations()), lines_({bytes, size}), pages_(bytes) {}

  std::optional<SchemaWithoutText> Run() {
    std::optional<Schema> schema = Parse(OnStart);
    if (!schema) return std::nullopt;
    return SchemaWithoutText{std::move(*schema), std::move(metas_)};
  }

 private:
  static void OnStart(void* self, const char* name, const char** attributes) {
    auto& reader = static_cast<ReleasingReader&>(Self(self));
    if (reader.is_stopped()) return;
    const std::size_t offset = reader.Offset();
    reader.Start(name, attributes, offset);
    if (reader.handler().metas() > reader.metas_.size()) reader.AddMeta(offset);
    if (reader.pages_.IsDue(offset)) reader.Release(offset);
  }

  void AddMeta(std::size_t offset) {
    const std::size_t end = offset + Length();
    const LineColumn begin = lines_.At(offset);
    metas_.push_back({{offset, end}, begin, lines_.At(end)});
  }

  void Release(std::size_t offset) {
    // Lines are counted before they are released. The end of a tag of a meta may have been counted.
    if (metas_.empty() || metas_.back().span.end <= offset) lines_.At(offset);
    pages_.Release(offset, handler().OpenTags());
  }

  std::vector<TagRange> metas_;
  LineCounter lines_;
  ParsedPages pages_;
};

}  // namespace

XmlBuffer::XmlBuffer(std::size_t capacity) {
  const XML_Parser parser = XML_ParserCreate("UTF-8");
  if (parser == nullptr) throw std::bad_alloc();
  parser_.reset(parser, XML_ParserFree);
  bytes_ = static_cast<char*>(XML_GetBuffer(parser, static_cast<int>(capacity)));
  if (bytes_ == nullptr) throw std::bad_alloc();
}

XmlBuffer::~XmlBuffer() = default;

ReadResult XmlBuffer::Read(std::size_t size) { return XmlReader(static_cast<XML_Parser>(parser_.get()), {bytes_, size}).Run(); }

std::optional<SchemaWithoutText> XmlBuffer::ReadAndRelease(std::size_t size) {
  return ReleasingReader(static_cast<XML_Parser>(parser_.get()), bytes_, size).Run();
}

bool MayBeXml(std::string_view beginning) { return !FindFileFault(beginning); }

ReadResult ReadXml(std::string_view text) {
  if (text.empty() || text.size() > kMaxFileBytes) return {std::nullopt, {{{}, FindFileFault(text)->text, true}}};
  XmlBuffer buffer(text.size());
  std::ranges::copy(text, buffer.data());
  return buffer.Read(text.size());
}

}  // namespace qmx
