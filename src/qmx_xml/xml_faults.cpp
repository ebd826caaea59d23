// Texts of errors of files that are not well-formed XML, and the list of errors of a file by line and column.
#include "qmx_xml/xml_faults.h"

#include <expat.h>

#include <algorithm>

#include "base/text.h"
#include "qmx/qmx_xml.h"

namespace qmx {
namespace {

using korvel::Quote;
using korvel::Utf8Length;

constexpr std::string_view kXmlBlanks = " \t\r\n";
constexpr char kZeroByte[] = "a zero byte; allowed: text in UTF-8";

struct SyntaxText {
  int code;
  const char* text;
};

constexpr SyntaxText kSyntaxTexts[] = {
    {XML_ERROR_UNCLOSED_TOKEN, "the file ends inside a tag, comment or instruction; allowed: a complete one"},
    {XML_ERROR_PARTIAL_CHAR, "the file ends inside a character; allowed: complete UTF-8"},
    {XML_ERROR_TAG_MISMATCH, "the end tag does not match its start tag; allowed: the end tag of the innermost open element"},
    {XML_ERROR_DUPLICATE_ATTRIBUTE, "duplicate attribute; allowed: each attribute once"},
    {XML_ERROR_JUNK_AFTER_DOC_ELEMENT, "content after the outermost element; allowed: comments"},
    {XML_ERROR_BAD_CHAR_REF, "reference to an invalid character; allowed: characters of XML 1.0"},
    {XML_ERROR_UNCLOSED_CDATA_SECTION, "the file ends inside a CDATA section; allowed: a complete one"},
    {XML_ERROR_MISPLACED_XML_PI, "an XML declaration that is not at the start; allowed: as the first bytes of the file"},
    {XML_ERROR_XML_DECL, "malformed XML declaration; allowed: <?xml version=\"1.0\" encoding=\"UTF-8\"?>"},
    {XML_ERROR_INVALID_TOKEN, "not well-formed XML; allowed: XML 1.0 in UTF-8"},
    {XML_ERROR_SYNTAX, "not well-formed XML; allowed: XML 1.0 in UTF-8"},
};

std::string MissingEnd(std::string_view open_element) {
  if (open_element.empty()) return "no element; allowed: exactly one 'metalib'";
  return "the file ends inside " + std::string(open_element) + "; allowed: elements with an end tag";
}

// For a reference inside a value the parser reports the location of the tag: find the first reference to an unknown entity.
FileFault UndefinedEntity(std::string_view text, std::size_t offset, bool is_schema) {
  constexpr std::string_view kKnown[] = {"&#", "&lt;", "&gt;", "&amp;", "&apos;", "&quot;"};
  const auto is_known = [&](std::size_t at) {
    return std::ranges::any_of(kKnown, [&](std::string_view known) { return text.substr(at).starts_with(known); });
  };
  std::size_t at = text.find('&', offset);
  while (at != std::string_view::npos && is_known(at)) at = text.find('&', at + 1);
  if (at == std::string_view::npos) at = offset;
  const std::size_t end = std::min(text.find(';', at), text.size());
  return {at, "undefined entity" + (is_schema ? " " + Quote(text.substr(at, end + 1 - at)) : "") +
                  "; allowed: &lt; &gt; &amp; &apos; &quot; and character references"};
}

// "<<<<<<< HEAD", at the start of a line.
bool IsMergeMark(std::string_view text, std::size_t offset) {
  const std::size_t before = text.rfind('\n', offset);
  return text.substr(before == std::string_view::npos ? 0 : before + 1).starts_with("<<<<<<<");
}

// Whether the tag at an offset, or around it, is that of a library.
bool IsInLibraryTag(std::string_view text, std::size_t offset) {
  const std::size_t tag = text.rfind('<', offset);
  return tag != std::string_view::npos && text.substr(tag).starts_with("<metalib");
}

std::string HexByte(char byte) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  const auto value = static_cast<unsigned char>(byte);
  return {'0', 'x', kDigits[value >> 4], kDigits[value & 15]};
}

// The position of the first byte that is not part of a blank, comment or instruction. One that is not complete ends with the
// text.
std::size_t EndOfProlog(std::string_view text, std::size_t begin) {
  for (std::size_t at = begin;;) {
    at = std::min(text.find_first_not_of(kXmlBlanks, at), text.size());
    const std::string_view rest = text.substr(at);
    const bool is_comment = rest.starts_with("<!--");
    if (at > kMaxPrologBytes || (!is_comment && !rest.starts_with("<?"))) return at;
    const std::string_view end = is_comment ? "-->" : "?>";
    const std::size_t found = rest.find(end, is_comment ? 4 : 2);
    if (found == std::string_view::npos) return text.size();
    at += found + end.size();
  }
}

// How files begin that are given by mistake. Only the kind is shown: such a file may contain secrets.
struct FileKind {
  std::string_view beginning;
  const char* name;
};

constexpr FileKind kFileKinds[] = {
    {"{", "JSON"},
    {"#!", "a script"},
    {"-----BEGIN ", "PEM data"},
    {"\x7F"
     "ELF",
     "an ELF file"},
    {"\x1F\x8B", "gzip data"},
    {"PK\x03\x04", "a zip archive"},
    {"%PDF-", "a PDF document"},
};

std::string NotXml(std::string_view text) {
  const auto is_it = [&](const FileKind& kind) { return text.starts_with(kind.beginning); };
  const auto* const kind = std::ranges::find_if(kFileKinds, is_it);
  const std::string what = kind == std::end(kFileKinds) ? "does not begin with '<'" : std::string("begins like ") + kind->name;
  return "not XML: the file " + what + "; allowed: XML 1.0 in UTF-8";
}

char Upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

}  // namespace

