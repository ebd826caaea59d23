// Turns the elements of a schema file into calls of the builder. schema_form.cpp lists the elements and attributes; this file
// gives them their meaning.
#include "qmx_xml/schema_handler.h"

#include <algorithm>

#include "base/did_you_mean.h"
#include "base/text.h"

namespace qmx {
namespace {

using korvel::DidYouMean;
using korvel::Quote;

using Kind = ElementId::Kind;

constexpr std::string_view kBlanks = " \t\r\n";

bool IsBlankCharacter(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::vector<std::string_view> Words(std::string_view text) {
  std::vector<std::string_view> words;
  for (std::size_t begin = text.find_first_not_of(kBlanks); begin < text.size(); begin = text.find_first_not_of(kBlanks, begin)) {
    const std::size_t end = std::min(text.find_first_of(kBlanks, begin), text.size());
    words.push_back(text.substr(begin, end - begin));
    begin = end;
  }
  return words;
}

Protocol ProtocolOf(std::optional<std::string_view> text) {
  if (!text) return Protocol::kUnset;
  return *text == "TLV" ? Protocol::kTlv : Protocol::kQmx;
}

// The range of a number in the format fits the type; a refused or absent number gives `default_value`.
std::int32_t Int32Of(std::optional<std::uint64_t> number, std::int32_t default_value) {
  return number ? static_cast<std::int32_t>(*number) : default_value;
}

}  // namespace

void SchemaHandler::OnStart(const char* name, const char** attributes, std::size_t offset) {
  is_text_reported_ = false;
  if (open_.size() + refused_depth_ == kMaxElementDepth) {
    errors_.Add(offset, "elements nest more than " + std::to_string(kMaxElementDepth) + " levels deep; allowed: at most " +
                            std::to_string(kMaxElementDepth));
    is_too_deep_ = true;
    return;
  }
  const ElementForm* form = refused_depth_ > 0 ? nullptr : FindElement(name);
  if (refused_depth_ > 0 || Refuses(form, name, offset)) {
    ++refused_depth_;
  } else {
    open_.push_back(form);
    StartTag tag(*form, attributes, text_, offset, errors_);
    Dispatch(tag);
  }
  has_root_ = true;
}

bool SchemaHandler::Refuses(const ElementForm* form, std::string_view name, std::size_t offset) {
  const ElementForm* parent = open_.empty() ? nullptr : open_.back();
  const bool is_root_place = parent == nullptr && !has_root_;
  const bool is_in_place = form != nullptr && (form->IsOutermost() ? is_root_place : parent && form->parent == parent->kind);
  if (is_in_place) return false;
  meta_.is_empty = index_.is_empty = false;
  const std::vector<std::string_view> allowed = ChildNames(parent);
  const std::string where = parent == nullptr ? " as the outermost element" : " in element " + Quote(parent->name);
  const std::string similar = form == nullptr ? DidYouMean(name, allowed) : "";
  const bool is_shown = HasLibrary() || form != nullptr || !similar.empty();  // see xml_faults.h
  errors_.Add(offset, (form == nullptr ? "unknown element" + (is_shown ? " " + Quote(name) : "") + similar
                                       : "element " + Quote(name) + " in the wrong place") +
                          "; allowed" + where + ": " + Listed(allowed));
  return true;
}

void SchemaHandler::Dispatch(StartTag& tag) {
  switch (tag.form().kind) {
    case Kind::kMetalib:
      return StartMetalib(tag);
    case Kind::kMeta:
      return StartMeta(tag);
    case Kind::kEntry:
      return StartEntry(tag);
    case Kind::kPrimaryKey:
    case Kind::kSplittableKey:
      return StartKey(tag);
    case Kind::kIndex:
      return StartIndex(tag);
    case Kind::kColumn:
      return StartColumn(tag);
  }
}

void SchemaHandler::StartMetalib(const StartTag& tag) {
  protocol_ = ProtocolOf(tag.Text(Attribute::kProtocol));
  builder_.emplace(tag.Text(Attribute::kName).value_or(""), Int32Of(tag.Number(Attribute::kVersion), 0), protocol_);
  source_map_.Add({Kind::kMetalib}, tag.offset());
}

void SchemaHandler::StartMeta(const StartTag& tag) {
  if (metas_ == kMaxMetas) RefuseMore(tag, "metas", kMaxMetas);
  ++metas_;
  const std::optional<std::string_view> name = tag.Text(Attribute::kName);
  const bool is_union = tag.Text(Attribute::kKind) == "union";
  meta_ = OpenMeta{.name = std::string(name.value_or("")), .offset = tag.offset()};
  ids_.clear();
  const bool is_new =
      builder_->AddMeta(meta_.name, is_union ? QMX_TYPE_UNION : QMX_TYPE_STRUCT, tag.Text(Attribute::kCustomAttr));
  if (name && !is_new) RefuseRepeat(tag.offset(), "a second meta " + Quote(*name));
  source_map_.Add(Id(Kind::kMeta), tag.offset());
}

void SchemaHandler::StartEntry(StartTag& tag) {
  meta_.is_empty = false;
  const std::optional<std::string_view> name = tag.Text(Attribute::kName);
  CheckSize(tag, name.value_or(""));
  CheckId(tag, name.value_or(""));
  if (!name) return;
  if (meta_.entries == kMaxEntries) RefuseMore(tag, "entries" + InMeta(), kMaxEntries);
  if (tag.Text(Attribute::kRefer) == "") {
    tag.Refuse(Attribute::kRefer,
               "'refer' is empty; allowed: an integer entry with count 1, declared before it in the same meta");
  }
  EntryDecl entry;
  entry.name = *name;
  entry.type = tag.Text(Attribute::kType).value_or("int32");
  entry.size = tag.Number(Attribute::kSize).value_or(1);
  entry.id = Int32Of(tag.Number(Attribute::kId), -1);
  entry.version = Int32Of(tag.Number(Attribute::kVersion), 1);
  entry.count = Int32Of(tag.Number(Attribute::kCount), 1);
  entry.refer = tag.Text(Attribute::kRefer).value_or("");
  entry.customattr2 = tag.Text(Attribute::kCustomAttr2);
  if (!builder_->AddEntry(entry)) RefuseRepeat(tag.offset(), "a second entry " + Quote(*name) + InMeta());
  source_map_.Add(Id(Kind::kEntry, meta_.entries++), tag.offset());
}

void SchemaHandler::RefuseMore(const StartTag& tag, const std::string& what, std::size_t max) {
  errors_.Add(tag.offset(), "too many " + what + "; allowed: at most " + std::to_string(max));
}

void SchemaHandler::CheckSize(StartTag& tag, std::string_view name) {
  const std::optional<std::string_view> type = tag.Text(Attribute::kType);
  if (!type) return;
  const SimpleType* simple = FindSimpleType(*type);
  const bool needs_size = simple != nullptr && simple->unit_size == 0;
  if (needs_size && !tag.Has(Attribute::kSize)) {
    tag.Refuse(Attribute::kSize, "entry " + Quote(name) + " has no attribute 'size'; required for type " + Quote(*type));
  }
  if (!needs_size && tag.Has(Attribute::kSize)) {
    tag.Refuse(Attribute::kSize, "'size' is given for type " + Quote(*type) + "; allowed for types: string, bytes");
  }
}

void SchemaHandler::CheckId(StartTag& tag, std::string_view name) {
  if (protocol_ != Protocol::kTlv) return;
  if (!tag.Has(Attribute::kId)) {
    tag.Refuse(Attribute::kId, "entry " + Quote(name) + " has no attribute 'id'; required in a TLV library");
  }
  if (const auto id = tag.Number(Attribute::kId)) ids_.emplace_back(*id, tag.offset());
}

void SchemaHandler::StartKey(StartTag& tag) {
  const bool is_primary = tag.form().kind == Kind::kPrimaryKey;
  bool& has_key = is_primary ? meta_.has_primary_key : meta_.has_splittable_key;
  if (has_key) {
    errors_.Add(tag.offset(), "a second " + Quote(tag.form().name) + " in meta " + Quote(meta_.name) + "; allowed: at most one");
    return;
  }
  has_key = true;
  source_map_.Add(Id(tag.form().kind), tag.offset());
  const std::optional<std::string_view> names = tag.Text(Attribute::kEntries);
  if (!names) return;
  const std::vector<std::string_view> entries = Words(*names);
  if (entries.empty()) {
    tag.Refuse(Attribute::kEntries, "'entries' names no entry; allowed: one or more names, separated by blanks");
  } else if (is_primary) {
    builder_->SetPrimaryKey(entries);
  } else {
    builder_->SetSplittableKey(entries);
  }
}

void SchemaHandler::StartIndex(const StartTag& tag) {
  const std::optional<std::string_view> name = tag.Text(Attribute::kName);
  index_ = OpenIndex{.name = std::nullopt, .offset = tag.offset(), .columns = {}};
  if (name) index_.name = *name;
  source_map_.Add(Id(Kind::kIndex, meta_.indexes), tag.offset());
}

void SchemaHandler::StartColumn(const StartTag& tag) {
  index_.is_empty = false;
  const std::optional<std::string_view> entry = tag.Text(Attribute::kEntry);
  if (!entry) return;
  source_map_.Add(Id(Kind::kColumn, meta_.indexes, static_cast<std::uint32_t>(index_.columns.size())), tag.offset());
  index_.columns.emplace_back(*entry, tag.Text(Attribute::kDesc) == "true");
}

void SchemaHandler::OnEnd() {
  is_text_reported_ = false;
  if (refused_depth_ > 0) {
    --refused_depth_;
    return;
  }
  const Kind kind = open_.back()->kind;
  open_.pop_back();
  if (kind == Kind::kMeta) EndMeta();
  if (kind == Kind::kIndex) EndIndex();
}

std::string SchemaHandler::InnermostOpen() const {
  if (refused_depth_ > 0) return "a refused element";
  return open_.empty() ? "" : "element " + Quote(open_.back()->name);
}

void SchemaHandler::EndMeta() {
  if (meta_.is_empty) errors_.Add(meta_.offset, "meta " + Quote(meta_.name) + " has no entries; allowed: at least one");
  ReportRepeatedIds();
}

std::string SchemaHandler::InMeta() const { return " in meta " + Quote(meta_.name); }

void SchemaHandler::RefuseRepeat(std::size_t element, const std::string& what) {
  errors_.Add(OffsetOf(element, "name"), what + "; allowed: unique names");
}

void SchemaHandler::ReportRepeatedIds() {
  if (!std::ranges::is_sorted(ids_)) std::ranges::sort(ids_);
  for (std::size_t i = 1; i < ids_.size(); ++i) {
    const auto [id, element] = ids_[i];
    if (id != ids_[i - 1].first) continue;
    errors_.Add(OffsetOf(element, "id"),
                "a second entry with id " + std::to_string(id) + InMeta() + "; allowed in a TLV library: unique ids");
  }
}

void SchemaHandler::EndIndex() {
  const std::string name = index_.name.value_or("");
  if (index_.is_empty) errors_.Add(index_.offset, "index " + Quote(name) + " has no columns; allowed: at least one");
  std::vector<ColumnDecl> columns;
  for (const auto& [entry, descending] : index_.columns) columns.push_back({entry, descending});
  const bool is_new = builder_->AddIndex(name, columns);
  if (index_.name && !is_new) RefuseRepeat(index_.offset, "a second index " + Quote(name) + InMeta());
  ++meta_.indexes;
}

bool SchemaHandler::IsBlank(std::string_view text) { return std::ranges::all_of(text, IsBlankCharacter); }

void SchemaHandler::OnText(std::string_view piece, std::size_t offset) {
  const auto* const first = std::ranges::find_if_not(piece, IsBlankCharacter);
  if (first == piece.end() || refused_depth_ > 0 || is_text_reported_) return;
  const auto begin = static_cast<std::size_t>(first - piece.begin());
  is_text_reported_ = true;
  // A character reference stands for bytes that are not in the file: then the location is that of the reference.
  const bool is_verbatim = text_.substr(std::min(offset, text_.size()), piece.size()) == piece;
  errors_.Add(is_verbatim ? offset + begin : offset,
              "text " + Quote(piece.substr(begin)) + " between elements; allowed: elements and comments");
}

std::optional<Schema> SchemaHandler::Finish() {
  if (!builder_) return std::nullopt;
  BuildResult result = builder_->Finish();
  ReportBuildErrors(result.errors);
  if (!errors_.empty()) return std::nullopt;
  return Schema{std::move(*result.metalib), std::move(source_map_)};
}

void SchemaHandler::ReportBuildErrors(const std::vector<BuildError>& errors) {
  std::size_t last_element = text_.size();
  std::string_view last_attribute;
  std::size_t offset = 0;
  for (const BuildError& error : errors) {
    const std::size_t element = source_map_.Find(error.where).value_or(0);
    // Otherwise a key with many unknown members would be scanned again for each of them.
    if (element != last_element || error.attribute != last_attribute) offset = OffsetOf(element, error.attribute);
    last_element = element;
    last_attribute = error.attribute;
    errors_.Add(offset, error.text);
  }
}

std::size_t SchemaHandler::OffsetOf(std::size_t element, std::string_view attribute) const {
  const std::optional<Span> value = FindAttributeValue(text_, element, attribute);
  return value ? value->begin : element;
}

}  // namespace qmx
