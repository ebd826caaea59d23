// Scans a text for markup. Every byte is visited a constant number of times, and elements nest at most kMaxElementDepth deep.
// Tested by tests/lsp/outline_test.cpp.
#include "lsp/outline_scanner.h"

#include <algorithm>
#include <array>

#include "qmx/qmx_limits.h"

namespace korvel::lsp {
namespace {

// A set of bytes.
class ByteSet {
 public:
  constexpr explicit ByteSet(std::string_view bytes) {
    for (const char byte : bytes) has_[static_cast<unsigned char>(byte)] = true;
  }
  constexpr bool Has(char byte) const { return has_[static_cast<unsigned char>(byte)]; }

 private:
  std::array<bool, 256> has_{};
};

constexpr std::string_view kBlanks = " \t\r\n";
constexpr ByteSet kBlank(kBlanks);
constexpr ByteSet kNameEnd(" \t\r\n=/><\"'");
constexpr ByteSet kBehindValue(" \t\r\n/>?");  // what follows a closing quote
constexpr ByteSet kQuote("\"'");
constexpr ByteSet kTagEnd(">");

std::uint32_t Narrow(std::size_t offset) { return static_cast<std::uint32_t>(offset); }

// The first byte from `begin` on that the set has, or does not have; `end` without one.
std::size_t FindByte(std::string_view text, std::size_t begin, std::size_t end, const ByteSet& bytes, bool wanted = true) {
  while (begin < end && bytes.Has(text[begin]) != wanted) ++begin;
  return begin;
}

// The description of an element; null for an unknown name.
const qmx::ElementForm* FormOf(std::string_view name) {
  std::array<char, 16> terminated{};
  if (name.size() >= terminated.size() || name.find('\0') != std::string_view::npos) return nullptr;
  std::ranges::copy(name, terminated.begin());
  return qmx::FindElement(terminated.data());
}

// Where a value ends whose closing quote is missing: `value` reaches to a quote that opens the value of the next attribute, as
// in `name="uid type="`. Its length if the quote is a closing one after all.
std::size_t LengthBeforeNextAttribute(std::string_view value, std::string_view behind) {
  const bool closes = behind.empty() || kBehindValue.Has(behind.front()) || !value.ends_with('=');
  const std::size_t name = closes ? std::string_view::npos : value.find_last_of(kBlanks);
  if (name == std::string_view::npos) return value.size();
  const std::size_t last = value.find_last_not_of(kBlanks, name);
  return last == std::string_view::npos ? 0 : last + 1;
}

// The same for a value with no further quote in its tag: it ends with the line or the tag.
std::size_t LengthInLine(std::string_view rest) {
  const std::size_t end = std::min(rest.find_first_of(">\r\n"), rest.size());
  const bool is_empty_tag = end > 0 && rest.substr(end - 1).starts_with("/>");
  return is_empty_tag ? end - 1 : end;
}

}  // namespace

void OutlineScanner::Run() {
  for (at_ = text_.find('<'); at_ < text_.size(); at_ = text_.find('<', at_)) ScanMarkup();
  while (!open_.empty()) Close(text_.size(), false);
}

void OutlineScanner::ScanMarkup() {
  const std::string_view rest = text_.substr(at_, std::string_view("<![CDATA[").size());
  if (rest.starts_with("<!--")) return ScanOther(4, "-->");
  if (rest == "<![CDATA[") return ScanOther(9, "]]>");
  if (rest.starts_with("<?")) return ScanOther(2, "?>");
  limit_ = std::min(text_.find('<', at_ + 1), text_.size());
  if (rest.starts_with("<!")) return ScanDeclaration();
  if (rest.starts_with("</")) return ScanEndTag();
  ScanStartTag();
}

void OutlineScanner::ScanOther(std::size_t opening, std::string_view closing) {
  const std::size_t found = text_.find(closing, at_ + opening);
  const bool is_closed = found != std::string_view::npos;
  const std::size_t end = is_closed ? found + closing.size() : text_.size();
  outline_.other_markup_.push_back({Narrow(at_), Narrow(end), false, is_closed});
  at_ = end;
}

// Without the declarations inside a document type: these follow one by one.
void OutlineScanner::ScanDeclaration() {
  const std::size_t found = FindByte(text_, at_, limit_, kTagEnd);
  const std::size_t end = std::min(found + 1, limit_);
  outline_.other_markup_.push_back({Narrow(at_), Narrow(end), false, found < limit_});
  at_ = end;
}

void OutlineScanner::ScanEndTag() {
  const std::size_t name = at_ + 2;
  const std::size_t name_end = FindByte(text_, name, limit_, kNameEnd);
  const std::size_t found = FindByte(text_, name_end, limit_, kTagEnd);
  const std::size_t end = std::min(found + 1, limit_);
  outline_.other_markup_.push_back({Narrow(at_), Narrow(end), true, found < limit_});
  CloseByEndTag(text_.substr(name, name_end - name), end);
  at_ = end;
}

void OutlineScanner::ScanStartTag() {
  Element element;
  element.begin = Narrow(at_);
  element.name_end = Narrow(FindByte(text_, at_ + 1, limit_, kNameEnd));
  element.form = FormOf(text_.substr(at_ + 1, element.name_end - at_ - 1));
  element.first_attribute = Narrow(outline_.attributes_.size());
  EnterParent(element);
  at_ = element.name_end;
  while (ScanPart()) {
  }
  const std::string_view rest = text_.substr(at_, limit_ - at_);
  element.is_self_closed = element.is_closed = rest.starts_with("/>");
  element.is_tag_closed = !rest.empty();
  at_ += element.is_self_closed ? 2 : element.is_tag_closed ? 1 : 0;
  element.tag_end = element.end = Narrow(at_);
  const bool has_content = element.is_tag_closed && !element.is_self_closed && open_.size() < qmx::kMaxElementDepth;
  if (has_content) open_.push_back(Narrow(outline_.elements_.size()));
  outline_.elements_.push_back(element);
}

bool OutlineScanner::ScanPart() {
  at_ = FindByte(text_, at_, limit_, kBlank, false);
  const std::string_view rest = text_.substr(at_, limit_ - at_);
  if (rest.empty() || rest.starts_with(">") || rest.starts_with("/>")) return false;
  if (kNameEnd.Has(rest.front())) {
    ++at_;  // what nothing explains
  } else {
    ScanAttribute();
  }
  return true;
}

void OutlineScanner::ScanAttribute() {
  TagAttribute attribute;
  const std::size_t name_end = FindByte(text_, at_, limit_, kNameEnd);
  attribute.name_begin = Narrow(at_);
  attribute.name_end = attribute.value_begin = attribute.value_end = Narrow(name_end);
  at_ = name_end;
  const std::size_t equals = FindByte(text_, name_end, limit_, kBlank, false);
  if (equals < limit_ && text_[equals] == '=') {
    const std::size_t value = FindByte(text_, equals + 1, limit_, kBlank, false);
    const bool is_quoted = value < limit_ && kQuote.Has(text_[value]);
    at_ = is_quoted ? value + 1 : equals + 1;
    attribute.value_begin = Narrow(at_);
    if (is_quoted) {
      ScanQuoted(attribute);
    } else {
      at_ = FindByte(text_, at_, limit_, kNameEnd);
      attribute.value_end = Narrow(at_);
    }
  }
  outline_.attributes_.push_back(attribute);
}

void OutlineScanner::ScanQuoted(TagAttribute& attribute) {
  attribute.quote = text_[at_ - 1];
  const std::string_view rest = text_.substr(at_, limit_ - at_);
  const std::size_t closing = rest.find(attribute.quote);
  if (closing == std::string_view::npos) {
    at_ += LengthInLine(rest);
    attribute.value_end = Narrow(at_);
  } else {
    const std::size_t length = LengthBeforeNextAttribute(rest.substr(0, closing), rest.substr(closing + 1));
    attribute.value_end = Narrow(at_ + length);
    at_ += length == closing ? closing + 1 : length;
  }
}

void OutlineScanner::EnterParent(Element& element) {
  if (element.form != nullptr && !element.form->IsOutermost()) {
    for (std::size_t i = 0; i < open_.size(); ++i) {
      if (!outline_.elements_[open_[open_.size() - 1 - i]].Is(element.form->parent)) continue;
      while (i-- > 0) Close(element.begin, false);
      break;
    }
  }
  if (!open_.empty()) element.parent = open_.back();
}

void OutlineScanner::CloseByEndTag(std::string_view name, std::size_t end) {
  for (std::size_t i = 0; i < open_.size(); ++i) {
    const Element& element = outline_.elements_[open_[open_.size() - 1 - i]];
    if (outline_.Piece(element.name()) != name) continue;
    while (i-- > 0) Close(at_, false);
    return Close(end, true);
  }
}

void OutlineScanner::Close(std::size_t end, bool has_end_tag) {
  Element& element = outline_.elements_[open_.back()];
  element.end = Narrow(end);
  element.is_closed = has_end_tag;
  open_.pop_back();
}

}  // namespace korvel::lsp