std::optional<FileFault> FindFileFault(std::string_view text) {
  if (text.size() > kMaxFileBytes) {
    return FileFault{0,
                     "the file has " + std::to_string(text.size()) + " bytes; allowed: at most " + std::to_string(kMaxFileBytes)};
  }
  if (text.empty()) return FileFault{0, "the file is empty; allowed: exactly one 'metalib'"};
  if (text.starts_with("\xFE\xFF") || text.starts_with("\xFF\xFE")) {
    return FileFault{0, "the file is encoded in UTF-16 or UTF-32; allowed: UTF-8"};
  }
  // UTF-16 and UTF-32 without a byte order mark; the parser reports zero bytes in other files.
  if (const std::size_t zero = text.substr(0, 4).find('\0'); zero != std::string_view::npos) return FileFault{zero, kZeroByte};
  const std::size_t mark = text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  const std::size_t begin = text.find_first_not_of(kXmlBlanks, mark);
  if (begin != std::string_view::npos && text[begin] != '<') {
    return FileFault{begin, NotXml(text.substr(begin))};
  }
  if (EndOfProlog(text, mark) > kMaxPrologBytes) {
    const std::string most = std::to_string(kMaxPrologBytes);
    return FileFault{0, "more than " + most + " bytes before the outermost element; allowed: at most " + most};
  }
  return std::nullopt;
}

FileFault DescribeSyntaxError(int code, std::string_view text, std::size_t offset, std::string_view open_element,
                              bool has_library) {
  const std::string_view rest = text.substr(std::min(offset, text.size()));
  const bool is_schema = has_library || IsInLibraryTag(text, offset);
  if (code == XML_ERROR_NO_ELEMENTS) return {offset, MissingEnd(open_element)};
  if (code == XML_ERROR_UNDEFINED_ENTITY) return UndefinedEntity(text, offset, is_schema);
  if (code == XML_ERROR_INVALID_TOKEN && rest.starts_with('\0')) return {offset, kZeroByte};
  if (code == XML_ERROR_INVALID_TOKEN && !rest.empty() && Utf8Length(rest) == 0) {
    return {offset,
            (is_schema ? "byte " + HexByte(rest.front()) + " is" : std::string("a byte that is")) + " not UTF-8; allowed: UTF-8"};
  }
  if (code == XML_ERROR_INVALID_TOKEN && IsMergeMark(text, offset)) {
    return {offset, "unresolved merge conflict marker; allowed: XML 1.0 in UTF-8"};
  }
  const auto known = std::ranges::find(kSyntaxTexts, code, &SyntaxText::code);
  if (known != std::end(kSyntaxTexts)) return {offset, known->text};
  const char* described = XML_ErrorString(static_cast<XML_Error>(code));
  return {offset, std::string(described == nullptr ? "syntax error" : described) + "; allowed: XML 1.0 in UTF-8"};
}

bool IsAllowedEncoding(std::string_view name) {
  const auto is = [name](std::string_view other) { return std::ranges::equal(name, other, {}, Upper); };
  return is("UTF-8") || is("US-ASCII");
}

void ErrorList::Add(FileFault fault, bool is_syntax) {
  if (IsFull()) return;
  errors_.push_back({std::move(fault), is_syntax});
  --room_;
}

// Turns all offsets into lines and columns in one pass.
std::vector<ReadError> ErrorList::Locate(std::string_view text) const {
  auto sorted = errors_;
  std::ranges::stable_sort(sorted, {}, [](const Error& error) { return error.fault.offset; });
  LineCounter counter(text);
  std::vector<ReadError> located;
  located.reserve(sorted.size() + 1);
  for (Error& error : sorted) located.push_back({counter.At(error.fault.offset), std::move(error.fault.text), error.is_syntax});
  if (IsFull()) {
    located.push_back(
        {located.back().location, "too many errors; only the first " + std::to_string(errors_.size()) + " found are shown"});
  }
  return located;
}

}  // namespace qmx
